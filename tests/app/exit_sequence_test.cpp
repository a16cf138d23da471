#include <gtest/gtest.h>

#include <unistd.h>
#include "support/temp_dir.h"

#include <filesystem>
#include <stdexcept>

#include "app/exit_sequence.h"
#include "support/scripted_prompter.h"

namespace lv {
namespace {

namespace fs = std::filesystem;
using Question = test::ScriptedPrompter::Question;

constexpr Colour kDefaultDial = 16777215;
constexpr Colour kChangedDial = 4242;

class ExitSequenceTest : public ::testing::Test {
protected:
    test::TempDir m_temp{"lv_exit"};
    ExitSequenceTest() {
        dir = m_temp.path();
        store.DataFolder = dir.string() + "/";
        store.SettingsFilePath = (dir / "lv_Analog.ini").string();
        store.values = Settings{};
        hooks.writeSessionConfig = [this]() -> std::optional<SessionConfigError> {
            log.push_back(fs::exists(store.SettingsFilePath) ? "cfg (ini there)" : "cfg");
            return configError;
        };
        hooks.keepRecordingForRecovery = [this] { log.push_back("keep"); };
        hooks.report = [this](const std::string& text) { log.push_back("report " + text); };
        hooks.closeAudio = [this] { log.push_back("audio"); };
    }

    ExitResult exit(ExitRequest request = {}) {
        return runExitSequence(store, prompter, request, hooks);
    }
    // What the next start-up would load.
    Settings reloaded() const {
        SettingsStore next;
        next.DataFolder = store.DataFolder;
        next.SettingsFilePath = store.SettingsFilePath;
        LoadSettings(next);
        return next.values;
    }

    fs::path dir;
    SettingsStore store;
    test::ScriptedPrompter prompter;
    ExitHooks hooks;
    std::optional<SessionConfigError> configError;
    std::vector<std::string> log;
};

TEST_F(ExitSequenceTest, UnsavedRecordingQuestion) {
    struct Case {
        const char* name;
        bool inProgress, notSaved, promptEnabled;
        std::deque<Answer> answers;
        bool asks;
        ExitResult result;
    };
    const Case cases[] = {
        {"recording, No", true, false, true, {Answer::No}, true, ExitResult::Cancelled},
        {"not saved, No", false, true, true, {Answer::No}, true, ExitResult::Cancelled},
        {"not saved, Yes", false, true, true, {Answer::Yes}, true, ExitResult::Closed},
        {"warning switched off", true, true, false, {}, false, ExitResult::Closed},
        {"nothing at risk", false, false, true, {}, false, ExitResult::Closed},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        fs::remove(store.SettingsFilePath);
        log.clear();
        prompter.asked.clear();
        prompter.answers = c.answers;
        store.values.RecPromptEnable = c.promptEnabled;

        EXPECT_EQ(exit({c.inProgress, c.notSaved, false}), c.result);
        if (c.asks)
            EXPECT_EQ(prompter.asked,
                      (std::vector<Question>{
                          {"Warning", "Recording not saved, Exit?", Buttons::YesNo, Icon::None}}));
        else
            EXPECT_TRUE(prompter.asked.empty());
        if (c.result == ExitResult::Cancelled) {
            EXPECT_TRUE(log.empty());
            EXPECT_FALSE(fs::exists(store.SettingsFilePath)) << "nothing written";
        } else {
            EXPECT_EQ(log, (std::vector<std::string>{"cfg", "audio"}))
                << "session config first, audio closed last";
            EXPECT_TRUE(fs::exists(store.SettingsFilePath)) << "the Recording section is written";
        }
    }
}

TEST_F(ExitSequenceTest, SettingsFollowTheAutosaveChoice) {
    enum Change { None, Setting, RecordingOnly };
    struct Case {
        const char* name;
        std::int32_t mode;
        Change change;
        bool unattended;
        std::deque<Answer> answers;
        bool asks;
        Colour dialAfter;
    };
    const Case cases[] = {
        {"Off drops a change", kAutoSaveOff, Setting, false, {}, false, kDefaultDial},
        {"On saves and asks nothing", kAutoSaveOn, Setting, false, {}, false, kChangedDial},
        {"Prompt, no change", kAutoSavePrompt, None, false, {}, false, kDefaultDial},
        {"Prompt, change, Yes", kAutoSavePrompt, Setting, false, {Answer::Yes}, true, kChangedDial},
        {"Prompt, change, No", kAutoSavePrompt, Setting, false, {Answer::No}, true, kDefaultDial},
        {"Prompt, Recording only", kAutoSavePrompt, RecordingOnly, false, {}, false, kDefaultDial},
        {"unattended Prompt", kAutoSavePrompt, Setting, true, {}, false, kDefaultDial},
        {"unattended On still saves", kAutoSaveOn, Setting, true, {}, false, kChangedDial},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        store.values = Settings{};
        ASSERT_TRUE(SaveSettings(store));
        if (c.change == Setting) store.values.Dial_Color = kChangedDial;
        const std::string prefix = c.change == RecordingOnly ? "Night_" : "Prefix_";
        store.values.SavePrefix = prefix;
        store.AutoSaveMode = c.mode;
        prompter.asked.clear();
        prompter.answers = c.answers;

        EXPECT_EQ(exit({false, false, c.unattended}), ExitResult::Closed);
        if (c.asks)
            EXPECT_EQ(
                prompter.asked,
                (std::vector<Question>{{"Program settings have changed",
                                        "Save settings?\n\n( to " + store.SettingsFilePath + ")",
                                        Buttons::YesNo, Icon::None}}));
        else
            EXPECT_TRUE(prompter.asked.empty());
        const Settings after = reloaded();
        EXPECT_EQ(after.Dial_Color, c.dialAfter);
        EXPECT_EQ(after.SavePrefix, prefix) << "Recording is written whatever the choice";
    }
}

TEST_F(ExitSequenceTest, UnattendedKeepsAnUnsavedRecordingAndAsksNothing) {
    store.values.RecPromptEnable = true;
    EXPECT_EQ(exit({true, true, true}), ExitResult::Closed);
    EXPECT_TRUE(prompter.asked.empty());
    EXPECT_EQ(log, (std::vector<std::string>{"keep", "cfg", "audio"}));
}

TEST_F(ExitSequenceTest, ASessionConfigFailureIsShownAndTheExitGoesOn) {
    configError = SessionConfigError{"Error Saving Session Config File", "Save Config File"};
    prompter.answers = {Answer::Ok};
    EXPECT_EQ(exit(), ExitResult::Closed);
    EXPECT_EQ(prompter.asked,
              (std::vector<Question>{{"Save Config File", "Error Saving Session Config File",
                                      Buttons::Ok, Icon::Critical}}));
    EXPECT_EQ(log, (std::vector<std::string>{"cfg", "audio"}));
    EXPECT_TRUE(fs::exists(store.SettingsFilePath));

    log.clear();
    prompter.asked.clear();
    EXPECT_EQ(exit({false, false, true}), ExitResult::Closed);
    EXPECT_TRUE(prompter.asked.empty()) << "no box when nobody is there";
    EXPECT_EQ(log, (std::vector<std::string>{"cfg (ini there)",
                                             "report Error Saving Session Config File", "audio"}));
}

}  // namespace
}  // namespace lv
