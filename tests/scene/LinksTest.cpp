#include <algorithm>

#include <gtest/gtest.h>

#include "scene/EditingFrontEnd.h"
#include "scene/Scenes.h"

namespace {

// Objects by a letter: brushes are upper case, entities lower case.
class Links : public testing::Test {
protected:
    void Add(const std::string& letters) {
        for (const char c : letters) {
            const bool is_brush = c < 'a';
            BaseObject* object = is_brush ? static_cast<BaseObject*>(world.AddBrush(BoxBrush()))
                                          : world.AddEntity(std::make_unique<Entity>());
            object->GenerateNewObjectID();
            names += c;
            ids.push_back(object->GetObjectID());
        }
        world.ClearSelection();
        for (const auto& b : world.brush)
            b->is_selected = false;
    }
    uint32_t Id(char c) const { return ids[names.find(c)]; }
    void Select(const std::string& letters) {
        world.ClearSelection();
        for (const char c : letters) {
            if (Brush* b = world.GetBrushFromID(Id(c)))
                world.SetBrushSelection(world.GetBrushIndex(b), true);
            else
                world.entity_selection.AddItem(world.GetEntityIndex(world.GetEntityFromID(Id(c))));
        }
    }
    void LinkTo(const std::string& pairs) { // "AB Ba"
        for (size_t i = 0; i + 1 < pairs.size(); i += 3)
            BaseObject::GetObjectFromID(Id(pairs[i]))->AddLinkedObjectID(Id(pairs[i + 1]));
    }
    std::string All() const { // "AB Ba", by object
        std::string text;
        for (size_t i = 0; i < ids.size(); ++i)
            for (const uint32_t linked : BaseObject::GetObjectFromID(ids[i])->linked_objects) {
                const auto found = std::find(ids.begin(), ids.end(), linked);
                text += std::string(text.empty() ? "" : " ") + names[i] +
                        (found == ids.end() ? '?' : names[static_cast<size_t>(found - ids.begin())]);
            }
        return text;
    }

    EditingFrontEnd front_end;
    World world;
    std::string names;
    std::vector<uint32_t> ids;
};

TEST_F(Links, RulesOfTheThreeCommands) {
    struct Case {
        const char* selected;
        char first; // '-': unset, '?': an object that is not selected
        bool link_first, to_first;
        const char* expected;
    };
    static constexpr Case CASES[] = {
        {"ABa", '-', false, false, "Aa Ba"},    // brushes to the one entity
        {"AB", '-', false, false, ""},          // two brushes alone
        {"bac", '-', false, false, "ac ba"},    // a chain in the order of selection
        {"Aab", '-', false, false, ""},         // two entities and a brush
        {"a", '-', false, false, ""},           // one object
        {"ABab", 'B', true, false, "BA Ba Bb"}, // the object selected first
        {"ABab", '-', true, false, "aA aB ab"}, // else an entity
        {"AB", '-', true, false, "AB"},         // else a brush
        {"ABab", 'b', true, true, "Ab Bb ab"},  // all to it
        {"AB", 'a', true, false, ""},           // first is not selected: the rules of the chain
        {"BAa", 'c', true, true, "Aa Ba"},      //
        {"", '-', true, true, ""},
    };
    Add("ABabc");
    for (const Case& c : CASES) {
        SCOPED_TRACE(std::string(c.selected) + c.first);
        for (const uint32_t id : ids)
            BaseObject::GetObjectFromID(id)->RemoveAllLinkedObjectsID();
        Select(c.selected);
        if (c.first != '-')
            world.first_selected_id = Id(c.first);
        front_end.redraws = 0;
        world.Link(c.link_first, c.to_first);
        world.Link(c.link_first, c.to_first); // a link is there once
        EXPECT_EQ(All(), c.expected);
        EXPECT_EQ(front_end.redraws, 2);
    }
}

TEST_F(Links, UnlinkingTakesOnlyWhatLiesInsideTheSelection) {
    Add("ABab");
    LinkTo("AB Aa BA ab aB bA");
    Select("ABa");
    world.Unlink();
    EXPECT_EQ(All(), "ab bA");
    Select("");
    world.Unlink();
    EXPECT_EQ(All(), "ab bA");
}

TEST_F(Links, ChangingTheDirectionKeepsTheCount) {
    Add("ABabc");
    LinkTo("AB aA ab ac Bc AA");
    world.brush[0]->AddLinkedObjectID(999999); // of nothing
    Select("ABab");
    world.Changelink();
    EXPECT_EQ(All(), "A? AA Aa Bc BA ac ba");
    world.Changelink();
    EXPECT_EQ(All(), "A? AA AB Bc ac aA ab");
    Select("AB");
    LinkTo("BA");
    world.Changelink(); // linked both ways stays so
    EXPECT_TRUE(world.brush[0]->HasLinkedObjectID(Id('B')));
    EXPECT_TRUE(world.brush[1]->HasLinkedObjectID(Id('A')));
}

TEST_F(Links, NamesOfEntities) {
    Add("Aab");
    EXPECT_EQ(world.GetEntityVariableName(), nullptr);
    Select("Aba");
    EXPECT_EQ(*world.GetEntityVariableName(), "none");
    world.entity[0]->variable_name = "lamp"; // a: selected second
    EXPECT_EQ(*world.GetEntityVariableName(), "none");
    world.ChangeEntityVariableName("door");
    EXPECT_EQ(world.entity[0]->variable_name, "door");
    EXPECT_EQ(world.GetEntityFromName("door"), world.entity[0].get());
    EXPECT_EQ(world.GetEntityFromName("Door"), nullptr);
}

} // namespace
