#include "commands/ScriptRunner.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <set>

#include "commands/Accelerator.h"
#include "commands/CommandTable.h"
#include "foundation/Strings.h"
#include "pages/TrackDlg.h"

namespace {

constexpr int MOVES_OF_A_DRAG = 8;
constexpr int WHEEL_CLICK = 120;
constexpr int MOST_PRESSES = 10000;
constexpr const char* VIEW_NAMES[VIEW_COUNT] = {"top", "front", "left", "perspective"};
constexpr const char* MOUSE_EVENTS[] = {"move",      "left_down",  "left_up",  "left_double", "middle_down",
                                        "middle_up", "right_down", "right_up", "wheel_up",    "wheel_down"};

} // namespace

bool SplitScriptLine(const std::string& line, std::vector<std::string>& words) {
    words.clear();
    for (size_t i = 0; i < line.size();) {
        if (line[i] == '#')
            return true;
        if (line[i] == ' ' || line[i] == '\t' || line[i] == '\r') {
            ++i;
            continue;
        }
        if (line[i] == '"') {
            const size_t end = line.find('"', i + 1);
            if (end == std::string::npos)
                return false;
            words.push_back(line.substr(i + 1, end - i - 1));
            i = end + 1;
            continue;
        }
        const size_t end = std::min(line.find_first_of(" \t\r", i), line.size());
        words.push_back(line.substr(i, end - i));
        i = end;
    }
    return true;
}

// A step of such a word cannot wait for the release of a button. Commands see to it themselves.
static bool EndsADrag(const std::string& word) {
    static const std::set<std::string> words = {"parameter", "apply", "shift", "scale",   "rotate",
                                                "fit",       "flip",  "lock",  "terrain", "movie"};
    return words.count(word) > 0;
}

ScriptRunner::ScriptRunner(CMainFrame& main_frame, ScriptDesktop& script_desktop, std::filesystem::path start_folder)
    : frame(main_frame), interface(frame.interface), pages(frame.pages), desktop(script_desktop),
      folder(std::move(start_folder)) {}

ScriptRunner::~ScriptRunner() = default;

const std::map<std::string, ScriptRunner::Word>& ScriptRunner::Vocabulary() {
    using R = ScriptRunner;
    static const std::map<std::string, Word> vocabulary = {
        {"command", {1, 1, &R::DoCommand}},
        {"key", {1, 2, &R::DoKey}},
        {"mouse", {4, 7, &R::DoMouse}},
        {"drag", {5, 9, &R::DoDrag}},
        {"set", {2, 7, &R::DoSet}},
        {"answer", {1, 1, &R::DoAnswer}},
        {"new", {0, 0, &R::DoNew}},
        {"open", {1, 1, &R::DoOpen}},
        {"save", {0, 1, &R::DoSave}},
        {"entity", {1, 1, &R::DoEntity}},
        {"parameter", {2, 2, &R::DoParameter}},
        {"material", {2, 2, &R::DoMaterial}},
        {"apply", {0, 0, &R::DoApply}},
        {"shift", {2, 2, &R::DoShift}},
        {"scale", {2, 2, &R::DoScale}},
        {"rotate", {1, 1, &R::DoRotate}},
        {"fit", {2, 2, &R::DoFit}},
        {"flip", {1, 1, &R::DoFlip}},
        {"lock", {1, 1, &R::DoLock}},
        {"view", {3, 4, &R::DoView}},
        {"camera", {5, 5, &R::DoCamera}},
        {"picture", {2, 2, &R::DoPicture}},
        {"dump", {1, 1, &R::DoDump}},
        {"compile", {0, 0, &R::DoCompile}},
        {"compile_entities", {0, 0, &R::DoCompile}},
        {"compile_visibility", {0, 0, &R::DoCompile}},
        {"check_script", {2, 2, &R::DoCheckScript}},
        {"complete_script", {4, 4, &R::DoCompleteScript}},
        {"terrain", {7, 7, &R::DoTerrain}},
        {"terrain_tool", {5, 5, &R::DoTerrainTool}},
        {"decal", {2, 2, &R::DoDecal}},
        {"prefab", {3, 3, &R::DoPrefab}},
        {"movie", {2, 2, &R::DoMovie}},
        {"track", {1, 5, &R::DoTrack}},
        {"export", {1, 1, &R::DoExport}},
        {"echo", {0, 100, &R::DoEcho}},
        {"quit", {0, 0, &R::DoQuit}},
    };
    return vocabulary;
}

bool ScriptRunner::Run(std::istream& script, std::string& error) {
    int number = 1;
    for (std::string line; !has_quit && std::getline(script, line); ++number)
        if (std::string reason; !RunLine(line, reason)) {
            error = Format("line %d: %s", number, reason.c_str());
            return false;
        }
    return true;
}

bool ScriptRunner::RunLine(const std::string& line, std::string& error) {
    Words words;
    if (!SplitScriptLine(line, words)) {
        error = "a quote is not closed";
        return false;
    }
    if (words.empty())
        return true;
    const auto found = Vocabulary().find(words[0]);
    if (found == Vocabulary().end()) {
        error = Format("\"%s\" is no word of a script", words[0].c_str());
        return false;
    }
    const Word& word = found->second;
    if (words.size() - 1 < word.least || words.size() - 1 > word.most) {
        error = Format("\"%s\" has %d words behind it, which is too %s", words[0].c_str(),
                       static_cast<int>(words.size()) - 1, words.size() - 1 < word.least ? "few" : "many");
        return false;
    }
    failure.clear();
    const int failed_saves = frame.document.FailedSaves();
    if (EndsADrag(words[0]))
        interface.FinishDrag();
    const bool done = (this->*word.run)(words) &&
                      (frame.document.FailedSaves() == failed_saves || Fail("not all was saved")); // whatever saves it
    desktop.held.clear();
    frame.OnTimer();
    error = failure;
    return done;
}

bool ScriptRunner::Fail(const std::string& sentence) {
    failure = sentence;
    return false;
}

bool ScriptRunner::ReadNumber(const std::string& text, float& number) {
    char* end = nullptr;
    number = std::strtof(text.c_str(), &end);
    return (end != text.c_str() && *end == '\0' && std::isfinite(number)) ||
           Fail(Format("\"%s\" is no number", text.c_str()));
}

bool ScriptRunner::ReadInteger(const std::string& text, int& number) {
    constexpr int MOST = 1 << 24; // far beyond any view, and safe to add and multiply
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), number);
    return (status == std::errc{} && end == text.data() + text.size() && std::abs(number) <= MOST) ||
           Fail(Format("\"%s\" is no whole number", text.c_str()));
}

bool ScriptRunner::ReadView(const std::string& text, int& view) {
    for (view = 0; view < VIEW_COUNT; ++view)
        if (text == VIEW_NAMES[view])
            return true;
    return Fail(Format("there is no view \"%s\": top, front, left or perspective is needed", text.c_str()));
}

bool ScriptRunner::ReadModifiers(const Words& words, size_t from, uint32_t& flags) {
    flags = 0;
    for (size_t i = from; i < words.size(); ++i)
        if (words[i] == "shift") {
            flags |= MOUSE_SHIFT;
            desktop.held.insert(HeldKey::LeftShift);
        } else if (words[i] == "ctrl") {
            flags |= MOUSE_CONTROL;
            desktop.held.insert(HeldKey::Control);
        } else if (words[i] == "alt")
            desktop.held.insert(HeldKey::Alt);
        else
            return Fail(Format("\"%s\" is no key to hold: shift, ctrl or alt is needed", words[i].c_str()));
    return true;
}

bool ScriptRunner::DoCommand(const Words& words) {
    const Command* command = FindCommand(words[1]);
    if (!command)
        return Fail(Format("there is no command \"%s\"", words[1].c_str()));
    if (!command->action)
        return Fail(Format("the command \"%s\" is not available in this version", words[1].c_str()));
    frame.Run(*command);
    return true;
}

bool ScriptRunner::DoKey(const Words& words) {
    int presses = 1;
    if (words.size() > 2 && (!ReadInteger(words[2], presses) || presses < 1 || presses > MOST_PRESSES))
        return Fail(Format("\"%s\" is no number of presses", words[2].c_str()));
    const std::optional<KeyCombination> keys = ParseKeys(words[1]);
    if (!keys)
        return Fail(Format("there is no key \"%s\"", words[1].c_str()));
    const Command* command = FindCommandOfKey(words[1]);
    if (!command && !IsReservedKey(words[1]))
        return Fail(Format("the key \"%s\" has no command", words[1].c_str()));
    if (command && !command->action)
        return Fail(Format("the command \"%s\" is not available in this version", command->name));
    const std::pair<bool, HeldKey> modifiers[] = {{keys->control, HeldKey::Control},
                                                  {keys->shift, HeldKey::LeftShift},
                                                  {keys->alt, HeldKey::Alt},
                                                  {keys->num0, HeldKey::Num0}};
    for (const auto& [is_held, key] : modifiers)
        if (is_held)
            desktop.held.insert(key);
    if (const std::optional<HeldKey> held = HeldKeyOf(keys->key))
        desktop.held.insert(*held);
    for (int press = 0; press < presses; ++press) {
        frame.OnKey(words[1]);
        frame.OnTimer();
    }
    return true;
}

void ScriptRunner::SendMouse(CEditorView& view, const std::string& event, uint32_t flags, POINT point) {
    if (event == "move")
        view.OnMouseMove(flags, point);
    else if (event == "left_down")
        view.OnLButtonDown(flags, point);
    else if (event == "left_up")
        view.OnLButtonUp(flags, point);
    else if (event == "left_double")
        view.OnLButtonDblClk(flags, point);
    else if (event == "middle_down")
        view.OnMButtonDown(flags, point);
    else if (event == "middle_up")
        view.OnMButtonUp(flags, point);
    else if (event == "right_down")
        view.OnRButtonDown(flags, point);
    else if (event == "right_up")
        view.OnRButtonUp(flags, point);
    else
        view.OnMouseWheel(flags, event == "wheel_up" ? WHEEL_CLICK : -WHEEL_CLICK);
    interface.SyncVertexNet();
}

bool ScriptRunner::DoMouse(const Words& words) {
    int view = 0;
    POINT point;
    uint32_t flags = 0;
    if (!ReadView(words[1], view) || !ReadInteger(words[3], point.x) || !ReadInteger(words[4], point.y) ||
        !ReadModifiers(words, 5, flags))
        return false;
    if (std::find(std::begin(MOUSE_EVENTS), std::end(MOUSE_EVENTS), words[2]) == std::end(MOUSE_EVENTS))
        return Fail(Format("there is no mouse event \"%s\"", words[2].c_str()));
    SendMouse(frame.View(view), words[2], flags, point);
    return true;
}

bool ScriptRunner::DoDrag(const Words& words) {
    int view = 0;
    POINT from, to;
    uint32_t flags = 0;
    std::string button = "left";
    size_t behind = 6;
    if (words.size() > behind && (words[behind] == "right" || words[behind] == "middle"))
        button = words[behind++];
    if (!ReadView(words[1], view) || !ReadInteger(words[2], from.x) || !ReadInteger(words[3], from.y) ||
        !ReadInteger(words[4], to.x) || !ReadInteger(words[5], to.y) || !ReadModifiers(words, behind, flags))
        return false;
    CEditorView& target = frame.View(view);
    SendMouse(target, "move", flags, from);
    SendMouse(target, button + "_down", flags, from);
    for (int k = 1; k <= MOVES_OF_A_DRAG; ++k)
        SendMouse(target, "move", flags,
                  {from.x + (to.x - from.x) * k / MOVES_OF_A_DRAG, from.y + (to.y - from.y) * k / MOVES_OF_A_DRAG});
    SendMouse(target, button + "_up", flags, to);
    return true;
}
