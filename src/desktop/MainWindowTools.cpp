// The windows beside the views: the library, and those that commands open.
#include <QDockWidget>
#include <QThread>

#include "desktop/BrushPropertiesDialog.h"
#include "desktop/LibraryWindow.h"
#include "desktop/MainWindow.h"
#include "desktop/ToolWindows.h"

void MainWindow::MakeWindows() {
    library = new LibraryWindow(frame, this);
    library->setObjectName("Library");
    addDockWidget(Qt::RightDockWidgetArea, library);
    library->setVisible(frame.interface.console_onscreen);
    actions.Replace("OnViewUndo", [this] { ToggleUndoWindow(); });
    actions.Replace("OnToolsProblemsolver", [this] { ProblemsWindow::Open(frame, this); });
    actions.Replace("OnBrushProperties", [this] { RunBrushProperties(this, frame.interface); });
    LibraryWindowChanged();
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
