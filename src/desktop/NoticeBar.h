// Sentences that need no answer, above the views: the last one, and how many there were.
#pragma once

#include <QFrame>
#include <QStringList>

class QLabel;
class QPushButton;

class NoticeBar : public QFrame {
    Q_OBJECT
public:
    explicit NoticeBar(QWidget* parent = nullptr);
    void Add(const QString& sentence);

    QStringList sentences; // the oldest first; the bar keeps so many

signals:
    void AllAsked(const QString& text);

private:
    void Clear();

    QLabel* last;
    QPushButton* all;
};
