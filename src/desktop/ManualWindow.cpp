#include "desktop/ManualWindow.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

#include "foundation/Desktop.h"

ManualWindow::ManualWindow(const QString& page, QWidget* parent) : QDialog(parent) {
    setWindowTitle(tr("Manual"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* text = new QTextBrowser;
    text->setOpenExternalLinks(true);
    auto* walk = new QHBoxLayout;
    const auto add = [&](const QString& name, auto go, auto available) {
        auto* button = new QPushButton(name);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, text, go);
        if constexpr (!std::is_null_pointer_v<decltype(available)>) {
            button->setEnabled(false);
            connect(text, available, button, &QWidget::setEnabled);
        }
        walk->addWidget(button);
    };
    add(tr("&Contents"), &QTextBrowser::home, nullptr);
    add(tr("&Back"), &QTextBrowser::backward, &QTextBrowser::backwardAvailable);
    add(tr("&Forward"), &QTextBrowser::forward, &QTextBrowser::forwardAvailable);
    walk->addStretch(1);
    auto* column = new QVBoxLayout(this);
    column->addLayout(walk);
    column->addWidget(text);
    text->setSource(QUrl::fromLocalFile(page));
    text->setFocus();
    resize(820, 760);
}

QString ManualPage(const QString& program_folder) {
    for (const char* place : {MARROWSTEAD_MANUAL_PLACE, "../../../docs/manual"}) {
        const QFileInfo page(program_folder + "/" + place + "/index.md");
        if (page.isFile())
            return page.canonicalFilePath();
    }
    return {};
}

void ShowManual(QWidget* parent) {
    const QString page = ManualPage(QCoreApplication::applicationDirPath());
    if (page.isEmpty())
        GetDesktop().Notice("The manual is not installed: its pages are docs/manual of the sources.");
    else
        (new ManualWindow(page, parent))->show();
}
