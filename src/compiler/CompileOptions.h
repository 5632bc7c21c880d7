// The settings of one compile, and the way its progress comes up.
#pragma once

#include <string>

#include "scene/Brush.h"

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
    int threads = 0;                   // 0: all cores
};

class CompileProgress {
public:
    virtual ~CompileProgress() = default;

    virtual void AddText(const std::string&) {} // adds no line end
    virtual void InitProgress(int) {}           // range 0 to n, position 0
    virtual void IncrementProgress(int) {}
    virtual bool CompilationCancelled() { return false; }
};
