// The smaller script window: a text without a table of commands, such as an actor's own script.
#pragma once

#include <string>

#include <QDialog>

#include "pages/ScriptDialog.h"

class CEditKeys;

class ActorScriptWindow : public QDialog {
public:
    ActorScriptWindow(const std::string& text, QWidget* parent);
    std::string GetText() const;

private:
    CActorScriptDialog dialog;
    CEditKeys* script;
};

// False, and nothing changed, after Cancel.
bool RunActorScriptWindow(QWidget* parent, std::string& text);
