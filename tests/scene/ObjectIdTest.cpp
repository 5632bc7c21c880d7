#include <gtest/gtest.h>

#include "foundation/Desktop.h"
#include "scene/Scenes.h"

namespace {

class ObjectId : public testing::Test {
protected:
    void SetUp() override { BaseObject::ResetObjectIDs(); }
    void TearDown() override { SetDesktop(nullptr); }
};

TEST_F(ObjectId, NewIdsSkipTakenOnes) {
    Brush one, two, five, fresh;
    one.SetObjectID(1);
    two.SetObjectID(2);
    five.SetObjectID(5);
    for (const uint32_t expected : {3u, 4u, 6u}) {
        fresh.GenerateNewObjectID();
        EXPECT_EQ(fresh.GetObjectID(), expected);
        EXPECT_EQ(BaseObject::GetObjectFromID(expected), &fresh);
    }
    EXPECT_EQ(BaseObject::GetObjectFromID(3), nullptr); // an id given up leaves the table
    EXPECT_EQ(BaseObject::FindFreeObjectID(), 7u);
    EXPECT_EQ(BaseObject::GetObjectFromID(7), nullptr);
}

TEST_F(ObjectId, TheTableHoldsIdsUpToTheSignBitAndTheSharedOne) {
    Brush brush, other;
    for (const uint32_t id : {0x80000000u, 0xFFFFFFFEu}) {
        brush.SetObjectID(id);
        EXPECT_EQ(brush.GetObjectID(), id);
        EXPECT_EQ(BaseObject::GetObjectFromID(id), nullptr);
    }
    brush.SetObjectID(0x7FFFFFFF);
    EXPECT_EQ(BaseObject::GetObjectFromID(0x7FFFFFFF), &brush);
    other.SetObjectID(0x7FFFFFFF); // the later one owns the entry
    EXPECT_EQ(BaseObject::GetObjectFromID(0x7FFFFFFF), &other);
    brush.SetObjectID(NO_OBJECT_ID); // and loses it with the earlier one's change
    EXPECT_EQ(BaseObject::GetObjectFromID(0x7FFFFFFF), nullptr);
    EXPECT_EQ(BaseObject::GetObjectFromID(NO_OBJECT_ID), &brush);
}

TEST_F(ObjectId, CopiesAreNotRegisteredUntilTheyHaveAnId) {
    Brush brush;
    brush.class_id = 77;
    brush.SetObjectID(9);
    brush.AddLinkedObjectID(4);
    brush.path.Add(5);
    brush.target_path.Add(6);
    {
        const std::unique_ptr<BaseObject> copy = brush.GetCopy();
        ASSERT_NE(copy->GetBrush(), nullptr);
        EXPECT_EQ(copy->GetObjectID(), NO_OBJECT_ID);
        EXPECT_EQ(copy->class_id, 77u);
        EXPECT_EQ(copy->GetGroupID(), OBJECT_BRUSH);
        EXPECT_TRUE(copy->HasLinkedObjectID(4));
        EXPECT_EQ(copy->path.Get(0), 5u);
        EXPECT_EQ(copy->target_path.Get(0), 6u);
    }
    EXPECT_EQ(BaseObject::GetObjectFromID(9), &brush); // the copy's end disturbed nothing
    {
        const std::unique_ptr<BaseObject> copy = brush.CreateFromCopy(12);
        EXPECT_EQ(BaseObject::GetObjectFromID(12), copy.get());
    }
    EXPECT_EQ(BaseObject::GetObjectFromID(12), nullptr);

    Entity entity;
    entity.AddLinkedObjectID(9);
    const std::unique_ptr<BaseObject> entity_copy = entity.GetCopy();
    ASSERT_NE(entity_copy->GetEntity(), nullptr);
    EXPECT_TRUE(entity_copy->HasLinkedObjectID(9));
    EXPECT_EQ(Entity(entity).GetLinkedObjectsCount(), 0); // plain copies have no links
    EXPECT_EQ(Brush(brush).GetLinkedObjectsCount(), 0);
}

TEST_F(ObjectId, InitFromCopyTakesTheIdWithoutTouchingTheTable) {
    auto live = std::make_unique<Brush>();
    live->SetObjectID(20);
    Brush stored;
    live->InitFromCopy(stored); // without an id
    EXPECT_EQ(live->GetObjectID(), 20u);
    Brush other;
    other.SetObjectID(21);
    live->InitFromCopy(other);
    EXPECT_EQ(live->GetObjectID(), 21u);
    EXPECT_EQ(BaseObject::GetObjectFromID(20), live.get());
    EXPECT_EQ(BaseObject::GetObjectFromID(21), &other);
    live.reset();
    EXPECT_EQ(BaseObject::GetObjectFromID(20), nullptr); // nothing dangles
}

TEST_F(ObjectId, LinksAreASet) {
    Brush brush;
    Entity lamp, other;
    lamp.str_type = "POINT_LIGHT";
    lamp.SetObjectID(31);
    other.SetObjectID(30);
    EXPECT_TRUE(brush.AddLinkedObjectID(30));
    EXPECT_FALSE(brush.AddLinkedObjectID(30));
    EXPECT_TRUE(brush.AddLinkedObjectID(999)); // dangling
    EXPECT_TRUE(brush.AddLinkedObjectID(31));
    EXPECT_EQ(brush.GetLinkedObjectsCount(), 3);
    EXPECT_EQ(brush.FindLinkedEntity("point_light"), &lamp);
    EXPECT_EQ(brush.FindLinkedEntity("ACTOR"), nullptr);
    EXPECT_TRUE(brush.RemoveLinkedObjectID(999));
    EXPECT_FALSE(brush.RemoveLinkedObjectID(999));
    EXPECT_EQ(brush.GetLinkedObjectsCount(), 2);
}

TEST_F(ObjectId, WorldLookupsCheckTheKind) {
    World world;
    Brush* brush = world.AddBrush(BoxBrush());
    Entity* entity = world.AddEntity(std::make_unique<Entity>());
    brush->SetObjectID(1);
    entity->SetObjectID(2);
    entity->variable_name = "Door";
    EXPECT_EQ(world.GetBrushFromID(1), brush);
    EXPECT_EQ(world.GetEntityFromID(1), nullptr);
    EXPECT_EQ(world.GetBrushFromID(2), nullptr);
    EXPECT_EQ(world.GetEntityFromID(2), entity);
    EXPECT_EQ(world.GetEntityFromName("Door"), entity);
    EXPECT_EQ(world.GetEntityFromName("door"), nullptr);
    EXPECT_EQ(world.GetBrushIndex(brush), 0);
    EXPECT_EQ(world.GetEntityIndex(nullptr), -1);
}

TEST_F(ObjectId, ValidationSeparatesObjectsOfOneId) {
    World world;
    for (int i = 0; i < 3; ++i)
        world.AddBrush(BoxBrush());
    world.brush[0]->SetObjectID(5);
    world.brush[1]->SetObjectID(5);
    world.brush[2]->SetObjectID(6);
    EXPECT_TRUE(world.ValidateIDs());
    EXPECT_NE(world.brush[0]->GetObjectID(), 5u);
    EXPECT_EQ(world.brush[1]->GetObjectID(), 5u); // the owner of the entry keeps its id, and with it links to it
    for (const auto& b : world.brush)
        EXPECT_EQ(BaseObject::GetObjectFromID(b->GetObjectID()), b.get());
    EXPECT_FALSE(world.ValidateIDs());
    world.brush[2]->SetObjectID(NO_OBJECT_ID); // no id at all is repaired in silence
    EXPECT_FALSE(world.ValidateIDs());
    EXPECT_NE(world.brush[2]->GetObjectID(), NO_OBJECT_ID);
}

TEST_F(ObjectId, GenerateIDsFillsOnlyMissingOnes) {
    World world;
    for (const uint32_t id : {0xFFFFFFFFu, 0xFFFFFFFEu, 40u})
        world.AddBrush(BoxBrush())->SetObjectID(id);
    world.AddEntity(std::make_unique<Entity>());
    world.GenerateIDs();
    EXPECT_EQ(world.brush[0]->GetObjectID(), 1u);
    EXPECT_EQ(world.brush[1]->GetObjectID(), 2u);
    EXPECT_EQ(world.brush[2]->GetObjectID(), 40u);
    EXPECT_EQ(world.entity[0]->GetObjectID(), 3u);
}

TEST_F(ObjectId, ReindexingKeepsLinksAndLeavesPaths) {
    HeadlessDesktop desktop;
    SetDesktop(&desktop);
    World world;
    Brush* brush = world.AddBrush(BoxBrush());
    Entity *first = world.AddEntity(std::make_unique<Entity>()), *second = world.AddEntity(std::make_unique<Entity>());
    brush->SetObjectID(2); // the new ids permute old ones
    first->SetObjectID(3);
    second->SetObjectID(1000);
    brush->AddLinkedObjectID(3);
    brush->AddLinkedObjectID(1000);
    brush->AddLinkedObjectID(555);
    second->AddLinkedObjectID(2);
    second->path.Add(1000);
    world.ReindexObjectIDs();
    EXPECT_EQ(first->GetObjectID(), 1u);
    EXPECT_EQ(second->GetObjectID(), 2u);
    EXPECT_EQ(brush->GetObjectID(), 3u);
    EXPECT_EQ(brush->GetLinkedObjectID(0), 1u);
    EXPECT_EQ(brush->GetLinkedObjectID(1), 2u);
    EXPECT_EQ(brush->GetLinkedObjectID(2), 555u);
    EXPECT_EQ(second->GetLinkedObjectID(0), 3u);
    EXPECT_EQ(second->path.Get(0), 1000u);
    ASSERT_EQ(desktop.boxes.size(), 1u);
}

} // namespace
