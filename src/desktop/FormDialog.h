// A small dialog made from a question: a line edit, a spin box, a check box or a combo box for each field.
#pragma once

#include <vector>

#include <QDialog>

#include "foundation/Desktop.h"

class QGridLayout;

class FormDialog : public QDialog {
public:
    FormDialog(const FormQuestion& question, QWidget* parent);
    void TakeAnswers(FormQuestion& question) const;

private:
    QWidget* MakeEditor(const FormField& field);
    static bool StandsInGrid(const FormQuestion& question, size_t field);

    std::vector<QWidget*> editors; // one a field
};

// Asks it. False, and nothing changed, after Cancel or Escape.
bool RunFormDialog(QWidget* parent, FormQuestion& question);
