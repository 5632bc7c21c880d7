#include "editor/CompileReport.h"

#include <sys/resource.h>

#include <nlohmann/json.hpp>

#include "foundation/Desktop.h"

using nlohmann::ordered_json;

std::string AnnouncedStage(const std::string& text) {
    const size_t dots = text.find("...");
    if (dots == std::string::npos)
        return {};
    const size_t line = text.find_last_of("\n", dots);
    const size_t begin = line == std::string::npos ? 0 : line + 1;
    return text.substr(begin, dots - begin); // lines that begin with dots tell details of a stage
}

void StageTimer::AddText(const std::string& text) {
    const std::string stage = AnnouncedStage(text);
    if (!stage.empty()) {
        EndStage();
        stages.push_back({stage, 0});
        stage_start = GetDesktop().GetTickCount();
        stage_open = true;
    }
    progress.AddText(text);
}

void StageTimer::EndStage() {
    if (stage_open)
        stages.back().milliseconds = GetDesktop().GetTickCount() - stage_start;
    stage_open = false;
}

const std::vector<StageTime>& StageTimer::Finish() {
    EndStage();
    return stages;
}

static long PeakMemoryKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

static ordered_json CellJson(const WorldFile& world, const WorldCell& cell) {
    ordered_json entities = ordered_json::array(), portals = ordered_json::array(), objects = ordered_json::array();
    for (const int32_t b : cell.objects)
        objects.push_back(world.brushes[static_cast<size_t>(b)].id);
    for (const int32_t e : cell.entities) {
        const WorldEntity& entity = world.entities[static_cast<size_t>(e)];
        entities.push_back({{"id", entity.id}, {"type", entity.type}, {"name", entity.variable_name}});
    }
    for (size_t k = 0; k < cell.portals.size(); ++k) {
        const WorldPortal& portal = world.portals[static_cast<size_t>(cell.portals[k])];
        const int side = cell.portalside[k] != 0 ? 1 : 0;
        portals.push_back({{"portal", cell.portals[k]}, {"side", side}, {"to_cell", portal.cell[side ^ 1]}});
    }
    return {{"can_see_outside", cell.can_see_outside},
            {"objects", objects},
            {"entities", entities},
            {"portals", portals},
            {"occluders", cell.occluders},
            {"render_groups", cell.render_groups.size()}};
}

std::string ReportJson(const std::string& outcome, const std::vector<StageTime>& stages, const WorldFile* world) {
    ordered_json json = {{"outcome", outcome}, {"stages", ordered_json::array()}};
    for (const StageTime& stage : stages)
        json["stages"].push_back({{"name", stage.name}, {"milliseconds", stage.milliseconds}});
    json["peak_memory_kib"] = PeakMemoryKiB();
    if (world) {
        json["bytes"] = world->total_size;
        json["brushes"] = world->brushes.size();
        json["entities"] = world->entities.size();
        json["materials"] = world->materials.size();
        json["lightmap_pages"] = world->lightmap_pages.size();
        json["octal_tree_leaves"] = world->leaves.size();
        json["render_groups"] = world->render_groups.size();
        json["portals"] = world->portals.size();
        json["occluders"] = world->occluders.size();
        json["sound_paths"] = world->sounds.size();
        json["cells"] = ordered_json::array();
        for (const WorldCell& cell : world->cells)
            json["cells"].push_back(CellJson(*world, cell));
    }
    return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}
