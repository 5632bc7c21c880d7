#include "scene/Entity.h"

#include <algorithm>
#include <utility>

#include "foundation/Strings.h"
#include "scene/FrontEnd.h"

namespace {

constexpr float FULL_TURN = 360.0f; // degrees

} // namespace

int32_t EntityParameter::NameChecksum(std::string_view text) {
    int32_t sum = 0;
    for (const char c : text)
        sum += static_cast<signed char>(c);
    return sum;
}

void EntityParameter::TakeValue(const EntityParameter& src) {
    if (src.type != type)
        return;
    switch (type) {
    case EPT_BOOL:
        p_bool = src.p_bool;
        break;
    case EPT_INT:
        p_int = src.p_int;
        break;
    case EPT_FLOAT:
        p_float = src.p_float;
        break;
    case EPT_VECTOR2:
        p_vector2 = src.p_vector2;
        break;
    case EPT_VECTOR3:
        p_vector3 = src.p_vector3;
        break;
    case EPT_COLOR:
        p_color = src.p_color;
        break;
    case EPT_FILENAME:
    case EPT_STRING:
    case EPT_CONSTANT:
        p_text = src.p_text;
        break;
    }
}

Entity::Entity(const Entity& src) : BaseObject() { CopyData(src); }

Entity& Entity::operator=(const Entity& src) {
    if (this != &src)
        CopyData(src);
    return *this;
}

void Entity::CopyData(const Entity& src) {
    group_id = OBJECT_ENTITY;
    name = src.name;
    directory = src.directory;
    actor_file = src.actor_file;
    mesh_file = src.mesh_file;
    trace_entity = src.trace_entity;
    one_cell_only = src.one_cell_only;
    variable_name = src.variable_name;
    position = src.position;
    offset = src.offset;
    str_type = src.str_type;
    enum_type = src.enum_type;
    sort_index = src.sort_index;
    model = src.model;
    color = src.color;
    bitmap = src.bitmap;
    model_size = src.model_size;
    parameter = src.parameter;
    mesh = src.mesh ? std::make_unique<Mesh>(*src.mesh) : nullptr;
}

void Entity::InitFromCopy(const BaseObject& src) {
    BaseObject::InitFromCopy(src);
    if (const auto* entity = dynamic_cast<const Entity*>(&src))
        *this = *entity;
}

std::unique_ptr<BaseObject> Entity::GetCopy() const {
    auto copy = std::make_unique<Entity>(*this);
    copy->CopyBase(*this);
    return copy;
}

bool Entity::IsType(std::string_view type_word) const { return EqualNoCase(str_type, type_word); }

void Entity::SetPosition(const D3DVECTOR& p) {
    position = p;
    GetFrontEnd().SetLastEntityPosition(p);
}

bool Entity::IsHidden() const {
    return is_hidden || is_hidden_special || (is_hidden_by_clipbox && GetFrontEnd().IsClipActive());
}

int Entity::GetParameterIndex(std::string_view parameter_name) const {
    const auto found = std::find_if(parameter.begin(), parameter.end(),
                                    [&](const EntityParameter& p) { return p.name == parameter_name; });
    return found == parameter.end() ? -1 : static_cast<int>(found - parameter.begin());
}

const EntityParameter* Entity::GetParameterStr(std::string_view parameter_name) const {
    const int index = GetParameterIndex(parameter_name);
    return index == -1 ? nullptr : &parameter[static_cast<size_t>(index)];
}

EntityParameter* Entity::GetParameterStr(std::string_view parameter_name) {
    return const_cast<EntityParameter*>(std::as_const(*this).GetParameterStr(parameter_name));
}

void Entity::AddParameter(EntityParameter new_parameter) {
    EntityParameter* old = GetParameterStr(new_parameter.name);
    if (!old) {
        parameter.push_back(std::move(new_parameter));
        return;
    }
    if (!new_parameter.has_comment) {
        new_parameter.comment = std::move(old->comment);
        new_parameter.has_comment = old->has_comment;
    }
    *old = std::move(new_parameter);
}

void Entity::RemoveParameter(int idx) {
    if (idx >= 0 && static_cast<size_t>(idx) < parameter.size())
        parameter.erase(parameter.begin() + idx);
}

void Entity::AddParameterConstant(std::string_view parameter_name, std::string_view value) {
    EntityParameter constant;
    constant.name = parameter_name;
    constant.type = EPT_CONSTANT;
    constant.p_text = value;
    AddParameter(std::move(constant));
}

bool Entity::AddOrientation(int angle) {
    EntityParameter* orientation = FindFloat("orientation");
    if (!orientation)
        return false;
    float& degrees = orientation->p_float;
    degrees += static_cast<float>(angle);
    if (degrees < 0)
        degrees += FULL_TURN;
    else if (degrees > FULL_TURN)
        degrees -= FULL_TURN;
    return true;
}

bool Entity::AddRange(int value) {
    EntityParameter* range = FindFloat("range");
    if (range)
        range->p_float += static_cast<float>(value);
    return range != nullptr;
}

EntityParameter* Entity::FindFloat(std::string_view parameter_name) {
    const auto found = std::find_if(parameter.begin(), parameter.end(), [&](const EntityParameter& p) {
        return p.type == EPT_FLOAT && p.name == parameter_name;
    });
    return found == parameter.end() ? nullptr : &*found;
}

float Entity::FloatParameter(std::string_view parameter_name, float fallback) const {
    const EntityParameter* found = GetParameterStr(parameter_name);
    return found && found->type == EPT_FLOAT ? found->p_float : fallback;
}

bool Entity::BoolParameter(std::string_view parameter_name, bool fallback) const {
    const EntityParameter* found = GetParameterStr(parameter_name);
    return found && found->type == EPT_BOOL ? found->p_bool : fallback;
}

COLOR Entity::ColorParameter(std::string_view parameter_name) const {
    const EntityParameter* found = GetParameterStr(parameter_name);
    return found && found->type == EPT_COLOR ? found->p_color : COLOR{};
}

bool Entity::TryConvert(const EntityParameter& old) {
    EntityParameter converted;
    converted.has_comment = true;
    if (old.name == "attack_type" && old.type == EPT_CONSTANT) {
        static constexpr const char* RENAMED[][2] = {{"move_only", "ignore"},
                                                     {"move&look", "look"},
                                                     {"move&attack", "attack"},
                                                     {"move&attack_when_hit", "look_until_hit"}};
        converted.name = "watch_enemy_type";
        converted.type = EPT_CONSTANT;
        converted.comment = "Converted from attack_type";
        converted.constant = {"ignore", "look", "attack", "look_until_hit", "ingore_until_hit"};
        converted.p_text = "attack";
        for (const auto& [from, to] : RENAMED)
            if (old.p_text == from)
                converted.p_text = to;
    } else if (old.name == "initial_orientation" && old.type == EPT_FLOAT) {
        converted.name = "orientation";
        converted.type = EPT_FLOAT;
        converted.comment = "Actor orientation";
        converted.p_float = old.p_float;
    } else
        return false;
    AddParameter(std::move(converted));
    return true;
}
