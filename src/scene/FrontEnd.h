// What the scene tells the editor's front end, and the little that it asks of it. Without a front end nothing happens
// and the defaults stand, so that every room runs alone.
#pragma once

#include <string>

#include "foundation/Vector.h"

class FrontEnd {
public:
    virtual ~FrontEnd() = default;

    // Told
    virtual void MarkFileAsDirty(bool) {} // the project has changes that are not saved
    virtual void RedrawView(int) {}       // 0 top, 1 front, 2 left, 3 perspective
    virtual void RedrawAllViews() {}
    virtual void SelectionChanged() {}
    virtual void SurfaceSelectionChanged() {} // another surface, material or mapping
    virtual void MaterialPicked(const std::string& /*material_class*/, const std::string& /*material_name*/) {}
    virtual void EntityTypesChanged() {} // entities came or went
    virtual void CountsChanged() {}      // of brushes and entities
    virtual void UndoListsChanged() {}
    virtual void SetLastEntityPosition(const D3DVECTOR&) {}
    virtual void SelectionRestored(bool /*something_selected*/) {} // by an undo step: the state follows
    virtual void RefreshSelectionBox() {}                          // the selection, or what it holds, has moved

    // Asked
    virtual bool IsClipActive() const { return false; }
    virtual bool IsTextureLocked() const { return true; } // textures follow moved surfaces
    virtual bool IsShiftDown() const { return false; }
    virtual D3DVECTOR SelectionPivot() const { return {}; }
    virtual int UndoStates() const { return 20; }
    virtual bool IsFullUndo() const { return false; }
};

FrontEnd& GetFrontEnd();
void SetFrontEnd(FrontEnd* front_end); // null: none
