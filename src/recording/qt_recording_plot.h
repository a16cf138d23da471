#pragma once
#include <QString>

#include "recording/record_buffer.h"

namespace lv::tool {

// The whole session on one picture: the needle trace above, the Base below,
// minutes along the bottom. Writes a PNG; false with a reason on failure.
bool plotRecording(const RecBuffer& buffer, const QString& title, const QString& pngPath, int width,
                   int height, QString* error);

}  // namespace lv::tool
