#pragma once
#include <QImage>

#include "common/colour.h"

namespace lv::test {

// A picture's pixel as the program's colour, to compare with the settings.
inline Colour colourAt(const QImage& image, QPoint p) {
    const QColor c = image.pixelColor(p);
    return rgb(c.red(), c.green(), c.blue());
}

}  // namespace lv::test
