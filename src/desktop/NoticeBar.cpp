#include "desktop/NoticeBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

static constexpr qsizetype MOST_SENTENCES = 1000;

NoticeBar::NoticeBar(QWidget* parent) : QFrame(parent) {
    setFrameStyle(QFrame::StyledPanel);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(6, 2, 6, 2);
    auto* sign = new QLabel;
    const int side = style()->pixelMetric(QStyle::PM_SmallIconSize);
    sign->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(side, side));
    row->addWidget(sign);
    last = new QLabel;
    last->setTextFormat(Qt::PlainText);
    last->setTextInteractionFlags(Qt::TextSelectableByMouse);
    last->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    row->addWidget(last, 1);
    all = new QPushButton;
    all->setToolTip("Shows all notices since this bar was closed.");
    row->addWidget(all);
    auto* close = new QPushButton("Close");
    close->setToolTip("Takes the notices away.");
    row->addWidget(close);
    for (QPushButton* button : {all, close})
        button->setFocusPolicy(Qt::TabFocus);
    connect(all, &QPushButton::clicked, this, [this] { emit AllAsked(sentences.join('\n')); });
    connect(close, &QPushButton::clicked, this, &NoticeBar::Clear);
    hide();
}

void NoticeBar::Add(const QString& sentence) {
    sentences.append(sentence);
    if (sentences.size() > MOST_SENTENCES)
        sentences.removeFirst();
    last->setText(sentence);
    last->setToolTip(sentence);
    all->setText(QString("Show all %1").arg(sentences.size()));
    all->setVisible(sentences.size() > 1);
    show();
}

void NoticeBar::Clear() {
    sentences.clear();
    hide();
}
