#include "desktop/ColorButton.h"

#include <QPainter>
#include <QStyleOptionButton>

#include "foundation/Desktop.h"

CColorButton::CColorButton(QWidget* parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    connect(this, &QAbstractButton::clicked, this, [this] { Ask(); });
    SetColor(0);
}

void CColorButton::SetColor(uint32_t rgb) {
    m_color = rgb & 0x00FFFFFF;
    is_mixed = false;
    setToolTip(tr("Colour %1, %2, %3. Click to choose another one.")
                   .arg(m_color >> 16)
                   .arg(m_color >> 8 & 255)
                   .arg(m_color & 255));
    update();
}

void CColorButton::SetMixed(bool mixed) {
    is_mixed = mixed;
    if (mixed)
        setToolTip(tr("Several colours. Click to choose one for all."));
    update();
}

QSize CColorButton::sizeHint() const {
    const int height = fontMetrics().height() + 8;
    return {height * 3, height};
}

void CColorButton::Ask() {
    if (const auto rgb = GetDesktop().AskColor(m_color)) {
        SetColor(*rgb);
        emit Chosen(m_color);
    }
}

void CColorButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QStyleOptionButton option;
    option.initFrom(this);
    option.state |= isDown() ? QStyle::State_Sunken : QStyle::State_Raised;
    style()->drawControl(QStyle::CE_PushButtonBevel, &option, &painter, this);
    const QRect well = rect().adjusted(5, 4, -5, -4);
    if (is_mixed)
        painter.fillRect(well, QBrush(palette().color(QPalette::Mid), Qt::BDiagPattern));
    else
        painter.fillRect(well, isEnabled() ? QColor(QRgb(m_color)) : palette().color(QPalette::Mid));
    painter.setPen(palette().color(hasFocus() ? QPalette::Highlight : QPalette::Dark));
    painter.drawRect(well.adjusted(0, 0, -1, -1));
}
