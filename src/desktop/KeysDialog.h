// Shows and changes the keys of all commands.
#pragma once

#include <QDialog>

#include "desktop/KeyBindings.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

// Takes the next keys that are pressed in it.
class KeyCatcher : public QWidget {
    Q_OBJECT
public:
    explicit KeyCatcher(QWidget* parent);
    void Show(const std::string& keys);

signals:
    void Caught(const QString& keys);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    QSize sizeHint() const override;

private:
    QString shown;
};

class KeysDialog : public QDialog {
    Q_OBJECT
public:
    KeysDialog(const KeyBindings& current, QWidget* parent);

    KeyBindings bindings; // as they were changed
    void Choose(const Command& command);
    void TakeKeys(const std::string& keys); // caught for the chosen command

private:
    const Command* Chosen() const;
    void Fill();
    void Filter(const QString& text);
    void ShowChosen();
    void SetChosen();
    void AddChosen();

    QLineEdit* filter;
    QTreeWidget* list;
    KeyCatcher* catcher;
    QLabel* conflict;
    QPushButton *set, *add, *clear, *reset;
    std::string caught;
};
