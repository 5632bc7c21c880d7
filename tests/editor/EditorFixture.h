// The editor without a window: four views of 512 by 512 pixels, the world's origin in the middle of each, zoom 1, grid
// 8, and a desktop whose held keys and dialogs the test answers.
#pragma once

#include <optional>
#include <set>
#include <stdlib.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "editor/Interface.h"
#include "foundation/TempFolder.h"

inline const char* const EDITOR_DEFINITIONS = R"(
#light { #Type <POINT_LIGHT> #TraceType <Trace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) }
#Parameters { FLOAT range = 256.0; } }
#object_point { #Type <PATH_POINT_POS> #TraceType <NoTrace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) } #Parameters { } }
#target_point { #Type <PATH_POINT_TGT> #TraceType <NoTrace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) } #Parameters { } }
)";

class KeyDesktop : public HeadlessDesktop {
public:
    bool IsKeyDown(HeldKey key) const override { return held.count(key) > 0; }
    void SetCursor(CursorRole role) override { cursor = role; }
    void CaptureMouse(bool is_captured) override { captured = is_captured; }
    bool AskForm(FormQuestion& question) override {
        ++forms;
        if (form_answer)
            question.fields[0].value = *form_answer;
        return form_answer.has_value();
    }

    std::set<HeldKey> held;
    std::optional<std::string> form_answer; // nothing: Cancel
    int forms = 0;
    CursorRole cursor = CursorRole::Arrow;
    bool captured = false;
};

class NewsCounter : public EditorListener {
public:
    void ViewChanged(int view) override { views.push_back(view); }
    std::vector<int> views;
};

class EditorTest : public testing::Test {
protected:
    static constexpr int SIDE = 512, MIDDLE = SIDE / 2;

    EditorTest() : current(folder.Path()) {
        setenv("MARROWSTEAD_CONFIG", (folder / "config").c_str(), 1);
        WriteBytes("Marrowstead/entities.def", EDITOR_DEFINITIONS);
        SetDesktop(&desktop);
        editor.emplace();
        editor->store_settings = false;
        editor->entity_parser = std::make_unique<EntityParser>("Marrowstead\\entities.def");
        for (int view = 0; view < VIEW_COUNT; ++view) {
            const int left = view % 2 * SIDE, top = view / 2 * SIDE;
            editor->SetViewRect(view, {left, top, left + SIDE, top + SIDE});
        }
        editor->InitEditor();
        editor->AddListener(news);
    }
    ~EditorTest() override {
        editor.reset();
        SetDesktop(nullptr);
    }

    CInterface& Ed() { return *editor; }
    World& Level() { return *editor->world; }
    Brush& BrushAt(int i) { return *Level().brush[static_cast<size_t>(i)]; }
    Entity& EntityAt(int i) { return *Level().entity[static_cast<size_t>(i)]; }

    // The pixel that shows the point `right`, `up` of an orthographic view at zoom 1.
    static POINT At(int right, int up) { return {MIDDLE + right, MIDDLE - up}; }

    void Move(int view, POINT p, uint32_t flags = 0) {
        Activate(view);
        Ed().MouseMove(flags, p);
    }
    void LeftDown(int view, POINT p, uint32_t flags = 0) {
        Move(view, p, flags);
        Ed().MouseLeftButtonDown(flags, p);
    }
    void LeftUp(POINT p, uint32_t flags = 0) { Ed().MouseLeftButtonUp(flags, p); }
    void RightDown(int view, POINT p, uint32_t flags = 0) {
        Move(view, p, flags);
        Ed().MouseRightButtonDown(flags, p);
    }
    void RightUp(POINT p, uint32_t flags = 0) { Ed().MouseRightButtonUp(flags, p); }
    void Click(int view, POINT p, uint32_t flags = 0) {
        LeftDown(view, p, flags);
        LeftUp(p, flags);
    }
    void RightClick(int view, POINT p, uint32_t flags = 0) {
        RightDown(view, p, flags);
        RightUp(p, flags);
    }
    void Drag(int view, POINT from, POINT to, uint32_t flags = 0) {
        LeftDown(view, from, flags);
        MoveSteps(view, from, to, flags);
        LeftUp(to, flags);
    }
    void RightDrag(int view, POINT from, POINT to, uint32_t flags = 0) {
        RightDown(view, from, flags);
        MoveSteps(view, from, to, flags);
        RightUp(to, flags);
    }
    void MoveSteps(int view, POINT from, POINT to, uint32_t flags = 0) {
        constexpr int STEPS = 8;
        for (int k = 1; k <= STEPS; ++k)
            Move(view, {from.x + (to.x - from.x) * k / STEPS, from.y + (to.y - from.y) * k / STEPS}, flags);
    }
    void Activate(int view) {
        if (Ed().active_view != view)
            Ed().SetActiveView(view);
    }

    bool Undo() { return UndoStep(Level().undo_buffer, Level().redo_buffer); }
    bool Redo() { return UndoStep(Level().redo_buffer, Level().undo_buffer); }
    std::vector<std::string> UndoTexts() {
        std::vector<std::string> texts;
        for (int i = 0; i < Level().undo_buffer.GetActionCount(); ++i)
            texts.push_back(Level().undo_buffer.GetActionDescription(i));
        return texts;
    }

    // A box brush in the level, not selected, as a drag would leave it.
    Brush& AddBox(const D3DVECTOR& min, const D3DVECTOR& max, BrushType type = BT_BOX) {
        BrushShape shape;
        shape.type = type;
        shape.bb = MakeBox(min, max);
        shape.pivot = (min + max) * 0.5f;
        shape.color = {1, 1, 1, 0};
        shape.segment_count = 6;
        Brush& b = *Level().AddBrush(std::make_unique<Brush>(shape));
        b.is_selected = false;
        b.GenerateNewObjectID();
        return b;
    }
    Entity& AddEntity(const char* type, const D3DVECTOR& position) {
        auto e = std::make_unique<Entity>();
        e->str_type = type;
        e->name = type;
        e->model = EM_BOX;
        e->model_size = {8, 8, 8};
        e->position = position;
        Entity& added = *Level().AddEntity(std::move(e));
        added.GenerateNewObjectID();
        return added;
    }
    // Selected as a pick would leave it.
    void SelectBrushes(std::initializer_list<int> brushes) {
        for (const int b : brushes)
            Level().SetBrushSelection(b, true);
        Level().RefreshFirstSelected();
        Ed().UpdateSelectionBox();
    }
    std::vector<int> Brushes() { return {Level().brush_selection.begin(), Level().brush_selection.end()}; }
    std::vector<int> Entities() { return {Level().entity_selection.begin(), Level().entity_selection.end()}; }

    TempFolder folder;
    CurrentFolder current;
    KeyDesktop desktop;
    NewsCounter news;
    std::optional<CInterface> editor;

private:
    bool UndoStep(CUndoBuffer& from, CUndoBuffer& to) {
        Ed().FinishDrag();
        const bool done = from.UndoLastAction(Level(), to);
        Ed().SyncVertexNet();
        return done;
    }
};

using ints = std::vector<int>;

// Scaling leaves the last bits to chance; a step of the grid is far more.
inline void ExpectVector(const D3DVECTOR& actual, const D3DVECTOR& expected, const std::string& what = {}) {
    constexpr float ROUNDING = 0.001f;
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_NEAR(Component(actual, axis), Component(expected, axis), ROUNDING) << what << " axis " << axis;
}
inline void ExpectBox(const Box& box, const D3DVECTOR& min, const D3DVECTOR& max, const std::string& what = {}) {
    ExpectVector(box[7], min, what + " low");
    ExpectVector(box[1], max, what + " high");
}
