#include "editor/LightPreview.h"

#include <utility>

#include "editor/Interface.h"
#include "render/Textures.h"

namespace {

constexpr float VIEW_ANGLE = PI / 2; // of the perspective view's width
constexpr uint32_t DARK = 0x303030;  // what has no light yet

std::vector<Texels> TexturesOf(const World& world) {
    std::vector<Texels> textures;
    for (const MaterialRow& row : world.material) {
        Texels& texels = textures.emplace_back();
        uint32_t width = 0, height = 0;
        if (crTReadPixels(row.texture_index, texels.argb, width, height)) {
            texels.width = static_cast<int>(width);
            texels.height = static_cast<int>(height);
        }
    }
    return textures;
}

PictureCamera CameraOf(const CInterface& interface) {
    const VIEWINFO& view = interface.views.View(VIEW_PERSPECTIVE);
    D3DVECTOR direction, normal, right;
    CInterface::ComputeCameraVectors(view.camera_rotation, direction, normal, right);
    return {view.camera_position, direction, 0, VIEW_ANGLE};
}

} // namespace

LightPreview::LightPreview(const CInterface& interface, int width, int height)
    : textures(TexturesOf(*interface.world)), picture(width, height, CameraOf(interface)) {
    for (const auto& brush : interface.world->brush)
        for (LitMesh& mesh : MeshesOf(*brush)) {
            mesh.lightmap.clear();
            mesh.mesh.colors.assign(mesh.mesh.vertices.size(), DARK);
            mesh.blend = PictureBlend::Opaque;
            taken.push_back(std::move(mesh));
        }
}

LightPreview::LitMesh LightPreview::MeshOf(const Surface& surface) {
    LitMesh lit;
    lit.mesh = {surface.vertices, surface.uv, surface.lightmap_uv, surface.extra_diffuse, surface.tri_indices};
    lit.material = surface.texture.index;
    const auto width = static_cast<int>(surface.lightmap_info.u_size),
               height = static_cast<int>(surface.lightmap_info.v_size);
    if (width < 1 || height < 1 ||
        surface.lightmap_block.size() < static_cast<size_t>(width) * static_cast<size_t>(height))
        return lit;
    lit.width = width;
    lit.height = height;
    for (const uint32_t texel : surface.lightmap_block)
        for (const int shift : {0, 8, 16})
            lit.lightmap.push_back(static_cast<uint8_t>(texel >> shift));
    return lit;
}

std::vector<LightPreview::LitMesh> LightPreview::MeshesOf(const Brush& brush) {
    std::vector<LitMesh> meshes;
    if (brush.IsPortalOrOccluder() || brush.is_hidden)
        return meshes;
    brush.ForEachSurface([&](const Surface& surface, int, bool) {
        if (surface.HasMaterial())
            meshes.push_back(MeshOf(surface));
    });
    return meshes;
}

void LightPreview::Take(const Brush& lit) {
    std::vector<LitMesh> meshes = MeshesOf(lit);
    const std::lock_guard lock(mutex);
    taken.insert(taken.end(), std::make_move_iterator(meshes.begin()), std::make_move_iterator(meshes.end()));
}

bool LightPreview::Draw() {
    std::vector<LitMesh> meshes;
    {
        const std::lock_guard lock(mutex);
        meshes.swap(taken);
    }
    for (const LitMesh& lit : meshes)
        if (lit.material > 0 && static_cast<size_t>(lit.material) < textures.size())
            picture.DrawMesh(lit.mesh, textures[static_cast<size_t>(lit.material)],
                             {lit.width, lit.height, lit.lightmap.empty() ? nullptr : lit.lightmap.data()}, lit.blend);
    return !meshes.empty();
}
