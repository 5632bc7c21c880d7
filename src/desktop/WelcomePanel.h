// Shown over an empty level: how to make the first brush, and the projects of last time.
#pragma once

#include <QFrame>
#include <functional>
#include <string>
#include <vector>

class QVBoxLayout;

class WelcomePanel : public QFrame {
    Q_OBJECT
public:
    explicit WelcomePanel(QWidget* parent);
    void ShowRecent(const std::vector<std::string>& files);

signals:
    void OpenAsked();
    void RecentAsked(const QString& path);
    void Dismissed();

private:
    QVBoxLayout* recent;
};
