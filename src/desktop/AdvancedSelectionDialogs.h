// The windows that select by content: brushes by their properties, entities by type, name, parameters and scripts. Each
// tells, while its conditions change, how many objects they fit, and opens with those of the last time.
#pragma once

#include <array>

#include <QDialog>

#include "pages/AdvancedSelection.h"
#include "pages/BrushProperties.h"

class QCheckBox;
class QComboBox;
class QLabel;

class BrushSelectionDialog : public QDialog {
public:
    BrushSelectionDialog(CInterface& controller, const DlgSpecialSelection& last, QWidget* parent);
    DlgSpecialSelection Conditions() const;

private:
    void Show(const DlgSpecialSelection& shown);
    void ShowCount();

    CInterface& editor;
    std::array<QCheckBox*, BRUSH_PROPERTY_COUNT> flags{};
    QCheckBox *touch, *collision;
    QComboBox* name;
    QLabel* count;
};

class EntitySelectionDialog : public QDialog {
public:
    EntitySelectionDialog(CInterface& controller, const DlgSpecialEntSelection& last, QWidget* parent);
    DlgSpecialEntSelection Conditions() const;

private:
    void Show(const DlgSpecialEntSelection& shown);
    void FillLists(); // with what entities of the chosen type have
    void FillValues();
    void ShowCount();

    CInterface& editor;
    QComboBox *type, *name, *parameter, *value, *reference;
    QLabel* count;
};

// Asks and selects. last: the conditions of the last time, and then those of this one. False after Cancel.
bool RunBrushSelection(QWidget* parent, CInterface& editor, DlgSpecialSelection& last);
bool RunEntitySelection(QWidget* parent, CInterface& editor, DlgSpecialEntSelection& last);
