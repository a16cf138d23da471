#include "app/exit_sequence.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/scripted_prompter.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

namespace fs = std::filesystem;
using Question = test::ScriptedPrompter::Question;
using Lines = std::vector<std::string>;

class ExitSequenceTest : public ::testing::Test {
protected:
    ExitSequenceTest() {
        store.DataFolder = temp.path().string() + "/";
        store.SettingsFilePath = temp.file("lv_Analog.ini");
        hooks.writeSessionConfig = [this]() -> std::optional<SessionConfigError> {
            log.push_back(fs::exists(store.SettingsFilePath) ? "cfg (ini there)" : "cfg");
            return configError;
        };
        hooks.keepRecordingForRecovery = [this] { log.push_back("keep"); };
        hooks.report = [this](const std::string& text) { log.push_back("report " + text); };
        hooks.closeAudio = [this] { log.push_back("audio"); };
    }
    ExitResult exit(ExitRequest request) {
        log.clear();
        prompter.asked.clear();
        return runExitSequence(store, prompter, request, hooks);
    }

    test::TempDir temp{"lv_exit"};
    SettingsStore store;
    test::ScriptedPrompter prompter;
    ExitHooks hooks;
    std::optional<SessionConfigError> configError;
    Lines log;
};

TEST_F(ExitSequenceTest, UnsavedRecordingQuestion) {
    const struct {
        ExitRequest request;
        bool promptEnabled;
        std::deque<Answer> answers;
        Lines log;  // empty: cancelled, nothing written
    } cases[] = {
        {{false, true, false}, true, {Answer::No}, {}},
        {{false, true, false}, true, {Answer::Yes}, {"cfg", "audio"}},
        {{true, true, false}, false, {}, {"cfg", "audio"}},  // the warning switched off
        {{false, false, false}, true, {}, {"cfg", "audio"}},
        {{true, true, true}, true, {}, {"keep", "cfg", "audio"}},  // unattended
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        fs::remove(store.SettingsFilePath);
        prompter.answers = c.answers;
        store.values.RecPromptEnable = c.promptEnabled;
        EXPECT_EQ(exit(c.request), c.log.empty() ? ExitResult::Cancelled : ExitResult::Closed);
        const std::vector<Question> question{
            {"Warning", "Recording not saved, Exit?", Buttons::YesNo, Icon::None}};
        EXPECT_EQ(prompter.asked, c.answers.empty() ? std::vector<Question>{} : question);
        EXPECT_EQ(log, c.log) << "session config first, audio closed last";
        EXPECT_EQ(fs::exists(store.SettingsFilePath), !c.log.empty());
    }
}

TEST_F(ExitSequenceTest, SettingsFollowTheAutosaveChoice) {
    constexpr Colour kDefault = 16777215, kChanged = 4242;
    enum Change { None, Setting, RecordingOnly };
    const struct {
        std::int32_t mode;
        Change change;
        bool unattended;
        std::deque<Answer> answers;
        Colour dialAfter;
    } cases[] = {
        {kAutoSaveOff, Setting, false, {}, kDefault},
        {kAutoSaveOn, Setting, false, {}, kChanged},
        {kAutoSavePrompt, Setting, false, {Answer::Yes}, kChanged},
        {kAutoSavePrompt, Setting, false, {Answer::No}, kDefault},
        {kAutoSavePrompt, RecordingOnly, false, {}, kDefault},
        {kAutoSavePrompt, Setting, true, {}, kDefault},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        store.values = Settings{};
        ASSERT_TRUE(SaveSettings(store));
        if (c.change == Setting) store.values.Dial_Color = kChanged;
        const std::string prefix = c.change == RecordingOnly ? "Night_" : "Prefix_";
        store.values.SavePrefix = prefix;
        store.AutoSaveMode = c.mode;
        prompter.answers = c.answers;
        EXPECT_EQ(exit({false, false, c.unattended}), ExitResult::Closed);
        const std::vector<Question> question{
            {"Program settings have changed",
             "Save settings?\n\n( to " + store.SettingsFilePath + ")", Buttons::YesNo, Icon::None}};
        EXPECT_EQ(prompter.asked, c.answers.empty() ? std::vector<Question>{} : question);
        SettingsStore next;  // what the next start-up loads
        next.DataFolder = store.DataFolder;
        next.SettingsFilePath = store.SettingsFilePath;
        LoadSettings(next);
        EXPECT_EQ(next.values.Dial_Color, c.dialAfter);
        EXPECT_EQ(next.values.SavePrefix, prefix) << "Recording is written whatever the choice";
    }
}

TEST_F(ExitSequenceTest, ASessionConfigFailureIsShownAndTheExitGoesOn) {
    configError = SessionConfigError{"Error Saving Session Config File", "Save Config File",
                                     "/d/lv_Analog.cfg\n\nRead-only file system"};
    prompter.answers = {Answer::Ok};
    EXPECT_EQ(exit({}), ExitResult::Closed);
    EXPECT_EQ(prompter.asked.size(), 1u);
    EXPECT_EQ(prompter.details.at(0).informative, "/d/lv_Analog.cfg\n\nRead-only file system");
    EXPECT_EQ(log, (Lines{"cfg", "audio"}));
    EXPECT_TRUE(fs::exists(store.SettingsFilePath));

    EXPECT_EQ(exit({false, false, true}), ExitResult::Closed);
    EXPECT_TRUE(prompter.asked.empty()) << "no box when nobody is there";
    EXPECT_EQ(log, (Lines{"cfg (ini there)",
                          "report Error Saving Session Config File: /d/lv_Analog.cfg\n\n"
                          "Read-only file system",
                          "audio"}));
}

}  // namespace
}  // namespace lv
