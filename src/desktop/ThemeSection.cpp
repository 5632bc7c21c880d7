#include "desktop/ThemeSection.h"

#include <QComboBox>
#include <QFormLayout>

#include "desktop/Theme.h"
#include "foundation/Desktop.h"

ThemeSection::ThemeSection(QWidget* parent) : QWidget(parent), choice(new QComboBox) {
    auto* form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    choice->addItem(tr("As the desktop"), static_cast<int>(ColorTheme::Desktop));
    choice->addItem(tr("Light"), static_cast<int>(ColorTheme::Light));
    choice->addItem(tr("Dark"), static_cast<int>(ColorTheme::Dark));
    choice->setToolTip(tr("The colours of the windows; the views have their own"));
    form->addRow(tr("Windows:"), choice);
    const Theme* theme = Theme::Current();
    setEnabled(theme != nullptr);
    if (theme)
        choice->setCurrentIndex(choice->findData(static_cast<int>(theme->Wanted())));
    connect(choice, &QComboBox::activated, this, [this] {
        if (!Theme::Current()->Choose(static_cast<ColorTheme>(choice->currentData().toInt())))
            GetDesktop().Notice("The choice of light or dark windows cannot be stored with the settings.");
    });
}
