// The four views as receivers of events: they route the mouse to CInterface and hold the perspective camera. Points are
// client pixels.
#pragma once

#include "editor/Interface.h"

struct LibraryPages;

class CEditorView {
public:
    CEditorView(CInterface& editor_interface, int view_number) : view(view_number), interface(editor_interface) {}
    virtual ~CEditorView() = default;

    // flags: MouseFlag bits
    virtual void OnMouseMove(uint32_t flags, POINT point) = 0;
    virtual void OnMouseWheel(uint32_t flags, int delta) = 0; // above 0: away from the user
    virtual void OnLButtonDown(uint32_t flags, POINT point) = 0;
    virtual void OnLButtonUp(uint32_t flags, POINT point) = 0;
    virtual void OnLButtonDblClk(uint32_t, POINT) {}
    virtual void OnMButtonDown(uint32_t, POINT) {}
    virtual void OnMButtonUp(uint32_t, POINT) {}
    virtual void OnRButtonDown(uint32_t flags, POINT point) = 0;
    virtual void OnRButtonUp(uint32_t flags, POINT point) = 0;

    const int view;

protected:
    // The view under the mouse becomes the active one.
    void Activate();
    void ReleaseMouse() const { GetDesktop().CaptureMouse(false); }
    void CaptureMouse() const { GetDesktop().CaptureMouse(true); }
    VIEWINFO& Info() { return interface.View(view); }

    CInterface& interface;
};

// Top, front and left.
class COrthographicView : public CEditorView {
public:
    using CEditorView::CEditorView;

    void OnMouseMove(uint32_t flags, POINT point) override;
    void OnMouseWheel(uint32_t flags, int delta) override;
    void OnLButtonDown(uint32_t flags, POINT point) override;
    void OnLButtonUp(uint32_t flags, POINT point) override;
    void OnMButtonDown(uint32_t flags, POINT point) override;
    void OnMButtonUp(uint32_t flags, POINT point) override;
    void OnRButtonDown(uint32_t flags, POINT point) override;
    void OnRButtonUp(uint32_t flags, POINT point) override;

private:
    bool middle_pushed = false; // the middle button's press pushed a state, which its release pops
};

class CPerspectiveView : public CEditorView {
public:
    CPerspectiveView(CInterface& editor_interface, LibraryPages& library_pages)
        : CEditorView(editor_interface, VIEW_PERSPECTIVE), pages(library_pages) {}

    void OnMouseMove(uint32_t flags, POINT point) override;
    void OnMouseWheel(uint32_t flags, int delta) override;
    void OnLButtonDown(uint32_t flags, POINT point) override;
    void OnLButtonUp(uint32_t flags, POINT point) override;
    void OnLButtonDblClk(uint32_t flags, POINT point) override;
    void OnRButtonDown(uint32_t flags, POINT point) override;
    void OnRButtonUp(uint32_t flags, POINT point) override;

    // The orbit
    void OnCameraRotation();
    void OnRotateLeft() { StepOrbit(1, 0); }
    void OnRotateRight() { StepOrbit(-1, 0); }
    void OnRotateUp() { StepOrbit(0, 1); }
    void OnRotateDown() { StepOrbit(0, -1); }
    void PrepareSpecialRotation();
    void RotateCamera();

    bool camera_moving = false;                       // the right button flies the camera
    bool camera_rotating = false;                     // the left button turns it
    bool scaling_decals = false;                      // the right button with Alt scales the selected decals
    float special_elevation = 0, special_azimuth = 0; // of the orbit, radians
    D3DVECTOR rotation_center, rotation_vector;       // rotation_vector: the camera in orbit space
    POINT oldmouse;

private:
    void StepOrbit(int azimuth_steps, int elevation_steps);
    void FlyCamera(int dx, int dy);
    void TurnCamera(int dx, int dy);
    D3DVECTOR GetSpecialRotationCenter();
    bool CenterCameraToEntity();

    LibraryPages& pages;
};
