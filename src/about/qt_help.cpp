#include "about/qt_help.h"

#include <QDesktopServices>
#include <QString>

#include "about/about_text.h"
#include "app/data_folder.h"

namespace lv {

bool openUserGuide(const std::filesystem::path& exeDir, Prompter& prompter, const UrlOpener& open) {
    const auto guide = findResource(kUserGuideFileName, exeDir);
    if (!guide) {
        prompter.ask(kUserGuideTitle, userGuideMissingText(userGuideSearchPaths(exeDir)),
                     Buttons::Ok, Icon::Exclamation);
        return false;
    }
    const QUrl url = QUrl::fromLocalFile(QString::fromStdString(guide->string()));
    const bool opened = open ? open(url) : QDesktopServices::openUrl(url);
    if (!opened)
        prompter.ask(kUserGuideTitle, userGuideOpenFailedText(*guide), Buttons::Ok,
                     Icon::Exclamation);
    return opened;
}

}  // namespace lv
