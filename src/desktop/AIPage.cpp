#include "desktop/AIPage.h"

#include <algorithm>

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QVBoxLayout>

AIPage::AIPage(CMainFrame& main_frame, QWidget* parent)
    : QWidget(parent), editor(main_frame.interface), page(main_frame.pages.ai), news([this] {
          if (isVisible())
              Refresh();
      }),
      groups(new QComboBox), new_name(new QLineEdit), rename(new QPushButton(tr("Re&name"))),
      erase(new QPushButton(tr("&Delete"))), scroll(new QScrollArea) {
    auto* create = new QPushButton(tr("&Create"));
    groups->setPlaceholderText(tr("Choose a group"));
    groups->setToolTip(tr("The group whose stances are shown"));
    new_name->setPlaceholderText(tr("New name"));
    new_name->setToolTip(tr("The name for a new group, or the new name of this one"));
    create->setToolTip(tr("Makes a group that is neutral to all"));
    rename->setToolTip(tr("Gives the group the new name"));
    erase->setToolTip(tr("Deletes the group; entities that name it keep the name"));
    scroll->setWidgetResizable(true);
    auto* names = new QHBoxLayout;
    names->addWidget(new_name, 1);
    for (QPushButton* button : {create, rename})
        names->addWidget(button);
    auto* chosen = new QHBoxLayout;
    chosen->addWidget(groups, 1);
    chosen->addWidget(erase);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addLayout(chosen);
    column->addLayout(names);
    column->addWidget(scroll, 1);
    // By its bytes, whatever is shown for them.
    connect(groups, &QComboBox::activated, this, [this](int row) {
        page.SelectGroup(page.groups[static_cast<size_t>(row)]);
        Refresh();
    });
    const auto named = [this](bool done) {
        if (done)
            new_name->clear();
        Refresh();
    };
    connect(create, &QPushButton::clicked, this,
            [this, named] { named(page.OnGroupCreate(new_name->text().toStdString())); });
    connect(rename, &QPushButton::clicked, this,
            [this, named] { named(page.OnGroupRename(new_name->text().toStdString())); });
    connect(erase, &QPushButton::clicked, this, [this] {
        page.OnGroupDelete();
        Refresh();
    });
    Refresh();
    editor.AddListener(*this);
}

AIPage::~AIPage() { editor.RemoveListener(*this); }

void AIPage::showEvent(QShowEvent* event) {
    Refresh();
    QWidget::showEvent(event);
}

void AIPage::Refresh() {
    groups->clear();
    for (const std::string& name : page.groups)
        groups->addItem(QString::fromStdString(name));
    const auto chosen = std::find(page.groups.begin(), page.groups.end(), page.m_name);
    groups->setCurrentIndex(
        page.m_name.empty() || chosen == page.groups.end() ? -1 : static_cast<int>(chosen - page.groups.begin()));
    for (QPushButton* button : {rename, erase})
        button->setEnabled(!page.m_name.empty());
    MakeLines();
}

void AIPage::MakeLines() {
    struct Stance {
        const char* text;
        EActorGroupType type;
    };
    static constexpr Stance STANCES[] = {{"Neutral", AGT_Neutral}, {"Enemy", AGT_Enemy}, {"Ally", AGT_Ally}};
    constexpr int SHOT = static_cast<int>(std::size(STANCES)); // its place in a line
    auto* holder = new QWidget;
    auto* grid = new QGridLayout(holder);
    grid->setVerticalSpacing(1);
    for (size_t i = 0; i < page.m_relations.size(); ++i) {
        const SRelationLine& line = page.m_relations[i];
        const int row = static_cast<int>(i), command = AIDlg::FIRST_COMMAND + row * AIDlg::COMMANDS_A_LINE;
        auto* label = new QLabel(QString::fromStdString(line.name));
        label->setTextFormat(Qt::PlainText);
        grid->addWidget(label, row, 0);
        auto* together = new QButtonGroup(holder);
        for (int s = 0; s < SHOT; ++s) {
            auto* button = new QRadioButton(tr(STANCES[s].text));
            button->setChecked(line.type == STANCES[s].type);
            button->setToolTip(tr("The stance toward the group %1").arg(label->text()));
            together->addButton(button);
            grid->addWidget(button, row, 1 + s);
            connect(button, &QRadioButton::clicked, this, [this, command, s] { page.OnCommand(command + s); });
        }
        auto* shot = new QCheckBox(tr("When shot"));
        shot->setChecked(line.shot);
        shot->setToolTip(tr("Turns to enemy when shot at by the group %1").arg(label->text()));
        grid->addWidget(shot, row, 1 + SHOT);
        connect(shot, &QCheckBox::clicked, this, [this, command] { page.OnCommand(command + SHOT); });
    }
    grid->setRowStretch(static_cast<int>(page.m_relations.size()), 1);
    grid->setColumnStretch(0, 1);
    if (QWidget* old = scroll->takeWidget())
        old->deleteLater();
    scroll->setWidget(holder);
}
