// The cables between linked entities, as the views keep and draw them.
#include <gtest/gtest.h>

#include "drawing/ViewSetup.h"
#include "scene/Entity.h"

namespace {

constexpr uint32_t CABLE = 0xFFFFFF;

class CablePassTest : public ViewTest {
protected:
    CablePassTest() {
        SetView(VIEW_FRONT);
        context.show_links = true;
        a = &Add("CABLE", {-50, 30, 0});
        b = &Add("cable", {50, 30, 0});
        // Stiff against its weight.
        SetNumber("rigidity", 200);
        SetNumber("gravity", 2);
        SetNumber("length", 160);
        a->AddLinkedObjectID(b->GetObjectID());
    }
    Entity& Add(const char* type_word, const D3DVECTOR& position) {
        auto entity = std::make_unique<Entity>();
        entity->str_type = type_word;
        entity->position = position;
        entity->GenerateNewObjectID();
        return *world.AddEntity(std::move(entity));
    }
    void SetNumber(const char* name, float value) {
        EntityParameter p;
        p.name = name;
        p.type = EPT_FLOAT;
        p.p_float = value;
        a->AddParameter(p);
    }
    size_t Pass() {
        screen.NextFrame();
        world.RenderConnectionLines(context);
        return world.AllCables.size();
    }
    bool DrawsCable() { return screen.CountOf(CABLE) > 0; }
    Entity *a, *b;
};

TEST_F(CablePassTest, HangsBelowItsLink) {
    ASSERT_EQ(Pass(), 1u);
    const CCableComputer& cable = *world.AllCables[0];
    EXPECT_EQ(cable.ID_1, a->GetObjectID());
    EXPECT_EQ(cable.ID_2, b->GetObjectID());
    EXPECT_TRUE(cable.rend_flag);
    int lowest = 0;
    for (int y = 0; y < SIDE; ++y)
        for (int x = 0; x < SIDE; ++x)
            if (screen.At(x, y) == CABLE)
                lowest = y;
    // 160 units over 100: some 55 below the ends, which stand 30 above the middle.
    EXPECT_NEAR(lowest, MIDDLE + 25, 5);
    EXPECT_NE(screen.At(MIDDLE - 30, MIDDLE - 31), CABLE); // the arrow of the link
    EXPECT_EQ(screen.At(MIDDLE - 30, MIDDLE - 30), 0xFFD200u);
}

TEST_F(CablePassTest, EndsWithItsLinkAndItsEntities) {
    ASSERT_EQ(Pass(), 1u);
    const CCableComputer* const first = world.AllCables[0].get();
    ASSERT_EQ(Pass(), 1u);
    EXPECT_EQ(world.AllCables[0].get(), first); // kept
    a->is_hidden = true;
    EXPECT_EQ(Pass(), 0u);
    a->is_hidden = false;
    b->str_type = "POINT_LIGHT";
    EXPECT_EQ(Pass(), 0u);
    b->str_type = "CABLE";
    EXPECT_EQ(Pass(), 1u);
    a->RemoveAllLinkedObjectsID();
    EXPECT_EQ(Pass(), 0u);
    EXPECT_FALSE(DrawsCable());
    a->AddLinkedObjectID(b->GetObjectID());
    EXPECT_EQ(Pass(), 1u);
    world.DeleteEntity(1);
    EXPECT_EQ(Pass(), 0u);
}

TEST_F(CablePassTest, RestsWhileLinksOrEntitiesAreOff) {
    ASSERT_EQ(Pass(), 1u);
    for (bool* shown : {&context.show_links, &context.filters.show_entities}) {
        *shown = false;
        a->is_hidden = true;
        EXPECT_EQ(Pass(), 1u);
        EXPECT_FALSE(DrawsCable());
        *shown = true;
        a->is_hidden = false;
    }
}

TEST_F(CablePassTest, AnotherNumberOfPointsIsAnotherCable) {
    ASSERT_EQ(Pass(), 1u);
    SetNumber("granularity", 3);
    ASSERT_EQ(Pass(), 1u);
    EXPECT_EQ(world.AllCables[0]->len, 10);
    b->AddLinkedObjectID(a->GetObjectID()); // the other way is one of its own
    EXPECT_EQ(Pass(), 2u);
}

} // namespace
