// The decal tool. Each edit is one step of full undo; what is dragged is one until the button rises.
#include "editor/Interface.h"
#include "foundation/Desktop.h"

void CInterface::DecalLeftButton(bool shift, bool control, bool alt, POINT point) {
    EndDragRecord();
    SetMatrices(VIEW_PERSPECTIVE);
    const D3DVECTOR eye = EyePosition();
    if (shift) {
        world->SelectDecal(point, eye, control);
        return;
    }
    if (alt) {
        if (world->decal_selection.GetItemCount() != 1) {
            GetDesktop().Notice("Select one decal first, with Shift and the left button");
            return;
        }
        const ChangeRecord record(*world, control ? "Copy a decal." : "Move a decal.", ChangeScope::Added);
        if (control)
            world->CopyDecal(point, eye);
        else
            world->MoveDecal(point, eye);
        return;
    }
    if (texture_choice.texture_name.empty()) {
        GetDesktop().Notice("Choose a material for the decal in the texture window first");
        return;
    }
    const ChangeRecord record(*world, "Place a decal.", ChangeScope::Added);
    world->PlaceDecal(point, eye, texture_choice.texture_class, texture_choice.texture_name);
}

void CInterface::SetDecalColor(uint32_t rgb) {
    constexpr uint32_t BYTE = 0xFF;
    EndDragRecord();
    const ChangeRecord record(*world, "Change the color of decals.", ChangeScope::Added);
    world->SetDecalColor(MakeColor(rgb >> 16 & BYTE, rgb >> 8 & BYTE, rgb & BYTE, BYTE));
}

void CInterface::ScaleDecal(int dx, int dy) {
    if (world->decal_selection.GetItemCount() == 0)
        return;
    if (settings.full_undo && !drag_record)
        drag_record = std::make_unique<ChangeRecord>(*world, "Scale decals.", ChangeScope::Added);
    world->ScaleDecal(static_cast<float>(dx), static_cast<float>(dy));
}

void CInterface::RotateDecal(float degrees) {
    EndDragRecord();
    const ChangeRecord record(*world, "Rotate decals.", ChangeScope::Added);
    world->RotateDecal(degrees);
}

void CInterface::DeleteDecals() {
    EndDragRecord();
    const ChangeRecord record(*world, "Delete decals.", ChangeScope::Added);
    world->DeleteDecalSelection();
}
