#include "compiler/ProblemSolver.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "foundation/Strings.h"
#include "scene/World.h"

namespace {

using nlohmann::ordered_json;

constexpr uint32_t ONE_CELL_BUCKETS = 1024;

// The list of a cell, made at its end when it is new.
template <class Cell>
std::vector<uint32_t>& EyesOf(std::vector<Cell>& cells, int cell_id) {
    for (Cell& cell : cells)
        if (cell.cell_id == cell_id)
            return cell.eye_obj_ids;
    return cells.emplace_back(Cell{cell_id, {}}).eye_obj_ids;
}

std::string TypeText(const Entity& entity) {
    std::string text = ToLower(entity.str_type);
    std::replace(text.begin(), text.end(), '_', ' ');
    return text;
}

ProblemItem MakeItem(ProblemItem::Kind kind, std::string text) {
    ProblemItem item;
    item.kind = kind;
    item.text = std::move(text);
    return item;
}

template <class Cell>
void InsertCells(ProblemItem& parent, const std::vector<Cell>& cells) {
    for (const Cell& cell : cells) {
        ProblemItem& item =
            parent.children.emplace_back(MakeItem(ProblemItem::Kind::Cell, Format("Cell #%d", cell.cell_id)));
        item.number = cell.cell_id;
        for (const uint32_t eye : cell.eye_obj_ids) {
            ProblemItem& leaf =
                item.children.emplace_back(MakeItem(ProblemItem::Kind::Eye, Format("Eye #%d", static_cast<int>(eye))));
            leaf.object_id = eye;
        }
    }
}

ProblemItem PortalProblem(const PSPortalItem& portal, PortalVerdict verdict) {
    const char* mark = verdict == PORTAL_MULTIPLE_CELLS ? "[M]" : verdict == PORTAL_NO_CELL ? "[N]" : "[S]";
    ProblemItem item =
        MakeItem(ProblemItem::Kind::Portal, Format("Portal #%d - %s", static_cast<int>(portal.portal_id), mark));
    item.object_id = portal.portal_id;
    for (int side = 0; side < 2; ++side) {
        ProblemItem& info = item.children.emplace_back(MakeItem(ProblemItem::Kind::Side, Format("Side %d", side + 1)));
        info.number = side;
        InsertCells(info, portal.side_info[side]);
    }
    return item;
}

ProblemItem EntityItem(const Entity& entity, const std::string& text) {
    ProblemItem item = MakeItem(ProblemItem::Kind::Entity, text);
    item.object_id = entity.GetObjectID();
    return item;
}

void AppendText(const std::vector<ProblemItem>& items, int depth, std::string& text) {
    for (const ProblemItem& item : items) {
        text += std::string(static_cast<size_t>(depth) * 2, ' ') + item.text + "\n";
        AppendText(item.children, depth + 1, text);
    }
}

ordered_json Position(const D3DVECTOR& p) { return {p.x, p.y, p.z}; }

// What a designer needs to find an object.
ordered_json ObjectJson(const World& world, uint32_t id) {
    ordered_json json = {{"id", id}};
    if (const Entity* entity = world.GetEntityFromID(id)) {
        json["type"] = entity->str_type;
        json["name"] = entity->variable_name;
        json["position"] = Position(entity->position);
    } else if (const Brush* brush = world.GetBrushFromID(id)) {
        json["name"] = brush->name;
        json["position"] = Position(brush->pivot);
    }
    return json;
}

template <class Cell>
ordered_json CellsJson(const World& world, const std::vector<Cell>& cells) {
    ordered_json json = ordered_json::array();
    for (const Cell& cell : cells) {
        ordered_json eyes = ordered_json::array();
        for (const uint32_t eye : cell.eye_obj_ids)
            eyes.push_back(ObjectJson(world, eye));
        json.push_back({{"cell", cell.cell_id}, {"eyes", eyes}});
    }
    return json;
}

} // namespace

PortalVerdict PSPortalItem::Verdict() const {
    PortalVerdict verdict = PORTAL_FINE;
    if (side_info[0].size() > 1 || side_info[1].size() > 1)
        verdict = PORTAL_MULTIPLE_CELLS;
    if (side_info[0].empty() || side_info[1].empty())
        verdict = PORTAL_NO_CELL;
    else if (side_info[0][0].cell_id == side_info[1][0].cell_id)
        verdict = PORTAL_SAME_CELL;
    return verdict;
}

void ProblemSolver::Reset() { *this = {}; }

void ProblemSolver::AddPortalInfo(uint32_t portal_id, int side, int cell_id, uint32_t eye_id) {
    auto item = std::find_if(portals.begin(), portals.end(),
                             [portal_id](const PSPortalItem& p) { return p.portal_id == portal_id; });
    if (item == portals.end()) {
        portals.emplace_back().portal_id = portal_id;
        item = portals.end() - 1;
    }
    std::vector<uint32_t>& eyes = EyesOf(item->side_info[side != 0 ? 1 : 0], cell_id);
    if (std::find(eyes.begin(), eyes.end(), eye_id) == eyes.end())
        eyes.push_back(eye_id);
}

void ProblemSolver::AddOneCellOnlyEntity(uint32_t entity_id, int cell_id, uint32_t eye_id) {
    auto entity = std::find_if(one_cell_entities.begin(), one_cell_entities.end(),
                               [entity_id](const OneCellEntity& e) { return e.entity_id == entity_id; });
    if (entity == one_cell_entities.end()) {
        one_cell_entities.emplace_back().entity_id = entity_id;
        entity = one_cell_entities.end() - 1;
    }
    EyesOf(entity->cells, cell_id).push_back(eye_id);
}

bool ProblemSolver::ShowProblems(const World& world) {
    tree.clear();
    bool problems = false;
    for (const PSPortalItem& portal : portals)
        if (const PortalVerdict verdict = portal.Verdict(); verdict != PORTAL_FINE) {
            problems = true;
            tree.push_back(PortalProblem(portal, verdict));
        }
    ProblemItem wrong = MakeItem(ProblemItem::Kind::Group, "Wrong entities");
    for (const uint32_t id : wrong_entity_ids) {
        problems = true;
        if (const Entity* entity = world.GetEntityFromID(id))
            wrong.children.push_back(EntityItem(
                *entity, Format("Entity #%d (%s at %1.2f,%1.2f,%1.2f)", static_cast<int>(id), TypeText(*entity).c_str(),
                                static_cast<double>(entity->position.x), static_cast<double>(entity->position.y),
                                static_cast<double>(entity->position.z))));
    }
    ProblemItem one_cell = MakeItem(ProblemItem::Kind::Group, "Wrong one cell entities");
    std::vector<const OneCellEntity*> by_bucket;
    for (const OneCellEntity& entity : one_cell_entities)
        by_bucket.push_back(&entity);
    std::stable_sort(by_bucket.begin(), by_bucket.end(), [](const OneCellEntity* a, const OneCellEntity* b) {
        return a->entity_id % ONE_CELL_BUCKETS < b->entity_id % ONE_CELL_BUCKETS;
    });
    for (const OneCellEntity* found : by_bucket) {
        if (found->cells.size() < 2)
            continue;
        problems = true;
        if (const Entity* entity = world.GetEntityFromID(found->entity_id)) {
            ProblemItem item = EntityItem(
                *entity, Format("Entity #%d (%s)", static_cast<int>(found->entity_id), TypeText(*entity).c_str()));
            InsertCells(item, found->cells);
            one_cell.children.push_back(std::move(item));
        }
    }
    for (ProblemItem* group : {&wrong, &one_cell})
        if (!group->children.empty())
            tree.push_back(std::move(*group));
    return problems;
}

std::string ProblemSolver::TreeText() const {
    std::string text;
    AppendText(tree, 0, text);
    return text;
}

std::string ProblemSolver::TreeJson(const World& world) const {
    ordered_json json = {{"portals", ordered_json::array()},
                         {"wrong_entities", ordered_json::array()},
                         {"wrong_one_cell_entities", ordered_json::array()}};
    for (const PSPortalItem& portal : portals) {
        const PortalVerdict verdict = portal.Verdict();
        if (verdict == PORTAL_FINE)
            continue;
        ordered_json item = ObjectJson(world, portal.portal_id);
        item["verdict"] = verdict == PORTAL_MULTIPLE_CELLS ? "multiple cells"
                          : verdict == PORTAL_NO_CELL      ? "no cell"
                                                           : "same cell on both sides";
        for (int side = 0; side < 2; ++side)
            item[side == 0 ? "side1" : "side2"] = CellsJson(world, portal.side_info[side]);
        json["portals"].push_back(item);
    }
    for (const uint32_t id : wrong_entity_ids)
        json["wrong_entities"].push_back(ObjectJson(world, id));
    for (const OneCellEntity& entity : one_cell_entities)
        if (entity.cells.size() > 1) {
            ordered_json item = ObjectJson(world, entity.entity_id);
            item["cells"] = CellsJson(world, entity.cells);
            json["wrong_one_cell_entities"].push_back(item);
        }
    return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}
