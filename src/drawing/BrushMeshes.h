// The brushes of a world as meshes that the device keeps: some brushes that follow each other in the world's table
// share one, the selected among them another. A mesh is made anew when one of its brushes has changed, and only then.
#pragma once

#include <memory>
#include <vector>

#include "drawing/BrushRecords.h"
#include "drawing/SolidLook.h"
#include "render/Device.h"
#include "scene/World.h"

struct BrushPart { // what is drawn of one brush in one state
    uint32_t brush = 0;
    SolidKey key; // of solid brushes
    MeshPart range;
    D3DVECTOR min, max; // of the vertices, of wires
};

class BrushMesh {
public:
    struct Member {
        uint32_t index = 0;             // in the world's table
        bool in_order = false;          // all its parts follow each other, as they blend with each other
        uint64_t version = 0, look = 0; // what it was made from
        bool operator==(const Member&) const = default;
    };

    // Makes it anew if need be. Members in the order of the table.
    template <class Build>
    void Update(const std::vector<Member>& wanted, const Build& build) {
        if (wanted == members && device_changes == DeviceChanges())
            return;
        members = wanted;
        device_changes = DeviceChanges();
        MeshData data;
        parts.clear();
        build(members, data, parts);
        Create(std::move(data));
    }
    DeviceMesh* Mesh() const { return mesh.get(); } // null: the device has no room, or there is nothing to draw
    const std::vector<BrushPart>& Parts() const { return parts; }
    static uint32_t Rebuilds() { return rebuilds; } // since the program started
    static uint32_t DeviceChanges();

private:
    void Create(MeshData data);

    std::vector<Member> members;
    std::vector<BrushPart> parts;
    std::unique_ptr<DeviceMesh> mesh;
    uint32_t device_changes = 0;
    static inline uint32_t rebuilds = 0;
};

class BrushMeshes : public KeptDrawing {
public:
    static BrushMeshes& Of(World& world);

    struct Chunk {
        BrushMesh plain, selected;
    };
    static constexpr size_t CHUNK_BRUSHES = 128;

    // As the brushes are now; chunk i holds those from i * CHUNK_BRUSHES on.
    const std::vector<Chunk>& Wire(const World& world);
    const std::vector<Chunk>& Solid(const World& world, const SolidOptions& options);
    const std::vector<BrushRecord>& Records() const { return records.Last(); } // after Wire or Solid

private:
    struct Made { // from what all chunks were made
        uint32_t take = 0, device_changes = 0;
        uint64_t options = 0;
        bool operator==(const Made&) const = default;
    };
    struct Kept {
        std::vector<Chunk> chunks;
        Made made;
    };
    template <class Look, class Build>
    void Update(Kept& kept, const World& world, uint64_t options, const Look& look, const Build& build);

    BrushRecords records;
    Kept wire, solid;
};
