// A mesh file, as the display mesh of an entity and as a brush.
#include "definitions/EntityParser.h"
#include "fuzz/FuzzTarget.h"
#include "scene/Brush.h"

FUZZ_TARGET(mesh, bytes) {
    static FuzzFolder folder;
    folder.NextInput("in.msh", bytes);
    LoadMesh("in.msh");
    BrushShape shape;
    shape.type = BT_CUSTOM;
    shape.custom = "in.msh";
    const Brush brush(shape);
}
