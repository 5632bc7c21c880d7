// A mesh file, as the display mesh of an entity, as that of an actor, and as a brush.
#include "definitions/EntityParser.h"
#include "fuzz/FuzzTarget.h"
#include "scene/Brush.h"

FUZZ_TARGET(mesh, bytes) {
    static FuzzFolder folder;
    folder.NextInput("Models/in.msh", bytes);
    WriteBytes("actor.def", "#General\n{\nModel = in.msh\n}\n#Skin\n{\nHead = head.mtl\n}\n");
    for (const auto& mesh : {LoadMesh("Models\\in.msh"), LoadActor("actor.def")})
        if (mesh)
            for (const MeshSurface& surface : mesh->surfaces)
                for (const TRIANGLE& triangle : surface.tri_indices)
                    for (const uint16_t i : triangle.i)
                        Require(i < surface.vertices.size() && surface.uv.size() == surface.vertices.size() &&
                                    surface.normals.size() == surface.vertices.size(),
                                "a triangle has its corners");
    BrushShape shape;
    shape.type = BT_CUSTOM;
    shape.custom = "Models\\in.msh";
    const Brush brush(shape);
}
