// Decals: placing and editing their templates, and the cutting of the templates on the brushes.
#include <algorithm>
#include <cmath>

#include "foundation/Desktop.h"
#include "foundation/Strings.h"
#include "render/Matrix.h"
#include "render/Textures.h"
#include "scene/DecalCutting.h"
#include "scene/FrontEnd.h"
#include "scene/World.h"

namespace {

constexpr float RAY_LENGTH = 1000000.0f; // hits beyond do not count

struct Aim {
    const Brush* brush = nullptr; // null: no hit
    D3DVECTOR position, normal, direction;
};

// The nearest surface under a pixel of the perspective view.
Aim AimDecal(const World& world, POINT point, const D3DVECTOR& camera_position) {
    PLANE planes[6];
    crMUpdate();
    crGetClipPlanes(planes);
    Aim aim;
    aim.direction = s_math.GetSelectionRay(point, camera_position);
    float p = RAY_LENGTH;
    for (const auto& b : world.brush)
        if (!b->is_hidden && b->Visible(planes) &&
            b->TestSolidSelection(camera_position, aim.direction, p, &aim.position, &aim.normal))
            aim.brush = b.get();
    aim.normal = NormalizeOrZero(aim.normal);
    return aim;
}

bool Reaches(const DecalTemplate& source, const Brush& brush) {
    const float size = std::max(source.x_size, source.y_size) * 0.5f;
    const D3DVECTOR reach{size, size, size};
    return s_math.BoxBoxIntersect(source.o_position - reach, source.o_position + reach, BoxMin(brush.bbox),
                                  BoxMax(brush.bbox));
}

void TellOfDecals() {
    GetFrontEnd().MarkFileAsDirty(true);
    GetFrontEnd().RedrawView(VIEW_PERSPECTIVE);
}

// The next id that no template bears.
uint32_t NextDecalId(const World& world) {
    std::unordered_set<uint32_t> taken;
    for (const auto& t : world.decal_template)
        taken.insert(t->id);
    uint32_t id = world.last_decal_id + 1;
    while (taken.count(id))
        ++id;
    return id;
}

// Runs change(template) on each selected template, and cuts it anew.
template <class Fn>
void ChangeSelected(World& world, Fn&& change) {
    const Selection ids = world.decal_selection; // cutting may drop a template
    for (const int id : ids)
        if (DecalTemplate* decal = world.FindDecal(static_cast<uint32_t>(id))) {
            change(*decal);
            world.ReplaceDecal(decal->id);
        }
}

} // namespace

bool CanBearDecals(const Brush& brush) { return !brush.IsPortalOrOccluder() && !brush.IsCustom(); }

void CutDecalOn(World& world, Brush& brush, const DecalTemplate& source) {
    if (!CanBearDecals(brush) || !Reaches(source, brush))
        return;
    const Brush& cut = brush;
    cut.ForEachSurface([&](const Surface&, int surface, bool curved) {
        auto decal = std::make_unique<Decal>();
        if (!decal->Create(brush, surface, curved, source))
            return;
        decal->world = &world;
        brush.decal_list.push_back(std::move(decal));
    });
}

void RecutDecals(World& world, Brush& brush) {
    brush.ResetDecals();
    for (const auto& source : world.decal_template)
        CutDecalOn(world, brush, *source);
}

void RemoveDecals(World& world, const std::unordered_set<uint32_t>& ids) {
    if (!ids.empty())
        for (const auto& b : world.brush)
            std::erase_if(b->decal_list, [&ids](const std::unique_ptr<Decal>& d) { return ids.count(d->id) > 0; });
}

void World::CutDecal(const DecalTemplate& source) {
    for (const auto& b : brush)
        CutDecalOn(*this, *b, source);
}

DecalTemplate* World::FindDecal(uint32_t id) const {
    const auto found = std::find_if(decal_template.begin(), decal_template.end(),
                                    [id](const std::unique_ptr<DecalTemplate>& t) { return t->id == id; });
    return found == decal_template.end() ? nullptr : found->get();
}

DecalTemplate* World::AddNewDecal(std::unique_ptr<DecalTemplate> decal) {
    if (decal_template.size() >= MAX_DECAL_TEMPLATES) {
        NoticeOnce(Format("The level cannot hold more than %d decals", MAX_DECAL_TEMPLATES));
        return nullptr;
    }
    last_decal_id = decal->id;
    decal_template.push_back(std::move(decal));
    CutDecal(*decal_template.back());
    return decal_template.back().get();
}

void World::ReplaceDecal(uint32_t id) {
    const DecalTemplate* source = FindDecal(id);
    if (!source)
        return;
    RemoveDecals(*this, {id});
    CutDecal(*source);
    FlushDecalTemplates();
}

void World::FlushDecalTemplates() {
    if (decal_template.empty())
        return;
    std::unordered_set<uint32_t> borne;
    for (const auto& b : brush)
        for (const auto& decal : b->decal_list)
            borne.insert(decal->id);
    std::erase_if(decal_template, [&](const std::unique_ptr<DecalTemplate>& t) {
        if (borne.count(t->id))
            return false;
        decal_selection.RemoveItem(static_cast<int>(t->id));
        return true;
    });
}

void World::PlaceDecal(POINT point, const D3DVECTOR& camera_position, std::string_view texture_class,
                       std::string_view texture_name) {
    const Aim aim = AimDecal(*this, point, camera_position);
    if (!aim.brush)
        return;
    auto placed = std::make_unique<DecalTemplate>();
    placed->texture = crTGet("Textures\\" + std::string(texture_class), texture_name, TL_MATERIAL);
    if (const CRTexture* record = crTRecord(placed->texture)) {
        placed->x_size = static_cast<float>(record->width) * 0.5f;
        placed->y_size = static_cast<float>(record->height) * 0.5f;
    }
    if (decal_selection.GetItemCount() > 0)
        if (const DecalTemplate* model = FindDecal(static_cast<uint32_t>(decal_selection.GetItem(0)))) {
            placed->x_size = model->x_size, placed->y_size = model->y_size;
            placed->o_rotation = model->o_rotation;
            decal_color = model->color;
        }
    placed->color = decal_color;
    placed->o_position = aim.position;
    placed->o_normal = aim.normal;
    placed->id = NextDecalId(*this);
    if (const DecalTemplate* added = AddNewDecal(std::move(placed))) {
        decal_selection.ClearList();
        decal_selection.AddItem(static_cast<int>(added->id));
    }
    TellOfDecals();
}

void World::SelectDecal(POINT point, const D3DVECTOR& camera_position, bool add) {
    if (!add)
        decal_selection.ClearList();
    const Aim aim = AimDecal(*this, point, camera_position);
    if (aim.brush)
        for (const auto& decal : aim.brush->decal_list) {
            if (!decal->TestSelection(camera_position, aim.direction))
                continue;
            const int id = static_cast<int>(decal->id);
            if (decal_selection.TestItem(id) != -1)
                decal_selection.RemoveItem(id);
            else
                decal_selection.AddItem(id);
            if (const DecalTemplate* source = FindDecal(decal->id)) // a failed cut shows another colour
                decal_color = source->color;
            break;
        }
    GetFrontEnd().RedrawView(VIEW_PERSPECTIVE);
}

void World::DeleteDecalSelection() {
    std::unordered_set<uint32_t> ids;
    for (const int id : decal_selection)
        ids.insert(static_cast<uint32_t>(id));
    decal_selection.ClearList();
    if (ids.empty())
        return;
    RemoveDecals(*this, ids);
    FlushDecalTemplates();
    TellOfDecals();
}

void World::MoveDecal(POINT point, const D3DVECTOR& camera_position) {
    if (decal_selection.GetItemCount() != 1)
        return;
    const Aim aim = AimDecal(*this, point, camera_position);
    if (aim.brush)
        ChangeSelected(*this, [&aim](DecalTemplate& decal) {
            decal.o_position = aim.position;
            decal.o_normal = aim.normal;
        });
    TellOfDecals();
}

void World::CopyDecal(POINT point, const D3DVECTOR& camera_position) {
    if (decal_selection.GetItemCount() != 1)
        return;
    const DecalTemplate* source = FindDecal(static_cast<uint32_t>(decal_selection.GetItem(0)));
    const Aim aim = AimDecal(*this, point, camera_position);
    if (!source || !aim.brush)
        return;
    auto copy = std::make_unique<DecalTemplate>(*source);
    copy->o_position = aim.position;
    copy->o_normal = aim.normal;
    copy->id = NextDecalId(*this);
    if (const DecalTemplate* added = AddNewDecal(std::move(copy))) {
        decal_selection.ClearList();
        decal_selection.AddItem(static_cast<int>(added->id));
    }
    TellOfDecals();
}

void World::SetDecalColor(const COLOR& color) {
    decal_color = color;
    ChangeSelected(*this, [&color](DecalTemplate& decal) { decal.color = color; });
    TellOfDecals();
}

void World::RotateDecal(float angle) {
    if (decal_selection.GetItemCount() == 0 || !std::isfinite(angle))
        return;
    ChangeSelected(*this, [angle](DecalTemplate& decal) { decal.o_rotation += angle; });
    TellOfDecals();
}

void World::ScaleDecal(float x, float y) {
    if (decal_selection.GetItemCount() == 0 || !std::isfinite(x) || !std::isfinite(y))
        return;
    ChangeSelected(*this, [x, y](DecalTemplate& decal) {
        decal.x_size = std::max(decal.x_size + x, 0.0f);
        decal.y_size = std::max(decal.y_size + y, 0.0f);
    });
    TellOfDecals();
}

void World::ClearAllDecals() {
    decal_template.clear();
    decal_selection.ClearList();
    for (const auto& b : brush)
        b->ResetDecals();
}

void Brush::ReplaceDecals() {
    if (decal_list.empty())
        return;
    World& bearer = *decal_list.front()->world;
    std::vector<uint32_t> ids;
    for (const auto& decal : decal_list)
        if (std::find(ids.begin(), ids.end(), decal->id) == ids.end())
            ids.push_back(decal->id);
    for (const uint32_t id : ids)
        bearer.ReplaceDecal(id);
}
