// Runs scripts: one action a line, as a person would do it with mouse and keys. "#" begins a comment, words are parted
// by blanks, double quotes keep blanks together. docs/scripts.md lists the words.
#pragma once

#include <filesystem>
#include <functional>
#include <istream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "commands/MainFrame.h"
#include "commands/ScriptDesktop.h"

// The words of a line; a comment is left out. False when a quote is not closed.
bool SplitScriptLine(const std::string& line, std::vector<std::string>& words);

class ScriptRunner {
public:
    // start_folder: what file names of the script are relative to. A name with a backslash is a data path.
    ScriptRunner(CMainFrame& main_frame, ScriptDesktop& script_desktop, std::filesystem::path start_folder);

    ~ScriptRunner();

    // Until the end, "quit", or the first line that cannot be done. False with a sentence that names the line.
    bool Run(std::istream& script, std::string& error);
    // One line. False with a sentence.
    bool RunLine(const std::string& line, std::string& error);

    bool has_quit = false;

private:
    using Words = std::vector<std::string>;
    struct Word {
        size_t least, most; // arguments
        bool (ScriptRunner::*run)(const Words&);
    };
    static const std::map<std::string, Word>& Vocabulary();

    bool Fail(const std::string& sentence);
    bool ReadNumber(const std::string& text, float& number);
    bool ReadInteger(const std::string& text, int& number);
    bool ReadView(const std::string& text, int& view);
    // "shift", "ctrl", "alt" from a position on: the keys held, and the mouse flags.
    bool ReadModifiers(const Words& words, size_t from, uint32_t& flags);
    bool WithPair(const Words& words, const std::function<void(float u, float v)>& change); // of the two numbers
    bool ReadText(const std::string& file, std::string& text);
    std::string FilePath(const std::string& file) const;
    void SendMouse(CEditorView& view, const std::string& event, uint32_t flags, POINT point);

    bool DoCommand(const Words& words);
    bool DoKey(const Words& words);
    bool DoMouse(const Words& words);
    bool DoDrag(const Words& words);
    bool DoSet(const Words& words);
    bool DoAnswer(const Words& words);
    bool DoNew(const Words& words);
    bool DoOpen(const Words& words);
    bool DoSave(const Words& words);
    bool DoEntity(const Words& words);
    bool DoParameter(const Words& words);
    bool DoMaterial(const Words& words);
    bool DoApply(const Words& words);
    bool DoShift(const Words& words);
    bool DoScale(const Words& words);
    bool DoRotate(const Words& words);
    bool DoFit(const Words& words);
    bool DoFlip(const Words& words);
    bool DoLock(const Words& words);
    bool DoView(const Words& words);
    bool DoCamera(const Words& words);
    bool DoPicture(const Words& words);
    bool DoDump(const Words& words);
    bool DoCompile(const Words& words);
    bool DoCheckScript(const Words& words);
    bool DoCompleteScript(const Words& words);
    bool DoTerrain(const Words& words);
    bool DoTerrainTool(const Words& words);
    bool DoDecal(const Words& words);
    bool DoPrefab(const Words& words);
    bool DoMovie(const Words& words);
    bool DoTrack(const Words& words);
    bool DoTrackFile(const Words& words);
    bool DoTrackKey(const Words& words, int row);
    bool DoExport(const Words& words);
    bool DoEcho(const Words& words);
    bool DoQuit(const Words& words);

    CMainFrame& frame;
    CInterface& interface;
    LibraryPages& pages;
    ScriptDesktop& desktop;
    std::filesystem::path folder;
    std::string failure, completion;
    std::unique_ptr<CTrackDlg> tracks; // from the first word about a tracklist on
};
