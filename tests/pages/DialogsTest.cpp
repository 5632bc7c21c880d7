// The dialogs: brush properties, lists and selections by content, the script window, and those of one field.
#include <algorithm>

#include "pages/AdvancedSelection.h"
#include "pages/BrushProperties.h"
#include "pages/NamedObjects.h"
#include "pages/PagesData.h"
#include "pages/ScriptDialog.h"
#include "pages/SmallDialogs.h"
#include "scene/Undo.h"

using BrushPropertiesTest = PagesTest;
using NamedObjectsTest = PagesTest;
using ExtendedSelectTest = PagesTest;
using ScriptDialogTest = PagesTest;
using SmallDialogsTest = PagesTest;

// --- Brush properties

TEST_F(BrushPropertiesTest, OnlyWhatWasChangedIsWritten) {
    Brush* first = AddBox();
    Brush* second = AddBox(100);
    Level().SetBrushSelection(0, true);
    first->name = "one";
    second->name = "two";
    first->energy = second->energy = 40;
    first->mass = 2;
    second->mass = 3;
    first->properties = BP_DYNAMIC | BP_HIDDEN;
    second->properties = BP_HIDDEN;
    BrushProperties properties(Level());
    EXPECT_TRUE(properties.fields[BrushProperties::NAME].mixed);
    EXPECT_EQ(properties.fields[BrushProperties::NAME].value, "");
    EXPECT_EQ(properties.fields[BrushProperties::ENERGY].value, "40");
    EXPECT_EQ(properties.fields[BrushProperties::STATIC_FRICTION].value, "0.5");
    EXPECT_EQ(properties.flags[0], BrushProperties::FlagState::Mixed);
    EXPECT_EQ(properties.flags[5], BrushProperties::FlagState::On);
    EXPECT_EQ(properties.flags[6], BrushProperties::FlagState::Off);
    EXPECT_FALSE(properties.Apply(Level())) << "nothing was changed";

    properties.SetValue(BrushProperties::ENERGY, "70000");
    properties.SetValue(BrushProperties::TOUCH_DAMAGE, "1.5");
    properties.SetValue(BrushProperties::ELASTICITY, "nan");
    properties.SetFlag(5, false);
    EXPECT_TRUE(properties.Apply(Level()));
    for (const Brush* b : {first, second}) {
        EXPECT_EQ(b->energy, 65535);
        EXPECT_EQ(b->touch_dmg, 1.5f);
        EXPECT_EQ(b->elasticity, 0);
        EXPECT_FALSE(b->HasProperty(BP_HIDDEN));
    }
    EXPECT_EQ(first->name, "one");
    EXPECT_EQ(second->mass, 3);
    EXPECT_TRUE(first->HasProperty(BP_DYNAMIC));
    EXPECT_FALSE(second->HasProperty(BP_DYNAMIC));
}

TEST_F(BrushPropertiesTest, ClipPropertiesBringTheOthers) {
    EXPECT_EQ(WithClipProperties(BP_PLAYER_CLIP), 0x41D82u);
    EXPECT_EQ(WithClipProperties(BP_LADDER), 0x41D84u);
    EXPECT_EQ(WithClipProperties(BP_BOT_CLIP), 0x45D80u);
    EXPECT_EQ(WithClipProperties(BP_PLAYER_NO_CLIP | BP_DYNAMIC), 0x11u);
    const Brush* b = AddBox();
    BrushProperties properties(Level());
    properties.SetFlag(2, true);
    EXPECT_EQ(properties.flags[7], BrushProperties::FlagState::On);
    properties.SetFlag(7, false); // "See Through", taken off again
    properties.SetFlag(2, false);
    properties.SetFlag(2, true);
    properties.SetFlag(8, false);
    ASSERT_TRUE(properties.Apply(Level()));
    EXPECT_EQ(b->properties, 0x41D84u & ~0x100u);
}

TEST_F(BrushPropertiesTest, TheFormAsksForTheSelection) {
    EXPECT_FALSE(EditBrushProperties(*editor)) << "none selected";
    Brush* b = AddBox();
    AddBox(100)->properties = BP_DYNAMIC;
    Level().SetBrushSelection(0, true);
    editor->settings.full_undo = true;
    Level().undo_buffer.Empty();
    EXPECT_FALSE(EditBrushProperties(*editor)) << "cancelled";
    desktop.form_answers = {
        {{0, "gate"}, {BrushProperties::FIELD_COUNT, "On"}, {BrushProperties::FIELD_COUNT + 1, "1"}}};
    EXPECT_TRUE(EditBrushProperties(*editor));
    const auto& fields = desktop.forms.back().fields;
    ASSERT_EQ(fields.size(), static_cast<size_t>(BrushProperties::FIELD_COUNT + BRUSH_PROPERTY_COUNT));
    EXPECT_EQ(fields[BrushProperties::FIELD_COUNT].kind, FormField::Choice) << "the brushes differ";
    EXPECT_EQ(fields[BrushProperties::FIELD_COUNT + 1].label, "Player Clip");
    EXPECT_EQ(b->name, "gate");
    EXPECT_EQ(b->properties, 0x41D83u);
    ASSERT_EQ(Level().undo_buffer.GetActionCount(), 1);
    Level().undo_buffer.UndoLastAction(Level(), Level().redo_buffer);
    EXPECT_EQ(b->properties, 0u);
    EXPECT_EQ(b->name, "");
}

// --- Lists and selections by content

TEST_F(NamedObjectsTest, ListsAndSelectsByName) {
    AddBox()->name = "gate";
    AddBox(100);
    AddBox(200)->name = "NONE";
    AddEntity("light", "Lamp");
    AddEntity("glow");
    Level().ClearSelection();
    DlgNamedObjList list(*editor);
    const auto texts = [&list] {
        std::vector<std::string> all;
        for (const auto& item : list.items)
            all.push_back(item.text);
        return all;
    };
    EXPECT_EQ(texts(), (std::vector<std::string>{"BRUSH [gate]", "POINT_LIGHT [Lamp]"}));
    list.UpdateList(NOLSM_Name);
    EXPECT_EQ(texts(), (std::vector<std::string>{"gate [BRUSH]", "Lamp [POINT_LIGHT]"}));
    list.m_filter = "aMp";
    list.UpdateList(NOLSM_Name);
    EXPECT_EQ(texts(), std::vector<std::string>{"Lamp [POINT_LIGHT]"});
    list.SelectRow(0);
    EXPECT_EQ(Level().entity_selection.GetItemCount(), 1);
    EXPECT_EQ(editor->editor_state, ES_SELECTED);
    EXPECT_EQ(editor->selected_entity, 0) << "the entity page shows it";
    list.m_filter.clear();
    list.ignore_no_name = false;
    list.UpdateList(NOLSM_Type);
    EXPECT_EQ(texts(), (std::vector<std::string>{"BRUSH []", "BRUSH [gate]", "BRUSH [NONE]", "CORONA [none]",
                                                 "POINT_LIGHT [Lamp]"}));
    list.SelectRow(1);
    EXPECT_EQ(Level().entity_selection.GetItemCount(), 0);
    EXPECT_TRUE(Level().brush[0]->is_selected);
    EXPECT_EQ(Level().first_selected_id, Level().brush[0]->GetObjectID());
    list.SelectRow(5);
    EXPECT_TRUE(Level().brush[0]->is_selected);
}

TEST_F(ExtendedSelectTest, HidesAndShowsByType) {
    AddEntity("light");
    AddEntity("soldier");
    AddEntity("light");
    DlgExtendedSelect dialog(*editor);
    ASSERT_EQ(dialog.m_elist.size(), 2u);
    EXPECT_EQ(dialog.m_elist[0].word, "ACTOR");
    EXPECT_TRUE(dialog.m_elist[1].marked) << "the selected light's type";
    dialog.OnHide();
    EXPECT_TRUE(Level().entity[0]->is_hidden && Level().entity[0]->is_hidden_special);
    EXPECT_FALSE(Level().entity[1]->is_hidden);
    EXPECT_EQ(Level().entity_selection.GetItemCount(), 0);
    EXPECT_EQ(editor->editor_state, ES_IDLE);
    EXPECT_TRUE(dialog.m_elist[1].marked) << "marks are the user's";
    dialog.OnShow();
    EXPECT_FALSE(Level().entity[2]->is_hidden || Level().entity[2]->is_hidden_special);

    dialog.OnDoubleClick(1, false); // none is hidden: hides the first marked type
    EXPECT_TRUE(Level().entity[2]->is_hidden);
    dialog.OnDoubleClick(1, false);
    EXPECT_FALSE(Level().entity[0]->is_hidden);
    dialog.OnDoubleClick(0, true); // the actors alone
    EXPECT_FALSE(Level().entity[1]->is_hidden);
    EXPECT_TRUE(Level().entity[0]->is_hidden && Level().entity[2]->is_hidden);
    EXPECT_TRUE(dialog.m_elist[0].marked);
    dialog.OnInvert();
    EXPECT_FALSE(dialog.m_elist[0].marked);
    dialog.OnAll(true);
    EXPECT_TRUE(dialog.m_elist[0].marked && dialog.m_elist[1].marked);

    AddEntity("glow");
    ASSERT_EQ(dialog.m_elist.size(), 3u);
    EXPECT_EQ(dialog.m_elist[1].word, "CORONA");
    Level().DeleteEntity(3);
    dialog.UpdateETypesRemove("corona");
    EXPECT_EQ(dialog.m_elist.size(), 2u);

    RECT window;
    EXPECT_FALSE(DlgExtendedSelect::ReadPosition(window));
    DlgExtendedSelect::StorePosition({10, 20, 300, 400});
    ASSERT_TRUE(DlgExtendedSelect::ReadPosition(window));
    EXPECT_EQ(window.Width(), 290);
    EXPECT_EQ(window.bottom, 400);
}

TEST_F(NamedObjectsTest, AdvancedBrushSelectionTakesAnyOfTheProperties) {
    AddBox()->properties = BP_DYNAMIC;
    AddBox(100)->properties = BP_LADDER | BP_HIDDEN;
    Brush* hurting = AddBox(200);
    hurting->touch_dmg = 1;
    hurting->name = "Spikes";
    Level().brush[1]->is_hidden = true;
    Level().ClearSelection();
    const auto selects = [this](const DlgSpecialSelection& dialog) {
        dialog.OnOK(*editor);
        return std::vector<int>(Level().brush_selection.begin(), Level().brush_selection.end());
    };
    DlgSpecialSelection any;
    any.mask = BP_DYNAMIC | BP_LADDER;
    EXPECT_EQ(selects(any), (std::vector<int>{0, 1}));
    EXPECT_EQ(editor->editor_state, ES_SELECTED);
    DlgSpecialSelection named;
    named.name = "SPIKES";
    EXPECT_EQ(selects(named), std::vector<int>{2});
    named.has_coll_dmg = true;
    EXPECT_EQ(selects(named), std::vector<int>{});
    EXPECT_FALSE(hurting->is_selected);

    // By the form: "Player clip" is the second box, "Has touch dmg." the one behind the name.
    desktop.form_answers = {{{BRUSH_PROPERTY_COUNT + 1, "1"}}};
    EXPECT_TRUE(AskSpecialSelection(*editor));
    EXPECT_EQ(desktop.forms[0].fields[1].label, "Player clip");
    EXPECT_TRUE(hurting->is_selected);
    EXPECT_FALSE(AskSpecialSelection(*editor));
}

TEST_F(NamedObjectsTest, ParametersEqualTheirTypedValue) {
    EntityParameter p;
    const auto equals = [&p](const char* text) { return DlgSpecialEntSelection::ParamValueEquals(p, text); };
    p.type = EPT_BOOL;
    EXPECT_TRUE(equals("false"));
    EXPECT_FALSE(equals("no"));
    p.type = EPT_INT;
    p.p_int = -5;
    EXPECT_FALSE(equals("-5"));
    p.p_int = 5;
    EXPECT_TRUE(equals("05"));
    p.type = EPT_FLOAT;
    p.p_float = 2.5f;
    EXPECT_FALSE(equals("2.5"));
    p.p_float = 2;
    EXPECT_TRUE(equals("2"));
    p.type = EPT_VECTOR2;
    EXPECT_FALSE(equals("0, 0"));
    p.type = EPT_COLOR;
    p.p_color = MakeColor(1, 2, 3, 4);
    EXPECT_TRUE(equals("1, 2, 3, 4"));
    EXPECT_TRUE(equals("1,2,3,4"));
    EXPECT_FALSE(equals("1,2, 3,4"));
    p.type = EPT_STRING;
    p.p_text = "Door";
    EXPECT_TRUE(equals("dOOR"));
}

TEST_F(NamedObjectsTest, AdvancedEntitySelectionCombinesItsFields) {
    AddEntity("light", "lamp")->GetParameterStr("script")->p_text = "Wait 3\r\n!open GATE 2";
    AddEntity("light")->GetParameterStr("script")->p_text = "Wait gate\nOpen ? 2";
    AddEntity("glow", "lamp");
    DlgSpecialEntSelection dialog;
    EXPECT_EQ(EntityTypes(Level()), (std::vector<std::string>{"All types", "CORONA", "POINT_LIGHT"}));
    const auto selects = [&] {
        dialog.OnOK(*editor);
        std::vector<int> selected(Level().entity_selection.begin(), Level().entity_selection.end());
        dialog = {};
        return selected;
    };
    EXPECT_EQ(selects(), (std::vector<int>{0, 1, 2}));
    dialog.type = "point_light";
    dialog.name = "LAMP";
    EXPECT_EQ(selects(), std::vector<int>{0});
    dialog.value = "256";
    EXPECT_EQ(selects(), (std::vector<int>{0, 1})) << "any parameter of that value";
    dialog.parameter_name = "mood";
    EXPECT_EQ(selects(), (std::vector<int>{0, 1, 2})) << "the name alone is enough";
    dialog.parameter_name = "count";
    dialog.value = "256";
    EXPECT_EQ(selects(), std::vector<int>{});
    EXPECT_EQ(editor->editor_state, ES_SELECTED) << "also when nothing matched";
    dialog.reference = "gate";
    EXPECT_EQ(selects(), std::vector<int>{0}) << "only what stands where an object is named";
    desktop.form_answers = {{{0, "CORONA"}}};
    EXPECT_TRUE(AskSpecialEntSelection(*editor));
    EXPECT_EQ(Level().entity_selection.GetItem(0), 2);
}

// A step that was not kept would let an earlier move be undone on other objects.
TEST_F(NamedObjectsTest, SelectingByContentIsAStep) {
    editor->settings.full_undo = true;
    AddBox()->name = "gate";
    AddBox(100)->properties = BP_LADDER;
    Entity* light = AddEntity("light", "lamp");
    const auto selects = [&](const auto& act) {
        Level().ClearSelection();
        Level().SetBrushSelection(0, true);
        Level().undo_buffer.Empty();
        act();
        EXPECT_FALSE(Level().brush[0]->is_selected && Level().entity_selection.GetItemCount() == 0);
        ASSERT_EQ(Level().undo_buffer.GetActionCount(), 1);
        Level().undo_buffer.UndoLastAction(Level(), Level().redo_buffer);
        EXPECT_TRUE(Level().brush[0]->is_selected);
        EXPECT_EQ(Level().brush_selection.GetItemCount() + Level().entity_selection.GetItemCount(), 1);
    };
    selects([&] {
        DlgSpecialSelection brushes;
        brushes.mask = BP_LADDER;
        brushes.OnOK(*editor);
    });
    selects([&] { DlgSpecialEntSelection().OnOK(*editor); });
    selects([&] {
        DlgNamedObjList list(*editor);
        list.SelectRow(1); // the light
    });
    DlgExtendedSelect types(*editor);
    Level().ClearSelection();
    Level().entity_selection.AddItem(0);
    Level().undo_buffer.Empty();
    types.OnAll(true);
    types.OnHide();
    EXPECT_TRUE(light->is_hidden);
    ASSERT_EQ(Level().undo_buffer.GetActionCount(), 1);
    Level().undo_buffer.UndoLastAction(Level(), Level().redo_buffer);
    EXPECT_FALSE(Level().entity[0]->is_hidden);
    EXPECT_EQ(Level().entity_selection.GetItemCount(), 1);
}

TEST_F(NamedObjectsTest, WhatALevelOffersToChooseFrom) {
    AddBox()->name = "Gate";
    AddBox(100)->name = "none";
    Entity* a = AddEntity("light", "lamp");
    a->GetParameterStr("range")->p_float = 2.5f; // cannot be looked for
    a->GetParameterStr("count")->p_int = -1;     // nor this
    AddEntity("light", "LAMP");
    AddEntity("glow", "arc");
    using Texts = std::vector<std::string>;
    EXPECT_EQ(BrushNames(Level()), Texts{"Gate"});
    EXPECT_EQ(ObjectNames(Level()), (Texts{"arc", "Gate", "lamp"}));
    EXPECT_EQ(EntityNames(Level(), "point_light"), Texts{"lamp"});
    EXPECT_EQ(ParameterNames(Level(), "CORONA"), (Texts{"mood", "range"}));
    EXPECT_EQ(ParameterValues(Level(), "POINT_LIGHT", "range"), Texts{"256"});
    EXPECT_EQ(ParameterValues(Level(), "POINT_LIGHT", "count"), Texts{"3"});
    EXPECT_EQ(ParameterValues(Level(), "POINT_LIGHT", "dynamic"), Texts{"False"});
    EXPECT_EQ(ParameterValues(Level(), "POINT_LIGHT", "color"), Texts{"255, 128, 0, 255"});
    EXPECT_EQ(ParameterValues(Level(), "POINT_LIGHT", "wind"), Texts{});
    EXPECT_EQ(ParameterValues(Level(), DlgSpecialEntSelection::ALL_TYPES, "mood"), (Texts{"1", "calm"}));
}

// --- The script window

TEST_F(ScriptDialogTest, ObjectNamesByType) {
    AddBox()->name = "gate";
    AddBox(100)->name = "Lamp";
    AddEntity("light", "lamp");
    AddEntity("soldier");
    CScriptDialog dialog(*editor, editor->command_syntax.get());
    EXPECT_EQ(dialog.type_filters, (std::vector<std::string>{"____ALL____", "__BRUSHES__", "POINT_LIGHT"}));
    EXPECT_EQ(dialog.object_names, (std::vector<std::string>{"lamp", "gate"})) << "entities first, each name once";
    EXPECT_EQ(dialog.command_names, (std::vector<std::string>{"Open", "Wait"}));
    dialog.SetShowDuplicates(true);
    EXPECT_EQ(dialog.object_names.size(), 3u);
    dialog.type_filter = CScriptDialog::BRUSHES;
    dialog.RefreshNameList(false);
    EXPECT_EQ(dialog.object_names, (std::vector<std::string>{"gate", "Lamp"}));
    EXPECT_TRUE(CScriptDialog(*editor, nullptr).show_duplicates) << "the box is remembered";
}

TEST_F(ScriptDialogTest, TheCheckTellsItsFindings) {
    AddBox()->name = "gate";
    CScriptDialog dialog(*editor, editor->command_syntax.get());
    dialog.SetScript("Open GATE 2\nJump\nWait x\n");
    EXPECT_EQ(dialog.OnParse(), 2);
    ASSERT_EQ(desktop.boxes.size(), 3u);
    EXPECT_EQ(desktop.boxes[0].title + ": " + desktop.boxes[0].text,
              "CheckResult: Unrecognized command \"Jump\" at line 2");
    EXPECT_EQ(desktop.boxes[2].title + ": " + desktop.boxes[2].text, "Check result: Check ended. 2 errors found.");
    desktop.boxes.clear();
    desktop.answers = {MessageAnswer::Cancel};
    EXPECT_EQ(dialog.OnParse(), -1);
    EXPECT_EQ(desktop.boxes.size(), 1u) << "no summary after a cancel";
}

TEST_F(ScriptDialogTest, HelpsAndCompletesAtTheCaret) {
    AddBox()->name = "gate";
    CScriptDialog dialog(*editor, editor->command_syntax.get());
    dialog.SetScript("Wait 1\r\nOpen ga\r\nWait 2");
    ScriptHelp help;
    ASSERT_TRUE(dialog.GetHelp(9, help));
    EXPECT_EQ(help.description, "opens a door");
    EXPECT_EQ(dialog.Complete(15), "te ");
    EXPECT_EQ(dialog.GetScript(), "Wait 1\r\nOpen gate \r\nWait 2");
    EXPECT_EQ(dialog.Complete(3), "");
    EXPECT_EQ(dialog.InsertEntry(0, "Wait"), 5u);
    EXPECT_EQ(dialog.GetScript().substr(0, 11), "Wait Wait 1");
    desktop.file_answer = std::filesystem::current_path().string() + "/Scripts/a.txt";
    dialog.SetScript("x");
    EXPECT_EQ(dialog.InsertFile(1), 15u);
    EXPECT_EQ(dialog.GetScript(), "x\\Scripts\\a.txt");
    CActorScriptDialog().OnCheck();
    EXPECT_EQ(desktop.boxes.back().text, "Pokus o check");
}

// --- One field

TEST_F(SmallDialogsTest, NumbersStayInRange) {
    desktop.form_answers = {{{0, "359"}}, {{0, "77"}}, {{0, "4294967294"}}, {{0, "door"}}};
    EXPECT_TRUE(AskRotationAngle(*editor));
    EXPECT_EQ(editor->settings.rotation_angle, 359);
    EXPECT_EQ(AskCopyCount(), 77);
    EXPECT_EQ(AskObjectID(), 4294967294u);
    EXPECT_EQ(AskObjectID(), std::nullopt);
    EXPECT_EQ(AskCopyCount(), std::nullopt) << "cancelled";
    EXPECT_EQ(desktop.forms[0].fields[0].value, "90") << "starts at the current value";
    EXPECT_EQ(desktop.forms[1].fields[0].most, 30000);
}

TEST_F(SmallDialogsTest, SegmentsRebuildTheSelectedBrush) {
    Brush* prism = AddBox(0, BT_PRISM);
    prism->name = "pillar";
    prism->properties = BP_LADDER;
    const uint32_t id = prism->GetObjectID();
    ASSERT_EQ(prism->surfaces.size(), 8u);
    for (size_t i = 0; i < prism->surfaces.size(); ++i)
        prism->surfaces[i].texture.shift.u = i == 0 ? 1.0f : i == 1 ? 2.0f : 3.0f; // bottom, top, sides
    desktop.form_answers = {{{0, "12"}}, {{0, "12"}}, {{0, "2"}}};
    EXPECT_TRUE(AskSegments(*editor));
    EXPECT_EQ(editor->active_brush_segments, 12u);
    Brush* rebuilt = Level().brush[0].get();
    ASSERT_EQ(rebuilt->surfaces.size(), 14u);
    EXPECT_EQ(rebuilt->GetObjectID(), id);
    EXPECT_EQ(Level().GetBrushFromID(id), rebuilt);
    EXPECT_EQ(rebuilt->name, "pillar");
    EXPECT_EQ(rebuilt->properties, static_cast<uint32_t>(BP_LADDER));
    EXPECT_TRUE(rebuilt->is_selected);
    for (size_t i = 0; i < rebuilt->surfaces.size(); ++i)
        EXPECT_EQ(rebuilt->surfaces[i].texture.shift.u, i == 0 ? 1.0f : i == 1 ? 2.0f : 3.0f) << i;
    EXPECT_EQ(BoxMax(rebuilt->bbox).y, 32);
    EXPECT_TRUE(AskSegments(*editor)) << "unchanged: nothing to do";
    EXPECT_TRUE(AskSegments(*editor));
    EXPECT_EQ(Level().brush[0]->surfaces.size(), 14u) << "two segments make no body";
}

TEST_F(SmallDialogsTest, RebuiltBrushesKeepTheAxisTheyWereDrawnAlong) {
    for (uint32_t view = 0; view < 3; ++view) {
        for (const BrushType type : {BT_PRISM, BT_PYRAMID, BT_CONE, BT_CYLINDER, BT_PATCH, BT_ELASTIC_BOX}) {
            BrushShape shape;
            shape.type = type;
            shape.view = view;
            shape.segment_count = 5;
            shape.bb = MakeBox({0, 0, 0}, {64, 32, 48});
            shape.pivot = {32, 16, 24};
            Level().ClearSelection();
            Brush* b = Level().CreateBrush(shape);
            const auto points = [](const Brush& of) {
                std::vector<D3DVECTOR> all;
                of.ForEachSurface([&all](const Surface& s, int, bool) {
                    all.insert(all.end(), s.vertices.begin(), s.vertices.end());
                });
                return all;
            };
            const std::vector<D3DVECTOR> before = points(*b);
            editor->active_brush_segments = 5;
            ASSERT_TRUE(RebuildBrush(*editor));
            const std::vector<D3DVECTOR> after = points(*b);
            ASSERT_EQ(after.size(), before.size()) << type << " in view " << view;
            for (size_t i = 0; i < after.size(); ++i)
                EXPECT_LT(Magnitude(after[i] - before[i]), 0.01f) << type << " in view " << view;
        }
    }
    AddBox();
    EXPECT_FALSE(RebuildBrush(*editor)) << "a box has no segments";
}
