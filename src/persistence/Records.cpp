#include "persistence/Records.h"

#include <cmath>

#include "foundation/Desktop.h"
#include "foundation/Log.h"
#include "foundation/Strings.h"
#include "render/Textures.h"
#include "scene/World.h"

RecordReader& RecordReader::GetText(std::string& text, size_t field) {
    text.clear();
    if (bytes.size() - position < field) {
        position = bytes.size();
        overrun = true;
        return *this;
    }
    for (size_t k = 0; k < field && bytes[position + k] != 0; ++k)
        text.push_back(static_cast<char>(bytes[position + k]));
    if (text.size() == field) // no terminator: the field's last byte stands for it
        text.pop_back();
    position += field;
    return *this;
}

RecordReader& RecordReader::Skip(size_t count) {
    overrun = overrun || bytes.size() - position < count;
    position = std::min(bytes.size(), position + count);
    return *this;
}

RecordWriter PackTexInfo(const TEX_INFO& info) {
    RecordWriter record;
    record.Put(info.shift).Put(info.scale).Put(info.size).Put(info.rotation);
    record.PutFlag(info.flip_u).PutFlag(info.flip_v).PutFlag(info.locked).Put(info.index).PutFlag(info.fitted);
    return record;
}

bool UnpackTexInfo(const std::vector<uint8_t>& record, TEX_INFO& info) {
    if (record.size() != TEX_INFO_RECORD)
        return false;
    RecordReader reader(record);
    reader.Get(info.shift).Get(info.scale).Get(info.size).Get(info.rotation);
    reader.GetFlag(info.flip_u).GetFlag(info.flip_v).GetFlag(info.locked).Get(info.index).GetFlag(info.fitted);
    return true;
}

RecordWriter PackDecalTemplate(const DecalTemplate& decal) {
    const CRTexture* texture = crTRecord(decal.texture);
    const bool named = texture && texture->from_file;
    RecordWriter record;
    record.PutText(named ? FilePart(texture->path) : "common", NAME_FIELD);
    record.PutText(named ? texture->name : "no_texture", NAME_FIELD);
    record.Put(decal.o_position).Put(decal.o_normal).Put(decal.color);
    record.Put(decal.x_size).Put(decal.y_size).Put(decal.o_rotation).Put(decal.id);
    return record;
}

bool UnpackDecalTemplate(const std::vector<uint8_t>& record, DecalTemplate& decal, bool& lacks_texture) {
    if (record.size() != DECAL_RECORD)
        return false;
    std::string texture_class, texture_name;
    RecordReader reader(record);
    reader.GetText(texture_class, NAME_FIELD).GetText(texture_name, NAME_FIELD);
    reader.Get(decal.o_position).Get(decal.o_normal).Get(decal.color);
    reader.Get(decal.x_size).Get(decal.y_size).Get(decal.o_rotation).Get(decal.id);
    for (float* value : {&decal.o_position.x, &decal.o_position.y, &decal.o_position.z, &decal.o_normal.x,
                         &decal.o_normal.y, &decal.o_normal.z, &decal.x_size, &decal.y_size, &decal.o_rotation,
                         &decal.color.r, &decal.color.g, &decal.color.b, &decal.color.a})
        if (!std::isfinite(*value))
            *value = 0;
    decal.texture = crTGet("Textures\\" + texture_class, texture_name, TL_MATERIAL);
    lacks_texture = decal.texture == CR_NO_TEXTURE && !EqualNoCase(texture_name, "no_texture");
    if (decal.texture == CR_NO_TEXTURE) {
        if (lacks_texture)
            GetDesktop().Notice(Format("Couldn't load texture %s\\%s", texture_class.c_str(), texture_name.c_str()));
        AppendToLog(TEXTURE_LOG, Format("Couldn't load decal: %s\\%s\n", texture_class.c_str(), texture_name.c_str()));
    }
    return true;
}

RecordWriter PackRelation(const SGroupRelation& relation) {
    RecordWriter record;
    record.Put(static_cast<int32_t>(relation.type)).PutFlag(relation.turn_to_enemy).PutFlag(false).Put<uint16_t>(0);
    return record;
}

bool UnpackRelation(const std::vector<uint8_t>& record, SGroupRelation& relation) {
    if (record.size() != RELATION_RECORD)
        return false;
    int32_t type = 0;
    RecordReader(record).Get(type).GetFlag(relation.turn_to_enemy);
    relation.type = type == AGT_Enemy || type == AGT_Ally ? static_cast<EActorGroupType>(type) : AGT_Neutral;
    return true;
}

static void WriteParameterValue(UChunkFile& file, const EntityParameter& parameter) {
    switch (parameter.type) {
    case EPT_BOOL:
        file.WriteValue<uint8_t>(parameter.p_bool ? 1 : 0);
        break;
    case EPT_INT:
        file.WriteValue(parameter.p_int);
        break;
    case EPT_FLOAT:
        file.WriteValue(parameter.p_float);
        break;
    case EPT_VECTOR2:
        file.WriteValue(parameter.p_vector2);
        break;
    case EPT_VECTOR3:
        file.WriteValue(parameter.p_vector3);
        break;
    case EPT_COLOR:
        file.WriteValue(parameter.p_color);
        break;
    case EPT_FILENAME:
    case EPT_STRING:
    case EPT_CONSTANT:
        file.WriteString(parameter.p_text);
        break;
    }
}

void WriteEntityArrays(UChunkFile& file, const Entity& entity) {
    file.WriteString(entity.str_type);
    file.WriteValue(entity.position);
    file.WriteString(entity.variable_name);
    const int links = entity.linked_objects.GetCount();
    file.WriteValue<int32_t>(links);
    if (links > 0)
        file.WriteArray(entity.linked_objects.GetListPtr(), static_cast<size_t>(links) * sizeof(uint32_t));
    file.WriteValue<int32_t>(static_cast<int32_t>(entity.parameter.size()));
    for (const EntityParameter& parameter : entity.parameter) {
        file.WriteString(parameter.name);
        file.WriteValue(parameter.NameChecksum());
        file.WriteValue(static_cast<int32_t>(parameter.type));
        WriteParameterValue(file, parameter);
    }
    file.WriteValue<uint8_t>(entity.is_hidden ? 1 : 0);
}

// The value that stands next in the file, as the type says. False when it has another size.
static bool ReadParameterValue(UChunkFile& file, EntityParameter& parameter) {
    switch (parameter.type) {
    case EPT_BOOL: {
        uint8_t byte = 0;
        const bool read = file.GetNextValue(byte);
        parameter.p_bool = byte != 0;
        return read;
    }
    case EPT_INT:
        return file.GetNextValue(parameter.p_int);
    case EPT_FLOAT:
        return file.GetNextValue(parameter.p_float);
    case EPT_VECTOR2:
        return file.GetNextValue(parameter.p_vector2);
    case EPT_VECTOR3:
        return file.GetNextValue(parameter.p_vector3);
    case EPT_COLOR:
        return file.GetNextValue(parameter.p_color);
    case EPT_FILENAME:
    case EPT_STRING:
    case EPT_CONSTANT:
        return file.GetNextString(parameter.p_text);
    }
    file.SkipNextArray(); // a type of a newer version: its value is passed over
    return true;
}

bool LoadEntityParameters(UChunkFile& file, Entity& entity) {
    int32_t count = 0;
    if (!file.GetNextValue(count))
        return false;
    for (int32_t k = 0; k < count; ++k) {
        EntityParameter stored;
        int32_t checksum = 0, type = 0;
        if (!file.GetNextString(stored.name) || !file.GetNextValue(checksum) || !file.GetNextValue(type))
            return false;
        stored.type = static_cast<EntityParameterType>(type);
        if (!ReadParameterValue(file, stored))
            return false;
        if (EntityParameter* known = entity.GetParameterStr(stored.name)) {
            if (known->type == stored.type)
                known->TakeValue(stored);
        } else {
            entity.TryConvert(stored);
        }
    }
    return true;
}
