// The words of a script that are no mouse and no keys: fields, files, the library pages, pictures, and the compile.
#include <cstdio>

#include "commands/ScriptFields.h"
#include "commands/ScriptRunner.h"
#include "commands/StateDump.h"
#include "drawing/ViewDrawing.h"
#include "files/AtomicFile.h"
#include "files/Png.h"
#include "foundation/Paths.h"
#include "foundation/Strings.h"
#include "foundation/WholeFile.h"
#include "pages/ScriptDialog.h"

namespace {

bool IsZoom(int n) { return n >= 1 && n <= MOST_ZOOM && (n & (n - 1)) == 0; }

} // namespace

// An existing file as seen from the start, else inside the data; a new one beside the start.
std::string ScriptRunner::FilePath(const std::string& file) const {
    if (file.find('\\') != std::string::npos)
        return file;
    return (folder / file).string();
}

bool ScriptRunner::ReadText(const std::string& file, std::string& text) {
    std::string reason;
    return ReadWholeFile(RealPath(FilePath(file)), text, reason) ||
           Fail(Format("\"%s\" cannot be opened: %s", file.c_str(), reason.c_str()));
}

bool ScriptRunner::DoSet(const Words& words) {
    std::string value = words[2];
    for (size_t i = 3; i < words.size(); ++i)
        value += " " + words[i];
    return SetScriptField(interface, words[1], value, failure);
}

bool ScriptRunner::DoAnswer(const Words& words) {
    desktop.answers.push_back(words[1]);
    return true;
}

bool ScriptRunner::DoNew(const Words&) {
    frame.document.New();
    return true;
}

bool ScriptRunner::DoOpen(const Words& words) { return frame.document.Open(FilePath(words[1]), failure); }

bool ScriptRunner::DoSave(const Words& words) {
    if (words.size() > 1)
        return frame.document.SaveTo(FilePath(words[1])) || Fail("the project was not saved");
    if (!interface.project_file_has_name)
        return Fail("the project has no name yet");
    frame.document.OnFileSave();
    return true;
}

bool ScriptRunner::DoEntity(const Words& words) {
    return pages.entity.SelectTemplate(words[1]) || Fail(Format("there is no entity \"%s\"", words[1].c_str()));
}

bool ScriptRunner::DoParameter(const Words& words) {
    const Entity* chosen = pages.entity.SelectedTemplate();
    if (!chosen || chosen->GetParameterIndex(words[1]) == -1)
        return Fail(Format("the chosen entity has no parameter \"%s\"", words[1].c_str()));
    pages.entity.SetParameter(words[1], words[2]);
    return true;
}

bool ScriptRunner::DoMaterial(const Words& words) {
    return pages.texture.SetMaterial(words[1], words[2]) ||
           Fail(Format("there is no material \"%s\\%s\"", words[1].c_str(), words[2].c_str()));
}

bool ScriptRunner::DoApply(const Words&) {
    return pages.texture.Apply() || Fail("no material is chosen, or nothing is selected");
}

bool ScriptRunner::WithPair(const Words& words, const std::function<void(float u, float v)>& change) {
    float u = 0, v = 0;
    if (!ReadNumber(words[1], u) || !ReadNumber(words[2], v))
        return false;
    change(u, v);
    return true;
}

bool ScriptRunner::DoShift(const Words& words) {
    return WithPair(words, [this](float u, float v) { pages.texture.ChangeShift(u, v); });
}

bool ScriptRunner::DoScale(const Words& words) {
    return WithPair(words, [this](float u, float v) { pages.texture.ChangeScale(u, v); });
}

bool ScriptRunner::DoRotate(const Words& words) {
    float degrees = 0;
    if (!ReadNumber(words[1], degrees))
        return false;
    pages.texture.ChangeRotation(degrees, false);
    return true;
}

bool ScriptRunner::DoFit(const Words& words) {
    return WithPair(words, [this](float u, float v) { pages.texture.Fit(u, v); });
}

bool ScriptRunner::DoFlip(const Words& words) {
    if (words[1] != "u" && words[1] != "v")
        return Fail("u or v is needed behind \"flip\"");
    if (words[1] == "u")
        pages.texture.FlipU();
    else
        pages.texture.FlipV();
    return true;
}

bool ScriptRunner::DoLock(const Words& words) {
    if (words[1] != "0" && words[1] != "1")
        return Fail("0 or 1 is needed behind \"lock\"");
    pages.texture.SetLocked(words[1] == "1");
    return true;
}

bool ScriptRunner::DoView(const Words& words) {
    int view = 0, x = 0, y = 0;
    if (!ReadView(words[1], view) || !ReadInteger(words[3], x))
        return false;
    VIEWINFO& vi = interface.View(view);
    if (words[2] == "scroll" && words.size() == 5) {
        if (!ReadInteger(words[4], y))
            return false;
        vi.view_position[0] = x;
        vi.view_position[1] = y;
    } else if (words[2] == "zoom" && words.size() == 4) {
        if (!IsZoom(x) && !IsZoom(-x))
            return Fail(
                Format("\"%s\" is no zoom: a power of two from 1 to 128 or its negative is needed", words[3].c_str()));
        vi.zoom_in = x > 0 ? x : 1;
        vi.zoom_out = x > 0 ? 1 : -x;
    } else
        return Fail("\"scroll X Y\" or \"zoom N\" is needed behind the view");
    interface.SetInfoText();
    return true;
}

bool ScriptRunner::DoCamera(const Words& words) {
    float n[5] = {};
    for (size_t i = 0; i < std::size(n); ++i)
        if (!ReadNumber(words[i + 1], n[i]))
            return false;
    VIEWINFO& vi = interface.View(VIEW_PERSPECTIVE);
    vi.camera_position = {n[0], n[1], n[2]};
    vi.camera_rotation = {n[3], n[4], 0};
    return true;
}

bool ScriptRunner::DoPicture(const Words& words) {
    RECT part;
    if (words[1] == "all") {
        for (int view = 0; view < VIEW_COUNT; ++view) {
            const RECT& r = interface.View(view).window_rect;
            part.right = std::max(part.right, r.right);
            part.bottom = std::max(part.bottom, r.bottom);
            interface.DrawView(view);
        }
    } else {
        int view = 0;
        if (!ReadView(words[1], view))
            return false;
        interface.DrawView(view);
        part = interface.View(view).window_rect;
    }
    return WritePng(RealPath(FilePath(words[2])).string(), part.Width(), part.Height(), ReadBackBuffer(part), failure);
}

bool ScriptRunner::DoDump(const Words& words) {
    const std::string text = DumpState(interface, desktop.messages, completion);
    AtomicFile file(FilePath(words[1]));
    return (file.IsOpen() && file.Write(text.data(), text.size()) && file.Commit()) ||
           Fail(Format("\"%s\" cannot be written: %s", words[1].c_str(), file.GetError().c_str()));
}

bool ScriptRunner::DoCompile(const Words& words) {
    if (words[0] == "compile")
        frame.OnCompile();
    else
        frame.CompileEntities(words[0] == "compile_visibility");
    return frame.last_compile == CompileOutcome::Written || Fail("the compile wrote no world");
}

static const CScriptSyntax* SyntaxOf(const CInterface& interface, const std::string& kind) {
    return kind == "commands"     ? interface.command_syntax.get()
           : kind == "conditions" ? interface.condition_syntax.get()
                                  : nullptr;
}

bool ScriptRunner::DoCheckScript(const Words& words) {
    const CScriptSyntax* syntax = SyntaxOf(interface, words[1]);
    if (!syntax)
        return Fail("\"commands\" or \"conditions\" is needed");
    std::string text;
    if (!ReadText(words[2], text))
        return false;
    CScriptDialog dialog(interface, syntax);
    dialog.SetScript(text);
    dialog.OnParse();
    return true;
}

bool ScriptRunner::DoCompleteScript(const Words& words) {
    const CScriptSyntax* syntax = SyntaxOf(interface, words[1]);
    int line = 0, column = 0;
    if (!syntax)
        return Fail("\"commands\" or \"conditions\" is needed");
    std::string text;
    if (!ReadText(words[2], text) || !ReadInteger(words[3], line) || !ReadInteger(words[4], column))
        return false;
    size_t start = 0;
    for (int n = 1; n < line && start != std::string::npos; ++n)
        start = text.find('\n', start) == std::string::npos ? std::string::npos : text.find('\n', start) + 1;
    const size_t end = start == std::string::npos ? 0 : std::min(text.find('\n', start), text.size());
    if (line < 1 || column < 0 || start == std::string::npos || static_cast<size_t>(column) > end - start)
        return Fail(Format("there is no line %d column %d in \"%s\"", line, column, words[2].c_str()));
    CScriptDialog dialog(interface, syntax);
    dialog.RefreshNameList(true);
    dialog.SetScript(text);
    completion = dialog.Complete(start + static_cast<size_t>(column));
    return true;
}

bool ScriptRunner::DoEcho(const Words& words) {
    for (size_t i = 1; i < words.size(); ++i)
        std::printf("%s%s", i > 1 ? " " : "", words[i].c_str());
    std::printf("\n");
    std::fflush(stdout); // who writes the script line by line waits for it
    return true;
}

bool ScriptRunner::DoQuit(const Words&) {
    has_quit = true;
    return true;
}
