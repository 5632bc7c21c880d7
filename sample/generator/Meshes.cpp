// The meshes of the sample: bodies of revolution with few corners.
#include <algorithm>
#include <cmath>
#include <vector>

#include "Canvas.h"
#include "Sample.h"
#include "files/ChunkFile.h"
#include "foundation/Paths.h"
#include "foundation/Vector.h"
#include "scene/Surface.h"

struct ProfilePoint {
    float radius, height;
};

struct TurnedPart {
    std::string name, material;
    std::vector<D3DVECTOR> vertices, normals;
    std::vector<UVVector> uv;
    std::vector<TRIANGLE> triangles;
};

// The profile turned about the y axis; corners of each quad have a normal of their own, so edges stay sharp.
static TurnedPart Turn(const std::string& name, const std::string& material, const std::vector<ProfilePoint>& profile,
                       int corners) {
    TurnedPart part{name, material, {}, {}, {}, {}};
    const auto point = [corners](const ProfilePoint& p, int k) {
        const float angle = TWO_PI * static_cast<float>(k % corners) / static_cast<float>(corners);
        return D3DVECTOR{p.radius * std::cos(angle), p.height, p.radius * std::sin(angle)};
    };
    for (size_t row = 0; row + 1 < profile.size(); ++row)
        for (int k = 0; k < corners; ++k) {
            const D3DVECTOR quad[4] = {point(profile[row], k), point(profile[row + 1], k),
                                       point(profile[row + 1], k + 1), point(profile[row], k + 1)};
            const D3DVECTOR normal = NormalizeOrZero(CrossProduct(quad[2] - quad[0], quad[3] - quad[1]));
            const auto first = static_cast<uint16_t>(part.vertices.size());
            for (int c = 0; c < 4; ++c) {
                part.vertices.push_back(quad[c]);
                part.normals.push_back(normal);
                part.uv.push_back({c < 2 ? 0.0f : 1.0f, c == 0 || c == 3 ? 1.0f : 0.0f});
            }
            for (const auto& [a, b] : {std::pair<int, int>{1, 2}, {2, 3}})
                part.triangles.push_back({{first, static_cast<uint16_t>(first + a), static_cast<uint16_t>(first + b)}});
        }
    return part;
}

static bool WriteParts(const std::string& path, const std::vector<TurnedPart>& parts) {
    MakeFolders(RealPath(path).parent_path().string());
    UChunkFile file(path, CFM_Create);
    file.CreateChunk("system", 0);
    file.WriteString("made for the sample");
    for (size_t k = 0; k < parts.size(); ++k) {
        const TurnedPart& part = parts[k];
        file.CreateChunk(part.name, static_cast<uint32_t>(k + 1));
        const int32_t info[4] = {4, static_cast<int32_t>(part.vertices.size()),
                                 static_cast<int32_t>(part.triangles.size()), 0};
        file.WriteArray(info, sizeof info);
        std::vector<char> material(260, '\0');
        std::copy(part.material.begin(), part.material.end(), material.begin());
        file.WriteArray(material.data(), material.size());
        file.WriteValues(part.vertices);
        file.WriteValues(part.uv);
        file.WriteValues(part.normals);
        file.WriteValues(part.triangles);
    }
    return file.CloseChunk() && file.CloseChunkFile();
}

// A profile seen from the side, as the prefab page shows it.
static bool PaintThumbnail(const std::string& path, const std::vector<ProfilePoint>& profile) {
    constexpr int SIDE = 64;
    float low = profile.front().height, high = profile.back().height;
    Canvas canvas(SIDE, SIDE);
    canvas.Paint([&](float u, float v) {
        const float margin = 0.08f, height = high - (v - margin) / (1 - 2 * margin) * (high - low);
        const float x = (u - 0.5f) * (high - low) / (1 - 2 * margin);
        for (size_t k = 0; k + 1 < profile.size(); ++k) {
            const ProfilePoint &a = profile[k], &b = profile[k + 1];
            if (height < a.height || height > b.height || a.height == b.height)
                continue;
            const float radius = a.radius + (b.radius - a.radius) * (height - a.height) / (b.height - a.height);
            if (std::fabs(x) > radius)
                continue;
            const float shade = 0.35f + 0.6f * std::sqrt(std::max(0.0f, 1 - x * x / (radius * radius)));
            return Pixel{shade, shade * 0.95f, shade * 0.85f, 1};
        }
        return Pixel{0, 0, 0, 0};
    });
    return canvas.SaveTarga(path, 32);
}

bool MakeMeshes() {
    const std::vector<ProfilePoint> lantern = {{0, -14}, {9, -12}, {10, -8}, {7, -6},
                                               {7, 6},   {11, 9},  {4, 14},  {0, 16}};
    const std::vector<ProfilePoint> pedestal = {{24, 0}, {24, 10}, {18, 14}, {18, 30}, {22, 34}, {0, 34}};
    const std::vector<ProfilePoint> figure = {{16, 34}, {12, 60}, {14, 78}, {6, 84}, {8, 92}, {0, 100}};
    const std::vector<ProfilePoint> body = {{12, 0}, {14, 36}, {6, 56}, {0, 58}};
    const std::vector<ProfilePoint> head = {{0, 56}, {7, 60}, {7, 68}, {0, 72}};
    return PaintThumbnail("Marrowstead\\Brushes\\lights\\lamp_th.tga", lantern) &&
           PaintThumbnail("Marrowstead\\Brushes\\stones\\pedestal_th.tga", pedestal) &&
           WriteParts("Marrowstead\\Brushes\\stones\\pedestal.msh", {Turn("pedestal", "lamp_iron", pedestal, 12)}) &&
           WriteParts("Marrowstead\\Brushes\\lights\\lamp.msh", {Turn("lamp", "lamp_iron", lantern, 8)}) &&
           WriteParts("entities_meshes\\statue.msh",
                      {Turn("pedestal", "stone", pedestal, 4), Turn("figure", "stone", figure, 10)}) &&
           WriteParts("Models\\actors\\guard.msh",
                      {Turn("body", "guard_body", body, 10), Turn("head", "guard_head", head, 8)});
}
