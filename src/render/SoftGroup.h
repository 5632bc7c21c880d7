// Meshes that the software device draws together: first all vertices come to the screen, then band after band of rows
// is filled, either on all cores. The pixels are those of drawing one mesh after the other.
#pragma once

#include <deque>
#include <memory>
#include <vector>

#include "render/SoftVertices.h"

class SoftMesh : public DeviceMesh {
public:
    explicit SoftMesh(MeshData mesh_data) : data(std::move(mesh_data)), vertex_size(MakeFvfLayout(data.fvf).size) {}

    const MeshData data;
    const uint32_t vertex_size;
};

class SoftGroup {
public:
    // The mesh stays until Draw; the target is what may be touched.
    void Add(const SoftState& state, const SoftTarget& target, const SoftMesh& mesh, std::span<const MeshPart> parts);
    // The same of a mesh that the group keeps until then.
    void AddOwn(const SoftState& state, const SoftTarget& target, MeshData data);
    bool IsEmpty() const { return pieces.empty(); }
    void Draw(); // all, and empties the group

private:
    static constexpr int BAND_ROWS = 32; // a multiple of the squares of the coarse depth
    static constexpr int MOST_BANDS = static_cast<int>(LONGEST_SCREEN_SIDE) / BAND_ROWS;

    struct Setting {
        SoftState state;
        SoftTarget target;
        uint32_t coordinate_sets; // that its pixels need
    };
    struct Piece {
        uint32_t setting; // index
        const SoftMesh* mesh;
        MeshPart part;
    };
    struct Shape { // 1 corner: a point, 2: a line; else a polygon
        uint32_t setting;
        int32_t count;
        SoftRaster::Extent extent;    // of a polygon
        const SoftVertex* corners[3]; // of more, the first of an array
    };
    struct Slice { // some pieces on the screen
        size_t first_piece = 0, end_piece = 0, vertex_count = 0;
        SoftScratch memory;
        std::vector<Shape> shapes;
        std::vector<SoftRaster::OneColorLine> lines;
        std::vector<uint32_t> bands[MOST_BANDS]; // what may show there, of shapes
        std::deque<std::vector<SoftVertex>> cut;
    };
    static constexpr uint32_t FLAT_LINE = 0x80000000; // in the number of a shape: it is a line of one colour
    struct Waiting {                                  // a polygon that is not drawn yet
        const Shape* shape;
        uint32_t told; // its place among the shapes of the band
    };
    struct Worker { // memory that it keeps from band to band
        SoftShades shades;
        std::vector<Waiting> waiting, sorted;
    };
    class Recorder;
    class Band;

    uint32_t SettingOf(const SoftState& state, const SoftTarget& target);
    size_t MakeSlices(); // their number
    void Place(Slice& slice);
    void FillBand(int band, Worker& worker) const;

    std::vector<std::unique_ptr<Setting>> settings;
    std::vector<Piece> pieces;
    std::vector<std::unique_ptr<SoftMesh>> own_meshes;
    std::vector<Slice> slices; // the first slice_count in use
    size_t slice_count = 0;
    std::vector<Worker> workers;
};
