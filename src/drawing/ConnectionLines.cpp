#include <algorithm>
#include <string>
#include <unordered_map>

#include "drawing/DrawContext.h"
#include "drawing/GeometryBatch.h"
#include "drawing/LineColors.h"
#include "foundation/Strings.h"
#include "scene/World.h"

namespace {

constexpr const char* CABLE = "CABLE";

bool IsTrigger(const Entity& e) {
    return e.IsType("BOX_TRIGGER") || e.IsType("RADIAL_TRIGGER") || e.IsType("KEY_TRIGGER");
}

// Words are parted by white space; one in double quotes is taken whole.
template <class Use>
void ForEachWord(const std::string& text, const Use& use) {
    constexpr const char* SPACE = " \t\r\n\v\f";
    for (size_t at = text.find_first_not_of(SPACE); at < text.size(); at = text.find_first_not_of(SPACE, at)) {
        const bool quoted = text[at] == '"';
        at += quoted ? 1 : 0;
        const size_t end = std::min(quoted ? text.find('"', at) : text.find_first_of(SPACE, at), text.size());
        use(text.substr(at, end - at));
        at = quoted ? end + 1 : end;
    }
}

class ConnectionPass {
public:
    ConnectionPass(World& scene, const DrawContext& draw_context) : world(scene), context(draw_context) {}

    void DrawLinks() {
        for (const auto& b : world.brush)
            if (!b->is_hidden && context.filters.ShowsBrush(*b))
                DrawLinksOf(*b, b->pivot);
        for (const auto& e : world.entity)
            if (context.filters.show_entities && !e->IsHidden()) {
                DrawLinksOf(*e, e->position);
                FollowCables(*e);
            }
        lines.Flush();
    }

    // Those that were not met are no cables any more.
    void DrawCables() {
        std::erase_if(world.AllCables, [](const auto& cable) { return !cable->valid; });
        for (const auto& cable : world.AllCables)
            cable->Render();
    }

    // From each selected trigger to what its commands name.
    void DrawCommands() {
        std::unordered_multimap<std::string, const Entity*> named;
        for (const int i : world.entity_selection) {
            const Entity& e = *world.entity[static_cast<size_t>(i)];
            const EntityParameter* const commands = IsTrigger(e) ? e.GetParameterStr("commands") : nullptr;
            if (!commands)
                continue;
            ForEachWord(commands->p_text, [&](const std::string& word) {
                const std::string lower = ToLower(word);
                if (!lower.empty() && lower != "on" && lower != "off")
                    named.emplace(lower, &e);
            });
        }
        if (named.empty())
            return;
        const auto draw = [&](const std::string& name, const D3DVECTOR& place) {
            const auto [first, end] = named.equal_range(ToLower(name));
            for (auto trigger = first; trigger != end; ++trigger)
                lines.Arrow(place, trigger->second->position, ColorOf(LineColor::TriggerLink));
        };
        for (const auto& b : world.brush)
            draw(b->name, b->pivot);
        for (const auto& e : world.entity)
            draw(e->variable_name, e->position);
    }

private:
    // A cable hangs along each link of two of their ends.
    void FollowCables(const Entity& begin) {
        if (!begin.IsType(CABLE))
            return;
        for (const uint32_t id : begin.linked_objects) {
            const Entity* const end = id == NO_OBJECT_ID ? nullptr : world.GetEntityFromID(id);
            if (!end || !end->IsType(CABLE))
                continue;
            const auto known = std::find_if(world.AllCables.begin(), world.AllCables.end(), [&](const auto& cable) {
                return cable->ID_1 == begin.GetObjectID() && cable->ID_2 == id;
            });
            if (known != world.AllCables.end() && (*known)->Follow(begin, *end))
                continue;
            auto cable = std::make_unique<CCableComputer>(CablePropertiesOf(begin, *end));
            cable->ID_1 = begin.GetObjectID();
            cable->ID_2 = id;
            world.AllCables.push_back(std::move(cable));
        }
    }
    void DrawLinksOf(const BaseObject& object, const D3DVECTOR& place) {
        for (const uint32_t id : object.linked_objects) {
            if (id == NO_OBJECT_ID)
                continue;
            if (const Entity* const e = world.GetEntityFromID(id)) {
                if (!e->IsHidden() && context.filters.ShowsEntityType(*e))
                    lines.Arrow(e->position, place,
                                e->IsType("TARGET_POSITION") ? ColorOf(LineColor::TargetLink)
                                : IsTrigger(*e)              ? ColorOf(LineColor::TriggerLink)
                                                             : ColorOf(LineColor::Link));
            } else if (const Brush* const b = world.GetBrushFromID(id)) {
                if (!b->is_hidden)
                    lines.Arrow(b->pivot, place, ColorOf(LineColor::Link));
            }
        }
    }

    World& world;
    const DrawContext& context;
    LineBatch lines;
};

} // namespace

void World::RenderConnectionLines(const DrawContext& context) {
    if (!context.show_links)
        return;
    ConnectionPass pass(*this, context);
    if (context.filters.show_entities)
        for (const auto& cable : AllCables)
            cable->valid = false;
    pass.DrawLinks();
    if (context.filters.show_entities)
        pass.DrawCables();
    pass.DrawCommands();
}
