// Movies in the editor: files onto the level, what a bad one leaves, the clock, and the camera.
#include <cmath>

#include "editor/EditorFixture.h"
#include "persistence/MovieFile.h"
#include "render/Matrix.h"
#include "scene/PathScenes.h"

namespace {

const char* const MOVIE_DEFINITIONS = R"(
#object_point { #Type <PATH_POINT_POS> #TraceType <NoTrace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) }
#Parameters {
FLOAT delay = 0.0;
FLOAT fov = 90.0;
STRING trigger = "old";
} }
#target_point { #Type <PATH_POINT_TGT> #TraceType <NoTrace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) }
#Parameters { } }
#dummy { #Type <DUMMY> #TraceType <NoTrace> #EntityLocation <AnyCell> #EditorImage { MODEL (BOX) } #Parameters { } }
)";

class MovieTest : public EditorTest {
protected:
    MovieTest() {
        WriteBytes("movies.def", MOVIE_DEFINITIONS);
        Ed().entity_parser = std::make_unique<EntityParser>("movies.def");
    }

    static MoviePointRecord Point(float x, float delay = 0, uint32_t trigger = NO_OBJECT_ID) {
        MoviePointRecord point;
        point.position = {x, 0, 0};
        point.value[0] = delay;
        point.trigger_id = trigger;
        return point;
    }
    static MoviePathRecord Path(uint32_t owner, std::vector<MoviePointRecord> path,
                                std::vector<MoviePointRecord> target = {}) {
        return {owner, std::move(path), std::move(target)};
    }
    void Write(const std::vector<MoviePathRecord>& paths) { ASSERT_TRUE(WriteMovie("a.mvi", paths, error)) << error; }
    std::vector<float> Places(const SimpleList<uint32_t>& list) {
        std::vector<float> places;
        for (const uint32_t id : list)
            places.push_back(Level().GetEntityFromID(id)->position.x);
        return places;
    }
    // What must stay the same when nothing is changed.
    std::string State() {
        std::string state;
        for (const auto& e : Level().entity)
            state += std::to_string(e->GetObjectID()) + " " + std::to_string(e->path.GetCount()) + ",";
        for (const int e : Level().entity_selection)
            state += "*" + std::to_string(e);
        return state + std::to_string(Ed().changes) + std::to_string(Level().undo_buffer.GetActionCount());
    }

    std::string error;
};

using Floats = std::vector<float>;

} // namespace

TEST_F(MovieTest, PathsGoToTheirOwnersAndThoseAreSelected) {
    Brush& brush = AddBox({0, 0, 0}, {64, 64, 64});
    Entity& camera = AddEntity("camera", {});
    Entity& door = AddEntity("door", {});
    door.variable_name = "gate";
    AddPoint(Level(), door, false, {-7, 0, 0}); // of an object that the file does not name
    Level().entity_selection.AddItem(1);
    Write({Path(brush.GetObjectID(), {}, {Point(5)}),
           Path(camera.GetObjectID(), {Point(1, 2, door.GetObjectID()), Point(2)}, {Point(3)})});
    ASSERT_EQ(Ed().LoadMovie("a.mvi", error), MOVIE_OK) << error;
    EXPECT_EQ(Places(camera.path), (Floats{1, 2}));
    EXPECT_EQ(Places(camera.target_path), Floats{3});
    EXPECT_EQ(Places(brush.target_path), Floats{5});
    EXPECT_EQ(Places(door.path), Floats{-7}) << "laid over the paths of the level";
    EXPECT_EQ(Brushes(), ints{0});
    EXPECT_EQ(Entities(), ints{0});
    EXPECT_EQ(Ed().editor_state, ES_SELECTED);
    EXPECT_TRUE(Ed().selection_box_active);
    EXPECT_EQ(Ed().status[PANE_COUNTS], "Brushes: 1   Entities: 7");
    const Entity& first = *Level().GetEntityFromID(camera.path.Get(0));
    EXPECT_EQ(first.path_parent_id, camera.GetObjectID());
    EXPECT_EQ(first.name, "object_point");
    EXPECT_EQ(first.FloatParameter("delay"), 2);
    EXPECT_EQ(first.GetParameterStr("trigger")->p_text, "gate");
    EXPECT_EQ(Level().GetEntityFromID(camera.path.Get(1))->GetParameterStr("trigger")->p_text, "");
    EXPECT_EQ(Level().GetEntityFromID(camera.target_path.Get(0))->name, "target_point");
    ASSERT_EQ(Ed().LoadMovie("a.mvi", error), MOVIE_OK);
    EXPECT_EQ(Level().GetEntityCount(), 7) << "the old points of an owner go";
    ASSERT_EQ(Ed().LoadMovie("a.mvi", error, true), MOVIE_OK);
    EXPECT_EQ(door.path.GetCount(), 0) << "in place of all paths";
    EXPECT_EQ(Level().GetEntityCount(), 6);
}

TEST_F(MovieTest, ASavedMovieComesBackWithNewPoints) {
    Entity& camera = AddEntity("camera", {});
    for (int i = 0; i < 4; ++i)
        AddPoint(Level(), camera, i == 3, {static_cast<float>(i), 2, 3},
                 {{"delay", 1.5f}, {"ease_to", 1}, {"time_scale", 4}});
    const uint32_t old_id = camera.path.Get(0);
    ASSERT_EQ(Ed().SaveMovie("a.mvi", error), MOVIE_OK) << error;
    Ed().ClearAnimation(NO_OBJECT_ID);
    EXPECT_EQ(Level().GetEntityCount(), 1);
    ASSERT_EQ(Ed().LoadMovie("a.mvi", error, true), MOVIE_OK) << error;
    EXPECT_EQ(Places(camera.path), (Floats{0, 1, 2}));
    EXPECT_NE(camera.path.Get(0), old_id);
    for (const char* const name : {"delay", "ease_to", "time_scale"})
        EXPECT_NE(Level().GetEntityFromID(camera.path.Get(0))->FloatParameter(name), 0)
            << name << ": kept, even if the definition does not name it";
    EXPECT_EQ(Ed().SaveMovie("gone\\a.mvi", error), MOVIE_NOT_OPENED);
    EXPECT_NE(error.find("a.mvi"), std::string::npos);
}

TEST_F(MovieTest, ADummyStandsInForAMissingOwner) {
    Write({Path(4711, {Point(100)}), Path(4712, {}, {Point(7)})});
    ASSERT_EQ(Ed().LoadMovie("a.mvi", error), MOVIE_OK) << error;
    ASSERT_EQ(Level().GetEntityCount(), 4);
    std::vector<const Entity*> dummies;
    for (const auto& e : Level().entity)
        if (e->name == "dummy")
            dummies.push_back(e.get());
    ASSERT_EQ(dummies.size(), 2u);
    EXPECT_EQ(dummies[0]->position, (D3DVECTOR{120, 20, 20}));
    EXPECT_EQ(Places(dummies[0]->path), Floats{100});
    EXPECT_EQ(dummies[1]->position, D3DVECTOR{});
    EXPECT_EQ(Places(dummies[1]->target_path), Floats{7});
}

// New objects get ids that the file may mean for objects which are gone.
TEST_F(MovieTest, AnIdThatANewPointGotIsStillThatOfAMissingObject) {
    Entity& camera = AddEntity("camera", {});
    const uint32_t next = BaseObject::FindFreeObjectID() + 1;
    Write({Path(camera.GetObjectID(), {Point(1), Point(2, 0, next)}), Path(next + 1, {Point(3)}),
           Path(next + 2, {Point(4)})});
    ASSERT_EQ(Ed().LoadMovie("a.mvi", error), MOVIE_OK) << error;
    EXPECT_EQ(Level().GetEntityCount(), 7);
    std::vector<Floats> led; // by dummies
    for (const auto& e : Level().entity) {
        EXPECT_FALSE(e->IsPathPoint() && e->path.GetCount() > 0) << "no point is an owner";
        if (e->name == "dummy")
            led.push_back(Places(e->path));
    }
    EXPECT_EQ(led, (std::vector<Floats>{{3}, {4}}));
    EXPECT_EQ(Places(camera.path), (Floats{1, 2}));
    EXPECT_EQ(Level().GetEntityFromID(camera.path.Get(1))->GetParameterStr("trigger")->p_text, "");
}

TEST_F(MovieTest, ABadFileChangesNothing) {
    Entity& camera = AddEntity("camera", {});
    AddPoint(Level(), camera, false, {1, 0, 0});
    Level().entity_selection.AddItem(0);
    const std::string before = State();
    const auto refuse = [&](int expected, const char* what) {
        for (int way = 0; way < 3; ++way) {
            error.clear();
            const int result =
                way == 2 ? Ed().LoadMovieForSelection("a.mvi", error) : Ed().LoadMovie("a.mvi", error, way == 1);
            EXPECT_EQ(result, expected) << what;
            EXPECT_FALSE(error.empty()) << what;
            EXPECT_EQ(State(), before) << what;
        }
    };
    refuse(MOVIE_NOT_OPENED, "no file");
    Write({Path(camera.GetObjectID(), {Point(1), Point(2)})});
    const std::string whole = ReadBytes("a.mvi");
    WriteBytes("a.mvi", whole.substr(0, whole.size() / 2));
    refuse(MOVIE_NOT_OPENED, "half a file");
    std::string other = whole;
    other[other.find("MINA")] = 'X';
    WriteBytes("a.mvi", other);
    refuse(MOVIE_WRONG_MAGIC, "magic");
    Write({Path(camera.GetObjectID(), std::vector<MoviePointRecord>(MAX_ENTITIES))});
    refuse(MOVIE_NOT_OPENED, "more points than entities");
    WriteBytes("a.mvi", whole);
    WriteBytes("few.def", "#object_point { #Type <PATH_POINT_POS> #TraceType <NoTrace> #EntityLocation <AnyCell> "
                          "#EditorImage { MODEL (BOX) } #Parameters { } }");
    Ed().entity_parser = std::make_unique<EntityParser>("few.def");
    refuse(MOVIE_NOT_OPENED, "no target points");
    EXPECT_NE(error.find("target_point"), std::string::npos);
}

TEST_F(MovieTest, TheFirstPathForTheSelection) {
    Entity& other = AddEntity("other", {});
    AddPoint(Level(), other, false, {1, 0, 0});
    Entity& chosen = AddEntity("chosen", {});
    SelectEntity(Level(), chosen);
    Write({Path(4711, {Point(10), Point(20)}, {Point(30)}), Path(4712, {Point(40)})});
    ASSERT_EQ(Ed().LoadMovieForSelection("a.mvi", error), MOVIE_OK) << error;
    EXPECT_EQ(Places(chosen.path), (Floats{10, 20}));
    EXPECT_EQ(Places(chosen.target_path), Floats{30});
    EXPECT_EQ(other.path.GetCount(), 0) << "all other paths go";
    EXPECT_EQ(Level().GetEntityCount(), 5) << "no dummy";
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].text, "Movie contains paths for more than one object. Only first path was loaded.");
    // A selected point means its owner.
    Level().ClearSelection();
    SelectEntity(Level(), *Level().GetEntityFromID(chosen.path.Get(0)));
    Write({Path(4711, {Point(50)})});
    ASSERT_EQ(Ed().LoadMovieForSelection("a.mvi", error), MOVIE_OK) << error;
    EXPECT_EQ(Places(chosen.path), Floats{50});
    EXPECT_EQ(desktop.boxes.size(), 1u);
}

TEST_F(MovieTest, EachLoadIsOneStepBack) {
    Ed().settings.full_undo = true;
    Entity& camera = AddEntity("camera", {});
    const uint32_t id = camera.GetObjectID();
    AddPoint(Level(), camera, false, {1, 0, 0});
    Write({Path(id, {Point(10), Point(20)}), Path(4711, {Point(30)})});
    const auto places = [&] { return Places(Level().GetEntityFromID(id)->path); };
    for (const bool replace : {false, true}) {
        ASSERT_EQ(Ed().LoadMovie("a.mvi", error, replace), MOVIE_OK);
        EXPECT_EQ(places(), (Floats{10, 20}));
        ASSERT_TRUE(Undo());
        EXPECT_EQ(places(), Floats{1});
        EXPECT_EQ(Level().GetEntityCount(), 2);
        ASSERT_TRUE(Redo());
        EXPECT_EQ(places(), (Floats{10, 20}));
        EXPECT_EQ(Level().GetEntityCount(), 5);
        ASSERT_TRUE(Undo());
    }
    Level().ClearSelection();
    SelectEntity(Level(), *Level().GetEntityFromID(id));
    ASSERT_EQ(Ed().LoadMovieForSelection("a.mvi", error), MOVIE_OK);
    ASSERT_TRUE(Undo());
    EXPECT_EQ(places(), Floats{1});
}

TEST_F(MovieTest, LoadingEndsWhatTheMouseIsAbout) {
    Entity& camera = AddEntity("camera", {});
    Write({Path(camera.GetObjectID(), {Point(10)})});
    for (const EditorState state :
         {ES_CREATE_BRUSH, ES_ROTATE_ARMED, ES_PICK_TEXTURE, ES_DRAG_SELECT, ES_EXTRUDABLE, ES_IDLE}) {
        Ed().editor_state = state;
        Ed().drag_box_active = state == ES_DRAG_SELECT;
        ASSERT_EQ(Ed().LoadMovie("a.mvi", error), MOVIE_OK);
        EXPECT_EQ(Ed().editor_state, ES_SELECTED) << state;
        EXPECT_FALSE(Ed().drag_box_active);
    }
}

TEST_F(MovieTest, OneObjectKeepsItsPathsWhenTheOthersAreCleared) {
    Entity& first = AddEntity("first", {});
    Entity& second = AddEntity("second", {});
    Brush& brush = AddBox({0, 0, 0}, {64, 64, 64});
    for (BaseObject* const owner : std::initializer_list<BaseObject*>{&first, &second, &brush})
        for (const bool target : {false, true})
            AddPoint(Level(), *owner, target, {1, 2, 3});
    Ed().ClearAnimation(second.GetObjectID());
    EXPECT_EQ(first.path.GetCount() + brush.path.GetCount() + brush.target_path.GetCount(), 0);
    EXPECT_EQ(second.path.GetCount() + second.target_path.GetCount(), 2);
    EXPECT_EQ(Level().GetEntityCount(), 4);
}

TEST_F(MovieTest, TheClockRunsWhilePlaying) {
    const auto now = [&] { return desktop.GetTickCount(); };
    Ed().anim_time = 5;
    Ed().ProcessAnimation();
    EXPECT_EQ(Ed().anim_time, 5);
    Ed().playing = true;
    const uint32_t start = now();
    Ed().last_tick = start - 1500;
    Ed().ProcessAnimation();
    EXPECT_NEAR(Ed().anim_time, 6.5f + static_cast<float>(now() - start) * 0.001f, 0.1f);
    EXPECT_GE(Ed().last_tick, start);
}

TEST_F(MovieTest, TheSelectedCameraFilms) {
    Entity& camera = AddEntity("camera", {});
    AddPoint(Level(), camera, false, {0, 0, 0}, {{"rotation", 90}, {"fov", 60}});
    AddPoint(Level(), camera, false, {0, 0, 200}, {{"rotation", 90}, {"fov", 60}});
    Ed().anim_time = 1;
    Ed().views.perspective.camera_position = {7, 8, 9};
    Ed().movie_editing = true;
    CInterface::MovieCamera film;
    EXPECT_FALSE(Ed().FindMovieCamera(film)) << "nothing is selected";
    EXPECT_EQ(Ed().EyePosition(), (D3DVECTOR{7, 8, 9}));
    Entity& light = AddEntity("light", {});
    SelectEntity(Level(), light);
    EXPECT_FALSE(Ed().FindMovieCamera(film));
    SelectEntity(Level(), *Level().GetEntityFromID(camera.path.Get(0)));
    ASSERT_TRUE(Ed().FindMovieCamera(film)) << "a point of it is selected";
    ExpectVector(film.position, {0, 0, 100});
    ExpectVector(film.target, {0, 0, 101}, "without targets it looks where the view's own camera looks");
    EXPECT_NEAR(film.roll, 90, 1e-3);
    EXPECT_NEAR(film.fov, 60, 1e-3);
    ExpectVector(Ed().EyePosition(), {0, 0, 100});
    AddPoint(Level(), camera, true, {50, 0, 100});
    ASSERT_TRUE(Ed().FindMovieCamera(film));
    ExpectVector(film.target, {50, 0, 100}, "one target is looked at all the time");

    Ed().SetMatrices(VIEW_PERSPECTIVE);
    const auto seen = [](const D3DVECTOR& p) {
        D3DVECTOR result;
        crMTransform(crvMatrices[CRM_VIEW], p, result);
        return result;
    };
    ExpectVector(seen({0, 0, 100}), {0, 0, 0}, "the eye");
    ExpectVector(seen({50, 0, 100}), {0, 0, 50}, "the target lies ahead");
    const D3DVECTOR above = seen({0, 10, 100}); // a roll of a quarter
    EXPECT_NEAR(std::fabs(above.x), 10, 1e-3);
    EXPECT_NEAR(above.y, 0, 1e-3);
    EXPECT_NEAR(crvMatrices[CRM_PROJ].m[0][0], 1 / std::tan(3.14159265 / 6), 1e-3) << "60 degrees across";
    Ed().movie_editing = false;
    Ed().SetMatrices(VIEW_PERSPECTIVE);
    ExpectVector(seen({7, 8, 9}), {0, 0, 0}, "the view's own camera");
    EXPECT_NEAR(crvMatrices[CRM_PROJ].m[0][0], 1, 1e-3);
}

TEST_F(MovieTest, TheCameraOutsideItsTimeAndWithOddValues) {
    Entity& camera = AddEntity("camera", {});
    SelectEntity(Level(), camera);
    Ed().movie_editing = true;
    Ed().views.perspective.camera_position = {7, 8, 9};
    CInterface::MovieCamera film;
    ASSERT_TRUE(Ed().FindMovieCamera(film));
    ExpectVector(film.position, {7, 8, 9}, "no path: the view stays");
    Entity& first = AddPoint(Level(), camera, false, {0, 0, 0}, {{"ease_to", 2}});
    AddPoint(Level(), camera, false, {100, 0, 0});
    const auto x_at = [&](float time) {
        Ed().anim_time = time;
        EXPECT_TRUE(Ed().FindMovieCamera(film));
        return film.position.x;
    };
    EXPECT_NEAR(x_at(-5), 0, 1e-3);
    EXPECT_NEAR(x_at(0.5f), 50, 1e-3);
    EXPECT_NEAR(x_at(5), 100, 1e-3) << "after the end it stands where it was last";
    EXPECT_EQ(film.fov, 90) << "none is given";
    for (const float fov : {-50.0f, 500.0f, 180.0f}) {
        SetPointParameter(first, "fov", fov);
        x_at(0);
        EXPECT_GT(film.fov, 0);
        EXPECT_LT(film.fov, 180);
    }
}
