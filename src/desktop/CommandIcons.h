// Pictures of the commands for the tool bars and of some pointers, drawn in the colours of the palette at any size.
#pragma once

#include <QIcon>
#include <QPixmap>
#include <string_view>

// Null for a command without one.
QIcon CommandIcon(std::string_view command);
// A pointer: the picture with a bright edge, side pixels square.
QPixmap PointerPicture(std::string_view command, int side, qreal device_pixel_ratio);
