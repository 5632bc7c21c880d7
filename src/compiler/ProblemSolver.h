// What a compile finds wrong with a level that is divided into cells: portals that do not separate two cells, entities
// that no eye sees, entities that must stand in one cell and stand in several. It collects all findings of a run and
// shows them as a tree.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class World;

// A cell that sees one side of a portal.
struct PSPICell {
    int cell_id = -1;
    std::vector<uint32_t> eye_obj_ids; // the eyes that saw it, no duplicates
};

enum PortalVerdict : uint32_t { PORTAL_FINE = 0, PORTAL_MULTIPLE_CELLS = 1, PORTAL_NO_CELL = 2, PORTAL_SAME_CELL = 4 };

// Of the marks that stand behind the number of a portal.
inline constexpr const char* PORTAL_MARKS_LEGEND =
    "Shortcuts behind portal name:\n  [M] - multiple cells\n  [N] - no cell\n  [S] - same cell on both sides";

struct PSPortalItem {
    uint32_t portal_id = 0; // object id of the brush
    std::vector<PSPICell> side_info[2];

    // The conditions are tested in their order, and the last that holds is the verdict.
    PortalVerdict Verdict() const;
};

// An entity that may stand in one cell only, with the cells that hold it.
struct OneCellEntity {
    uint32_t entity_id = 0;
    struct Cell {
        int cell_id = -1;
        std::vector<uint32_t> eye_obj_ids; // in the order of finding, duplicates stay
    };
    std::vector<Cell> cells;
};

// A line of the tree of findings.
struct ProblemItem {
    enum class Kind { Portal, Side, Cell, Eye, Group, Entity };
    Kind kind = Kind::Group;
    std::string text;
    uint32_t object_id = 0xFFFFFFFF; // of a portal, an entity or an eye
    int number = -1;                 // of a side (0 or 1) or a cell
    std::vector<ProblemItem> children;
};

class ProblemSolver {
public:
    void Reset();
    void AddPortalInfo(uint32_t portal_id, int side, int cell_id, uint32_t eye_id);
    void AddWrongEntity(uint32_t entity_id) { wrong_entity_ids.push_back(entity_id); }
    void AddOneCellOnlyEntity(uint32_t entity_id, int cell_id, uint32_t eye_id);

    // True if there are problems; the tree then holds them. Objects that the world no longer knows are passed over.
    bool ShowProblems(const World& world);
    const std::vector<ProblemItem>& Tree() const { return tree; }
    // The tree as text, two blanks a level.
    std::string TreeText() const;
    // And as JSON: object ids, names, types, positions, cells, eyes.
    std::string TreeJson(const World& world) const;

    std::vector<PSPortalItem> portals; // in the order of finding
    std::vector<uint32_t> wrong_entity_ids;
    std::vector<OneCellEntity> one_cell_entities; // in the order of finding; shown by the low 10 bits of their ids

private:
    std::vector<ProblemItem> tree;
};
