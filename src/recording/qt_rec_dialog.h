#pragma once
#include <QDialog>
#include <functional>
#include <optional>
#include <string>

#include "common/prompter.h"
#include "settings/settings.h"

class QButtonGroup;
class QCheckBox;
class QLabel;
class QLineEdit;

namespace lv {

// frmRec: how recordings are named and saved. It works on a copy of the
// settings and writes the copy back only when OK finds the prefix usable, so
// Cancel leaves every setting as it was. Files are another matter: the ones a
// reset sends to the trash stay there whatever is pressed afterwards.
class RecDialog : public QDialog {
    Q_OBJECT
public:
    // The folder browser: the folder chosen, starting from `start`; nothing
    // when the operator cancels.
    using BrowseFolder = std::function<std::optional<std::string>(const std::string& start)>;

    // Without a browser the system's folder dialog is used.
    RecDialog(Settings& settings, Prompter& prompter, BrowseFolder browse = {},
              QWidget* parent = nullptr);

    // The settings as the dialog holds them now (what OK would write).
    const Settings& edited() const { return m_draft; }
    // Files a reset sent to the trash while the dialog was open.
    int trashedCount() const { return m_trashed; }

public slots:
    void accept() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void load();
    void browse();
    void reset();
    void refresh();

    Settings& m_settings;
    Prompter& m_prompter;
    BrowseFolder m_browse;
    Settings m_draft;
    int m_trashed = 0;

    QButtonGroup* m_optMode = nullptr;
    QButtonGroup* m_optSuffix = nullptr;
    QLineEdit* m_txtSavePath = nullptr;
    QLabel* m_lblNextName = nullptr;
    QLineEdit* m_txtPrefix = nullptr;
    QCheckBox* m_chkAudio = nullptr;
    QCheckBox* m_chkTimeDate = nullptr;
    QCheckBox* m_chkRecPrompt = nullptr;
};

}  // namespace lv
