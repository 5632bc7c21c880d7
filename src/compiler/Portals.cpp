#include <algorithm>
#include <deque>
#include <unordered_map>

#include "compiler/WorldSubdivide.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"

namespace {

constexpr size_t BOX_SIDES = 6, QUAD_CORNERS = 4;

bool IsBoxOfQuads(const Brush& brush) {
    if (brush.surfaces.size() < BOX_SIDES)
        return false;
    return std::all_of(brush.surfaces.begin(), brush.surfaces.begin() + BOX_SIDES, [](const Surface& surface) {
        return surface.vertices.size() >= QUAD_CORNERS && !surface.normal.empty();
    });
}

// The eyes of a world and which of them are linked, either way.
class EyeLinks {
public:
    explicit EyeLinks(const WorldSubdivide& ws) : linked(ws.world.entity.size()) {
        std::unordered_map<uint32_t, int> eye_of_id;
        for (int e = 0; e < ws.world.GetEntityCount(); ++e)
            if (const Entity& entity = *ws.world.entity[static_cast<size_t>(e)];
                entity.IsType("VISIBILITY_EYE") && !ws.IsClipped(entity.position)) {
                eyes.push_back(e);
                eye_of_id.emplace(entity.GetObjectID(), e);
            }
        std::vector<std::vector<int>> linking(linked.size());
        for (const int e : eyes)
            for (const uint32_t id : ws.world.entity[static_cast<size_t>(e)]->linked_objects)
                if (const auto found = eye_of_id.find(id); found != eye_of_id.end()) {
                    linked[static_cast<size_t>(e)].push_back(found->second);
                    linking[static_cast<size_t>(found->second)].push_back(e);
                }
        for (const int e : eyes)
            linked[static_cast<size_t>(e)].insert(linked[static_cast<size_t>(e)].end(),
                                                  linking[static_cast<size_t>(e)].begin(),
                                                  linking[static_cast<size_t>(e)].end());
    }

    std::vector<int> eyes;                // entity indices; with a clip box those inside it
    std::vector<std::vector<int>> linked; // by entity: the eyes it links to, then those that link to it
};

} // namespace

SubdivideResult WorldSubdivide::CreatePortalsAndEyes(std::string& message) {
    portal.clear();
    occluder.clear();
    for (int b = 0; b < world.GetBrushCount(); ++b) {
        const Brush& brush = *world.brush[static_cast<size_t>(b)];
        if (!brush.IsPortalOrOccluder())
            continue;
        if (!IsBoxOfQuads(brush)) {
            NoticeOnce(Format("%s #%d is not a box of six four-sided faces; it was passed over",
                              brush.type == BT_PORTAL ? "portal" : "occluder", static_cast<int>(brush.GetObjectID())));
            continue;
        }
        if (brush.type == BT_PORTAL)
            CreateNewPortal(brush, b);
        else
            CreateNewOccluder(brush, b);
    }
    if (portal.size() > static_cast<size_t>(MAX_PORTALS)) {
        message = Format("The level has more than %d portals: remove some, or join rooms.", MAX_PORTALS);
        return SubdivideResult::LimitReached;
    }
    if (occluder.size() > static_cast<size_t>(MAX_OCCLUDERS)) {
        message = Format("The level has more than %d occluder faces: remove occluders, each has %d.", MAX_OCCLUDERS,
                         static_cast<int>(BOX_SIDES));
        return SubdivideResult::LimitReached;
    }
    if (!PrepareCellEyes()) {
        const int limit = options.clip_box_compilation ? MAX_CELLS - CLIP_BOX_CELLS : MAX_CELLS;
        message = Format("The level has more than %d cells: remove visibility eyes, or link those of one room.", limit);
        return SubdivideResult::LimitReached;
    }
    cell.assign(cell_eye.size(), {});
    return SubdivideResult::Done;
}

// The quad lies midway between the two largest sides that are opposite to each other.
void WorldSubdivide::CreateNewPortal(const Brush& brush, int owner) {
    constexpr size_t PAIRS = BOX_SIDES / 2;
    const auto area = [&brush](size_t side) {
        const std::vector<D3DVECTOR>& v = brush.surfaces[side].vertices;
        return Magnitude(v[1] - v[0]) * Magnitude(v[1] - v[2]);
    };
    size_t largest = 0;
    for (size_t side = 1; side < PAIRS; ++side)
        if (area(side) > area(largest))
            largest = side;
    const Surface &face = brush.surfaces[largest], &opposite = brush.surfaces[largest + PAIRS];
    PORTAL& made = portal.emplace_back();
    made.portalowner = owner;
    made.normal = {face.normal[0], -face.normal[0]};
    const D3DVECTOR half_way = 0.5f * (opposite.vertices[3] - face.vertices[0]);
    for (size_t k = 0; k < QUAD_CORNERS; ++k)
        made.bounds[k] = face.vertices[k] + half_way;
    made.partindices = {{{0, 1, 2, 0, 2, 3}, {2, 1, 0, 3, 2, 0}}};
    made.pivot = brush.pivot;
}

void WorldSubdivide::CreateNewOccluder(const Brush& brush, int owner) {
    for (size_t side = 0; side < BOX_SIDES; ++side) {
        const Surface& face = brush.surfaces[side];
        OCCLUDER& made = occluder.emplace_back();
        std::copy_n(face.vertices.begin(), QUAD_CORNERS, made.bounds.begin());
        made.plane = PLANE(face.vertices[0], face.normal[0]);
        made.owner = owner;
    }
}

bool WorldSubdivide::PrepareCellEyes() {
    const size_t limit = static_cast<size_t>(options.clip_box_compilation ? MAX_CELLS - CLIP_BOX_CELLS : MAX_CELLS);
    const EyeLinks links(*this);
    std::vector<bool> held(world.entity.size());
    cell_eye.clear();
    for (const int first : links.eyes) {
        if (held[static_cast<size_t>(first)])
            continue;
        if (cell_eye.size() == limit)
            return false;
        Selection& eyes = cell_eye.emplace_back();
        for (std::deque<int> working{first}; !working.empty();) {
            const int eye = working.front();
            working.pop_front();
            if (held[static_cast<size_t>(eye)])
                continue;
            held[static_cast<size_t>(eye)] = true;
            eyes.AddItem(eye);
            for (const int other : links.linked[static_cast<size_t>(eye)])
                if (!held[static_cast<size_t>(other)])
                    working.push_back(other);
        }
    }
    return true;
}

std::vector<int32_t> WorldSubdivide::FindCellOccluders(int c) const {
    Selection found;
    for (const int eye : cell_eye[static_cast<size_t>(c)]) {
        const uint32_t eye_id = world.entity[static_cast<size_t>(eye)]->GetObjectID();
        for (size_t o = 0; o < occluder.size(); ++o)
            if (world.brush[static_cast<size_t>(occluder[o].owner)]->HasLinkedObjectID(eye_id))
                found.AddItem(static_cast<int>(o));
    }
    return {found.begin(), found.end()};
}

int WorldSubdivide::GetPortalCell(int index, int side) const {
    for (size_t c = 0; c < cell.size(); ++c)
        for (size_t k = 0; k < cell[c].portals.size(); ++k)
            if (cell[c].portals[k] == index && (side == -1 || cell[c].portalside[k] == side))
                return static_cast<int>(c);
    return -1;
}

bool WorldSubdivide::IsWrongPortal(int index) const {
    int cells[2] = {0, 0};
    for (const CELL& seeing : cell)
        for (size_t k = 0; k < seeing.portals.size(); ++k)
            if (seeing.portals[k] == index)
                ++cells[seeing.portalside[k]];
    return cells[0] > 1 || cells[1] > 1;
}

void WorldSubdivide::PortalVisibility(int index, int side) {
    PORTAL& from = portal[static_cast<size_t>(index)];
    const int c = GetPortalCell(index, side);
    from.cell[static_cast<size_t>(side)] = c;
    std::vector<int32_t>& reached = from.PVP[static_cast<size_t>(side)];
    reached.clear();
    if (c == -1)
        return;
    for (const int32_t p : cell[static_cast<size_t>(c)].portals)
        if (p != index)
            reached.push_back(p);
    std::sort(reached.begin(), reached.end());
}
