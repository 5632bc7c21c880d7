// fewinfo [--json] [--check] [--lightmaps DIR] FILE.few: what a compiled world holds.
#include <cstdio>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>

#include "Checks.h"
#include "files/Png.h"
#include "foundation/Options.h"
#include "foundation/Strings.h"
#include "scene/World.h"

static constexpr int EXIT_CHECK_FAILED = 1, EXIT_BAD_FILE = 1, EXIT_NOT_SAVED = 4;

static nlohmann::ordered_json Summary(const WorldFile& world) {
    int surfaces = 0, curved = 0, dynamic_lightmaps = 0, physics_faces = 0;
    size_t triangles = 0;
    for (const WorldBrush& brush : world.brushes) {
        physics_faces += brush.physics.face_count;
        for (const WorldSurface& surface : brush.surfaces) {
            ++(surface.cp_count > 0 ? curved : surfaces);
            triangles += surface.triangles.size();
            dynamic_lightmaps += surface.dynamic_lightmap_count;
        }
    }
    size_t leaf_types[3] = {};
    for (const WorldLeaf& leaf : world.leaves)
        ++leaf_types[std::min(leaf.type, 2u)];
    std::map<std::string, int> entity_types;
    for (const WorldEntity& entity : world.entities)
        ++entity_types[entity.type];
    nlohmann::ordered_json json;
    json["title"] = world.map_name;
    json["bytes"] = world.total_size;
    json["game_types"] = world.mp_games;
    json["brushes"] = world.brushes.size();
    json["surfaces"] = surfaces;
    json["curved_surfaces"] = curved;
    json["triangles"] = triangles;
    json["physics_faces"] = physics_faces;
    json["materials"] = nlohmann::ordered_json::array();
    for (const WorldMaterial& material : world.materials)
        json["materials"].push_back(material.material_class + "\\" + material.material_name);
    json["entities"] = world.entities.size();
    json["entity_types"] = entity_types;
    json["lightmap_pages"] = world.lightmap_pages.size();
    json["dynamic_lightmaps"] = dynamic_lightmaps;
    json["cells"] = world.cells.size();
    json["portals"] = world.portals.size();
    json["occluders"] = world.occluders.size();
    json["render_groups"] = world.render_groups.size();
    json["octal_tree"] = {{"nodes", leaf_types[0]}, {"empty", leaf_types[1]}, {"terminal", leaf_types[2]}};
    json["sound_paths"] = world.sounds.size();
    json["decals"] = world.decal_count;
    json["ai_groups"] = world.actor_groups.size();
    return json;
}

static void PrintText(const nlohmann::ordered_json& json) {
    for (const auto& [key, value] : json.items()) {
        std::string name = key, text = value.is_string() ? value.get<std::string>() : value.dump();
        std::replace(name.begin(), name.end(), '_', ' ');
        if (value.is_structured()) {
            text.clear();
            for (const auto& [part, content] : value.items()) {
                const std::string shown = content.is_string() ? content.get<std::string>() : content.dump();
                text += (text.empty() ? "" : ", ") + (value.is_object() ? part + " " + shown : shown);
            }
        }
        std::printf("%-18s %s\n", name.c_str(), text.c_str());
    }
}

static bool SaveLightmaps(const WorldFile& world, const std::string& folder, std::string& error) {
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    for (size_t p = 0; p < world.lightmap_pages.size(); ++p) {
        std::vector<uint8_t> rgb = world.lightmap_pages[p];
        for (size_t k = 0; k + 2 < rgb.size(); k += 3)
            std::swap(rgb[k], rgb[k + 2]);
        if (!WritePng(folder + "/" + Format("lightmap%04zu.png", p), LIGHTMAP_PAGE_SIDE, LIGHTMAP_PAGE_SIDE, rgb,
                      error))
            return false;
    }
    return true;
}

static int Run(int argc, char** argv) {
    std::string file, lightmap_folder;
    bool as_json = false, check = false;
    CLI::App app{"Says what a compiled world (.few) holds."};
    app.add_option("FILE", file, "the compiled world")->required();
    app.add_flag("--json", as_json, "print JSON");
    app.add_flag("--check", check, "check every rule that the file alone can show; exit status 1 when one is broken");
    app.add_option("--lightmaps", lightmap_folder, "write the lightmap pages as pictures into this folder");
    if (const std::optional<int> status = ParseOptions(app, argc, argv, EXIT_BAD_FILE))
        return *status;
    WorldFile world;
    std::string error;
    if (!ReadWorldFile(file, world, error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return EXIT_BAD_FILE;
    }
    nlohmann::ordered_json json = Summary(world);
    const std::vector<std::string> findings = check ? CheckWorld(world) : std::vector<std::string>();
    if (as_json) {
        if (check)
            json["findings"] = findings;
        std::printf("%s\n", json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
    } else {
        PrintText(json);
        for (const std::string& finding : findings)
            std::printf("! %s\n", finding.c_str());
        if (check && findings.empty())
            std::printf("All checks passed.\n");
    }
    if (!lightmap_folder.empty() && !SaveLightmaps(world, lightmap_folder, error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return EXIT_NOT_SAVED;
    }
    return findings.empty() ? 0 : EXIT_CHECK_FAILED;
}

int main(int argc, char** argv) { return RunProgram(Run, argc, argv); }
