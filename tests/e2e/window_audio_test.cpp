#include <gtest/gtest.h>

#include <sndfile.h>

#include "device/link_status.h"
#include "support/live_window.h"
#include "support/virtual_meter.h"

namespace lv {
namespace {

using test::waitUntil;

// Frames of a wave file, or -1.
long long waveFrames(const std::string& path) {
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f) return -1;
    sf_close(f);
    return info.samplerate == 22050 && info.channels == 1 ? info.frames : -2;
}

// The window against the virtual meter, recording with sound in "Auto Save".
class WindowAudio : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(meter.ready);
        saveTo = data.filePath("rec/").toStdString();
        std::filesystem::create_directory(saveTo);
        w = test::openWindow(data.path().toStdString(),
                             "[Recording]\nAudioEnable=True\nRecordingMode=3\nSuffixType=0\n"
                             "SuffixNum=1\nSavePrefix=Snd\nSavePath=" +
                                 saveTo + "\n",
                             meter.link.toStdString());
        ASSERT_TRUE(test::streams(*w));
    }
    void TearDown() override {
        if (w) w->closeUnattended();
    }
    void click(const char* name) { test::click(*w, name); }
    // Records for about `ms`; the status line shown meanwhile.
    std::string record(int ms) {
        click("cmdRecord");
        QTest::qWait(ms);
        const std::string shown = w->session().state().ShownStatus;
        click("cmdStop");
        return shown;
    }

    test::VirtualMeter meter;
    QTemporaryDir data;
    std::string saveTo;
    std::unique_ptr<MainWindow> w;
};

TEST_F(WindowAudio, WithServerSoundIsSavedBesideTheRecordsAndPacesPlayback) {
    EXPECT_EQ(record(1500), kStatusRecording);
    const std::string lvd = saveTo + "Snd001.lvd", wav = saveTo + "Snd001.wav";
    ASSERT_TRUE(std::filesystem::exists(lvd));
    const RecBuffer& b = w->recording().state().buffer;
    ASSERT_GT(b.RecCount, 60);
    // The lead-in second is cut: the sound starts with the first record and
    // lasts to the next whole second after the last.
    const long long frames = waveFrames(wav);
    ASSERT_GT(frames, 0);
    const double soundMs = frames * 1000.0 / 22050;
    EXPECT_GE(soundMs + 20, b.TotalTimeMs) << "no record outlives the sound";
    EXPECT_LT(soundMs, b.TotalTimeMs + 1100.0) << "stopped at the next whole second";
    for (std::int32_t i = 2; i <= b.RecCount; ++i) ASSERT_GE(b(i).TimeMs, b(i - 1).TimeMs) << i;

    ASSERT_TRUE(w->recording().player().Load_File(lvd));
    EXPECT_EQ(w->recording().state().AudioBytesPerSec, 44100);
    click("cmdPlay");
    ASSERT_TRUE(waitUntil([&] { return w->session().state().RunMode != kRunPlayback; }, 8000));
    const Player::Lateness& late = w->recording().player().lateness();
    EXPECT_GT(late.records, 50);
    EXPECT_GE(late.earliest, -20) << "no record shown more than 20 ms early";
    EXPECT_LE(late.worst, 20) << "nor more than 20 ms late";
}

TEST_F(WindowAudio, WithoutServerRecordingGoesOnOnThePlaceholderClock) {
    EXPECT_EQ(record(1500), "Audio OFF");
    EXPECT_TRUE(std::filesystem::exists(saveTo + "Snd001.lvd")) << "nothing recorded is lost";
    EXPECT_FALSE(std::filesystem::exists(saveTo + "Snd001.wav"));
    const RecBuffer& b = w->recording().state().buffer;
    EXPECT_NEAR(b.RecCount, 125, 20) << "1 s of lead-in and 1.5 s after it: nothing to cut";
    // 20 ms a frame; a line the frame path passed over (a busy machine) still
    // takes its 20 ms.
    for (std::int32_t i = 2; i <= b.RecCount; ++i) {
        const std::int32_t step = b(i).TimeMs - b(i - 1).TimeMs;
        ASSERT_TRUE(step > 0 && step % 20 == 0) << i << ": " << step;
    }
}

}  // namespace
}  // namespace lv
