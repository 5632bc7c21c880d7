// The two lines under the views: what the mouse does just now, and the panes of the editor.
#pragma once

#include <QStatusBar>
#include <array>

#include "editor/Interface.h"

class QLabel;

class StatusBar : public QStatusBar {
    Q_OBJECT
public:
    explicit StatusBar(QWidget* parent);
    void ShowPane(int pane, const std::string& text);
    void ShowHelp(const QString& help); // of the command under the mouse
    void ShowHint(const std::string& mode, const std::string& hint);

    std::array<QLabel*, PANE_COUNT> panes{};
    QLabel* hint_line;
};
