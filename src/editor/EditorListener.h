// What the editor tells those who show it: windows, library pages, the script runner. All of it is only news; whoever
// wants a picture, a text or a list asks CInterface for it.
#pragma once

#include <string>

class EditorListener {
public:
    virtual ~EditorListener() = default;

    virtual void ViewChanged(int /*view*/) {} // wants to be drawn, soon
    virtual void StatusChanged(int /*pane*/) {}
    virtual void CursorChanged() {}
    virtual void TitleChanged() {}
    virtual void LayoutChanged() {}        // of the frame's four views
    virtual void LibraryWindowChanged() {} // shown, hidden, another page

    virtual void WorldReplaced() {} // by a new or an opened project
    virtual void SelectionChanged() {}
    virtual void SurfaceSelectionChanged() {} // another surface, material or mapping
    virtual void MaterialPicked(const std::string& /*material_class*/, const std::string& /*material_name*/) {}
    virtual void EntityTypesChanged() {} // entities came or went
    virtual void UndoListsChanged() {}
    virtual void AIGroupsChanged() {}
    virtual void SettingsChanged() {}
    virtual void TerrainToolChanged() {} // it came, went, or its values changed
};
