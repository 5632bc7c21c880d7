// What the pixels of item buffers tell about a cell: the brushes and portals that its eyes see, and whether it looks
// out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "compiler/WorldSubdivide.h"

// An eye saw a side of a portal; an entity that may stand in one cell only was found by an eye. By object ids.
struct PortalFinding {
    uint32_t portal_id;
    int side;
    uint32_t eye_id;
    bool operator==(const PortalFinding&) const = default;
};
struct OneCellFinding {
    uint32_t entity_id, eye_id;
};

// What the work on one cell found, put together in cell order once all are done.
struct CellFindings {
    std::vector<PortalFinding> portals;
    std::vector<OneCellFinding> one_cell_entities;
    std::vector<int32_t> entities;
    std::vector<std::string> log; // lines of the traced entity
    CellTimes times;
};

class CellSight {
public:
    explicit CellSight(const WorldSubdivide& subdivision);

    void BeginCell();
    void BeginEye(uint32_t eye_object_id);
    // Pixels of one face, ITEM_BACKGROUND or words of what was drawn. A thing has to cover two pixels of one eye's
    // faces. found takes the portal sides, once for each face.
    void ReadFace(const std::vector<uint32_t>& pixels, std::vector<PortalFinding>& found);
    void AddBrush(int brush) { brush_list.AddItem(brush); }
    bool HasBrush(int brush) const { return brush_list.TestItem(brush) != -1; }
    // Brushes, portals, sides and can_see_outside of the cell.
    void Finish(CELL& cell) const;

private:
    void SeePortal(uint32_t word, std::vector<PortalFinding>& found);

    const WorldSubdivide& ws;
    std::vector<int> eye_counter;     // by brush: pixels of this eye
    std::vector<uint32_t> noted_face; // by portal: the last face that noted it
    uint32_t face = 0;
    uint32_t eye_id = NO_OBJECT_ID;
    Selection brush_list; // brushes, and the words of portal sides
    bool can_see_outside = false;
};
