#include "desktop/TextDialog.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

TextDialog::TextDialog(const std::string& text, const std::string& title, QWidget* parent) : QDialog(parent) {
    setWindowTitle(QString::fromStdString(title));
    auto* shown = new QPlainTextEdit(QString::fromStdString(text));
    shown->setReadOnly(true);
    shown->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    shown->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    QPushButton* copy = buttons->addButton(tr("&Copy all"), QDialogButtonBox::ActionRole);
    copy->setToolTip(tr("Puts the whole text on the clipboard"));
    connect(copy, &QPushButton::clicked, this,
            [shown] { QGuiApplication::clipboard()->setText(shown->toPlainText()); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* column = new QVBoxLayout(this);
    column->addWidget(shown);
    column->addWidget(buttons);
    buttons->button(QDialogButtonBox::Ok)->setFocus();
    resize(520, 480);
}

void RunTextDialog(QWidget* parent, const std::string& text, const std::string& title) {
    TextDialog(text, title, parent).exec();
}
