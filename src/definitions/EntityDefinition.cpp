#include "definitions/EntityDefinition.h"

#include <algorithm>
#include <bit>
#include <iterator>

#include "definitions/EntityParser.h"
#include "definitions/Numbers.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "render/Textures.h"

namespace {

enum Label { LABEL_TYPE, LABEL_TRACE_TYPE, LABEL_LOCATION, LABEL_IMAGE, LABEL_PARAMETERS, LABEL_COUNT };
constexpr const char* LABELS[LABEL_COUNT] = {"Type", "TraceType", "EntityLocation", "EditorImage", "Parameters"};
constexpr uint32_t ALL_LABELS = (1u << LABEL_COUNT) - 1;

struct TypeWord {
    const char* word;
    EntityParameterType type;
};
constexpr TypeWord TYPE_WORDS[] = {
    {"BOOL", EPT_BOOL},       {"INT", EPT_INT},           {"FLOAT", EPT_FLOAT},
    {"VECTOR2", EPT_VECTOR2}, {"VECTOR3", EPT_VECTOR3},   {"COLOR", EPT_COLOR},
    {"STRING", EPT_STRING},   {"FILENAME", EPT_FILENAME}, {"CONSTANT", EPT_CONSTANT},
};

constexpr size_t LONGEST_PARAMETER_NAME = 63, LONGEST_COMMENT = 8191, LONGEST_STRING = 7999;
constexpr uint32_t OPAQUE = 0xFF000000;

} // namespace

void EntityDefinitionReader::Notice(const std::string& text) const {
    NoticeOnce(Format("%s line %d: definition \"%s\" %s", file_name.c_str(), script.LineAt(start), entity->name.c_str(),
                      text.c_str()));
}

bool EntityDefinitionReader::Fail(const std::string& reason) {
    Notice(reason + "; the rest of the file is not read");
    return false;
}

bool EntityDefinitionReader::FailUnfinished() { return Fail("is not finished"); }

void EntityDefinitionReader::ReadAll() {
    while (scanner.FindHash()) {
        entity = std::make_unique<Entity>();
        extends = false;
        labels_seen = 0;
        start = scanner.Position();
        if (!ReadDefinition()) {
            ReleaseBitmap();
            entity.reset();
            return;
        }
        templates.push_back(std::move(entity));
        const std::string_view name = templates.back()->name;
        if (first_of_name.emplace(name, templates.size() - 1).second)
            name_lengths.insert(name.size());
    }
}

// The icon of a definition that is given up, unless a template shows it as well.
void EntityDefinitionReader::ReleaseBitmap() const {
    const auto shows_it = [this](const std::unique_ptr<Entity>& other) { return other->bitmap == entity->bitmap; };
    if (std::none_of(templates.begin(), templates.end(), shows_it))
        crTDestroy(entity->bitmap);
}

bool EntityDefinitionReader::ReadDefinition() {
    if (!ReadHead())
        return false;
    Step step = Step::Goes;
    while (step == Step::Goes)
        step = ReadLabel();
    if (step == Step::Failed)
        return false;
    const uint32_t missing = ALL_LABELS & ~labels_seen;
    if (extends || missing == 0)
        return true;
    return Fail(std::string("lacks ") + LABELS[std::countr_zero(missing)]);
}

bool EntityDefinitionReader::ReadHead() {
    scanner.SkipBlanks();
    const std::string path = scanner.TakeName();
    const size_t first_slash = path.find('\\'), last_slash = path.rfind('\\');
    const std::string name = path.substr(last_slash + 1); // the whole path without a slash
    entity->name = name;
    scanner.SkipBlanks();
    extends = scanner.SkipText("extends");
    if (extends && !TakeBase())
        return Fail("extends no earlier definition");
    entity->name = name;
    entity->directory = first_slash == std::string::npos ? "" : path.substr(0, first_slash);
    if (entity->name.empty())
        return Fail("has no name");
    return scanner.FindHash() || FailUnfinished();
}

// The earliest definition whose name the text goes on with.
bool EntityDefinitionReader::TakeBase() {
    scanner.SkipBlanks();
    const std::string_view rest = scanner.Rest();
    auto base = templates.size();
    for (const size_t length : name_lengths)
        if (length <= rest.size())
            if (const auto found = first_of_name.find(rest.substr(0, length)); found != first_of_name.end())
                base = std::min(base, found->second);
    if (base == templates.size())
        return false;
    *entity = *templates[base];
    return scanner.SkipText(entity->name);
}

EntityDefinitionReader::Step EntityDefinitionReader::ReadLabel() {
    scanner.SkipBlanks();
    const size_t word_start = scanner.Position();
    const std::string word = scanner.TakeWord();
    const auto found =
        std::find_if(std::begin(LABELS), std::end(LABELS), [&](const char* l) { return EqualNoCase(word, l); });
    if (found == std::end(LABELS)) {
        if (scanner.Position() > word_start)
            scanner.TakeName(); // the rest of a word that is no label
        return Step::Completed;
    }
    const auto label = static_cast<Label>(found - std::begin(LABELS));
    std::string value;
    bool done = true;
    if (label == LABEL_IMAGE)
        done = ReadEditorImage();
    else if (label == LABEL_PARAMETERS)
        done = ReadParameters();
    else if (!scanner.TakeAngled(value)) {
        Fail(std::string("has no value for ") + LABELS[label]);
        return Step::Failed;
    }
    if (!done) {
        FailUnfinished();
        return Step::Failed;
    }
    labels_seen |= 1u << label;
    if (label == LABEL_TYPE)
        entity->str_type = value;
    else if (label == LABEL_TRACE_TYPE)
        entity->trace_entity = !EqualNoCase(value, "NoTrace");
    else if (label == LABEL_LOCATION)
        entity->one_cell_only = EqualNoCase(value, "OneCellOnly");
    if (label == LABEL_PARAMETERS)
        return Step::Completed;
    if (scanner.FindHash())
        return Step::Goes;
    FailUnfinished();
    return Step::Failed;
}

bool EntityDefinitionReader::ReadEditorImage() {
    const Entity defaults;
    EntityModel model = EM_BOX;
    uint32_t color = defaults.color, bitmap = CR_NO_TEXTURE;
    D3DVECTOR size = defaults.model_size, offset;
    std::string mesh_file, actor_file;
    const auto take_file = [this] {
        return scanner.FindStringStart() == ScriptToken::Found ? scanner.TakeFile() : std::string();
    };

    if (!scanner.FindBlockStart())
        return false;
    ScriptToken token;
    while ((token = scanner.FindStringStart()) == ScriptToken::Found) {
        const std::string keyword = scanner.TakeWord();
        if (keyword == "MODEL") {
            // The word behind it; a word that is no model stays for the loop.
            const ScriptScanner behind = scanner;
            const bool is_word = scanner.FindStringStart() == ScriptToken::Found;
            const std::string word = is_word ? scanner.TakeWord() : std::string();
            model = word == "MESH" ? EM_MESH : EM_BOX;
            if (word != "MESH" && word != "BOX")
                scanner = behind;
        } else if (keyword == "BITMAP") {
            const std::string path = take_file();
            bitmap = path.empty() ? CR_NO_TEXTURE : crTGet(DirectoryPart(path), FilePart(path), TL_ICON);
            if (bitmap == CR_NO_TEXTURE)
                Notice("shows the picture \"" + path + "\", which cannot be read");
        } else if (keyword == "MESH")
            mesh_file = "entities_meshes\\" + take_file();
        else if (keyword == "DEF_MESH" || keyword == "ACTOR")
            actor_file = "Scripts\\" + take_file();
        else if (keyword == "COLOR") {
            std::vector<int32_t> channels = {255, 255, 255};
            ReadColor(color, channels);
        } else if (keyword == "SIZE")
            ReadFloats({&size.x, &size.y, &size.z});
        else if (keyword == "OFFSET")
            ReadFloats({&offset.x, &offset.y, &offset.z});
    }
    entity->model = model;
    entity->color = color;
    entity->bitmap = bitmap;
    entity->mesh_file = mesh_file;
    entity->actor_file = actor_file;
    entity->model_size = size;
    entity->offset = offset;
    return token == ScriptToken::BlockEnd;
}

bool EntityDefinitionReader::ReadParameters() {
    if (!scanner.FindBlockStart())
        return false;
    int count = 0;
    ScriptToken token;
    while ((token = scanner.FindStringStart()) == ScriptToken::Found) {
        const std::string word = scanner.TakeWord();
        const auto type = std::find_if(std::begin(TYPE_WORDS), std::end(TYPE_WORDS),
                                       [&](const TypeWord& t) { return word == t.word; });
        if (type == std::end(TYPE_WORDS))
            continue;
        if (!ReadParameter(type->type, ++count > EntityParser::MAX_PARAMETERS))
            return false;
    }
    if (count > EntityParser::MAX_PARAMETERS)
        Notice(Format("has more than %d parameters; the others are left out", EntityParser::MAX_PARAMETERS));
    return token == ScriptToken::BlockEnd;
}

bool EntityDefinitionReader::ReadParameter(EntityParameterType type, bool leave_out) {
    // A block may end behind the type word.
    const ScriptScanner behind = scanner;
    if (scanner.FindStringStart() != ScriptToken::Found) {
        scanner = behind;
        return true;
    }
    EntityParameter parameter;
    parameter.type = type;
    parameter.name = CutText(scanner.TakeParameterName(), LONGEST_PARAMETER_NAME);
    if (type == EPT_COLOR)
        parameter.p_color = {OPAQUE, 0, 0, 0, 1};
    if (scanner.FindAssignment() && !ReadValue(parameter))
        return false;
    const bool list_first = type == EPT_CONSTANT && scanner.LineHasListFirst();
    if (list_first)
        ReadChoices(parameter);
    parameter.has_comment = scanner.TakeLineComment(parameter.comment);
    parameter.comment = CutText(parameter.comment, LONGEST_COMMENT);
    if (type == EPT_CONSTANT && !list_first)
        ReadChoices(parameter);
    if (!leave_out)
        entity->AddParameter(std::move(parameter));
    return !scanner.AtEnd();
}

// Stands behind the '='. One blank stands there before the value.
bool EntityDefinitionReader::ReadValue(EntityParameter& parameter) {
    if (parameter.type == EPT_STRING || parameter.type == EPT_FILENAME)
        return ReadText(parameter);
    scanner.SkipCharacter();
    switch (parameter.type) {
    case EPT_BOOL:
        parameter.p_bool = scanner.TakeUntil(";").starts_with("TRUE");
        break;
    case EPT_INT:
        parameter.p_int = ParseInt(scanner.TakeUntil(";"));
        break;
    case EPT_FLOAT:
        parameter.p_float = ParseFloat(scanner.TakeUntil(";"));
        break;
    case EPT_VECTOR2:
        ReadFloats({&parameter.p_vector2.u, &parameter.p_vector2.v});
        break;
    case EPT_VECTOR3:
        ReadFloats({&parameter.p_vector3.x, &parameter.p_vector3.y, &parameter.p_vector3.z});
        break;
    case EPT_COLOR: {
        std::vector<int32_t> channels = {0, 0, 0, 255};
        COLOR& color = parameter.p_color;
        ReadColor(color.dw_color, channels);
        color.r = static_cast<float>(channels[0]) * BYTE_TO_UNIT;
        color.g = static_cast<float>(channels[1]) * BYTE_TO_UNIT;
        color.b = static_cast<float>(channels[2]) * BYTE_TO_UNIT;
        color.a = static_cast<float>(channels[3]) * BYTE_TO_UNIT;
        break;
    }
    default:
        parameter.p_text = scanner.TakeParameterName();
        break;
    }
    return true;
}

// The text between the quotes. Without an opening one it begins where every value begins, and ends with the line at
// most.
bool EntityDefinitionReader::ReadText(EntityParameter& parameter) {
    const ScriptScanner behind = scanner;
    scanner.SkipSpaces();
    const bool quoted = scanner.SkipText("\"");
    if (!quoted) {
        scanner = behind;
        scanner.SkipCharacter();
    }
    parameter.p_text = CutText(scanner.TakeUntil(quoted ? "\"" : "\";\r\n"), LONGEST_STRING);
    if (scanner.AtEnd())
        return false;
    scanner.SkipText("\"");
    return true;
}

void EntityDefinitionReader::ReadChoices(EntityParameter& parameter) {
    if (!scanner.EnterList())
        return;
    bool too_many = false;
    while (scanner.FindStringStart() == ScriptToken::Found) {
        std::string choice = scanner.TakeItem();
        const bool fits = parameter.constant.size() < EntityParser::MAX_CHOICES;
        if (fits && !choice.empty())
            parameter.constant.push_back(std::move(choice));
        too_many = too_many || !fits;
    }
    if (too_many)
        Notice(Format("has more than %d choices for %s; the others are left out", EntityParser::MAX_CHOICES,
                      parameter.name.c_str()));
}

void EntityDefinitionReader::ReadFloats(std::initializer_list<float*> values) {
    std::string number;
    for (float* value : values)
        if (scanner.NextNumber(number))
            *value = ParseFloat(number);
}

void EntityDefinitionReader::ReadColor(uint32_t& dw_color, std::vector<int32_t>& channels) {
    std::string number;
    for (int32_t& channel : channels)
        if (scanner.NextNumber(number))
            channel = ParseInt(number);
    const auto word = [&](size_t i) { return static_cast<uint32_t>(channels[i]); };
    const uint32_t alpha = channels.size() > 3 ? word(3) << 24 : OPAQUE;
    dw_color = alpha + word(0) * 65536 + word(1) * 256 + word(2);
}
