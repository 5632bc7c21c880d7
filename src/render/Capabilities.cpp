#include <algorithm>

#include "foundation/Strings.h"
#include "render/Frame.h"
#include "render/Textures.h"

std::forward_list<CR_DDDevice> crvRootDevices;

namespace {

constexpr size_t LONGEST_NAME = 255;

template <class Record, class Member>
void AddIfNew(std::forward_list<Record>& list, Member member, uint32_t value) {
    const auto same = [&](const Record& record) { return record.*member == value; };
    if (std::none_of(list.begin(), list.end(), same))
        list.emplace_front().*member = value;
}

void dd_enum_modes(CR_D3DDevice& d3d, const VideoMode& mode) {
    if (mode.bpp == 8 || mode.bpp == 24)
        return;
    auto known = std::find_if(d3d.modes.begin(), d3d.modes.end(),
                              [&](const CR_DisplayMode& m) { return m.w == mode.w && m.h == mode.h; });
    if (known == d3d.modes.end()) {
        CR_DisplayMode& added = d3d.modes.emplace_front();
        added.w = mode.w;
        added.h = mode.h;
        added.top = &d3d;
        known = d3d.modes.begin();
    }
    AddIfNew(known->depth, &CR_RenderDepth::bpp, mode.bpp);
    AddIfNew(known->refresh, &CR_Refresh::n, mode.refresh);
}

void d3d_enum_callback(CR_DDDevice& dd, Device& device) {
    CR_D3DDevice& d3d = dd.devices.emplace_front();
    d3d.device = &device;
    d3d.top = &dd;
    d3d.name = CutText(device.Name(), LONGEST_NAME);
    d3d.desc = CutText(device.Description(), LONGEST_NAME);
    for (const VideoMode& mode : device.VideoModes())
        dd_enum_modes(d3d, mode);
    for (const DepthFormat& format : device.DepthFormats())
        d3d.zbuffer_formats.push_front({format});
    for (const PixelFormat& format : device.TextureFormats())
        d3d.texture_formats.push_front({format});
}

CR_DDDevice& dd_enum_callback(const std::string& driver) {
    const std::string name = CutText(driver, LONGEST_NAME);
    for (CR_DDDevice& dd : crvRootDevices)
        if (dd.name == name)
            return dd;
    CR_DDDevice& dd = crvRootDevices.emplace_front();
    dd.name = dd.desc = name;
    return dd;
}

} // namespace

void criEnumerate(const std::vector<Device*>& devices) {
    criFreeRootDevices();
    for (Device* const device : devices)
        if (device)
            d3d_enum_callback(dd_enum_callback(device->DriverName()), *device);
}

CR_DDDevice* crGetRootDevice() { return crvRootDevices.empty() ? nullptr : &crvRootDevices.front(); }

void criFreeRootDevices() {
    crvCurDDDevice = nullptr;
    crvCurD3DDevice = nullptr;
    crvRootDevices.clear();
}
