// The script window: a script with live help, completion of names, lists to choose from and a check.
#pragma once

#include <string>

#include <QDialog>
#include <QPlainTextEdit>

#include "pages/ScriptDialog.h"

class QComboBox;
class QLineEdit;
class QListWidget;
class QTimer;

// The field of a script, in which Ctrl+Tab asks for a completion and Tab alone does nothing.
class CEditKeys : public QPlainTextEdit {
public:
    CEditKeys();
    bool need_autocomplete = false;
    bool completes = true; // else Ctrl+Tab leaves the field

    void ShowScript(const std::string& text);
    // Its lines end as in the game's scripts, by carriage return and line feed. Untouched, it is as it was shown; one
    // that is no UTF-8 is edited byte by byte.
    std::string Script() const;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    std::string shown;
    QString shown_text; // the same as the field has it
    bool is_utf8 = true;
};

class ScriptWindow : public QDialog {
public:
    // syntax_table may be null: then there is neither help nor a check.
    ScriptWindow(CInterface& controller, const CScriptSyntax* syntax_table, const std::string& text, QWidget* parent);
    std::string GetText() const { return script->Script(); }
    void OnTimer(); // live help, and the completion that was asked for

private:
    QWidget* MakeLists();
    void FillNames();
    void FilterNames();
    void ShowHelpOfCommand(const QString& command);
    void ShowHelp();
    void InsertEntry(const QString& entry);
    void InsertFile();
    void Complete();
    void TakeText(); // of the field into the dialog's script
    size_t Caret() const;
    void PutText(size_t caret);

    CScriptDialog dialog;
    const CScriptSyntax* syntax;
    CEditKeys* script;
    QLineEdit *syntax_field, *description_field, *name_filter;
    QListWidget *commands, *names;
    QComboBox* types;
    QTimer* timer;
};

// False, and nothing changed, after Cancel.
bool RunScriptWindow(QWidget* parent, CInterface& editor, const CScriptSyntax* syntax, std::string& text);
