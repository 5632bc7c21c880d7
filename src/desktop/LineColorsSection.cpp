#include "desktop/LineColorsSection.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "desktop/ColorButton.h"
#include "editor/Interface.h"
#include "editor/LineColorStore.h"

LineColorsSection::LineColorsSection(CInterface& controller, QWidget* parent) : QWidget(parent), editor(controller) {
    constexpr int COLUMNS = 2;
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    int place = 0;
    for (size_t i = 0; i < LINE_COLOR_COUNT; ++i, ++place) {
        const auto line = static_cast<LineColor>(i);
        auto* button = buttons[i] = new CColorButton;
        button->SetColor(ColorOf(line));
        button->setToolTip(tr("The colour of these lines in the views"));
        grid->addWidget(button, place / COLUMNS, 2 * (place % COLUMNS));
        grid->addWidget(new QLabel(tr(LineColorTable()[i].label)), place / COLUMNS, 2 * (place % COLUMNS) + 1);
        connect(button, &CColorButton::Chosen, this, [this, line](uint32_t rgb) {
            SetLineColor(line, rgb);
            Changed();
        });
    }
    auto* standard = new QPushButton(tr("&Standard colours"));
    standard->setToolTip(tr("Gives all lines the colours that they came with"));
    grid->addWidget(standard, place / COLUMNS + 1, 0, 1, 2 * COLUMNS);
    connect(standard, &QPushButton::clicked, this, [this] {
        ResetLineColors();
        Changed();
    });
}

void LineColorsSection::Changed() {
    for (size_t i = 0; i < LINE_COLOR_COUNT; ++i)
        buttons[i]->SetColor(ColorOf(static_cast<LineColor>(i)));
    if (editor.store_settings && !WriteLineColors())
        GetDesktop().Notice("The colours of the lines cannot be stored with the settings.");
    ApplyGridColors(editor);
    editor.RedrawAllViews();
}
