// Finds any command by a part of its name, and runs it.
#pragma once

#include <QDialog>
#include <vector>

#include "desktop/KeyBindings.h"

class QLineEdit;
class QTreeWidget;
class CommandActions;

// The commands whose title or menu contains all words, in any case: those that begin with the text first.
std::vector<const Command*> FindCommands(const std::string& text);

class CommandPalette : public QDialog {
    Q_OBJECT
public:
    CommandPalette(const CommandActions& command_actions, const KeyBindings& bindings, QWidget* parent);

    const Command* chosen = nullptr; // when it was accepted

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Fill(const QString& text);
    void Take();

    const CommandActions& actions;
    const KeyBindings& keys;
    QLineEdit* words;
    QTreeWidget* list;
    std::vector<const Command*> found;
};
