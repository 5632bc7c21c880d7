// The kinds of entity, read from the script "Marrowstead\entities.def": one template entity a definition.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "scene/Entity.h"

class EntityParser {
public:
    // A missing file leaves zero templates. Reading stops at the first definition that cannot be completed; what came
    // before remains, and a notice names the file, the line and the reason.
    explicit EntityParser(std::string_view filename);

    int GetTemplateCount() const { return static_cast<int>(entity_template.size()); }
    // load: the display mesh too, read once on demand. Null for an index out of range.
    Entity* GetTemplate(int t, bool load);
    Entity* GetTemplate(std::string_view name, bool load); // case counts; null if none
    int GetTemplateIndex(std::string_view name) const;     // of the first of that name, case counts; -1 if none

    static constexpr int MAX_PARAMETERS = 64; // in a block; more are skipped with a notice
    static constexpr int MAX_CHOICES = 32;    // of a constant; likewise

private:
    std::vector<std::unique_ptr<Entity>> entity_template; // file order
    std::unordered_map<std::string, int> index_of_name;   // the first of each name
    std::vector<bool> mesh_wanted;                        // of each template; its mesh is there, or cannot be read
};

// A display mesh from a mesh file, or from an actor definition. Null, with a notice that names the file, when it cannot
// be read. Triangles with a vertex that does not exist are left out.
std::unique_ptr<Mesh> LoadMesh(std::string_view filename);
std::unique_ptr<Mesh> LoadActor(std::string_view filename);
