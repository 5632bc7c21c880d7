#include "desktop/WelcomePanel.h"

#include <QLabel>
#include <QLayoutItem>
#include <QPushButton>
#include <QVBoxLayout>

#include "foundation/Strings.h"

namespace {

constexpr const char* STEPS = "<h3>An empty level</h3>"
                              "<p><b>First brush:</b> drag with the left button in the top, front or left view.</p>"
                              "<p><b>Its size:</b> drag its sides; drag inside it to move it.</p>"
                              "<p><b>Look around:</b> drag with the left button in the perspective view, fly with the "
                              "wheel.</p>"
                              "<p><b>Texture:</b> press T, and hold Ctrl while you click a surface.</p>"
                              "<p><b>Any command:</b> press Ctrl+Shift+A and type a part of its name.</p>";

} // namespace

WelcomePanel::WelcomePanel(QWidget* parent) : QFrame(parent) {
    setFrameStyle(QFrame::StyledPanel | QFrame::Raised);
    setAutoFillBackground(true);
    auto* column = new QVBoxLayout(this);
    auto* steps = new QLabel(STEPS);
    steps->setWordWrap(true);
    steps->setMinimumWidth(fontMetrics().averageCharWidth() * 52);
    column->addWidget(steps);
    auto* open = new QPushButton("&Open a project...");
    open->setToolTip("Opens a project from a file.");
    column->addWidget(open);
    recent = new QVBoxLayout;
    column->addLayout(recent);
    auto* dismiss = new QPushButton("&Close");
    dismiss->setToolTip("Takes this away; it comes back with the next empty level.");
    column->addWidget(dismiss);
    connect(open, &QPushButton::clicked, this, &WelcomePanel::OpenAsked);
    connect(dismiss, &QPushButton::clicked, this, &WelcomePanel::Dismissed);
}

void WelcomePanel::ShowRecent(const std::vector<std::string>& files) {
    while (QLayoutItem* item = recent->takeAt(0)) {
        item->widget()->deleteLater();
        delete item;
    }
    for (const std::string& file : files) {
        QString name = QString::fromStdString(FilePart(file));
        auto* button = new QPushButton(name.replace("&", "&&"));
        button->setToolTip(QString::fromStdString(file));
        connect(button, &QPushButton::clicked, this, [this, file] { emit RecentAsked(QString::fromStdString(file)); });
        recent->addWidget(button);
    }
    adjustSize();
}
