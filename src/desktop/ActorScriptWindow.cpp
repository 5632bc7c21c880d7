#include "desktop/ActorScriptWindow.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "desktop/ScriptWindow.h"

ActorScriptWindow::ActorScriptWindow(const std::string& text, QWidget* parent)
    : QDialog(parent), script(new CEditKeys) {
    setWindowTitle(tr("Actor script"));
    script->ShowScript(text);
    script->completes = false;
    script->setToolTip(tr("The text of the parameter. Ctrl+Tab leaves it."));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QPushButton* check = buttons->addButton(tr("C&heck"), QDialogButtonBox::ActionRole);
    QPushButton* autocomplete = buttons->addButton(tr("&Autocomplete"), QDialogButtonBox::ActionRole);
    check->setToolTip(tr("These scripts have no table of commands to check against"));
    autocomplete->setToolTip(tr("These scripts have no table of commands to complete from"));
    for (QPushButton* button : {check, autocomplete})
        button->setAutoDefault(false);
    auto* column = new QVBoxLayout(this);
    column->addWidget(script);
    column->addWidget(buttons);
    resize(480, 320);
    connect(check, &QPushButton::clicked, this, [this] { dialog.OnCheck(); });
    connect(autocomplete, &QPushButton::clicked, this, [this] { dialog.OnAutocomplete(); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    script->setFocus();
}

std::string ActorScriptWindow::GetText() const { return script->Script(); }

bool RunActorScriptWindow(QWidget* parent, std::string& text) {
    ActorScriptWindow window(text, parent);
    if (window.exec() != QDialog::Accepted)
        return false;
    text = window.GetText();
    return true;
}
