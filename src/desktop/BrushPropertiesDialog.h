// The properties of the selected brushes. Where they differ a field is empty and says so, and a box is half checked;
// what is left that way stays as it is.
#pragma once

#include <array>
#include <vector>

#include <QDialog>

#include "pages/BrushProperties.h"

class QCheckBox;
class QLineEdit;

class BrushPropertiesDialog : public QDialog {
public:
    BrushPropertiesDialog(BrushProperties& shown, QWidget* parent);

protected:
    void accept() override; // takes the fields

private:
    void ShowFlags();

    BrushProperties& properties;
    std::vector<QLineEdit*> fields; // by FieldName
    std::array<QCheckBox*, BRUSH_PROPERTY_COUNT> flags{};
};

// Asks for them and writes what was changed, as one step. False when none is selected or the user cancels.
bool RunBrushProperties(QWidget* parent, CInterface& editor);
