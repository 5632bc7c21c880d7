// What the picking of brushes and of entities shares.
#pragma once

#include "scene/Brush.h"

Box WidenAlongView(Box box, int view); // without bounds in the depth of an orthographic view
