// Movie files, the times of paths, and the tracklist.
#include "commands/MainFrame.h"
#include "foundation/Strings.h"
#include "pages/TrackDlg.h"

namespace {

constexpr const char* TITLE = "Marrowstead 2000";
constexpr const char* MOVIE_FILTER = "Movie files (*.mvi)|*.mvi|All files (*.*)|*.*||";
constexpr const char* MOVIE_FOLDER = "Anim\\";
constexpr const char* MOVIE_ENDING = ".mvi";

// The box, and which file for what reason. True if all went well.
bool Tell(int result, const char* text, const std::string& error) {
    if (result == MOVIE_OK)
        return true;
    GetDesktop().Notice(error);
    GetDesktop().MessageBox(text, "Error");
    return false;
}

} // namespace

void CMainFrame::OnFileNewmovie() {
    {
        const ChangeRecord record(*interface.world, "New movie.", ChangeScope::AllObjects);
        interface.ClearAnimation(NO_OBJECT_ID);
    }
    interface.world->movie_name.clear(); // the next save does not write over the last movie
    interface.UpdateSelectionBox();
    interface.RedrawAllViews();
    interface.MarkDirty();
}

void CMainFrame::TakeMovie(const std::function<int(const std::string& name, std::string& error)>& load) {
    const std::optional<std::string> name =
        GetDesktop().AskFile({false, "Open", MOVIE_FILTER, MOVIE_FOLDER, MOVIE_ENDING, ""});
    if (!name)
        return;
    KnownFile file;
    file.Know(*name);
    std::string error;
    if (!Tell(load(*name, error), "File not found or error opening file.", error))
        return;
    interface.world->movie_name = *name;
    known_movie = file;
}

void CMainFrame::LoadMovieFile(bool replace) {
    TakeMovie([&](const std::string& name, std::string& error) { return interface.LoadMovie(name, error, replace); });
}

void CMainFrame::OnFileLoadmovie() { LoadMovieFile(true); }

void CMainFrame::OnFileMergemovie() { LoadMovieFile(false); }

void CMainFrame::OnFileLoadmovieforselection() {
    const World& world = *interface.world;
    if (world.brush_selection.GetItemCount() + world.entity_selection.GetItemCount() != 1) {
        GetDesktop().MessageBox("Exactly one object must be selected.", TITLE);
        return;
    }
    TakeMovie(
        [&](const std::string& name, std::string& error) { return interface.LoadMovieForSelection(name, error); });
}

bool CMainFrame::SaveMovie() {
    return interface.world->movie_name.empty() ? SaveMovieAs() : SaveMovieTo(interface.world->movie_name);
}

bool CMainFrame::SaveMovieTo(const std::string& name) {
    std::string error;
    if (!known_movie.MayReplace(name) || !Tell(interface.SaveMovie(name, error), "Error writing to a file.", error)) {
        document.CountFailedSave();
        return false;
    }
    known_movie.Know(name);
    return true;
}

bool CMainFrame::SaveMovieAs() {
    const std::optional<std::string> name = GetDesktop().AskFile(
        {true, "Save As", MOVIE_FILTER, MOVIE_FOLDER, MOVIE_ENDING, FilePart(interface.world->movie_name)});
    if (!name || !SaveMovieTo(*name))
        return false;
    interface.world->movie_name = *name;
    return true;
}

void CMainFrame::OnMovieAligntimeofpoints() {
    {
        const ChangeRecord record(*interface.world, "Align the time of points.", ChangeScope::AllObjects);
        interface.world->AlignTimeOfPoints();
    }
    interface.RedrawAllViews();
    interface.MarkDirty();
}

void CMainFrame::OnMovieComputetime() {
    GetDesktop().MessageBox(Format("Total time for selected path is %f seconds.",
                                   static_cast<double>(interface.world->ComputePathTimeForSelection())),
                            TITLE);
}

void CMainFrame::OnToolsTrackedit() {
    CTrackDlg tracks(interface);
    tracks.OnInitDialog();
    if (show_tracks)
        show_tracks(tracks);
}
