#include "desktop/ParameterEditors.h"

#include <climits>
#include <cmath>

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QLocale>
#include <QSignalBlocker>
#include <QToolButton>
#include <QWheelEvent>

#include "desktop/ColorButton.h"
#include "editor/EntityScripts.h"
#include "foundation/Strings.h"
#include "pages/ParameterText.h"
#include "scene/World.h"

namespace {

constexpr double FLOAT_RANGE = 1e9;
constexpr int COLOR_PART = 0, ALPHA_PART = 1;
constexpr const char* MIXED = QT_TRANSLATE_NOOP("ParameterField", "(different)");

QString MixedText() { return QObject::tr(MIXED); }

} // namespace

// --- Numbers

NumberField::NumberField(int decimals, QWidget* parent) : QDoubleSpinBox(parent) {
    setLocale(QLocale::c()); // a point, whatever the user's country writes
    setDecimals(decimals);
    if (decimals == 0)
        setRange(INT_MIN, INT_MAX);
    else
        setRange(-FLOAT_RANGE, FLOAT_RANGE);
    setKeyboardTracking(false);
    setFocusPolicy(Qt::StrongFocus);
    constexpr int BUTTONS = 36; // and the margins beside the text, pixels
    setMinimumWidth(fontMetrics().horizontalAdvance(MixedText()) + BUTTONS);
    connect(lineEdit(), &QLineEdit::textEdited, this,
            [this](const QString& typed) { is_mixed = shown_mixed && typed.isEmpty(); });
    connect(this, &QDoubleSpinBox::editingFinished, this, [this] {
        if (is_mixed != shown_mixed || value() != last_given)
            Give();
    });
}

void NumberField::ShowValue(double number, bool mixed) {
    const QSignalBlocker blocker(this);
    is_mixed = shown_mixed = mixed;
    exact = number;
    setValue(number);
    last_given = value();
    lineEdit()->setText(textFromValue(value())); // the value may be the same while the word goes or comes
}

double NumberField::Exact() const { return value() == last_given ? exact : value(); }

void NumberField::Give() {
    is_mixed = shown_mixed = false;
    exact = last_given = value();
    emit Given(last_given);
}

QString NumberField::textFromValue(double number) const {
    return is_mixed ? MixedText() : QLocale::c().toString(number, 'f', QLocale::FloatingPointShortest);
}

double NumberField::valueFromText(const QString& text) const {
    return text == MixedText() ? value() : QLocale::c().toDouble(text);
}

QValidator::State NumberField::validate(QString& text, int& at) const {
    if (is_mixed && text == MixedText())
        return QValidator::Acceptable;
    return QDoubleSpinBox::validate(text, at);
}

void NumberField::stepBy(int steps) {
    is_mixed = false;
    QDoubleSpinBox::stepBy(steps);
    Give();
}

void NumberField::wheelEvent(QWheelEvent* event) {
    if (hasFocus())
        QDoubleSpinBox::wheelEvent(event);
    else
        event->ignore();
}

// --- Fields

ParameterField::ParameterField(const EntityParameter& parameter, int parameter_index,
                               const std::vector<std::string>& choices, const ParameterActions& page_actions)
    : type(parameter.type), index(parameter_index), actions(page_actions) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(2);
    switch (type) {
    case EPT_BOOL:
        box = new QCheckBox;
        Add(box);
        connect(box, &QCheckBox::clicked, this,
                [this](bool on) { actions.write(index, on ? "TRUE" : "FALSE", WHOLE_VALUE); });
        break;
    case EPT_INT:
        MakeNumbers(1, 0);
        break;
    case EPT_FLOAT:
        MakeNumbers(1, EDIT_DECIMALS);
        break;
    case EPT_VECTOR2:
        MakeNumbers(2, EDIT_DECIMALS);
        break;
    case EPT_VECTOR3:
        MakeNumbers(3, EDIT_DECIMALS);
        break;
    case EPT_COLOR:
        MakeColor();
        break;
    case EPT_CONSTANT:
        combo = new QComboBox;
        for (const std::string& choice : choices)
            combo->addItem(QString::fromStdString(choice));
        combo->setFocusPolicy(Qt::StrongFocus);
        Add(combo);
        connect(combo, &QComboBox::textActivated, this,
                [this](const QString& text) { actions.write(index, text.toStdString(), WHOLE_VALUE); });
        break;
    case EPT_FILENAME:
    case EPT_STRING:
        MakeText(parameter);
        break;
    }
    if (parameter.has_comment && !parameter.comment.empty())
        setToolTip(QString::fromStdString(parameter.comment));
}

void ParameterField::Add(QWidget* field) {
    layout()->addWidget(field);
    field->installEventFilter(this);
}

bool ParameterField::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn)
        actions.choose(index);
    if (event->type() == QEvent::Wheel && watched == combo && !combo->hasFocus()) {
        event->ignore(); // the list under the pointer scrolls
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void ParameterField::MakeNumbers(int count, int decimals) {
    for (int i = 0; i < count; ++i) {
        auto* number = new NumberField(decimals);
        numbers.push_back(number);
        Add(number);
        connect(number, &NumberField::Given, this, [this, i] { WriteNumbers(well ? ALPHA_PART : i); });
    }
}

void ParameterField::MakeColor() {
    well = new CColorButton;
    Add(well);
    MakeNumbers(1, 0);
    numbers.front()->setRange(0, 255);
    numbers.front()->setToolTip(tr("Alpha, from 0 to 255"));
    connect(well, &CColorButton::Chosen, this, [this] { WriteNumbers(COLOR_PART); });
}

// The text is of all that is shown; the entities take the part of it.
void ParameterField::WriteNumbers(int part) {
    std::string text;
    if (well)
        text = Format("%u, %u, %u, ", well->m_color >> 16, well->m_color >> 8 & 255, well->m_color & 255);
    for (const NumberField* number : numbers) {
        if (number != numbers.front())
            text += ", ";
        text += Format("%.*f", number->decimals(), number->value());
    }
    actions.write(index, text, numbers.size() == 1 && !well ? WHOLE_VALUE : part);
}

void ParameterField::MakeText(const EntityParameter& parameter) {
    line = new QLineEdit;
    Add(line);
    connect(line, &QLineEdit::editingFinished, this, [this] {
        if (!line->isModified() || several_lines)
            return;
        line->setModified(false);
        actions.write(index, line->text().toStdString(), WHOLE_VALUE);
    });
    if (type == EPT_FILENAME)
        AddButton(tr("Looks for a file"), actions.browse);
    else
        AddButton(IsScriptParameter(parameter) || EqualNoCase(parameter.name, "conditions")
                      ? tr("Opens the script window")
                      : tr("Opens a window for a text of several lines"),
                  actions.edit_script);
}

void ParameterField::AddButton(const QString& tip, const std::function<void(int)>& action) {
    auto* button = new QToolButton;
    button->setText(QStringLiteral("..."));
    button->setToolTip(tip);
    button->setFocusPolicy(Qt::StrongFocus);
    Add(button);
    connect(button, &QToolButton::clicked, this, [this, &action] { action(index); });
}

void ParameterField::ShowValue(const EntityParameter& shown, unsigned mixed_parts) {
    const bool mixed = mixed_parts != 0;
    const auto show_numbers = [&](std::initializer_list<double> values) {
        for (size_t i = 0; i < numbers.size(); ++i)
            numbers[i]->ShowValue(values.begin()[i],
                                  (mixed_parts >> (well ? ALPHA_PART : static_cast<int>(i)) & 1) != 0);
    };
    switch (type) {
    case EPT_BOOL:
        box->setTristate(mixed);
        box->setCheckState(mixed ? Qt::PartiallyChecked : shown.p_bool ? Qt::Checked : Qt::Unchecked);
        break;
    case EPT_INT:
        show_numbers({static_cast<double>(shown.p_int)});
        break;
    case EPT_FLOAT:
        show_numbers({static_cast<double>(shown.p_float)});
        break;
    case EPT_VECTOR2:
        show_numbers({static_cast<double>(shown.p_vector2.u), static_cast<double>(shown.p_vector2.v)});
        break;
    case EPT_VECTOR3:
        show_numbers({static_cast<double>(shown.p_vector3.x), static_cast<double>(shown.p_vector3.y),
                      static_cast<double>(shown.p_vector3.z)});
        break;
    case EPT_COLOR:
        well->SetColor(ChannelToByte(shown.p_color.r) << 16 | ChannelToByte(shown.p_color.g) << 8 |
                       ChannelToByte(shown.p_color.b));
        well->SetMixed((mixed_parts >> COLOR_PART & 1) != 0);
        show_numbers({static_cast<double>(ChannelToByte(shown.p_color.a))});
        break;
    case EPT_CONSTANT:
        combo->setPlaceholderText(mixed ? MixedText() : QString::fromStdString(shown.p_text));
        combo->setCurrentIndex(mixed ? -1
                                     : combo->findText(QString::fromStdString(shown.p_text), Qt::MatchFixedString));
        break;
    case EPT_FILENAME:
    case EPT_STRING: {
        QString text = QString::fromStdString(shown.p_text);
        several_lines = text.contains('\n');
        line->setReadOnly(several_lines);
        line->setPlaceholderText(mixed ? MixedText() : QString());
        if (several_lines)
            text = text.simplified();
        if (!line->isModified() || !line->hasFocus())
            line->setText(mixed ? QString() : text);
        break;
    }
    }
}

unsigned MixedParts(const World& world, const EntityParameter& parameter) {
    const EntityParameter* first = nullptr;
    unsigned mixed = 0;
    for (const int e : world.entity_selection) {
        const EntityParameter* p = world.entity[static_cast<size_t>(e)]->GetParameterStr(parameter.name);
        if (!p || p->type != parameter.type)
            continue;
        for (int part = 0; first && part < PartCount(p->type); ++part)
            if (!IsSamePart(*first, *p, part))
                mixed |= 1u << part;
        first = first ? first : p;
    }
    return mixed;
}
