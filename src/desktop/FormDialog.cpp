#include "desktop/FormDialog.h"

#include <climits>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QLineEdit>
#include <QScreen>
#include <QScrollArea>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

constexpr size_t GRID_FROM = 4; // check boxes in a row of fields that are set side by side
constexpr int GRID_COLUMNS = 3;

bool IsCompact(const FormField& field) { return field.kind == FormField::Flag; }

QString WithoutColon(const std::string& label) {
    QString text = QString::fromStdString(label);
    if (text.endsWith(':'))
        text.chop(1);
    return text;
}

} // namespace

// Many check boxes behind one another would make a dialog as high as the screen.
bool FormDialog::StandsInGrid(const FormQuestion& question, size_t field) {
    if (!IsCompact(question.fields[field]))
        return false;
    size_t first = field, end = field;
    while (first > 0 && IsCompact(question.fields[first - 1]))
        --first;
    while (end < question.fields.size() && IsCompact(question.fields[end]))
        ++end;
    return end - first >= GRID_FROM;
}

QWidget* FormDialog::MakeEditor(const FormField& field) {
    switch (field.kind) {
    case FormField::Number: {
        auto* spin = new QSpinBox;
        const bool any = field.least == 0 && field.most == 0;
        spin->setRange(any ? INT_MIN : field.least, any ? INT_MAX : field.most);
        spin->setValue(QString::fromStdString(field.value).toInt());
        spin->selectAll();
        if (!any)
            spin->setToolTip(tr("A whole number from %1 to %2").arg(field.least).arg(field.most));
        return spin;
    }
    case FormField::Flag: {
        auto* box = new QCheckBox(WithoutColon(field.label));
        box->setChecked(field.value == "1");
        return box;
    }
    case FormField::Choice: {
        auto* combo = new QComboBox;
        for (const std::string& choice : field.choices)
            combo->addItem(QString::fromStdString(choice));
        combo->setCurrentText(QString::fromStdString(field.value));
        return combo;
    }
    case FormField::Text:
        break;
    }
    auto* line = new QLineEdit(QString::fromStdString(field.value));
    if (field.max_length > 0) {
        line->setMaxLength(static_cast<int>(field.max_length));
        line->setToolTip(tr("At most %1 characters").arg(field.max_length));
    }
    line->selectAll();
    return line;
}

FormDialog::FormDialog(const FormQuestion& question, QWidget* parent) : QDialog(parent) {
    setWindowTitle(QString::fromStdString(question.title));
    auto* fields = new QWidget;
    auto* form = new QFormLayout(fields);
    QGridLayout* grid = nullptr;
    int in_grid = 0;
    for (size_t i = 0; i < question.fields.size(); ++i) {
        const FormField& field = question.fields[i];
        QWidget* editor = MakeEditor(field);
        editors.push_back(editor);
        if (StandsInGrid(question, i)) {
            if (!grid) {
                grid = new QGridLayout;
                in_grid = 0;
                form->addRow(grid);
            }
            grid->addWidget(editor, in_grid / GRID_COLUMNS, in_grid % GRID_COLUMNS);
            ++in_grid;
            continue;
        }
        grid = nullptr;
        if (field.kind == FormField::Flag)
            form->addRow(editor);
        else
            form->addRow(WithoutColon(field.label) + ":", editor);
    }
    auto* scroll = new QScrollArea;
    scroll->setWidget(fields);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const QSize wanted = fields->sizeHint();
    scroll->setMinimumSize(wanted.width() + 4, std::min(wanted.height(), screen()->availableSize().height() * 2 / 3));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* column = new QVBoxLayout(this);
    column->addWidget(scroll);
    column->addWidget(buttons);
    if (!editors.empty())
        editors.front()->setFocus();
}

void FormDialog::TakeAnswers(FormQuestion& question) const {
    for (size_t i = 0; i < editors.size() && i < question.fields.size(); ++i) {
        std::string& value = question.fields[i].value;
        if (const auto* spin = qobject_cast<QSpinBox*>(editors[i]))
            value = std::to_string(spin->value());
        else if (const auto* box = qobject_cast<QCheckBox*>(editors[i]))
            value = box->isChecked() ? "1" : "0";
        else if (const auto* combo = qobject_cast<QComboBox*>(editors[i]))
            value = combo->currentText().toStdString();
        else if (const auto* line = qobject_cast<QLineEdit*>(editors[i]))
            value = line->text().toStdString();
    }
}

bool RunFormDialog(QWidget* parent, FormQuestion& question) {
    FormDialog dialog(question, parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    dialog.TakeAnswers(question);
    return true;
}
