// A button that shows a colour. A click asks for another one.
#pragma once

#include <cstdint>

#include <QAbstractButton>

class CColorButton : public QAbstractButton {
    Q_OBJECT
public:
    explicit CColorButton(QWidget* parent = nullptr);
    void SetColor(uint32_t rgb); // 0x00RRGGBB
    void SetMixed(bool mixed);   // several colours: a hatched field
    QSize sizeHint() const override;

    uint32_t m_color = 0;

signals:
    void Chosen(uint32_t rgb); // by the user

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void Ask();

    bool is_mixed = false;
};
