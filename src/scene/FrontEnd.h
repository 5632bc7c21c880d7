// What the scene tells the editor's front end. Without one nothing happens, so that every room runs alone.
#pragma once

#include "foundation/Vector.h"

class FrontEnd {
public:
    virtual ~FrontEnd() = default;

    virtual void MarkFileAsDirty(bool) {} // the project has changes that are not saved
    virtual void RedrawView(int) {}       // 0 top, 1 front, 2 left, 3 perspective
    virtual void RedrawAllViews() {}
    virtual void SelectionChanged() {}
    virtual void SurfaceSelectionChanged() {} // another surface, material or mapping
    virtual void SetLastEntityPosition(const D3DVECTOR&) {}
    virtual bool IsClipActive() const { return false; }
};

FrontEnd& GetFrontEnd();
void SetFrontEnd(FrontEnd* front_end); // null: none
