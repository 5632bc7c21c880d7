#include "compiler/CellSight.h"

#include <algorithm>

namespace {

constexpr int EYE_COUNTER_LIMIT = 1;        // pixels that do not count yet
constexpr int OUTSIDE_BACKGROUND = 1024;    // pixels of one face, likewise
constexpr uint32_t PORTAL_INDEX = 0x3FFFFF; // of a portal's word

} // namespace

CellSight::CellSight(const WorldSubdivide& subdivision)
    : ws(subdivision), eye_counter(subdivision.world.brush.size()), noted_face(subdivision.portal.size()) {}

void CellSight::BeginCell() {
    brush_list.ClearList();
    can_see_outside = false;
}

void CellSight::BeginEye(uint32_t eye_object_id) {
    eye_id = eye_object_id;
    std::fill(eye_counter.begin(), eye_counter.end(), 0);
}

void CellSight::ReadFace(const std::vector<uint32_t>& pixels, std::vector<PortalFinding>& found) {
    ++face;
    int background = 0;
    for (const uint32_t word : pixels) {
        if (word == ITEM_BACKGROUND)
            ++background;
        else if (word & ITEM_PORTAL)
            SeePortal(word, found);
        else if (word < eye_counter.size() && ++eye_counter[word] == EYE_COUNTER_LIMIT + 1)
            brush_list.AddItem(static_cast<int>(word));
    }
    if (background > OUTSIDE_BACKGROUND)
        can_see_outside = true;
}

void CellSight::SeePortal(uint32_t word, std::vector<PortalFinding>& found) {
    const uint32_t index = word & PORTAL_INDEX;
    if (index >= ws.portal.size())
        return;
    const auto owner = static_cast<size_t>(ws.portal[index].portalowner);
    if (++eye_counter[owner] <= EYE_COUNTER_LIMIT)
        return;
    if (noted_face[index] != face) {
        noted_face[index] = face;
        found.push_back({ws.world.brush[owner]->GetObjectID(), word & ITEM_SIDE_1 ? 1 : 0, eye_id});
    }
    brush_list.AddItem(static_cast<int>(word));
}

void CellSight::Finish(CELL& cell) const {
    Selection portals;
    for (const int item : brush_list) {
        const auto word = static_cast<uint32_t>(item);
        if (!(word & ITEM_PORTAL)) {
            cell.objects.push_back(item);
            continue;
        }
        portals.AddItem(static_cast<int>(word & PORTAL_INDEX));
        cell.portalside.push_back(word & ITEM_SIDE_1 ? 1 : 0);
    }
    cell.portals.assign(portals.begin(), portals.end());
    cell.can_see_outside = can_see_outside;
}
