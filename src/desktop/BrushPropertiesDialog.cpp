#include "desktop/BrushPropertiesDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "editor/Interface.h"

static constexpr int FLAG_COLUMNS = 3;

BrushPropertiesDialog::BrushPropertiesDialog(BrushProperties& shown, QWidget* parent)
    : QDialog(parent), properties(shown) {
    setWindowTitle(tr("Brush properties"));
    auto* form = new QFormLayout;
    for (const BrushProperties::Field& field : properties.fields) {
        auto* line = new QLineEdit(QString::fromStdString(field.value));
        if (field.mixed) {
            line->setPlaceholderText(tr("different values"));
            line->setToolTip(tr("The brushes differ; what is typed here goes to all of them"));
        } else {
            line->setToolTip(tr("Goes to all selected brushes"));
        }
        fields.push_back(line);
        form->addRow(field.label, line);
    }
    auto* flag_group = new QGroupBox(tr("Properties"));
    auto* grid = new QGridLayout(flag_group);
    for (size_t bit = 0; bit < flags.size(); ++bit) {
        const int place = static_cast<int>(bit);
        flags[bit] = new QCheckBox(BRUSH_PROPERTY_LABELS[bit]);
        flags[bit]->setToolTip(tr("Half checked: the brushes differ"));
        grid->addWidget(flags[bit], place / FLAG_COLUMNS, place % FLAG_COLUMNS);
        connect(flags[bit], &QCheckBox::clicked, this, [this, place](bool on) {
            properties.SetFlag(place, on);
            ShowFlags();
        });
    }
    ShowFlags();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* column = new QVBoxLayout(this);
    column->addLayout(form);
    column->addWidget(flag_group);
    column->addWidget(buttons);
    fields.front()->setFocus();
}

// One click may change several: a clip property brings others along.
void BrushPropertiesDialog::ShowFlags() {
    for (size_t bit = 0; bit < flags.size(); ++bit) {
        const QSignalBlocker blocker(flags[bit]);
        const BrushProperties::FlagState state = properties.flags[bit];
        flags[bit]->setTristate(state == BrushProperties::FlagState::Mixed);
        flags[bit]->setCheckState(state == BrushProperties::FlagState::Mixed ? Qt::PartiallyChecked
                                  : state == BrushProperties::FlagState::On  ? Qt::Checked
                                                                             : Qt::Unchecked);
    }
}

void BrushPropertiesDialog::accept() {
    for (size_t i = 0; i < fields.size(); ++i)
        if (fields[i]->isModified())
            properties.SetValue(static_cast<BrushProperties::FieldName>(i), fields[i]->text().toStdString());
    QDialog::accept();
}

bool RunBrushProperties(QWidget* parent, CInterface& editor) {
    if (editor.world->brush_selection.GetItemCount() == 0)
        return false;
    BrushProperties properties(*editor.world);
    if (BrushPropertiesDialog(properties, parent).exec() != QDialog::Accepted)
        return false;
    ApplyBrushProperties(editor, properties);
    return true;
}
