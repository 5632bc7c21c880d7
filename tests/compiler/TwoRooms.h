// A level of two closed rooms side by side and a portal in the doorway between them. Room A lies at negative x.
#pragma once

#include <algorithm>

#include "compiler/Levels.h"
#include "compiler/WorldSubdivide.h"

struct TwoRooms {
    enum Part : int {
        FLOOR_A,
        CEILING_A,
        END_A,
        NORTH_A,
        SOUTH_A,
        FLOOR_B,
        CEILING_B,
        END_B,
        NORTH_B,
        SOUTH_B,
        MIDDLE_NORTH,
        MIDDLE_SOUTH,
        LINTEL,
        DOORWAY,
        CRATE_A,
        CRATE_B
    };

    TestMaterials library;
    World world{&library};
    CompileOptions options;
    CompileProgress silent;
    std::unique_ptr<WorldSubdivide> ws;
    Entity *eye_a, *eye_b, *lamp_a, *lamp_b;

    TwoRooms() {
        library.by_name["glass"].transparent = true;
        AddMaterialRow(world, "wall");
        AddMaterialRow(world, "glass");
        for (const float side : {-1.0f, 1.0f}) {
            AddWall(side, {0, -10, -110}, {210, 0, 110});
            AddWall(side, {0, 100, -110}, {210, 110, 110});
            AddWall(side, {200, 0, -110}, {210, 100, 110});
            AddWall(side, {0, 0, 100}, {210, 100, 110});
            AddWall(side, {0, 0, -110}, {210, 100, -100});
        }
        AddShape(world, BT_BOX, {-5, 0, 20}, {5, 100, 100});
        AddShape(world, BT_BOX, {-5, 0, -100}, {5, 100, -20});
        AddShape(world, BT_BOX, {-5, 60, -20}, {5, 100, 20});
        AddShape(world, BT_PORTAL, {-4, -2, -22}, {4, 62, 22}, 0); // reaches into the walls
        AddShape(world, BT_BOX, {-160, 0, -60}, {-140, 20, -40});
        AddShape(world, BT_BOX, {140, 0, 40}, {160, 20, 60});
        eye_a = &AddEye({-100, 50, 0});
        eye_b = &AddEye({100, 50, 0});
        lamp_a = &AddEntityOf(world, "POINT_LIGHT", {-150, 80, 50});
        lamp_b = &AddEntityOf(world, "POINT_LIGHT", {50, 30, 0}); // in sight of eye A through the doorway
        options.subdivide_world = true;
        options.threads = 1;
    }

    Entity& AddEye(const D3DVECTOR& position) {
        Entity& eye = AddEntityOf(world, "VISIBILITY_EYE", position);
        eye.trace_entity = false;
        return eye;
    }
    Brush& At(Part part) { return *world.brush[part]; }
    int IndexOf(const Entity& entity) const { return world.GetEntityIndex(&entity); }

    // From the boxes of the brushes to the cells of the portals.
    WorldSubdivide& Divide() {
        ws = std::make_unique<WorldSubdivide>(world, options);
        ws->PrepareBrushes();
        ws->tree.BuildOctalTree(world, {});
        std::string message;
        CellTimes times;
        if (ws->CreatePortalsAndEyes(message) == SubdivideResult::Done &&
            ws->CreateCells(silent, times) == SubdivideResult::Done)
            for (int p = 0; p < static_cast<int>(ws->portal.size()); ++p) {
                ws->PortalVisibility(p, 0);
                ws->PortalVisibility(p, 1);
            }
        ws->FindWrongEntities();
        return *ws;
    }
    std::string Problems() { return Divide().problem_solver.ShowProblems(world) ? ws->problem_solver.TreeText() : ""; }

private:
    void AddWall(float side, const D3DVECTOR& min, const D3DVECTOR& max) {
        if (side > 0)
            AddShape(world, BT_BOX, min, max);
        else
            AddShape(world, BT_BOX, {-max.x, min.y, min.z}, {-min.x, max.y, max.z});
    }
};

inline std::vector<int> Sorted(std::vector<int> values) {
    std::sort(values.begin(), values.end());
    return values;
}
