// A placed game object: a point in space with a type word, a display shape and a list of typed parameters.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Vector.h"
#include "scene/BaseObject.h"
#include "scene/Selection.h"
#include "scene/Surface.h"

enum EntityModel { EM_BITMAP = 0, EM_BOX = 1, EM_MESH = 2 };

enum EntityParameterType : int32_t {
    EPT_BOOL = 0,
    EPT_INT = 1,
    EPT_FLOAT = 2,
    EPT_VECTOR2 = 3,
    EPT_VECTOR3 = 4,
    EPT_COLOR = 5,
    EPT_FILENAME = 6,
    EPT_STRING = 7,
    EPT_CONSTANT = 8
};

struct EntityParameter {
    std::string name; // compared exactly
    EntityParameterType type = EPT_BOOL;
    bool p_bool = false;
    int32_t p_int = 0;
    float p_float = 0;
    UVVector p_vector2;
    D3DVECTOR p_vector3;
    COLOR p_color;
    std::string p_text;                // of EPT_FILENAME, EPT_STRING and EPT_CONSTANT
    std::vector<std::string> constant; // the choices of an EPT_CONSTANT
    std::string comment;
    bool has_comment = false;

    int32_t NameChecksum() const { return NameChecksum(name); } // the sum of the characters as signed bytes
    static int32_t NameChecksum(std::string_view text);
    bool IsText() const { return type == EPT_FILENAME || type == EPT_STRING || type == EPT_CONSTANT; }
    void TakeValue(const EntityParameter& src); // the value according to type; the rest stays
};

// A display mesh.
struct MeshSurface {
    std::vector<D3DVECTOR> vertices, normals;
    std::vector<UVVector> uv;
    std::vector<TRIANGLE> tri_indices;
    uint32_t texture = 0xFFFFFFFF; // handle; shared by copies
};
struct Mesh {
    std::vector<MeshSurface> surfaces;
};

class Entity : public BaseObject {
public:
    Entity() { group_id = OBJECT_ENTITY; }
    Entity(const Entity& src);            // as by operator= into a new entity; the copy has no id
    Entity& operator=(const Entity& src); // ids, links, paths, cell and the hide flags are not copied
    ~Entity() override = default;

    Entity* GetEntity() override { return this; }
    void InitFromCopy(const BaseObject& src) override;
    std::unique_ptr<BaseObject> GetCopy() const override;
    virtual void InitParameterIndices() {}
    virtual void AdvanceTime(uint32_t time) { current_time = time; }

    std::string name;      // definition name, the key of the template
    std::string directory; // category word
    std::string actor_file, mesh_file;
    bool trace_entity = true, one_cell_only = true;
    std::string variable_name = "none"; // by which scripts find it
    D3DVECTOR position, offset;         // offset: of the display shape against position
    std::string str_type;               // the type word
    int32_t enum_type = 0, sort_index = 0;
    bool is_hidden = false, is_hidden_by_clipbox = false, is_hidden_special = false;
    EntityModel model = EM_BOX;
    uint32_t color = 0xFFFFFFFF;
    uint32_t bitmap = 0xFFFFFFFF; // texture handle of the icon
    std::unique_ptr<Mesh> mesh;
    D3DVECTOR model_size{32, 32, 32};       // half extents
    std::vector<EntityParameter> parameter; // definition order
    int32_t cell = -1;                      // assigned by the compile
    uint32_t current_time = 0;
    uint32_t path_parent_id = 0xFFFFFFFE;
    Selection brush_list; // brushes that this entity's work concerns, filled by the compile

    bool IsType(std::string_view type_word) const; // any case
    void SetPosition(const D3DVECTOR& p);          // also the position that the next placement starts from
    bool IsHidden() const;

    int GetParameterIndex(std::string_view parameter_name) const;      // -1 if absent
    EntityParameter* GetParameterStr(std::string_view parameter_name); // null if absent
    const EntityParameter* GetParameterStr(std::string_view parameter_name) const;
    // Replaces one of the same name (keeping its comment unless a new one is given) or appends.
    void AddParameter(EntityParameter parameter);
    void RemoveParameter(int idx);
    void AddParameterConstant(std::string_view parameter_name, std::string_view value);
    bool AddOrientation(int angle); // degrees, kept in 0 to 360; false without such a parameter
    bool AddRange(int value);

    // The parameter's value, or the fallback when it is absent or of another type.
    float FloatParameter(std::string_view parameter_name, float fallback = 0) const;
    bool BoolParameter(std::string_view parameter_name, bool fallback = false) const;
    COLOR ColorParameter(std::string_view parameter_name) const;
    bool IsPathPoint() const { return name == "target_point" || name == "object_point"; }

    // A parameter of a file that this entity does not know: takes it over under its newer name, if it has one.
    bool TryConvert(const EntityParameter& old);

private:
    void CopyData(const Entity& src);
    EntityParameter* FindFloat(std::string_view parameter_name); // the first float of that name, null if none
};

using EntityPtr = std::unique_ptr<Entity>;
