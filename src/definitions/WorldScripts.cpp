// What the world's operations on scripts and models need of the definitions.
#include "definitions/ActorDefGroup.h"
#include "definitions/ScriptSyntax.h"
#include "foundation/Desktop.h"
#include "foundation/Random.h"
#include "scene/FrontEnd.h"
#include "scene/World.h"

namespace {

bool ConvertParameter(Entity& e, const char* name, const CScriptSyntax& syntax) {
    EntityParameter* parameter = e.GetParameterStr(name);
    if (!parameter || parameter->type != EPT_STRING)
        return false;
    std::string converted = syntax.ConvertOldScript(parameter->p_text);
    if (converted == parameter->p_text)
        return false;
    parameter->p_text = std::move(converted);
    return true;
}

} // namespace

void World::ConvertOldScripts(const CScriptSyntax& commands, const CScriptSyntax& conditions) {
    bool changed = false;
    for (const auto& e : entity) {
        changed |= ConvertParameter(*e, "script", commands);
        changed |= ConvertParameter(*e, "commands", commands);
        changed |= ConvertParameter(*e, "conditions", conditions);
    }
    if (changed)
        GetFrontEnd().MarkFileAsDirty(true);
    GetDesktop().MessageBox("Old scripts have been converted. Please deselect all entities and close Entity console "
                            "before you do any further work.",
                            "Marrowstead 2000");
}

void World::RandomizeBotModels(ActorDefGroups& actor_def_groups) {
    for (const int i : entity_selection) {
        Entity& e = *entity[static_cast<size_t>(i)];
        const EntityParameter* actor_class = e.GetParameterStr("class");
        EntityParameter* model_script = e.GetParameterStr("model_script");
        if (!e.IsType("ACTOR") || !actor_class || !actor_class->IsText() || !model_script || !model_script->IsText())
            continue;
        const ActorDefGroup* group_of_class = actor_def_groups.GetActorDefGroup(actor_class->p_text, false);
        const int count = group_of_class ? group_of_class->def_files.GetStringCount() : 0;
        if (count > 0)
            model_script->p_text = group_of_class->def_files.GetString(
                static_cast<int>(random_mt.randomMT() % static_cast<uint32_t>(count)));
    }
    GetFrontEnd().RedrawAllViews();
    GetFrontEnd().MarkFileAsDirty(true);
}
