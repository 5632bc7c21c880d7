// What the pixels of item buffers tell about a cell: the brushes and portals that its eyes see, and whether it looks out.
#pragma once

#include <cstdint>
#include <vector>

#include "compiler/WorldSubdivide.h"

class CellSight {
public:
    CellSight(int brushes, const std::vector<PORTAL>& world_portals);

    void BeginCell();
    void BeginEye(uint32_t eye_object_id);
    // Pixels of one face, ITEM_BACKGROUND or words of what was drawn. A thing has to cover two pixels of one eye's faces.
    void ReadFace(const std::vector<uint32_t>& pixels, const World& world);
    void AddBrush(int brush) { brush_list.AddItem(brush); }
    bool HasBrush(int brush) const { return brush_list.TestItem(brush) != -1; }
    // Brushes, portals, sides and can_see_outside of the cell.
    void Finish(CELL& cell) const;

    struct Seen {
        uint32_t portal_id;
        int side;
        uint32_t eye_id;
    };
    std::vector<Seen> seen_portals; // by the cell, in the order of finding, once for each face

private:
    const std::vector<PORTAL>& portals;
    std::vector<int> eye_counter;    // by brush: pixels of this eye
    std::vector<uint32_t> noted_face; // by portal: the last face that noted it
    uint32_t face = 0;
    uint32_t eye_id = NO_OBJECT_ID;
    Selection brush_list; // brushes, and the words of portal sides
    bool can_see_outside = false;
};
