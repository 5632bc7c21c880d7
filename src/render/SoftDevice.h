// A device in plain memory: always there, the same on every machine.
#pragma once

#include "render/Device.h"

class SoftDevice : public Device {
public:
    // In this order: X8R8G8B8, R8G8B8, R5G6B5, A8R8G8B8, A4R4G4B4, A8, L6V5U5.
    const std::vector<PixelFormat>& TextureFormats() const override;
    uint32_t MaxTextureSize() const override { return 4096; }
    bool SupportsCubeMaps() const override { return true; }
    std::unique_ptr<DeviceSurface> CreateTexture(const TextureDescription& description) override; // zeroed pixels
};
