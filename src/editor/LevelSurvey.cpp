// What a level holds, as texts: the summary and the log of the entities' parameters.
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <map>

#include "editor/EntityScripts.h"
#include "editor/Interface.h"
#include "files/AtomicFile.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"
#include "foundation/WholeNumber.h"

namespace {

constexpr const char* ENTITY_LOG = "Marrowstead\\entity_params.log";
constexpr int RULE_LENGTH = 70;

struct NoCaseOrder {
    bool operator()(const std::string& a, const std::string& b) const { return CompareNoCase(a, b) < 0; }
};
using Tally = std::map<std::string, int, NoCaseOrder>;

int CountBrushes(const World& level, uint32_t property) {
    int count = 0;
    for (const auto& b : level.brush)
        count += b->HasProperty(property);
    return count;
}

const std::string& TextParameter(const Entity& e, const char* name) {
    static const std::string none;
    const EntityParameter* parameter = e.GetParameterStr(name);
    return parameter ? parameter->p_text : none;
}

void WriteTally(std::string& text, const Tally& tally) {
    for (const auto& [word, count] : tally)
        text += Format("      %dx %s\r\n", count, word.c_str());
}

// Components of a colour as whole numbers.
std::string ColorText(const COLOR& c) {
    constexpr float FULL = 255.0f;
    return Format("(%d, %d, %d, %d)\n", WholeNumber(c.r * FULL), WholeNumber(c.g * FULL),
                  WholeNumber(c.b * FULL), WholeNumber(c.a * FULL));
}

std::string ValueText(const EntityParameter& p) {
    switch (p.type) {
    case EPT_BOOL:
        return p.p_bool ? "True\n" : "False\n";
    case EPT_INT:
        return Format("%d\n", p.p_int);
    case EPT_FLOAT:
        return Format("%.4f\n", static_cast<double>(p.p_float));
    case EPT_VECTOR2:
        return Format("(%.4f, %.4f)\n", static_cast<double>(p.p_vector2.u), static_cast<double>(p.p_vector2.v));
    case EPT_VECTOR3:
        return Format("(%.2f, %.2f, %.2f)\n", static_cast<double>(p.p_vector3.x), static_cast<double>(p.p_vector3.y),
                      static_cast<double>(p.p_vector3.z));
    case EPT_COLOR:
        return ColorText(p.p_color);
    case EPT_STRING:
        return "\n" + p.p_text + "\n";
    case EPT_FILENAME:
    case EPT_CONSTANT:
        return p.p_text + "\n";
    }
    return "\n";
}

std::string EntityLog(const Entity& e, bool scripts_only) {
    std::string text;
    for (const EntityParameter& p : e.parameter) {
        if (scripts_only && !IsScriptParameter(p))
            continue;
        if (text.empty()) {
            const std::string rule(RULE_LENGTH, '#');
            text = "\n" + rule + "\n" +
                   Format("%s: %s (ID: %d)\n", e.str_type.c_str(), e.variable_name.c_str(),
                          static_cast<int>(e.GetObjectID())) +
                   rule + "\n";
        }
        text += "---- " + p.name + " = " + ValueText(p);
    }
    return text;
}

} // namespace

bool IsScriptParameter(const EntityParameter& p) {
    if (p.type == EPT_STRING)
        for (const char* name : {"commands", "script", "dead_script"})
            if (EqualNoCase(p.name, name))
                return true;
    return p.name.size() > 2 && p.name[0] == 'O' && p.name[1] == 'n' &&
           std::isupper(static_cast<unsigned char>(p.name[2]));
}

void CInterface::GetLevelSummary(std::string& text) const {
    text +=
        Format("BRUSHES - total: %d\r\n  %dx DESTROYABLE\r\n  %dx SEE THROUGH\r\n  %dx LADDERS\r\n  %dx DYNAMIC\r\n "
               " %dx CLIP\r\n\r\nENTITIES - total %d\r\n",
               world->GetBrushCount(), CountBrushes(*world, BP_DESTROYABLE), CountBrushes(*world, BP_SEE_THROUGH),
               CountBrushes(*world, BP_LADDER), CountBrushes(*world, BP_DYNAMIC), CountBrushes(*world, BP_PLAYER_CLIP),
               world->GetEntityCount());
    Tally types, items, actors;
    for (const auto& e : world->entity) {
        ++types[e->str_type];
        if (e->IsType("ITEM"))
            ++items["[" + TextParameter(*e, "class") + "] " + TextParameter(*e, "type")];
        else if (e->IsType("ACTOR"))
            ++actors[TextParameter(*e, "model_script")];
    }
    for (const auto& [word, count] : types) {
        text += Format("  %dx %s\r\n", count, word.c_str());
        if (EqualNoCase(word, "ITEM"))
            WriteTally(text, items);
        else if (EqualNoCase(word, "ACTOR"))
            WriteTally(text, actors);
    }
}

void CInterface::LogEntities(bool scripts_only) const {
    AtomicFile file(RealPath(ENTITY_LOG).string());
    std::string text;
    for (const auto& e : world->entity)
        text += EntityLog(*e, scripts_only);
    if (!file.Write(text.data(), text.size()) || !file.Commit())
        GetDesktop().Notice(Format("\"%s\" cannot be written: %s", ENTITY_LOG, file.GetError().c_str()));
}
