#pragma once
#include <QUrl>
#include <filesystem>
#include <functional>

#include "common/prompter.h"

namespace lv {

// Hands a URL to the desktop; true when a program took it.
using UrlOpener = std::function<bool(const QUrl&)>;

// Help → User Guide: finds "lv3 Prime User Guide V1.0.pdf" beside the program
// or under its install prefix (findResource) and opens it in the desktop's
// PDF viewer. A guide that is missing, or that the desktop cannot open, is
// reported in a message box that names where it was looked for. `open`
// defaults to QDesktopServices::openUrl. True when the guide was opened.
bool openUserGuide(const std::filesystem::path& exeDir, Prompter& prompter,
                   const UrlOpener& open = {});

}  // namespace lv
