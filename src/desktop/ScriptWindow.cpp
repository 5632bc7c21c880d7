#include "desktop/ScriptWindow.h"

#include <algorithm>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSplitter>
#include <QStringDecoder>
#include <QTimer>
#include <QVBoxLayout>

#include "editor/Interface.h"

static constexpr int HELP_INTERVAL = 500; // milliseconds

CEditKeys::CEditKeys() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setFamilies({"Lucida Console", font.family()});
    setFont(font);
    setLineWrapMode(QPlainTextEdit::NoWrap);
}

void CEditKeys::ShowScript(const std::string& text) {
    shown = text;
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString decoded = decoder(QByteArray::fromStdString(text));
    is_utf8 = !decoder.hasError();
    setPlainText(is_utf8 ? decoded : QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size())));
    shown_text = toPlainText();
}

std::string CEditKeys::Script() const {
    QString text = toPlainText();
    if (text == shown_text)
        return shown;
    text.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    const bool has_bytes = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() <= 0xFF; });
    return is_utf8 || !has_bytes ? text.toStdString() : text.toLatin1().toStdString();
}

void CEditKeys::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab) {
        if (!completes && event->modifiers().testFlag(Qt::ControlModifier)) {
            focusNextPrevChild(event->key() == Qt::Key_Tab);
            return;
        }
        need_autocomplete |= event->key() == Qt::Key_Tab && event->modifiers().testFlag(Qt::ControlModifier);
        event->accept();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

ScriptWindow::ScriptWindow(CInterface& controller, const CScriptSyntax* syntax_table, const std::string& text,
                           QWidget* parent)
    : QDialog(parent), dialog(controller, syntax_table), syntax(syntax_table), script(new CEditKeys),
      syntax_field(new QLineEdit), description_field(new QLineEdit), name_filter(new QLineEdit),
      commands(new QListWidget), names(new QListWidget), types(new QComboBox), timer(new QTimer(this)) {
    setWindowTitle(tr("Script"));
    script->ShowScript(text);
    script->setToolTip(tr("One command a line. Ctrl+Tab completes the word at the caret."));
    for (QLineEdit* field : {syntax_field, description_field}) {
        field->setReadOnly(true);
        field->setFrame(false);
    }
    syntax_field->setToolTip(tr("The command of the line and its parameters"));
    description_field->setToolTip(tr("What stands at the caret"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QPushButton* check = buttons->addButton(tr("C&heck"), QDialogButtonBox::ActionRole);
    check->setToolTip(tr("Checks each line against the table of commands"));
    check->setEnabled(syntax != nullptr);
    QPushButton* file = buttons->addButton(tr("&File..."), QDialogButtonBox::ActionRole);
    file->setToolTip(tr("Inserts the path of a file at the caret"));
    for (QPushButton* button : {check, file})
        button->setAutoDefault(false);
    auto* splitter = new QSplitter;
    splitter->addWidget(script);
    splitter->addWidget(MakeLists());
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    auto* column = new QVBoxLayout(this);
    column->addWidget(splitter);
    column->addWidget(syntax_field);
    column->addWidget(description_field);
    column->addWidget(buttons);
    resize(820, 520);
    connect(check, &QPushButton::clicked, this, [this] {
        dialog.SetScript(script->Script());
        dialog.OnParse();
    });
    connect(file, &QPushButton::clicked, this, [this] { InsertFile(); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(this, &QDialog::finished, timer, &QTimer::stop);
    connect(timer, &QTimer::timeout, this, [this] { OnTimer(); });
    timer->start(HELP_INTERVAL);
    script->setFocus();
}

QWidget* ScriptWindow::MakeLists() {
    auto* side = new QWidget;
    auto* column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    for (const std::string& name : dialog.command_names)
        commands->addItem(QString::fromStdString(name));
    for (const std::string& type : dialog.type_filters)
        types->addItem(QString::fromStdString(type));
    auto* duplicates = new QCheckBox(tr("Show &duplicate names"));
    duplicates->setChecked(dialog.show_duplicates);
    name_filter->setPlaceholderText(tr("Filter"));
    name_filter->setClearButtonEnabled(true);
    commands->setToolTip(tr("A double click inserts the command"));
    names->setToolTip(tr("A double click inserts the name"));
    types->setToolTip(tr("Which objects are listed"));
    name_filter->setToolTip(tr("Shows the names that hold this text"));
    duplicates->setToolTip(tr("Lists a name as often as objects have it"));
    column->addWidget(new QLabel(tr("Commands:")));
    column->addWidget(commands, 1);
    column->addWidget(new QLabel(tr("Objects:")));
    column->addWidget(types);
    column->addWidget(name_filter);
    column->addWidget(names, 1);
    column->addWidget(duplicates);
    FillNames();
    connect(commands, &QListWidget::currentTextChanged, this, [this](const QString& t) { ShowHelpOfCommand(t); });
    for (QListWidget* list : {commands, names})
        connect(list, &QListWidget::itemActivated, this,
                [this](const QListWidgetItem* item) { InsertEntry(item->text()); });
    connect(types, &QComboBox::textActivated, this, [this](const QString& type) {
        dialog.type_filter = type.toStdString();
        dialog.RefreshNameList(false);
        FillNames();
    });
    connect(name_filter, &QLineEdit::textChanged, this, [this] { FilterNames(); });
    connect(duplicates, &QCheckBox::toggled, this, [this](bool shown) {
        dialog.SetShowDuplicates(shown);
        FillNames();
    });
    return side;
}

void ScriptWindow::FillNames() {
    names->clear();
    for (const std::string& name : dialog.object_names)
        names->addItem(QString::fromStdString(name));
    FilterNames();
}

void ScriptWindow::FilterNames() {
    for (int i = 0; i < names->count(); ++i)
        names->item(i)->setHidden(!names->item(i)->text().contains(name_filter->text(), Qt::CaseInsensitive));
}

// --- Help

void ScriptWindow::OnTimer() {
    ShowHelp();
    if (script->need_autocomplete && script->hasFocus())
        Complete();
    script->need_autocomplete = false;
}

void ScriptWindow::ShowHelp() {
    ScriptHelp help;
    if (script->hasFocus()) {
        TakeText();
        const bool known = dialog.GetHelp(Caret(), help);
        syntax_field->setText(known ? QString::fromStdString(help.syntax) : QString());
        description_field->setText(known ? QString::fromStdString(help.description) : QString());
    } else if (syntax_field->hasFocus() && syntax) {
        const std::string line = syntax_field->text().toStdString();
        const auto column = syntax_field->text().left(syntax_field->cursorPosition()).toUtf8().size();
        if (GetScriptHelp(*syntax, line, static_cast<int>(column), help))
            description_field->setText(QString::fromStdString(help.description));
    }
}

void ScriptWindow::ShowHelpOfCommand(const QString& command) {
    ScriptHelp help;
    if (syntax && GetScriptHelp(*syntax, command.toStdString(), 0, help)) {
        syntax_field->setText(QString::fromStdString(help.syntax));
        description_field->setText(QString::fromStdString(help.description));
    }
}

// --- Text. Places in the script count bytes, those of the field characters.

void ScriptWindow::TakeText() { dialog.SetScript(script->toPlainText().toStdString()); }

size_t ScriptWindow::Caret() const {
    return static_cast<size_t>(script->toPlainText().left(script->textCursor().position()).toUtf8().size());
}

void ScriptWindow::PutText(size_t caret) {
    const QByteArray text = QByteArray::fromStdString(dialog.GetScript());
    const auto old_caret = static_cast<qsizetype>(Caret());
    const qsizetype inserted = static_cast<qsizetype>(caret) - old_caret;
    if (inserted > 0) // so that the field's own undo takes it back
        script->insertPlainText(QString::fromUtf8(text.mid(old_caret, inserted)));
    script->setFocus();
}

void ScriptWindow::InsertEntry(const QString& entry) {
    TakeText();
    PutText(dialog.InsertEntry(Caret(), entry.toStdString()));
}

void ScriptWindow::InsertFile() {
    TakeText();
    PutText(dialog.InsertFile(Caret()));
}

void ScriptWindow::Complete() {
    TakeText();
    const size_t caret = Caret();
    PutText(caret + dialog.Complete(caret).size());
}

bool RunScriptWindow(QWidget* parent, CInterface& editor, const CScriptSyntax* syntax, std::string& text) {
    ScriptWindow window(editor, syntax, text, parent);
    if (window.exec() != QDialog::Accepted)
        return false;
    text = window.GetText();
    return true;
}
