#include "desktop/FinishTyping.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QLineEdit>
#include <QPointer>

void FinishTyping() {
    const QPointer<QWidget> field = QApplication::focusWidget();
    if (!qobject_cast<QLineEdit*>(field) && !qobject_cast<QAbstractSpinBox*>(field))
        return;
    field->clearFocus();
    if (field) // it may have gone with what it gave
        field->setFocus();
}
