// The entity page: the tree, the parameter list, typing values, and passing them on to the selected entities.
#include "foundation/Random.h"
#include "pages/MyFileDialog.h"
#include "pages/PagesData.h"
#include "pages/ParameterText.h"
#include "scene/Undo.h"

class EntityPageTest : public PagesTest {
protected:
    EntityDlg& Page() { return pages->entity; }
    const EntityParameter& Parameter(const char* name) { return *Page().SelectedTemplate()->GetParameterStr(name); }
    std::string Text(const char* name, int decimals = LIST_DECIMALS) {
        return ParameterText(Parameter(name), decimals);
    }
};

TEST_F(EntityPageTest, TheTreeIsSortedAndALightIsChosenFirst) {
    ASSERT_EQ(Page().entity_directory.size(), 2u);
    EXPECT_EQ(Page().entity_directory[0].name, "actors");
    ASSERT_EQ(Page().entity_directory[1].templates.size(), 2u);
    EXPECT_EQ(Page().entity_template, (std::vector<std::string>{"glow", "light", "soldier"}));
    EXPECT_EQ(Page().real_entity_template_index, (std::vector<int>{1, 0, 2}));
    EXPECT_EQ(editor->selected_entity, 0);
    EXPECT_EQ(Page().m_entity_type, "Parameters of light:");
    EXPECT_EQ(Page().parameter_lines,
              (std::vector<std::string>{"dynamic = FALSE", "count = 3", "range = 256.00", "pair = 1.00, 2.00",
                                        "wind = 1.00, 2.00, 3.00", "color = 255, 128, 0, 255",
                                        "picture = Textures\\wall\\brick.tga", "script = ", "mood = calm"}));
    EXPECT_TRUE(Page().SelectTemplate("GLOW"));
    EXPECT_EQ(editor->selected_entity, 1);
    EXPECT_FALSE(Page().SelectTemplate("nothing"));
    Page().SelectDirectory();
    EXPECT_EQ(editor->selected_entity, -1);
    EXPECT_TRUE(Page().parameter_lines.empty());
    EXPECT_FALSE(Page().SetParameter("range", "1"));
}

// Names and directories come up again, in other cases too; the sorted lists of the foundation are the second way.
TEST_F(EntityPageTest, TheTreeOfThousandsOfKindsIsThatOfTheSortedLists) {
    RandomMT random;
    random.seedMT(7);
    std::string script;
    for (int i = 0; i < 3000; ++i) {
        std::string name = "a" + std::to_string(random.randomMT() % 2000),
                    directory = "d" + std::to_string(random.randomMT() % 50);
        name[0] = random.randomMT() % 2 ? 'A' : 'a';
        directory[0] = random.randomMT() % 2 ? 'D' : 'd';
        script += "#" + directory + "\\" + name +
                  " #Type <T> #TraceType <T> #EntityLocation <T> #EditorImage { } #Parameters { }\n";
    }
    WriteBytes("Marrowstead/entities.def", script);
    editor->entity_parser = std::make_unique<EntityParser>("Marrowstead\\entities.def");
    Page().OnInitDialog();

    EntityParser& parser = *editor->entity_parser;
    ASSERT_EQ(parser.GetTemplateCount(), 3000);
    StringListClass names(true, true), directories(false, true);
    for (int t = 0; t < parser.GetTemplateCount(); ++t) {
        names.AddString(parser.GetTemplate(t, false)->name);
        directories.AddString(parser.GetTemplate(t, false)->directory);
    }
    ASSERT_EQ(Page().entity_template.size(), 3000u);
    ASSERT_EQ(Page().entity_directory.size(), static_cast<size_t>(directories.GetStringCount()));
    std::vector<std::vector<int>> templates(Page().entity_directory.size());
    for (int i = 0; i < names.GetStringCount(); ++i) {
        int first = 0;
        while (parser.GetTemplate(first, false)->name != names.GetString(i))
            ++first;
        ASSERT_EQ(Page().entity_template[static_cast<size_t>(i)], names.GetString(i));
        ASSERT_EQ(Page().real_entity_template_index[static_cast<size_t>(i)], first);
        templates[static_cast<size_t>(directories.FindString(parser.GetTemplate(first, false)->directory))].push_back(
            i);
    }
    for (size_t d = 0; d < templates.size(); ++d) {
        EXPECT_EQ(Page().entity_directory[d].name, directories.GetString(static_cast<int>(d)));
        EXPECT_EQ(Page().entity_directory[d].templates, templates[d]);
    }
}

TEST_F(EntityPageTest, TypedValuesAreParsedByType) {
    struct Case {
        const char* name;
        const char* typed;
        const char* shown; // null: refused
    };
    for (const Case& c :
         {Case{"dynamic", "true", "TRUE"}, Case{"dynamic", "yes", nullptr}, Case{"count", "-7 apples", "-7"},
          Case{"count", "x", "0"}, Case{"range", "12.345", "12.35"}, Case{"range", "nan", "0.00"},
          Case{"pair", "3, -4.5", "3.00, -4.50"}, Case{"pair", "3 -4.5", "3.00, -4.50"},
          Case{"wind", ".5;1e2/-3", "0.50, 100.00, -3.00"}, Case{"wind", "1", "1.00, 0.00, 0.00"},
          Case{"color", "10,20 30", "10, 20, 30, 0"}, Case{"color", "300, 1, 2, 3", "255, 1, 2, 3"},
          Case{"picture", "a b", "a b"}, Case{"mood", "ANGRY", "angry"}, Case{"mood", "sad", nullptr}}) {
        desktop.boxes.clear();
        const std::string before = Text(c.name);
        EXPECT_EQ(Page().SetParameter(c.name, c.typed), c.shown != nullptr) << c.name << " " << c.typed;
        EXPECT_EQ(Text(c.name), c.shown ? c.shown : before) << c.name << " " << c.typed;
        ASSERT_EQ(desktop.boxes.size(), c.shown ? 0u : 1u);
        if (!c.shown) {
            EXPECT_EQ(desktop.boxes[0].title + ": " + desktop.boxes[0].text, "Marrowstead 2000: Invalid parameter");
        }
    }
    EXPECT_EQ(Parameter("color").p_color, MakeColor(255, 1, 2, 3));
    EXPECT_FALSE(Page().SetParameter("unknown", "1"));
}

TEST_F(EntityPageTest, ValuesArePassedOnToAllSelectedEntities) {
    Entity* light = AddEntity("light");
    Entity* glow = AddEntity("glow");
    Level().entity_selection.AddItem(0);
    editor->SelectionChanged();
    EXPECT_EQ(Page().m_entity_type,
              "Parameters of glow    (id = " + std::to_string(glow->GetObjectID()) + ", the first of 2):");
    ASSERT_TRUE(Page().SetParameter("range", "77.5"));
    EXPECT_EQ(light->FloatParameter("range"), 77.5f);
    EXPECT_EQ(glow->FloatParameter("range"), 77.5f);
    EXPECT_TRUE(editor->project_file_need_save);
    ASSERT_TRUE(Page().SetParameter("mood", "5"));
    EXPECT_EQ(light->GetParameterStr("mood")->p_text, "calm") << "of another type there";

    Level().ClearSelection();
    ASSERT_TRUE(Page().SetParameter("range", "1"));
    EXPECT_EQ(glow->FloatParameter("range"), 77.5f);
    AddEntity("light");
    EXPECT_EQ(Text("range"), "256.00") << "a selected entity's values go into its template";
}

TEST_F(EntityPageTest, AChangeOfValuesIsOneUndoStep) {
    editor->settings.full_undo = true;
    Entity* light = AddEntity("light");
    Level().undo_buffer.Empty();
    ASSERT_TRUE(Page().SetParameter("range", "1"));
    Page().ChangeName("lamp");
    EXPECT_EQ(light->variable_name, "lamp");
    ASSERT_EQ(Level().undo_buffer.GetActionCount(), 2);
    Level().undo_buffer.UndoLastAction(Level(), Level().redo_buffer);
    Level().undo_buffer.UndoLastAction(Level(), Level().redo_buffer);
    EXPECT_EQ(light->variable_name, "none");
    EXPECT_EQ(light->FloatParameter("range"), 256.0f);
    EXPECT_EQ(Text("range"), "256.00") << "the page follows";
}

TEST_F(EntityPageTest, AnotherTemplateConvertsTheSelectionOnYes) {
    Entity* light = AddEntity("light", "lamp");
    ASSERT_TRUE(Page().SetParameter("range", "9"));
    desktop.answers = {MessageAnswer::No};
    EXPECT_TRUE(Page().SelectTemplate("glow"));
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].text,
              "Selected entity(s) is of type \"light\". Do you want to convert it to \"glow\" ?");
    EXPECT_EQ(light->name, "light");
    EXPECT_EQ(editor->selected_entity, 0);
    Page().SelectDirectory();
    EXPECT_EQ(editor->selected_entity, 0) << "directories are ignored while entities are selected";
    EXPECT_TRUE(Page().SelectTemplate("glow")); // yes
    EXPECT_EQ(light->name, "glow");
    EXPECT_EQ(light->variable_name, "lamp");
    EXPECT_EQ(light->FloatParameter("range"), 9.0f);
    EXPECT_EQ(editor->selected_entity, 1);
    EXPECT_EQ(Text("range"), "9.00");
}

TEST_F(EntityPageTest, ActorsGetTheirChoicesFromTheDefinitionFiles) {
    ASSERT_TRUE(Page().SelectTemplate("soldier"));
    EXPECT_EQ(Text("class"), "Special");
    EXPECT_EQ(Text("model_script"), "Vanmur");
    EXPECT_EQ(Text("weapon"), "sig");
    EXPECT_EQ(Parameter("class").constant, (std::vector<std::string>{"Guards", "Special"}));
    EXPECT_EQ(Parameter("model_script").constant, std::vector<std::string>{"cook"});
    EXPECT_EQ(Parameter("weapon").constant, (std::vector<std::string>{"none", "pistol"}));

    ASSERT_TRUE(Page().SetParameter("model_script", "COOK"));
    Entity* soldier = AddEntity("soldier");
    ASSERT_TRUE(Page().SetParameter("class", "guards"));
    EXPECT_EQ(soldier->GetParameterStr("class")->p_text, "Guards");
    EXPECT_EQ(soldier->GetParameterStr("model_script")->p_text, "Vanmur") << "that class lacks the model";
    EXPECT_EQ(Parameter("model_script").constant, (std::vector<std::string>{"captain", "guard"}));
}

TEST_F(EntityPageTest, ChoicesColoursAnglesAndGroups) {
    Page().SelectTemplate("light");
    Page().SelectParameter(0);
    EXPECT_EQ(Page().choices, (std::vector<std::string>{"TRUE", "FALSE"}));
    EXPECT_EQ(Page().choice, 1);
    Page().SelectChoice(0);
    EXPECT_EQ(Text("dynamic"), "TRUE");
    Page().SelectParameter(2);
    EXPECT_EQ(Page().m_parameter, "256.0000");
    EXPECT_EQ(Page().m_helpline, " reach");
    Page().SetAngle(315);
    EXPECT_EQ(Page().m_parameter, "315.0000");
    Page().SelectParameter(6);
    Page().SetAngle(45);
    EXPECT_EQ(Text("picture"), "Textures\\wall\\brick.tga");
    Page().SelectParameter(5);
    desktop.color_answer = 0x0A0B0C;
    Page().OnColor();
    EXPECT_EQ(desktop.asked_color, 0xFF8000u);
    EXPECT_EQ(Text("color"), "10, 11, 12, 255") << "alpha stays";

    Page().SelectTemplate("soldier");
    Page().SelectParameter(3);
    EXPECT_EQ(Page().choices, (std::vector<std::string>{"Player", "Bots"}));
    Page().SelectChoice(1);
    EXPECT_EQ(Text("Group"), "Bots");
    EXPECT_EQ(Parameter("Group").constant, (std::vector<std::string>{"none", "Bots"}));
    pages->ai.OnGroupCreate("Thieves");
    EXPECT_EQ(Page().choices.size(), 3u);
    EXPECT_TRUE(Page().TypeValue("thieves"));
    EXPECT_EQ(Text("Group"), "Thieves");
}

TEST_F(EntityPageTest, ADoubleClickOpensTheEditorOfTheParameter) {
    const auto opens = [this](const char* entity, int parameter) {
        Page().SelectTemplate(entity);
        Page().SelectParameter(parameter);
        return Page().OnDblclkParameterlist();
    };
    EXPECT_EQ(opens("light", 0), ParameterEditor::Toggled);
    EXPECT_EQ(Text("dynamic"), "TRUE");
    EXPECT_EQ(opens("light", 1), ParameterEditor::Text);
    EXPECT_EQ(opens("light", 5), ParameterEditor::Color);
    EXPECT_EQ(opens("light", 6), ParameterEditor::File);
    EXPECT_EQ(opens("light", 7), ParameterEditor::CommandScript);
    EXPECT_EQ(Page().ScriptSyntax(ParameterEditor::CommandScript), editor->command_syntax.get());
    EXPECT_TRUE(Page().TakeScript("Open door\nWait 5"));
    EXPECT_EQ(Text("script"), "Open door\nWait 5");
    EXPECT_EQ(opens("soldier", 4), ParameterEditor::CommandScript) << "OnEnter, of whatever type";
    EXPECT_FALSE(Page().TakeScript("Open door"));
    EXPECT_EQ(Text("OnEnter"), "0");
    EXPECT_EQ(opens("soldier", 5), ParameterEditor::ConditionScript);
    EXPECT_EQ(opens("light", 99), ParameterEditor::None);
}

TEST_F(EntityPageTest, FilesAreLookedForWhereTheirTypeKeepsThem) {
    Page().SelectTemplate("light");
    Page().SelectParameter(6);
    const BrowseRule rule = Page().GetBrowseRule();
    EXPECT_EQ(rule.root, "Textures");
    EXPECT_EQ(rule.pattern, "*.tga");
    EXPECT_EQ(rule.default_dir, "Textures\\wall");
    MyFileDialog files(rule.root, rule.default_dir, rule.pattern);
    ASSERT_EQ(files.folders.size(), 4u);
    EXPECT_EQ(files.folders[1].path, "Textures\\floor");
    EXPECT_EQ(files.folders[static_cast<size_t>(files.selected_folder)].name, "wall");
    ASSERT_EQ(files.files.size(), 2u);
    EXPECT_EQ(files.files[0].place, MyFileDialog::Place::Disk);
    EXPECT_FALSE(files.IsOKEnabled());
    ASSERT_TRUE(files.SelectFile("STONE.tga"));
    EXPECT_TRUE(Page().TakeFile(files.GetSelectedFile()));
    EXPECT_EQ(Text("picture"), "Textures\\wall\\stone.tga");
    files.SetFilePattern("*.mtl");
    EXPECT_TRUE(files.files.empty());
    EXPECT_EQ(files.GetSelectedFile(), "");

    Page().SetParameter("picture", "plain");
    EXPECT_EQ(Page().GetBrowseRule().pattern, "*");
    MyFileDialog whole(".\\", "", "*.def");
    EXPECT_EQ(whole.selected_folder, 0);
    EXPECT_EQ(whole.folders[1].path.find('\\'), std::string::npos);
}

TEST_F(EntityPageTest, SavedTemplatesBringValuesBack) {
    Page().SelectTemplate("light");
    Page().SetParameter("range", "1.5");
    Page().SetParameter("dynamic", "TRUE");
    Page().SetParameter("wind", "7 8 9");
    desktop.form_answers = {{{0, "dim"}}};
    Page().OnSavetemplate();
    ASSERT_EQ(Page().saved_templates, std::vector<std::string>{"dim"});
    EXPECT_EQ(desktop.forms[0].title, "Get template file name:");
    EXPECT_EQ(ReadBytes("Marrowstead/Templates/POINT_LIGHT/dim"),
              "dynamic = TRUE\r\ncount = 3\r\nrange = 1.5000\r\npair = 1.0000, 2.0000\r\nwind = 7.0000, 8.0000, "
              "9.0000\r\ncolor = 255, 128, 0, 255\r\npicture = Textures\\wall\\brick.tga\r\nscript = \r\nmood = "
              "calm\r\n");

    WriteBytes("Marrowstead/Templates/POINT_LIGHT/dim",
               "gone = 5\r\nrange\t=\t 2.5\r\nwind = 4,\t5\r\ndynamic = no\r\n\r\nmood=angry\r\n");
    Entity* light = AddEntity("light");
    Page().LoadSavedTemplate(0);
    EXPECT_EQ(Text("wind"), "4.00, 5.00, 0.00");
    EXPECT_EQ(Text("dynamic"), "FALSE");
    EXPECT_EQ(Text("mood"), "angry");
    EXPECT_EQ(light->GetParameterStr("mood")->p_text, "angry");

    desktop.form_answers = {{{0, "dim"}}, {{0, "dim"}}};
    desktop.answers = {MessageAnswer::No, MessageAnswer::Yes};
    desktop.boxes.clear();
    Page().OnSavetemplate();
    ASSERT_EQ(desktop.boxes.size(), 2u) << "No asks again";
    EXPECT_EQ(desktop.boxes[0].text, "Template with specified name already exists! Do you\nwant to ovewrite it?");
    EXPECT_NE(ReadBytes("Marrowstead/Templates/POINT_LIGHT/dim").find("mood = angry\r\n"), std::string::npos);
    desktop.form_answers = {{{0, "..\\..\\entities.def"}}};
    Page().OnSavetemplate();
    EXPECT_EQ(ReadBytes("Marrowstead/entities.def"), PAGE_DEFINITIONS);
}
