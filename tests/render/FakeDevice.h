// A software device that keeps a record of what is asked of it, and fails what a test wants to fail.
#pragma once

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "render/SoftDevice.h"

class FakeDevice : public SoftDevice {
public:
    explicit FakeDevice(std::string device_name = "Direct3D T&L HAL", std::string driver_name = "Fake")
        : name(std::move(device_name)), driver(std::move(driver_name)) {}

    std::set<std::string> fails; // names of calls
    std::vector<std::string> calls;
    std::vector<VideoMode> modes = {{640, 480, 32, 60}};
    std::vector<DepthFormat> depth_formats = {{16, 0}, {24, 0}, {24, 8}};
    uint32_t last_clear_flags = 0, last_clear_color = 0;
    DepthFormat depth_format;
    std::vector<std::pair<uint32_t, uint32_t>> states; // as sent
    std::vector<std::vector<uint8_t>> drawn;           // the vertices of each draw
    std::vector<uint32_t> drawn_indices;               // of each draw

    int Count(const std::string& call) const { return static_cast<int>(std::count(calls.begin(), calls.end(), call)); }

    std::string DriverName() const override { return driver; }
    std::string Name() const override { return name; }
    std::vector<VideoMode> VideoModes() const override { return modes; }
    std::vector<DepthFormat> DepthFormats() const override { return depth_formats; }

    bool TakeScreen(bool windowed) override { return Call("TakeScreen") && SoftDevice::TakeScreen(windowed); }
    bool SetVideoMode(const VideoMode& mode) override { return Call("SetVideoMode") && SoftDevice::SetVideoMode(mode); }
    bool CreateBackBuffer(uint32_t w, uint32_t h) override {
        return Call("CreateBackBuffer") && SoftDevice::CreateBackBuffer(w, h);
    }
    bool CreateDepthBuffer(const DepthFormat& format) override {
        depth_format = format;
        return Call("CreateDepthBuffer") && SoftDevice::CreateDepthBuffer({format.depth_bits, 0});
    }
    bool Open() override { return Call("Open") && SoftDevice::Open(); }
    bool RestoreSurfaces() override { return Call("RestoreSurfaces") && SoftDevice::RestoreSurfaces(); }
    bool Clear(uint32_t clear_flags, uint32_t color, float depth, uint32_t stencil) override {
        last_clear_flags = clear_flags;
        last_clear_color = color;
        return Call("Clear") && SoftDevice::Clear(clear_flags & ~CLEAR_STENCIL, color, depth, stencil);
    }
    bool BeginScene() override { return Call("BeginScene") && SoftDevice::BeginScene(); }
    bool EndScene() override { return SoftDevice::EndScene() && Call("EndScene"); }
    bool Present(const PixelRectangle& part) override { return Call("Present") && SoftDevice::Present(part); }
    bool SetRenderState(uint32_t index, uint32_t value) override {
        states.emplace_back(index, value);
        return SoftDevice::SetRenderState(index, value);
    }
    bool SetTextureStageState(uint32_t stage, uint32_t type, uint32_t value) override {
        return Call("SetTextureStageState") && SoftDevice::SetTextureStageState(stage, type, value);
    }
    bool SetTexture(uint32_t stage, DeviceSurface* texture) override {
        return Call(texture ? "SetTexture" : "SetTexture none") && SoftDevice::SetTexture(stage, texture);
    }
    bool DrawPrimitive(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count) override {
        Keep(fvf, vertices, vertex_count, 0);
        return Call("DrawPrimitive") && SoftDevice::DrawPrimitive(prim, fvf, vertices, vertex_count);
    }
    bool DrawIndexedPrimitive(PrimType prim, uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count,
                              const uint16_t* indices, uint32_t index_count) override {
        Keep(fvf, vertices, vertex_count, index_count);
        return Call("DrawIndexedPrimitive") &&
               SoftDevice::DrawIndexedPrimitive(prim, fvf, vertices, vertex_count, indices, index_count);
    }

private:
    bool Call(const std::string& call) {
        calls.push_back(call);
        return !fails.contains(call);
    }
    void Keep(uint32_t fvf, const uint8_t* vertices, uint32_t vertex_count, uint32_t index_count) {
        drawn.emplace_back(vertices, vertices + static_cast<size_t>(vertex_count) * MakeFvfLayout(fvf).size);
        drawn_indices.push_back(index_count);
    }

    std::string name, driver;
};
