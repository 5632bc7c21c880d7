#include "pages/NamedObjects.h"

#include <algorithm>

#include "editor/Interface.h"
#include "foundation/Strings.h"

namespace {

bool IsNoName(const std::string& name) { return name.empty() || EqualNoCase(name, "none"); }

std::string Line(const std::string& name, const std::string& type, NamedObjListSort method) {
    return method == NOLSM_Name ? name + " [" + type + "]" : type + " [" + name + "]";
}

} // namespace

void ShowNewSelection(CInterface& editor) {
    editor.SelectionChanged();
    editor.UpdateSelectionBox();
    editor.ChangeCursor();
    editor.RedrawAllViews();
}

std::string ToUpper(const std::string& text) {
    std::string upper = text;
    for (char& c : upper)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return upper;
}

DlgNamedObjList::DlgNamedObjList(CInterface& controller) : editor(controller) { UpdateList(last_sort_method); }

void DlgNamedObjList::AddItem(std::string text, uint32_t object_id) {
    if (m_filter.empty() || ToUpper(text).find(ToUpper(m_filter)) != std::string::npos)
        items.push_back({std::move(text), object_id});
}

void DlgNamedObjList::UpdateList(NamedObjListSort method) {
    last_sort_method = method;
    items.clear();
    const World& world = *editor.world;
    for (const auto& b : world.brush)
        if (!ignore_no_name || !IsNoName(b->name))
            AddItem(Line(b->name, "BRUSH", method), b->GetObjectID());
    for (const auto& e : world.entity)
        if (!ignore_no_name || !IsNoName(e->variable_name))
            AddItem(Line(e->variable_name, ToUpper(e->str_type), method), e->GetObjectID());
    std::stable_sort(items.begin(), items.end(),
                     [](const ObjListItem& a, const ObjListItem& b) { return CompareNoCase(a.text, b.text) < 0; });
}

void DlgNamedObjList::SelectRow(int row) {
    if (row < 0 || static_cast<size_t>(row) >= items.size())
        return;
    const uint32_t id = items[static_cast<size_t>(row)].object_id;
    World& world = *editor.world;
    Entity* e = world.GetEntityFromID(id);
    Brush* b = e ? nullptr : world.GetBrushFromID(id);
    if (!e && !b)
        return; // it has gone since the list was made
    const ChangeRecord record(world, "Select a named object.");
    world.ClearSelection();
    if (e)
        world.entity_selection.AddItem(world.GetEntityIndex(e));
    else
        world.SetBrushSelection(world.GetBrushIndex(b), true);
    world.first_selected_id = id;
    ShowNewSelection(editor);
}
