// The faces of a Box by its corners, clockwise seen from outside, from the corner that is the top left one to a viewer.
#pragma once

#include <cstddef>

// The first three face the viewers of the top, front and left view.
inline constexpr size_t BOX_FACES[6][4] = {{0, 1, 2, 3}, {3, 2, 6, 7}, {2, 1, 5, 6},
                                           {1, 0, 4, 5}, {0, 3, 7, 4}, {7, 6, 5, 4}};
