// The library window: the pages for textures, entities, prefabs, preferences and AI, one shown at a time.
#pragma once

#include <array>

#include <QDockWidget>

#include "commands/MainFrame.h"
#include "desktop/LazyRefresh.h"

class EntityPage;
class PrefabPage;
class PreferencesPage;
class QTabWidget;
class TexturePage;

class LibraryWindow : public QDockWidget, public EditorListener {
public:
    LibraryWindow(CMainFrame& main_frame, QWidget* parent);
    ~LibraryWindow() override;

    void LibraryWindowChanged() override { news.Request(); }
    void ShowPage(int tab); // a LibraryTab

    TexturePage* texture;
    EntityPage* entity;
    PrefabPage* prefab;
    PreferencesPage* preferences;

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void Follow();

    CMainFrame& frame;
    CInterface& editor;
    LazyRefresh news;
    QTabWidget* tabs;
};
