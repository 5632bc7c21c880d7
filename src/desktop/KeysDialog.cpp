#include "desktop/KeysDialog.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyleOption>
#include <QStylePainter>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "commands/CommandLabels.h"
#include "desktop/KeyNames.h"

namespace {

enum Column { MENU, COMMAND, KEYS, COLUMNS };

constexpr const char* ASK = "Press the new keys here";

} // namespace

KeyCatcher::KeyCatcher(QWidget* parent) : QWidget(parent), shown(ASK) {
    setFocusPolicy(Qt::StrongFocus);
    setToolTip("Click here, then press the keys. Tab leaves the field only with Ctrl.");
}

void KeyCatcher::Show(const std::string& keys) {
    shown = keys.empty() ? ASK : QString::fromStdString(keys);
    update();
}

QSize KeyCatcher::sizeHint() const {
    return {fontMetrics().horizontalAdvance("Ctrl+Shift+Alt+Backspace") * 3 / 2, fontMetrics().height() + 12};
}

bool KeyCatcher::event(QEvent* event) {
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride)
        return QWidget::event(event);
    const auto& pressed = *static_cast<QKeyEvent*>(event);
    const std::vector<std::string> texts = KeyTexts(pressed);
    if (pressed.key() == Qt::Key_Escape)
        return QWidget::event(event);
    if ((pressed.key() == Qt::Key_Tab || pressed.key() == Qt::Key_Backtab) && pressed.modifiers() & Qt::ControlModifier)
        return event->type() == QEvent::KeyPress && focusNextPrevChild(pressed.key() == Qt::Key_Tab);
    event->accept();
    if (event->type() == QEvent::KeyPress && !texts.empty()) {
        Show(texts.back());
        emit Caught(QString::fromStdString(texts.back()));
    }
    return true;
}

void KeyCatcher::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionFrame frame;
    frame.initFrom(this);
    frame.lineWidth = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &frame, this);
    frame.state |= QStyle::State_Sunken;
    painter.drawPrimitive(QStyle::PE_PanelLineEdit, frame);
    painter.drawItemText(rect(), Qt::AlignCenter, palette(), true, shown, QPalette::Text);
}

KeysDialog::KeysDialog(const KeyBindings& current, QWidget* parent) : QDialog(parent), bindings(current) {
    setWindowTitle("Keys");
    resize(720, 600);
    filter = new QLineEdit;
    filter->setPlaceholderText("Part of a command or of its keys");
    filter->setToolTip("Shows the commands whose name or keys contain this.");
    filter->setClearButtonEnabled(true);
    list = new QTreeWidget;
    list->setColumnCount(COLUMNS);
    list->setHeaderLabels({"Menu", "Command", "Keys"});
    list->setRootIsDecorated(false);
    list->setAllColumnsShowFocus(true);
    list->setToolTip("Choose a command, then press its new keys below.");
    catcher = new KeyCatcher(this);
    conflict = new QLabel;
    conflict->setWordWrap(true);
    set = new QPushButton("&Set");
    set->setToolTip("The command has these keys alone.");
    add = new QPushButton("&Add");
    add->setToolTip("The command has these keys besides its others.");
    clear = new QPushButton("&Clear");
    clear->setToolTip("The command has no keys.");
    reset = new QPushButton("&Default");
    reset->setToolTip("The command has the keys it came with.");
    auto* reset_all = new QPushButton("A&ll to default");
    reset_all->setToolTip("All commands have the keys they came with.");

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->addButton(reset_all, QDialogButtonBox::ResetRole);
    auto* row = new QHBoxLayout;
    row->addWidget(catcher, 1);
    for (QPushButton* button : {set, add, clear, reset}) {
        button->setAutoDefault(false);
        row->addWidget(button);
    }
    auto* column = new QVBoxLayout(this);
    column->addWidget(filter);
    column->addWidget(list, 1);
    column->addLayout(row);
    column->addWidget(conflict);
    column->addWidget(buttons);

    connect(filter, &QLineEdit::textChanged, this, &KeysDialog::Filter);
    connect(list, &QTreeWidget::currentItemChanged, this, [this] {
        caught.clear();
        catcher->Show("");
        ShowChosen();
    });
    connect(catcher, &KeyCatcher::Caught, this, [this](const QString& keys) { TakeKeys(keys.toStdString()); });
    connect(set, &QPushButton::clicked, this, &KeysDialog::SetChosen);
    connect(add, &QPushButton::clicked, this, &KeysDialog::AddChosen);
    connect(clear, &QPushButton::clicked, this, [this] {
        bindings.Set(*Chosen(), {});
        Fill();
    });
    connect(reset, &QPushButton::clicked, this, [this] {
        bindings.Reset(*Chosen());
        Fill();
    });
    connect(reset_all, &QPushButton::clicked, this, [this] {
        bindings.ResetAll();
        Fill();
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    for (const Command& command : CommandTable()) {
        auto* item = new QTreeWidgetItem(list);
        item->setText(MENU, command.menu);
        item->setText(COMMAND, QString::fromStdString(CommandTitle(command)));
        item->setToolTip(COMMAND, CommandHelp(command));
    }
    Fill();
    list->header()->resizeSections(QHeaderView::ResizeToContents);
    list->setCurrentItem(list->topLevelItem(0));
}

const Command* KeysDialog::Chosen() const {
    const int row = list->indexOfTopLevelItem(list->currentItem());
    return row < 0 ? nullptr : &CommandTable()[static_cast<size_t>(row)];
}

void KeysDialog::Choose(const Command& command) {
    list->setCurrentItem(list->topLevelItem(static_cast<int>(&command - CommandTable().data())));
}

// Keys in bold are not those the command came with.
void KeysDialog::Fill() {
    for (int row = 0; row < list->topLevelItemCount(); ++row) {
        const Command& command = CommandTable()[static_cast<size_t>(row)];
        QTreeWidgetItem* item = list->topLevelItem(row);
        item->setText(KEYS, QString::fromStdString(bindings.Text(command)));
        QFont font = list->font();
        font.setBold(!bindings.IsDefault(command));
        item->setFont(KEYS, font);
    }
    Filter(filter->text());
    ShowChosen();
}

void KeysDialog::Filter(const QString& text) {
    for (int row = 0; row < list->topLevelItemCount(); ++row) {
        QTreeWidgetItem* item = list->topLevelItem(row);
        item->setHidden(!item->text(COMMAND).contains(text, Qt::CaseInsensitive) &&
                        !item->text(KEYS).contains(text, Qt::CaseInsensitive));
    }
}

void KeysDialog::TakeKeys(const std::string& keys) {
    caught = keys;
    ShowChosen();
}

void KeysDialog::ShowChosen() {
    const Command* command = Chosen();
    const Command* other = caught.empty() ? nullptr : bindings.Find(caught);
    const bool refused = bindings.IsTaken(caught);
    for (QPushButton* button : {set, add})
        button->setEnabled(command && !caught.empty() && !refused);
    clear->setEnabled(command && !bindings.KeysOf(*command).empty());
    reset->setEnabled(command && !bindings.IsDefault(*command));
    QString text;
    if (refused)
        text = "These keys open the list of all commands and cannot be given away.";
    else if (other && other != command)
        text =
            QString::fromStdString("These keys now belong to \"" + CommandTitle(*other) + "\", which would lose them.");
    conflict->setText(text);
}

void KeysDialog::SetChosen() {
    bindings.Set(*Chosen(), {caught});
    Fill();
}

void KeysDialog::AddChosen() {
    std::vector<std::string> keys = bindings.KeysOf(*Chosen());
    keys.push_back(caught);
    bindings.Set(*Chosen(), keys);
    Fill();
}
