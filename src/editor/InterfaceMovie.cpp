// Movies in the editor: files onto the objects of the level, the clock, and the camera.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <unordered_set>

#include "editor/Interface.h"
#include "foundation/Strings.h"
#include "persistence/MovieFile.h"
#include "scene/MoviePath.h"

namespace {

constexpr const char *OBJECT_POINT = "object_point", *TARGET_POINT = "target_point", *DUMMY = "dummy";
constexpr const char* CAMERA_NAME = "camera";
constexpr float SECONDS_A_TICK = 0.001f;
constexpr D3DVECTOR DUMMY_OFFSET{20, 20, 20};                    // from the first point of its path
constexpr float DEFAULT_FOV = 90, LEAST_FOV = 1, MOST_FOV = 170; // degrees

BaseObject* FindOwner(const World& world, uint32_t id) {
    if (id == NO_OBJECT_ID)
        return nullptr;
    if (Brush* const b = world.GetBrushFromID(id))
        return b;
    return world.GetEntityFromID(id);
}

void CollectPoints(const BaseObject& owner, std::unordered_set<uint32_t>& ids) {
    ids.insert(owner.path.begin(), owner.path.end());
    ids.insert(owner.target_path.begin(), owner.target_path.end());
}

// Puts the paths of a file on objects. Everything that can fail is asked first.
class MovieLoader {
public:
    MovieLoader(World& level, EntityParser& definitions, std::string& sentence)
        : world(level), parser(definitions), error(sentence) {}

    bool FindTemplates(bool with_dummy) {
        return Find(OBJECT_POINT, object_point) && Find(TARGET_POINT, target_point) &&
               (!with_dummy || Find(DUMMY, dummy));
    }
    // gone: points that will be deleted before; added: entities beside the points.
    bool HasRoom(const std::vector<MoviePathRecord>& paths, const std::unordered_set<uint32_t>& gone, size_t added) {
        size_t needed = added;
        for (const MoviePathRecord& path : paths)
            needed += path.path.size() + path.target_path.size();
        for (const auto& e : world.entity)
            needed += e->IsPathPoint() && gone.contains(e->GetObjectID()) ? 0 : 1;
        if (needed <= static_cast<size_t>(MAX_ENTITIES))
            return true;
        error = Format("The movie has more points than the level can hold: its limit is %d entities", MAX_ENTITIES);
        return false;
    }
    // Null for no object of the level as it was: what this load has made may have got an id that the file means.
    BaseObject* Owner(uint32_t id) const { return made.contains(id) ? nullptr : FindOwner(world, id); }
    void Take(BaseObject& owner, const MoviePathRecord& path) {
        world.DeletePaths(owner);
        AddPoints(owner, &BaseObject::path, path.path, *object_point);
        AddPoints(owner, &BaseObject::target_path, path.target_path, *target_point);
    }
    void TakeByDummy(const MoviePathRecord& path) {
        Entity* const stand_in = world.NewEntityCreated(std::make_unique<Entity>(*dummy), 1);
        if (!stand_in)
            return;
        made.insert(stand_in->GetObjectID());
        Take(*stand_in, path);
        stand_in->SetPosition(path.path.empty() ? D3DVECTOR{} : path.path[0].position + DUMMY_OFFSET);
    }

private:
    bool Find(const char* name, const Entity*& found) {
        found = parser.GetTemplate(name, true);
        if (!found)
            error = Format("The movie needs the entity definition \"%s\", which is missing", name);
        return found != nullptr;
    }
    void AddPoints(BaseObject& owner, SimpleList<uint32_t> BaseObject::*list,
                   const std::vector<MoviePointRecord>& records, const Entity& kind) {
        for (const MoviePointRecord& record : records) {
            auto point = std::make_unique<Entity>(kind);
            point->SetPosition(record.position);
            SetTrigger(*point, record.trigger_id);
            for (size_t i = 0; i < std::size(MOVIE_POINT_PARAMETERS); ++i)
                SetPointParameter(*point, MOVIE_POINT_PARAMETERS[i], record.value[i]);
            point->path_parent_id = owner.GetObjectID();
            if (const Entity* const created = world.NewEntityCreated(std::move(point), 0)) {
                made.insert(created->GetObjectID());
                (owner.*list).Add(created->GetObjectID());
            }
        }
    }
    void SetTrigger(Entity& point, uint32_t id) const {
        BaseObject* const object = Owner(id);
        const Entity* const triggered = object ? object->GetEntity() : nullptr;
        EntityParameter trigger;
        trigger.name = "trigger";
        trigger.type = EPT_STRING;
        trigger.p_text = triggered ? triggered->variable_name : std::string();
        if (const EntityParameter* const known = point.GetParameterStr(trigger.name); known && known->IsText())
            trigger.type = known->type;
        if (triggered || point.GetParameterStr(trigger.name))
            point.AddParameter(std::move(trigger));
    }

    World& world;
    EntityParser& parser;
    std::string& error;
    const Entity *object_point = nullptr, *target_point = nullptr, *dummy = nullptr;
    std::unordered_set<uint32_t> made; // ids of what this load has made
};

int ResultOf(MovieReading reading) {
    return reading == MovieReading::Read         ? MOVIE_OK
           : reading == MovieReading::WrongMagic ? MOVIE_WRONG_MAGIC
                                                 : MOVIE_NOT_OPENED;
}

// The moment's place on a list, and at other times the nearer end of it. Untouched without points.
void FollowPath(float time, SimpleList<uint32_t>& list, D3DVECTOR& position, float& rotation, float& fov) {
    const std::vector<PathPoint> points = PathPoints(list);
    if (points.empty())
        return;
    const PathPoint& end = time > 0 ? points.back() : points.front();
    position = end.position;
    rotation = end.rotation;
    fov = end.fov;
    ComputePathPos(time, list, position, rotation, fov);
}

} // namespace

void CInterface::ClearAnimation(uint32_t dont_delete_id) {
    std::vector<uint32_t> owners; // by id: an owner may be a point of another path
    const auto collect = [&](const BaseObject& object) {
        if (object.GetObjectID() != dont_delete_id && object.path.GetCount() + object.target_path.GetCount() > 0)
            owners.push_back(object.GetObjectID());
    };
    for (const auto& b : world->brush)
        collect(*b);
    for (const auto& e : world->entity)
        collect(*e);
    for (const uint32_t id : owners)
        if (BaseObject* const owner = FindOwner(*world, id))
            world->DeletePaths(*owner);
}

// Ends what the mouse or a mode is about, so that another selection can stand.
void CInterface::EndOperation() {
    FinishDrag();
    if (editor_state != ES_IDLE && editor_state != ES_SELECTED)
        Cancel();
    EndDragRecord();
    editor_state = ES_IDLE;
    drag_box_active = false;
    shearing = false;
    mouse_release = true;
    ChangeCursor();
}

void CInterface::ShowLoadedPaths() {
    SelectionChanged();
    UpdateSelectionBox();
    SyncVertexNet();
    SetCountText();
    RedrawAllViews();
    MarkDirty();
}

int CInterface::LoadMovie(std::string_view name, std::string& error, bool replace) {
    std::vector<MoviePathRecord> paths;
    if (const MovieReading reading = ReadMovie(name, paths, error); reading != MovieReading::Read)
        return ResultOf(reading);
    std::unordered_set<uint32_t> gone;
    if (replace) {
        for (const auto& b : world->brush)
            CollectPoints(*b, gone);
        for (const auto& e : world->entity)
            CollectPoints(*e, gone);
    } else
        for (const MoviePathRecord& path : paths)
            if (const BaseObject* const owner = FindOwner(*world, path.owner_id))
                CollectPoints(*owner, gone);
    const auto without_owner = std::count_if(paths.begin(), paths.end(), [&](const MoviePathRecord& path) {
        return !FindOwner(*world, path.owner_id) || gone.contains(path.owner_id);
    });
    MovieLoader loader(*world, *entity_parser, error);
    if (!loader.FindTemplates(without_owner > 0) || !loader.HasRoom(paths, gone, static_cast<size_t>(without_owner)))
        return MOVIE_NOT_OPENED;
    EndOperation();
    {
        const ChangeRecord record(*world, replace ? "Load a movie." : "Merge a movie.", ChangeScope::AllObjects);
        if (replace)
            ClearAnimation(NO_OBJECT_ID);
        world->ClearSelection();
        for (const MoviePathRecord& path : paths) {
            BaseObject* const owner = loader.Owner(path.owner_id);
            if (!owner) {
                loader.TakeByDummy(path);
                continue;
            }
            loader.Take(*owner, path);
            if (Brush* const b = owner->GetBrush())
                world->SetBrushSelection(world->GetBrushIndex(b), true);
            else
                world->entity_selection.AddItem(world->GetEntityIndex(owner->GetEntity()));
        }
        world->RefreshFirstSelected();
    }
    ShowLoadedPaths();
    return MOVIE_OK;
}

int CInterface::LoadMovieForSelection(std::string_view name, std::string& error) {
    std::vector<MoviePathRecord> paths;
    if (const MovieReading reading = ReadMovie(name, paths, error); reading != MovieReading::Read)
        return ResultOf(reading);
    const BaseObject* const selected = FindPathOwner();
    std::unordered_set<uint32_t> gone;
    for (const auto& b : world->brush)
        CollectPoints(*b, gone);
    for (const auto& e : world->entity)
        CollectPoints(*e, gone);
    if (paths.empty())
        error = Format("\"%s\" has no path", std::string(name).c_str());
    else if (!selected || gone.contains(selected->GetObjectID()))
        error = "No object is selected that a path could lead";
    if (!error.empty())
        return MOVIE_NOT_OPENED;
    const uint32_t owner_id = selected->GetObjectID();
    const bool has_more = paths.size() > 1;
    paths.resize(1);
    MovieLoader loader(*world, *entity_parser, error);
    if (!loader.FindTemplates(false) || !loader.HasRoom(paths, gone, 0))
        return MOVIE_NOT_OPENED;
    EndOperation();
    {
        const ChangeRecord record(*world, "Load a path.", ChangeScope::AllObjects);
        ClearAnimation(NO_OBJECT_ID);
        if (BaseObject* const owner = FindOwner(*world, owner_id))
            loader.Take(*owner, paths[0]);
        world->RefreshFirstSelected();
    }
    ShowLoadedPaths();
    if (has_more)
        GetDesktop().MessageBox("Movie contains paths for more than one object. Only first path was loaded.",
                                "Marrowstead 2000");
    return MOVIE_OK;
}

int CInterface::SaveMovie(std::string_view name, std::string& error) const {
    return WriteMovie(name, MoviePathsOf(*world), error) ? MOVIE_OK : MOVIE_NOT_OPENED;
}

void CInterface::ProcessAnimation() {
    if (!playing)
        return;
    const uint32_t now = GetDesktop().GetTickCount();
    anim_time += static_cast<float>(now - last_tick) * SECONDS_A_TICK;
    last_tick = now;
}

bool CInterface::FindMovieCamera(MovieCamera& camera) const {
    if (!movie_editing || !world)
        return false;
    std::vector<int> selected(world->entity_selection.begin(), world->entity_selection.end());
    std::sort(selected.begin(), selected.end());
    for (const int e : selected) {
        Entity* entity = world->entity[static_cast<size_t>(e)].get();
        if (entity->name != CAMERA_NAME)
            entity = entity->path_parent_id == NO_OBJECT_ID ? nullptr : world->GetEntityFromID(entity->path_parent_id);
        if (!entity || entity->name != CAMERA_NAME)
            continue;
        // Where the paths say nothing, the view's own camera stays as it is.
        D3DVECTOR direction, normal, right;
        ComputeCameraVectors(views.perspective.camera_rotation, direction, normal, right);
        camera.position = views.perspective.camera_position;
        camera.roll = 0;
        camera.fov = DEFAULT_FOV;
        FollowPath(anim_time, entity->path, camera.position, camera.roll, camera.fov);
        camera.fov = camera.fov == 0 ? DEFAULT_FOV : std::clamp(camera.fov, LEAST_FOV, MOST_FOV);
        camera.target = camera.position + direction;
        float target_roll = 0, target_fov = 0;
        FollowPath(anim_time, entity->target_path, camera.target, target_roll, target_fov);
        return true;
    }
    return false;
}

D3DVECTOR CInterface::EyePosition() const {
    MovieCamera camera;
    return FindMovieCamera(camera) ? camera.position : views.perspective.camera_position;
}
