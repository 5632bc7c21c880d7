#include "desktop/AdvancedSelectionDialogs.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "editor/Interface.h"

namespace {

constexpr int FLAG_COLUMNS = 4;
constexpr int PICKER_ROWS = 20;    // of its list
constexpr int PICKER_LETTERS = 28; // of its field

// A field for a text with a list of those that the level has, which shrinks to what holds the letters typed.
QComboBox* MakePicker(const QString& any, const QString& tip) {
    auto* picker = new QComboBox;
    picker->setEditable(true);
    picker->setInsertPolicy(QComboBox::NoInsert);
    picker->setMaxVisibleItems(PICKER_ROWS);
    picker->setMinimumContentsLength(PICKER_LETTERS);
    picker->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    picker->completer()->setCompletionMode(QCompleter::PopupCompletion);
    picker->completer()->setFilterMode(Qt::MatchContains);
    picker->completer()->setCaseSensitivity(Qt::CaseInsensitive);
    picker->lineEdit()->setPlaceholderText(any);
    picker->lineEdit()->setClearButtonEnabled(true);
    picker->setToolTip(tip);
    return picker;
}

// The text stays as it is.
void FillPicker(QComboBox* picker, const std::vector<std::string>& texts) {
    const QSignalBlocker blocker(picker);
    const QString text = picker->currentText();
    picker->clear();
    for (const std::string& t : texts)
        picker->addItem(QString::fromStdString(t));
    picker->setEditText(text);
}

std::string TextOf(const QComboBox* picker) { return picker->currentText().toStdString(); }

void ShowText(QComboBox* picker, const std::string& text) { picker->setEditText(QString::fromStdString(text)); }

// OK, Cancel and one that empties the conditions.
template <class Clear>
QDialogButtonBox* MakeButtons(QDialog* dialog, const QString& select_tip, Clear clear) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(QObject::tr("&Select"));
    buttons->button(QDialogButtonBox::Ok)->setToolTip(select_tip);
    QPushButton* reset = buttons->addButton(QObject::tr("Clea&r"), QDialogButtonBox::ResetRole);
    reset->setToolTip(QObject::tr("Takes all conditions away"));
    reset->setAutoDefault(false);
    QObject::connect(reset, &QPushButton::clicked, dialog, clear);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}

} // namespace

// --- Brushes

BrushSelectionDialog::BrushSelectionDialog(CInterface& controller, const DlgSpecialSelection& last, QWidget* parent)
    : QDialog(parent), editor(controller), touch(new QCheckBox(tr("Has touch dmg."))),
      collision(new QCheckBox(tr("Has collision dmg."))),
      name(MakePicker(tr("any"), tr("Brushes of this name, in any case"))), count(new QLabel) {
    setWindowTitle(tr("Advanced brush selection"));
    auto* properties = new QGroupBox(tr("Any of these properties"));
    properties->setToolTip(tr("A brush fits if it has one of the checked properties; with none checked, each does"));
    auto* grid = new QGridLayout(properties);
    for (size_t bit = 0; bit < flags.size(); ++bit) {
        const int place = static_cast<int>(bit);
        flags[bit] = new QCheckBox(QString::fromStdString(DlgSpecialSelection::Label(place)));
        flags[bit]->setToolTip(tr("Brushes with this property"));
        grid->addWidget(flags[bit], place / FLAG_COLUMNS, place % FLAG_COLUMNS);
    }
    auto* others = new QGroupBox(tr("And all of these"));
    auto* form = new QFormLayout(others);
    form->addRow(tr("&Name:"), name);
    touch->setToolTip(tr("Brushes that hurt who touches them"));
    collision->setToolTip(tr("Brushes that hurt what they hit"));
    form->addRow(touch);
    form->addRow(collision);
    count->setToolTip(tr("How many brushes fit, hidden ones too"));
    auto* column = new QVBoxLayout(this);
    column->addWidget(properties);
    column->addWidget(others);
    column->addWidget(count);
    column->addWidget(
        MakeButtons(this, tr("Selects what fits all conditions, and nothing else"), [this] { Show({}); }));
    FillPicker(name, BrushNames(*editor.world));
    Show(last);
    for (QCheckBox* box : findChildren<QCheckBox*>())
        connect(box, &QCheckBox::toggled, this, [this] { ShowCount(); });
    connect(name, &QComboBox::editTextChanged, this, [this] { ShowCount(); });
}

void BrushSelectionDialog::Show(const DlgSpecialSelection& shown) {
    for (size_t bit = 0; bit < flags.size(); ++bit)
        flags[bit]->setChecked((shown.mask >> bit & 1) != 0);
    touch->setChecked(shown.has_touch_dmg);
    collision->setChecked(shown.has_coll_dmg);
    ShowText(name, shown.name);
    ShowCount();
}

DlgSpecialSelection BrushSelectionDialog::Conditions() const {
    DlgSpecialSelection given;
    for (size_t bit = 0; bit < flags.size(); ++bit)
        given.mask |= (flags[bit]->isChecked() ? 1u : 0u) << bit;
    given.name = TextOf(name);
    given.has_touch_dmg = touch->isChecked();
    given.has_coll_dmg = collision->isChecked();
    return given;
}

void BrushSelectionDialog::ShowCount() {
    count->setText(tr("%1 of %2 brushes").arg(Conditions().Count(*editor.world)).arg(editor.world->GetBrushCount()));
}

// --- Entities

EntitySelectionDialog::EntitySelectionDialog(CInterface& controller, const DlgSpecialEntSelection& last,
                                             QWidget* parent)
    : QDialog(parent), editor(controller), type(new QComboBox),
      name(MakePicker(tr("any"), tr("Entities of this name, in any case"))),
      parameter(MakePicker(tr("any"), tr("Entities with a parameter of this name"))),
      value(MakePicker(tr("any"), tr("Entities whose parameter, or any if none is named, has this value. Numbers can "
                                     "be whole and not negative; vectors cannot be looked for."))),
      reference(MakePicker(tr("none"), tr("Entities with a script that names this object"))), count(new QLabel) {
    setWindowTitle(tr("Advanced entity selection"));
    type->setToolTip(tr("Entities of this type"));
    type->setMaxVisibleItems(PICKER_ROWS);
    const auto add_group = [](const QString& title, std::initializer_list<std::pair<QString, QComboBox*>> rows) {
        auto* group = new QGroupBox(title);
        auto* form = new QFormLayout(group);
        for (const auto& [label, field] : rows)
            form->addRow(label, field);
        return group;
    };
    count->setToolTip(tr("How many entities fit, hidden ones too"));
    auto* column = new QVBoxLayout(this);
    column->addWidget(add_group(tr("Entity"), {{tr("&Type:"), type}, {tr("&Name:"), name}}));
    column->addWidget(add_group(tr("Parameter"), {{tr("&Parameter:"), parameter}, {tr("&Value:"), value}}));
    column->addWidget(add_group(tr("Scripts"), {{tr("Re&ferences:"), reference}}));
    column->addWidget(count);
    column->addWidget(MakeButtons(this,
                                  tr("Selects the entities that fit all conditions; selected brushes stay selected"),
                                  [this] { Show({}); }));
    for (const std::string& word : EntityTypes(*editor.world))
        type->addItem(QString::fromStdString(word));
    FillPicker(reference, ObjectNames(*editor.world));
    Show(last);
    connect(type, &QComboBox::currentTextChanged, this, [this] {
        FillLists();
        ShowCount();
    });
    connect(parameter, &QComboBox::editTextChanged, this, [this] { FillValues(); });
    for (QComboBox* picker : {name, parameter, value, reference})
        connect(picker, &QComboBox::editTextChanged, this, [this] { ShowCount(); });
}

// A type that the level has no more gives way to all types.
void EntitySelectionDialog::Show(const DlgSpecialEntSelection& shown) {
    const QSignalBlocker blockers[] = {QSignalBlocker(type), QSignalBlocker(name), QSignalBlocker(parameter),
                                       QSignalBlocker(value), QSignalBlocker(reference)}; // counted once, at the end
    type->setCurrentIndex(std::max(type->findText(QString::fromStdString(shown.type), Qt::MatchFixedString), 0));
    ShowText(name, shown.name);
    ShowText(parameter, shown.parameter_name);
    ShowText(value, shown.value);
    ShowText(reference, shown.reference);
    FillLists();
    ShowCount();
}

DlgSpecialEntSelection EntitySelectionDialog::Conditions() const {
    return {TextOf(type), TextOf(name), TextOf(parameter), TextOf(value), TextOf(reference)};
}

void EntitySelectionDialog::FillLists() {
    FillPicker(name, EntityNames(*editor.world, TextOf(type)));
    FillPicker(parameter, ParameterNames(*editor.world, TextOf(type)));
    FillValues();
}

void EntitySelectionDialog::FillValues() {
    FillPicker(value, ParameterValues(*editor.world, TextOf(type), TextOf(parameter)));
}

void EntitySelectionDialog::ShowCount() {
    count->setText(tr("%1 of %2 entities").arg(Conditions().Count(editor)).arg(editor.world->GetEntityCount()));
}

// --- Asking

bool RunBrushSelection(QWidget* parent, CInterface& editor, DlgSpecialSelection& last) {
    BrushSelectionDialog dialog(editor, last, parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    last = dialog.Conditions();
    last.OnOK(editor);
    return true;
}

bool RunEntitySelection(QWidget* parent, CInterface& editor, DlgSpecialEntSelection& last) {
    EntitySelectionDialog dialog(editor, last, parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    last = dialog.Conditions();
    last.OnOK(editor);
    return true;
}
