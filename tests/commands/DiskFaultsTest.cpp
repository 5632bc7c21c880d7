// Disks that fail at any step of any write: each file is the old or the new one, nothing is left beside it, and the
// failure is told.
#include <cerrno>

#include "commands/Recovery.h"
#include "commands/ScriptData.h"
#include "editor/CompileLog.h"
#include "files/AtomicFile.h"
#include "files/LibraryWriter.h"
#include "foundation/Settings.h"
#include "foundation/WholeFile.h"
#include "pages/FileCopy.h"
#include "pages/Thumbnails.h"
#include "scene/PathScenes.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* COMPILE_LOG = "Marrowstead/Marrowstead2000.log";
constexpr const char* WORLD = "Maps/Default.few";

using Files = std::map<std::string, std::string>;

struct Kind {
    const char* name;
    std::function<bool()> write;   // false: failed, and has returned a sentence
    std::function<void()> prepare; // after each change, on a disk that works
    bool is_told = true;           // false: is made anew the next time it is wanted
};

class DiskFaults : public ScriptData {
protected:
    DiskFaults() {
        EXPECT_EQ(Run("drag top 256 256 300 200\nmaterial wall brick\napply\nentity light\n"
                      "set last_entity_position 0 200 0\nmouse top move 300 300\nmouse top right_down 300 300 ctrl\n"
                      "key Esc\n"),
                  "");
        interface->settings.create_prj_backup = true;
        interface->settings.bkp_before_compile = false;
        point = &AddPoint(Level(), LevelBrush(0), false, {0, 0, 0});
    }
    ~DiskFaults() override { SetDiskFaults(nullptr); }

    bool Line(const std::string& line) { return Run(line + "\n").empty(); }
    // Each kind of file has another content now, of the same size.
    void Change() {
        const bool odd = ++changes % 2 != 0;
        LevelBrush(0).Move({odd ? 8.0f : -8.0f, 0, 0}, false);
        Level().entity[0]->SetPosition({0, odd ? 200.0f : 300.0f, 0});
        Level().map_name = Level().entity[0]->variable_name = odd ? "Day" : "Eve";
        point->SetPosition({odd ? 1.0f : 2.0f, 0, 0});
        EXPECT_EQ(Run(std::string("track new\ntrack line ") + (odd ? "day" : "eve") + " FF0000\n"), "");
        interface->MarkDirty();
    }
    Files AllFiles() {
        Files files;
        for (const auto& entry : fs::recursive_directory_iterator(data.folder.Path()))
            if (entry.is_regular_file()) {
                const std::string name = entry.path().lexically_relative(data.folder.Path()).string();
                const FileIdentity identity = IdentityOf(entry.path());
                if (const auto [known, is_new] = seen.try_emplace(name); is_new || known->second.first != identity)
                    known->second = {identity, ReadBytes(entry.path())};
                files[name] = seen[name].second;
            }
        return files;
    }
    // With a failure at the step of this number; false when it was told.
    bool Write(const Kind& kind, int fails, int& steps) {
        steps = 0;
        outcome.reset();
        ForgetNotices();
        testing::internal::CaptureStderr(); // where notices go
        SetDiskFaults([&](DiskStep) { return steps++ == fails ? ENOSPC : 0; });
        const bool written = kind.write();
        SetDiskFaults(nullptr);
        notices = testing::internal::GetCapturedStderr();
        return written && notices.empty();
    }
    void Try(const Kind& kind);

    Entity* point = nullptr;
    std::map<std::string, std::pair<FileIdentity, std::string>> seen; // read anew only where they have changed
    std::string notices;
    std::optional<CompileOutcome> outcome; // of a kind that compiles
    int changes = 0, steps_tried = 0;
};

bool HasContent(const Files& files, const std::string& file, const std::string& bytes) {
    const auto found = files.find(file);
    return found != files.end() && found->second == bytes;
}

bool HasContentAnywhere(const Files& files, const std::string& bytes) {
    return std::any_of(files.begin(), files.end(), [&](const auto& file) { return file.second == bytes; });
}

void DiskFaults::Try(const Kind& kind) {
    int steps = 0, none = 0, failures = 0;
    if (kind.prepare)
        kind.prepare();
    EXPECT_TRUE(Write(kind, -1, none)) << kind.name << ": " << notices;
    for (int fails = 0; steps >= fails; ++fails) {
        Change();
        if (kind.prepare)
            kind.prepare();
        const Files before = AllFiles();
        const bool written = Write(kind, fails, steps);
        const std::optional<CompileOutcome> told = outcome;
        const Files after = AllFiles();
        const std::string where = std::string(kind.name) + ", step " + std::to_string(fails) + ": " + notices;
        EXPECT_TRUE(Write(kind, -1, none)) << where << "stays broken: " << notices;
        const Files whole = AllFiles();
        for (const auto& [file, bytes] : after) {
            const bool old_one = HasContent(before, file, bytes), new_one = HasContent(whole, file, bytes);
            const bool backup = file.ends_with(".bkp") && HasContentAnywhere(before, bytes);
            const bool log = file == COMPILE_LOG && before.count(file) > 0 && bytes.ends_with(before.at(file));
            EXPECT_TRUE(old_one || new_one || backup || log) << where << file << " is cut";
            EXPECT_TRUE(new_one || backup || log || !written || !kind.is_told) << where << file << ": nobody was told";
            EXPECT_EQ(file.find(".marrowstead-"), std::string::npos) << where << file << " was left";
        }
        for (const auto& [file, bytes] : before)
            EXPECT_EQ(after.count(file), 1u) << where << file << " is gone";
        if (told) {
            EXPECT_EQ(*told == CompileOutcome::Written, HasContent(after, WORLD, whole.at(WORLD))) << where;
        }
        failures += !written;
        EXPECT_TRUE(after.size() == whole.size() || !written || !kind.is_told) << where << "nobody was told";
        EXPECT_TRUE(steps > fails || (written && after != before)) << where << "fails on a disk that works";
    }
    EXPECT_EQ(failures == 0, !kind.is_told) << kind.name;
    steps_tried += steps;
}

} // namespace

TEST_F(DiskFaults, LeaveTheOldOrTheNewFileOfEveryKind) {
    RecoveryFile recovery(*interface);
    RegistryClass store;
    ASSERT_TRUE(store.OpenKeyDirectory(SETTINGS_KEY));
    std::string error;
    const auto new_picture = [this] {
        WriteBytes("Textures/wall/new" + std::to_string(changes) + ".tga", TargaBytes(8, 4, 24));
    };
    const auto compiled = [this] {
        ASSERT_TRUE(Line("compile"));
        Level().entity[0]->SetPosition({0, 250, 0});
        Level().map_name = "Night";
    };
    const auto compile = [this](const char* line) {
        const bool done = Line(line);
        outcome = frame->last_compile; // the exit status
        return done;
    };
    const auto library = [this, &error] {
        LibraryWriter writer;
        writer.Add("map.txt", {static_cast<uint8_t>(Level().map_name[0])});
        return writer.Write("made.fs", false, error);
    };
    const auto thumbnail = [this] {
        Thumbnail picture;
        return MakeThumbnail("wall", "new" + std::to_string(changes), picture);
    };
    const Kind kinds[] = {
        {"project", [this] { return Line("save level.msp"); }, {}},
        {"world", [&] { return compile("compile"); }, {}},
        {"entity update", [&] { return compile("compile_entities"); }, compiled},
        {"prefab", [this] { return Level().SelectAll(), Line("prefab save made.pfb words"); }, {}},
        {"custom brush", [this] { return Level().SelectAll(), Line("prefab save made.msh words"); }, {}},
        {"movie", [this] { return Line("movie save made.mvi"); }, {}},
        {"tracks", [this] { return Line("track save made.trk"); }, {}},
        {"export", [this] { return Line("export made.wrl"); }, {}},
        {"picture", [this] { return Line("picture top made.png"); }, {}},
        {"state", [this] { return Line("dump made.json"); }, {}},
        {"setting", [&] { return store.SetKeyValue("Change", &changes); }, {}},
        {"materials", [] { return MaterialLibrary().ParseTextures(), true; }, new_picture},
        {"text", [&] { return WriteTextFile("Scripts\\made.txt", Level().map_name, error); }, {}},
        {"library", library, {}},
        {"thumbnail", thumbnail, new_picture, false},
        {"recovery", [&] { return recovery.Write(); }, {}},
        {"entity log", [this] { return interface->LogEntities(false), true; }, {}},
        {"compile log", [this] { return CompileLog("", Level().map_name).Finish("text"), true; }, {}},
    };
    for (const Kind& kind : kinds)
        Try(kind);
    RecordProperty("steps", steps_tried);
}
