#include "scene/ViewFrame.h"

#include <algorithm>

#include "render/Matrix.h"
#include "scene/Brush.h"

namespace {

// By view: the old corner that becomes each new corner, and the matrix from the frame to the world.
struct View {
    size_t corner[8];
    D3DMATRIX to_world;
};
const View VIEWS[] = {
    {{0, 1, 2, 3, 4, 5, 6, 7}, {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}}},
    {{3, 2, 6, 7, 0, 1, 5, 4}, {{{1, 0, 0, 0}, {0, 0, 1, 0}, {0, 1, 0, 0}, {0, 0, 0, 1}}}},
    {{2, 1, 5, 6, 3, 0, 4, 7}, {{{0, 0, 1, 0}, {1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 1}}}},
};

D3DVECTOR IntoFrame(uint32_t view, const D3DVECTOR& p) {
    return view == 1 ? D3DVECTOR{p.x, p.z, p.y} : view == 2 ? D3DVECTOR{p.z, p.x, p.y} : p;
}

} // namespace

ViewFrame::ViewFrame(Brush& owner, uint32_t view_number)
    : brush(owner), view(view_number < std::size(VIEWS) ? view_number : 0), saved_pivot(owner.pivot) {
    std::copy(brush.bbox.begin(), brush.bbox.end(), saved_box);
    for (size_t c = 0; c < brush.bbox.size(); ++c)
        brush.bbox[c] = IntoFrame(view, saved_box[VIEWS[view].corner[c]]);
    brush.pivot = IntoFrame(view, saved_pivot);
}

void ViewFrame::Leave() {
    const D3DMATRIX& to_world = VIEWS[view].to_world;
    brush.ForEachSurface([&to_world](Surface& s, int, bool) {
        for (std::vector<D3DVECTOR>* points : {&s.vertices, &s.cp})
            for (D3DVECTOR& p : *points)
                crMTransform(to_world, p, p);
    });
    std::copy(std::begin(saved_box), std::end(saved_box), brush.bbox.begin());
    brush.pivot = saved_pivot;
}
