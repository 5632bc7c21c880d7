// A game data root with materials, entities, actors and prefabs, the editor over it, and its library pages. The desktop
// answers forms, colours and files from lists.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <memory>
#include <stdlib.h>

#include "editor/Interface.h"
#include "foundation/TempFolder.h"
#include "pages/LibraryPages.h"
#include "render/TestPictures.h"

inline const char* const PAGE_DEFINITIONS = R"(
#lights\light { #Type <POINT_LIGHT> #TraceType <Trace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) }
#Parameters {
BOOL dynamic = FALSE;
INT count = 3;
FLOAT range = 256.0; // reach
VECTOR2 pair = 1 2;
VECTOR3 wind = 1 2 3;
COLOR color = 255 128 0 255;
FILENAME picture = "Textures\wall\brick.tga";
STRING script = "";
CONSTANT mood = calm;
{ calm, angry }
} }
#lights\glow { #Type <CORONA> #TraceType <Trace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) }
#Parameters {
FLOAT range = 5.0;
INT mood = 1;
} }
#actors\soldier { #Type <ACTOR> #TraceType <Trace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) }
#Parameters {
CONSTANT class = x;
{ x }
CONSTANT model_script = x;
{ x }
CONSTANT weapon = x;
{ x }
CONSTANT Group = Bots;
{ none }
INT OnEnter = 0;
STRING conditions = "";
} }
)";

class AnsweringDesktop : public HeadlessDesktop {
public:
    bool AskForm(FormQuestion& question) override {
        forms.push_back(question);
        if (form_answers.empty())
            return false;
        for (const auto& [field, value] : form_answers.front())
            question.fields.at(field).value = value;
        form_answers.pop_front();
        return true;
    }
    std::optional<uint32_t> AskColor(uint32_t rgb) override {
        asked_color = rgb;
        return color_answer;
    }
    std::optional<std::string> AskFile(const FileQuestion&) override { return file_answer; }

    std::deque<std::map<size_t, std::string>> form_answers; // by field; without one the form is cancelled
    std::vector<FormQuestion> forms;                        // as they were asked
    uint32_t asked_color = 0;
    std::optional<uint32_t> color_answer;
    std::optional<std::string> file_answer;
};

class PagesTest : public testing::Test {
protected:
    PagesTest() : current(folder.Path()) {
        setenv("MARROWSTEAD_CONFIG", (folder / "config").c_str(), 1);
        SetDesktop(&desktop);
        WriteMaterial("wall", "brick", TargaBytes(8, 4, 24));
        WriteMaterial("wall", "stone", TargaBytes(16, 16, 24));
        WriteMaterial("wallpaper", "roses", TargaBytes(4, 4, 24));
        WriteMaterial("floor", "oak", TargaBytes(32, 8, 24));
        WriteBytes("Marrowstead/entities.def", PAGE_DEFINITIONS);
        WriteBytes("Scripts/Actors/guard.def", "#General\n{\nMarrowsGroup = Guards;\n}\n");
        WriteBytes("Scripts/Actors/captain.def", "#General\n{\nMarrowsGroup = Guards;\n}\n");
        WriteBytes("Scripts/Actors/cook.def", "#General\n{\nMarrowsGroup = Special;\n}\n");
        WriteBytes("Scripts/Weapons/pistol.def", "");
        WriteBytes("Scripts/ScriptSyntax/commands.def",
                   "#Open\n{\n!desc = \"opens a door\";\ndoor = Object, none, \"which door\";\nspeed = Float, 1.0, "
                   "\"how fast\";\n}\n#Wait\n{\nseconds = Int, 1, \"how long\";\n}\n");
        WriteBytes("Marrowstead/dir_groups.def",
                   "#Groups\n{\nAddGroups = Wall, Empty;\nExpandedGroups = wall;\nCreateMiscGroup = Yes;\n}\n");
        WriteBytes("Marrowstead/mpgames.def", "#Multiplayer Games\n{\nDuel\nTeams\n}\n");
        editor = std::make_unique<CInterface>();
        editor->Init();
        editor->InitEditor();
        pages = std::make_unique<LibraryPages>(*editor);
    }
    ~PagesTest() override {
        pages.reset();
        editor.reset();
        SetDesktop(nullptr);
    }

    static void WriteMaterial(const std::string& folder_name, const std::string& name, const std::string& picture) {
        WriteBytes("Textures/" + folder_name + "/" + name + ".tga", picture);
        WriteBytes("Scripts/Materials/" + folder_name + "/" + name + ".mtl",
                   "#Basic Material Properties\r\n{\r\n\tDIFFUSE_MAP = " + folder_name + "\\" + name +
                       ";\r\n\tBUMP_MAP = plain;\r\n}\r\n");
    }
    World& Level() { return *editor->world; }
    // A box of 64 by 32 by 48; afterwards it alone is selected.
    Brush* AddBox(float x = 0, BrushType type = BT_BOX) {
        BrushShape shape;
        shape.type = type;
        shape.segment_count = 6;
        shape.bb = MakeBox({x, 0, 0}, {x + 64, 32, 48});
        shape.pivot = {x + 32, 16, 24};
        Level().ClearSelection();
        return Level().CreateBrush(shape);
    }
    Entity* AddEntity(const char* definition, const char* name = "none") {
        auto entity = std::make_unique<Entity>(*editor->entity_parser->GetTemplate(definition, false));
        entity->variable_name = name;
        return Level().NewEntityCreated(std::move(entity), 1);
    }
    void SelectSurface(Brush* b, int surface) {
        Level().ClearSelection();
        Level().selected_surface_brush = Level().GetBrushIndex(b);
        b->selected_surface = surface;
        b->selected_surface_curved = false;
        editor->SurfaceSelectionChanged();
    }

    TempFolder folder;
    CurrentFolder current;
    AnsweringDesktop desktop;
    std::unique_ptr<CInterface> editor;
    std::unique_ptr<LibraryPages> pages;
};
