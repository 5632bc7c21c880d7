#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_set>

#include "foundation/Strings.h"
#include "scene/MoviePath.h"
#include "scene/World.h"

namespace {

// In table order.
std::vector<int> Sorted(const Selection& selection) {
    std::vector<int> items(selection.begin(), selection.end());
    std::sort(items.begin(), items.end());
    return items;
}

// The object that a selected entity's path belongs to: itself, unless it is a point.
BaseObject& PathOwnerOf(Entity& entity) {
    BaseObject* const parent =
        entity.path_parent_id == NO_OBJECT_ID ? nullptr : BaseObject::GetObjectFromID(entity.path_parent_id);
    return parent ? *parent : entity;
}

// An id may name another kind of object by now.
bool IsPoint(const Entity& e) { return e.IsPathPoint() || e.IsType("PATH_POINT_POS") || e.IsType("PATH_POINT_TGT"); }

} // namespace

bool World::IsMovieModeEntity(std::string_view type_word) {
    constexpr std::array<std::string_view, 3> TYPES = {"CAMERA", "PATH_POINT_TGT", "PATH_POINT_POS"};
    return std::any_of(TYPES.begin(), TYPES.end(),
                       [type_word](std::string_view type) { return EqualNoCase(type, type_word); });
}

bool World::IsPathSelected(uint32_t id) const {
    const BaseObject* const owner = id == NO_OBJECT_ID ? nullptr : BaseObject::GetObjectFromID(id);
    const auto is_selected = [this](uint32_t point) { return IsEntitySelected(point); };
    return owner && (std::any_of(owner->path.begin(), owner->path.end(), is_selected) ||
                     std::any_of(owner->target_path.begin(), owner->target_path.end(), is_selected));
}

float World::ComputePathTimeForSelection() const {
    const BaseObject* object = nullptr;
    for (const int b : Sorted(brush_selection))
        if (!object && brush[static_cast<size_t>(b)]->path.GetCount() > 0)
            object = brush[static_cast<size_t>(b)].get();
    const std::vector<int> entities = Sorted(entity_selection);
    if (!entities.empty())
        object = nullptr;
    for (const int e : entities) {
        Entity& selected = *entity[static_cast<size_t>(e)];
        BaseObject& owner = selected.path.GetCount() > 0 ? selected : PathOwnerOf(selected);
        if (!object && (&owner != &selected || selected.path.GetCount() > 0))
            object = &owner;
    }
    return object ? std::max(object->ComputePathTime(false), object->ComputePathTime(true)) : 0.0f;
}

void World::AlignPaths(SimpleList<uint32_t>& src, SimpleList<uint32_t>& dst) {
    struct Side {
        SimpleList<uint32_t>& list;
        const std::vector<PathPoint> points = PathPoints(list);
        const float standard = StandardSpeed(points);
        float time = 0, segment = 0; // passed, and of the segment that arrives at the point
        float Distance(size_t i) const { return Magnitude(points[i].position - points[i - 1].position); }
    };
    Side source{src}, target{dst};
    for (size_t i = 1; i < source.points.size() && i < target.points.size(); ++i) {
        for (Side* const side : {&source, &target}) {
            side->time += side->points[i - 1].delay;
            side->segment = SegmentTime(side->points[i - 1], side->points[i], side->standard);
        }
        const int index = static_cast<int>(i);
        if (IsEntitySelected(src.Get(index)) || IsEntitySelected(dst.Get(index))) {
            const bool source_is_behind = source.time < target.time;
            Side &late = source_is_behind ? source : target, &other = source_is_behind ? target : source;
            const float speed = late.Distance(i) / (other.segment + other.time - late.time);
            if (speed > 0 && std::isfinite(speed)) // else it cannot arrive in time
                SetPointParameter(*GetEntityFromID(late.list.Get(index)), "speed", speed);
        }
        source.time += source.segment;
        target.time += target.segment;
    }
}

void World::AlignTimeOfPoints() {
    std::vector<BaseObject*> owners;
    for (const int b : brush_selection)
        owners.push_back(brush[static_cast<size_t>(b)].get());
    for (const int e : entity_selection) {
        BaseObject& owner = PathOwnerOf(*entity[static_cast<size_t>(e)]);
        if (std::find(owners.begin(), owners.end(), &owner) == owners.end())
            owners.push_back(&owner);
    }
    for (BaseObject* const owner : owners)
        AlignPaths(owner->path, owner->target_path);
}

void World::DeletePaths(BaseObject& owner) {
    std::unordered_set<uint32_t> points;
    for (SimpleList<uint32_t>* const list : {&owner.path, &owner.target_path}) {
        for (const uint32_t id : *list) {
            const Entity* const point = id == NO_OBJECT_ID ? nullptr : GetEntityFromID(id);
            if (point && IsPoint(*point))
                points.insert(id);
        }
        list->Reset();
    }
    if (!points.empty())
        DeleteObjects(points);
}
