#pragma once
#include <QAbstractButton>
#include <QCoreApplication>
#include <QProcess>
#include <filesystem>
#include <fstream>
#include <memory>

#include "app/qt_main_window.h"
#include "support/qt_wait.h"

namespace lv::test {

// The whole window on the data folder `data` (given `ini` as its
// lv_Analog.ini unless empty), searching the one port `link` (none if
// empty), every question failing safe so that the test goes on.
inline std::unique_ptr<MainWindow> openWindow(const std::filesystem::path& data,
                                              const std::string& ini, const std::string& link) {
    if (!ini.empty()) std::ofstream(data / "lv_Analog.ini") << ini;
    auto w = std::make_unique<MainWindow>(StartOptions{
        data, "1.0.0",
        [link] { return link.empty() ? std::vector<std::string>{} : std::vector{link}; },
        QCoreApplication::applicationDirPath().toStdString()});
    w->prompter().setUnattended(true);
    w->Form_Load();
    w->show();
    return w;
}

inline bool streams(MainWindow& w) {
    return waitUntil([&] { return w.session().samples() > 10; }, 3000);
}

inline void click(const MainWindow& w, const char* button) {
    w.recordPanel()->findChild<QAbstractButton*>(button)->click();
}

// The program itself (or `program`) started without a screen.
inline void startProgram(QProcess& app, const QStringList& args,
                         const QString& program = LV_ANALOG_PATH) {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    app.setProcessEnvironment(env);
    app.start(program, args);
}

inline std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline std::string firstLine(const std::filesystem::path& path) {
    const std::string text = readFile(path);
    return text.substr(0, text.find('\n'));
}

}  // namespace lv::test
