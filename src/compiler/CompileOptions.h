// The settings of one compile, and the way its progress comes up.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "scene/Brush.h"

class ItemBuffer;

// The words of an item buffer: a brush index, the background, or a portal index with its side.
inline constexpr uint32_t ITEM_BACKGROUND = 0xFFFFFF, ITEM_PORTAL = 0x800000, ITEM_SIDE_1 = 0x400000;

// Sees each face (0 to 5) that an eye (an entity index) of a cell looks at. Called from the workers.
using FaceObserver = std::function<void(int cell, int eye, int face, const ItemBuffer& buffer)>;

// Sees each brush when it has been lit, its lightmaps still being the blocks of its surfaces. Called from the workers.
using LightObserver = std::function<void(const Brush& lit)>;

enum LightingMethod { LIGHTING_NONE = 0, LIGHTING_QUICK = 1, LIGHTING_RAYTRACED = 2 };

struct CompileOptions {
    int lighting_method = LIGHTING_QUICK;
    int lightmap_detail = 0;           // 0 low, 1 medium, 2 high
    int voxel_size = 128;              // side of the item buffer, pixels
    bool clip_box_compilation = false; // only what touches the clip box
    bool smooth_shadows = false;       // two by two samples a texel
    bool subdivide_world = false;      // cells and portals
    bool save_finalmap = false;        // collision geometry for brushes that are not dynamic, too
    bool create_render_groups = false; // merge small brushes
    Box clip_box{};
    int threads = 0;            // 0: all cores
    FaceObserver face_observer; // may be empty, as the next
    LightObserver light_observer;
    uint32_t traceing_id = NO_OBJECT_ID; // the entity whose way into the cells goes to the trace log
};

class CompileProgress {
public:
    virtual ~CompileProgress() = default;

    virtual void AddText(const std::string&) {} // adds no line end
    virtual void InitProgress(int) {}           // range 0 to n, position 0
    virtual void IncrementProgress(int) {}
    virtual bool CompilationCancelled() { return false; }
};
