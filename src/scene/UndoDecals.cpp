// What undo keeps of decals.
#include <algorithm>
#include <map>

#include "render/Textures.h"
#include "scene/DecalCutting.h"
#include "scene/World.h"

namespace {

// The texture is that of the same name.
bool SamePlace(const DecalTemplate& a, const DecalTemplate& b) {
    return a.id == b.id && a.color == b.color && a.x_size == b.x_size && a.y_size == b.y_size &&
           a.o_position == b.o_position && a.o_normal == b.o_normal && a.o_rotation == b.o_rotation &&
           a.texture == b.texture;
}

using TemplatesById = std::map<uint32_t, std::vector<const DecalTemplate*>>;

TemplatesById ById(const std::vector<std::unique_ptr<DecalTemplate>>& list) {
    TemplatesById by_id;
    for (const auto& t : list)
        by_id[t->id].push_back(t.get());
    return by_id;
}

// The ids whose templates are not the same in both lists.
std::unordered_set<uint32_t> ChangedIds(const TemplatesById& before, const TemplatesById& after) {
    std::unordered_set<uint32_t> changed;
    const auto compare = [&changed](const TemplatesById& a, const TemplatesById& b) {
        for (const auto& [id, list] : a) {
            const auto other = b.find(id);
            if (other == b.end() ||
                !std::equal(list.begin(), list.end(), other->second.begin(), other->second.end(),
                            [](const DecalTemplate* x, const DecalTemplate* y) { return SamePlace(*x, *y); }))
                changed.insert(id);
        }
    };
    compare(before, after);
    compare(after, before);
    return changed;
}

void CutOnAll(World& world, const DecalTemplate& source) {
    for (const auto& b : world.brush)
        CutDecalOn(world, *b, source);
}

} // namespace

DecalState::DecalState(const World& world)
    : last_decal_id(world.last_decal_id), decal_color(world.decal_color), decal_selection(world.decal_selection) {
    templates.reserve(world.decal_template.size());
    for (const auto& t : world.decal_template) {
        const CRTexture* record = crTRecord(t->texture);
        if (record && record->from_file)
            templates.push_back({*t, record->path, record->name});
        else
            templates.push_back({*t, {}, {}});
    }
}

bool DecalState::HasSameTemplates(const World& world) const {
    return std::equal(templates.begin(), templates.end(), world.decal_template.begin(), world.decal_template.end(),
                      [](const Kept& a, const std::unique_ptr<DecalTemplate>& b) { return SamePlace(a.source, *b); });
}

DecalTemplate DecalState::WithTexture(const Kept& kept) {
    DecalTemplate t = kept.source;
    const CRTexture* record = crTRecord(t.texture);
    if (!kept.name.empty() && (!record || record->path != kept.path || record->name != kept.name))
        t.texture = crTGet(kept.path, kept.name, TL_MATERIAL);
    return t;
}

void DecalState::Restore(World& world) const {
    const std::vector<std::unique_ptr<DecalTemplate>> old = std::move(world.decal_template);
    world.decal_template.clear();
    for (const Kept& kept : templates)
        world.decal_template.push_back(std::make_unique<DecalTemplate>(WithTexture(kept)));
    const std::unordered_set<uint32_t> changed = ChangedIds(ById(old), ById(world.decal_template));
    RemoveDecals(world, changed);
    for (const auto& t : world.decal_template)
        if (changed.count(t->id))
            CutOnAll(world, *t);
    world.last_decal_id = last_decal_id;
    world.decal_color = decal_color;
    world.decal_selection = decal_selection;
}

void DecalState::RestoreMissing(World& world) const {
    std::unordered_set<uint32_t> present;
    for (const auto& t : world.decal_template)
        present.insert(t->id);
    for (size_t i = 0; i < templates.size(); ++i) {
        if (present.count(templates[i].source.id))
            continue;
        const size_t place = std::min(i, world.decal_template.size());
        auto returned = std::make_unique<DecalTemplate>(WithTexture(templates[i]));
        CutOnAll(world, *returned);
        world.decal_template.insert(world.decal_template.begin() + static_cast<std::ptrdiff_t>(place),
                                    std::move(returned));
        const int id = static_cast<int>(templates[i].source.id);
        if (decal_selection.TestItem(id) != -1)
            world.decal_selection.AddItem(id);
    }
}
