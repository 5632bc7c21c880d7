// The part of the preferences page that gives the lines of the views their colours.
#pragma once

#include <array>

#include <QWidget>

#include "drawing/LineColors.h"

class CColorButton;
class CInterface;

class LineColorsSection : public QWidget {
public:
    explicit LineColorsSection(CInterface& controller, QWidget* parent = nullptr);

private:
    void Changed(); // shows, keeps and draws them

    CInterface& editor;
    std::array<CColorButton*, LINE_COLOR_COUNT> buttons{};
};
