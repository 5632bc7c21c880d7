// The windows beside the views: the library, and those that commands open.
#include <QDockWidget>
#include <QPushButton>
#include <QThread>

#include "desktop/AdvancedSelectionDialogs.h"
#include "desktop/BrushPropertiesDialog.h"
#include "desktop/LibraryWindow.h"
#include "desktop/LineColorsSection.h"
#include "desktop/MainWindow.h"
#include "desktop/PreferencesPage.h"
#include "desktop/TerrainWindows.h"
#include "desktop/ThemeSection.h"
#include "desktop/ToolWindows.h"
#include "desktop/TracksWindow.h"

void MainWindow::MakeWindows() {
    auto* const library_window = new LibraryWindow(frame, this);
    auto* const keys = new QPushButton(tr("Change &keys..."));
    keys->setToolTip(tr("Gives commands other keys"));
    connect(keys, &QPushButton::clicked, this, &MainWindow::ShowKeys);
    library_window->preferences->AddSection(tr("Keys"), keys);
    library_window->preferences->AddSection(tr("Light and dark"), new ThemeSection);
    library_window->preferences->AddSection(tr("Colours of lines"), new LineColorsSection(frame.interface));
    library = library_window;
    library->setObjectName("Library");
    addDockWidget(Qt::RightDockWidgetArea, library);
    library->setVisible(frame.interface.console_onscreen);
    actions.Replace("OnViewUndo", [this] { ToggleUndoWindow(); });
    actions.Replace("OnToolsProblemsolver", [this] { ProblemsWindow::Open(frame, this); });
    actions.Replace("OnBrushProperties", [this] { RunBrushProperties(this, frame.interface); });
    actions.Replace("OnSelectionSpecial",
                    [this, last = DlgSpecialSelection()]() mutable { RunBrushSelection(this, frame.interface, last); });
    actions.Replace("OnSelectionEntSpecial", [this, last = DlgSpecialEntSelection()]() mutable {
        RunEntitySelection(this, frame.interface, last);
    });
    frame.show_tracks = [this](CTrackDlg& tracks) { RunTracksWindow(tracks, frame.interface, this); };
    frame.show_terrain = [this](TerrainDlg& page) { TerrainDialog(page, this).exec(); };
    LibraryWindowChanged();
}

void MainWindow::TerrainToolChanged() {
    const bool on = frame.interface.editor_state == ES_TERRAIN;
    if (on && !terrain_window)
        terrain_window = new TerrainToolWindow(frame, this);
    if (terrain_window && terrain_window->isVisible() != on)
        terrain_window->setVisible(on);
}

void MainWindow::ToggleUndoWindow() {
    if (!undo_window)
        undo_window = new UndoWindow(frame, this);
    undo_window->setVisible(!undo_window->isVisible());
}

// Opens and closes the windows that have come to be, or have gone, as data.
void MainWindow::LibraryWindowChanged() {
    if (QThread::currentThread() != thread())
        return;
    if (frame.named_objects_dlg) {
        if (!named_window)
            named_window = new NamedObjectsWindow(frame, this);
        named_window->show();
        named_window->raise();
    }
    if (frame.pages.extended_sel_dlg) {
        if (!extended_window)
            extended_window = new ExtendedSelectWindow(frame, this);
        extended_window->show();
    }
}
