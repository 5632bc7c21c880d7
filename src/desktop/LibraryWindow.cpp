#include "desktop/LibraryWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QSignalBlocker>
#include <QTabWidget>

#include "desktop/AIPage.h"
#include "desktop/EntityPage.h"
#include "desktop/PrefabPage.h"
#include "desktop/PreferencesPage.h"
#include "desktop/TexturePage.h"

LibraryWindow::LibraryWindow(CMainFrame& main_frame, QWidget* parent)
    : QDockWidget(tr("Library"), parent), texture(new TexturePage(main_frame)), entity(new EntityPage(main_frame)),
      prefab(new PrefabPage(main_frame)), preferences(new PreferencesPage(main_frame)), frame(main_frame),
      editor(main_frame.interface), news([this] { Follow(); }), tabs(new QTabWidget) {
    setObjectName(QStringLiteral("Library")); // by which the layout of the windows is kept
    QWidget* const pages[] = {texture, entity, prefab, preferences, new AIPage(main_frame)};
    static constexpr const char* TIPS[] = {"Materials and their mapping", "Kinds of entities and their parameters",
                                           "Custom brushes and prefabs", "Settings, and what the level says of itself",
                                           "Groups of actors and their stances"};
    static_assert(std::size(pages) == CConsole::TABS.size() && std::size(TIPS) == CConsole::TABS.size());
    for (size_t i = 0; i < CConsole::TABS.size(); ++i) {
        tabs->addTab(pages[i], tr(CConsole::TABS[i].text));
        tabs->setTabToolTip(static_cast<int>(i), tr(TIPS[i]));
    }
    setWidget(tabs);
    connect(tabs, &QTabWidget::currentChanged, this,
            [this](int index) { frame.pages.console.SelectTab(CConsole::TABS[static_cast<size_t>(index)].number); });
    Follow();
    editor.AddListener(*this);
}

LibraryWindow::~LibraryWindow() { editor.RemoveListener(*this); }

void LibraryWindow::ShowPage(int tab) {
    for (size_t i = 0; i < CConsole::TABS.size(); ++i)
        if (CConsole::TABS[i].number == tab && tabs->currentIndex() != static_cast<int>(i)) {
            const QSignalBlocker blocker(tabs);
            const QWidget* before = QApplication::focusWidget();
            tabs->setCurrentIndex(static_cast<int>(i));
            QWidget* now = QApplication::focusWidget();
            if (now && now != before && tabs->isAncestorOf(now))
                now->clearFocus(); // the first field of the new page: the next key shall be a command, not a text
        }
}

// The undo list has a window of its own: asked for, it leaves this one as it is.
void LibraryWindow::Follow() {
    if (editor.selected_tab == TAB_UNDO) {
        editor.console_onscreen = !isHidden();
        editor.selected_tab = CConsole::TABS[static_cast<size_t>(tabs->currentIndex())].number;
        return;
    }
    ShowPage(editor.selected_tab);
    setVisible(editor.console_onscreen);
}

void LibraryWindow::closeEvent(QCloseEvent* event) {
    QDockWidget::closeEvent(event);
    if (editor.console_onscreen)
        frame.pages.console.OnClose();
}

// The keys that it shares with the main frame. A field that takes text has had them before.
void LibraryWindow::keyPressEvent(QKeyEvent* event) {
    const Qt::KeyboardModifiers held = event->modifiers() & ~Qt::KeypadModifier;
    const QString key = event->key() == Qt::Key_QuoteLeft ? QStringLiteral("`") : QKeySequence(event->key()).toString();
    if (event->key() == Qt::Key_Escape && isFloating())
        close();
    else if (held == Qt::NoModifier && frame.pages.console.PreTranslateMessage(key.toStdString()))
        event->accept();
    else
        QDockWidget::keyPressEvent(event);
}
