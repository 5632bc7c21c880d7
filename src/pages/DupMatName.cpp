#include "pages/DupMatName.h"

#include <algorithm>

#include "definitions/DefFile.h"
#include "definitions/MaterialScript.h"
#include "files/FileFind.h"
#include "files/FileObject.h"
#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "pages/FileCopy.h"

namespace {

constexpr const char* PROCEDURAL = "PROCEDURAL_SHADER";
constexpr const char* KEYS[4] = {"DIFFUSE_MAP", "BUMP_MAP", "GLOSS_MAP", "REFLECTION_MAP"};
constexpr const char* BLANKS = " \t";

std::vector<std::string> Folders(const char* root) {
    StringListClass sorted(false, true);
    FileFindObject search(root, "*", FFO_DirectoryFind, true);
    while (const FFOInfo* found = search.FindNext())
        sorted.AddString(found->name);
    std::vector<std::string> names;
    for (int i = 0; i < sorted.GetStringCount(); ++i)
        names.emplace_back(sorted.GetString(i));
    return names;
}

std::string_view FirstWord(std::string_view line) {
    const size_t start = line.find_first_not_of(BLANKS);
    if (start == std::string_view::npos)
        return {};
    line.remove_prefix(start);
    return line.substr(0, line.find_first_of(" \t=;,"));
}

std::string ImageName(const std::string& texture_class, const std::string& texture_name) {
    return texture_class.empty() ? texture_name : texture_class + "\\" + texture_name;
}

bool Refuse(const char* text, const char* title) {
    GetDesktop().MessageBox(text, title);
    return false;
}

} // namespace

DupMatName::DupMatName(std::string_view material_dir, std::string_view material_name)
    : new_directory(material_dir), new_name(material_name), source_directory(material_dir), source_name(material_name) {
    for (size_t i = 0; i < maps.size(); ++i)
        maps[i].key = KEYS[i];
    ParseMaterial();
    DetectMatDirectories();
}

void DupMatName::ParseMaterial() {
    DefFileObject script(MaterialScriptPath(source_directory, source_name));
    while (script.OpenNextSection())
        while (script.OpenNextCommand())
            for (Map& map : maps) {
                std::string value;
                if (!map.source_name.empty() || !EqualNoCase(script.GetCommandName(), map.key) ||
                    !script.GetString(0, value))
                    continue;
                const size_t slash = value.find('\\');
                map.source_class = slash == std::string::npos ? std::string() : value.substr(0, slash);
                map.source_name = slash == std::string::npos ? value : value.substr(slash + 1);
            }
    for (Map& map : maps) {
        map.texture_class = map.source_class;
        map.texture_name = map.source_name;
    }
    fields_enabled = ImageName(maps[0].source_class, maps[0].source_name) != PROCEDURAL;
}

void DupMatName::DetectMatDirectories() {
    texture_classes = Folders(TEXTURE_FOLDER);
    material_directories = Folders(MATERIAL_FOLDER);
}

// A line of the copy, with its end.
std::string DupMatName::CopyLine(const std::string& line, std::array<bool, 4>& replaced) const {
    if (fields_enabled)
        for (size_t i = 0; i < maps.size(); ++i)
            if (EqualNoCase(FirstWord(line), maps[i].key)) {
                replaced[i] = true;
                return Format("\t%s = %s;\r\n", maps[i].key,
                              ImageName(maps[i].texture_class, maps[i].texture_name).c_str());
            }
    return line + "\r\n";
}

void DupMatName::CopyIfDifferent(const Map& map) const {
    if (EqualNoCase(map.source_class, map.texture_class) && EqualNoCase(map.source_name, map.texture_name))
        return;
    for (const char* ending : {".tga", ".dds"}) {
        const auto path = [ending](const std::string& texture_class, const std::string& name) {
            return std::string(TEXTURE_FOLDER) + "\\" + ImageName(texture_class, name) + ending;
        };
        const std::string source = path(map.source_class, map.source_name);
        const std::string target = path(map.texture_class, map.texture_name);
        std::string error;
        if (!FileObject::FileExists(target) && FileObject::FileExists(source) && !CopyFileOut(source, target, error))
            GetDesktop().MessageBox(error, "Error");
    }
}

bool DupMatName::OnOK() {
    const std::string target = MaterialScriptPath(new_directory, new_name);
    if (FileObject::FileExists(target))
        return Refuse("Error !!! Material with a specified name already exists !!!!\n", "Error!");
    FileObject source(MaterialScriptPath(source_directory, source_name), FO_Open);
    if (!source.IsValid())
        return Refuse("Error opening source material !", "Error");
    std::array<bool, 4> replaced{};
    std::string text, line, error;
    while (source.ReadLine(line, RLTF_TruncateEnd) >= 0)
        text += CopyLine(line, replaced);
    if (new_name.empty() || new_name.size() >= MATERIAL_NAME_FIELD || !WriteTextFile(target, text, error))
        return Refuse("Error creating new material !", "Error");
    for (size_t i = 0; i < maps.size(); ++i)
        if (replaced[i])
            CopyIfDifferent(maps[i]);
    return true;
}
