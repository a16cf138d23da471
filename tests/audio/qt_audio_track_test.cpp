#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>

#include "audio/qt_audio_track.h"
#include "audio/wave_file.h"
#include "common/qt_pump.h"
#include "support/file_bytes.h"
#include "support/pcm_noise.h"
#include "support/sound_files.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

void spin(int ms) {
    QtPump().wait(ms / 1000.0);
}

bool spinUntil(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer timer;
    for (timer.start(); !done(); spin(5))
        if (timer.elapsed() > timeoutMs) return false;
    return true;
}

// What a status command says; the command itself must succeed.
template <typename T>
T ask(AudioTrack& track, int (AudioTrack::*command)(T&), T value = {}) {
    EXPECT_EQ((track.*command)(value), kAudioOk);
    return value;
}

struct Track : QtAudioTrack {
    std::int64_t pos() { return ask(*this, &AudioTrack::position, std::int64_t{-1}); }
    std::int64_t len() { return ask(*this, &AudioTrack::length, std::int64_t{-1}); }
    AudioMode state() { return ask(*this, &AudioTrack::mode, AudioMode::NotReady); }
    bool stoppedWithin(int ms) {
        return spinUntil([&] { return state() == AudioMode::Stopped; }, ms);
    }
};

// ---- Without any sound device needed -------------------------------------

// Opening says what is wrong, and commands need the right track. A wave then
// counts bytes of its own encoding, whatever it decodes to; any other file
// counts milliseconds.
TEST(AudioFiles, OpenReportsWhatIsWrongAndPositionsCountInTheFilesOwnUnits) {
    test::TempDir dir("audio_files");
    test::writeFile(dir.file("notes.mp3"), "not a sound");
    // An MP3 has no bytes to count.
    const std::tuple<std::string, AudioKind, int> opens[] = {
        // clang-format off
        {dir.file("absent.wav"), AudioKind::Wave, kAudioFileNotFound},
        {dir.file("notes.mp3"), AudioKind::Compressed, kAudioBadFile},
        {LV_DUMMY_MP3, AudioKind::Wave, kAudioBadFile}, {LV_DUMMY_MP3, AudioKind::Compressed, kAudioOk}};
    // clang-format on
    Track track;
    std::int64_t value;
    EXPECT_EQ(track.position(value), kAudioNotOpen);
    for (const auto& [path, kind, code] : opens) {
        ASSERT_EQ(track.openNewWave(), kAudioOk);  // a failed open leaves nothing open
        EXPECT_EQ(track.openFile(path, kind), code) << path;
        EXPECT_EQ(track.state(), code == kAudioOk ? AudioMode::Stopped : AudioMode::NotReady);
    }
    for (const int code : {track.record(), track.deleteFromStart(0), track.save(dir.file("x.wav"))})
        EXPECT_EQ(code, kAudioWrongMode);
    EXPECT_FALSE(std::filesystem::exists(dir.file("x.wav")));

    const std::tuple<AudioKind, const char*, std::int64_t> units[] = {
        {AudioKind::Wave, "-r 11025 -c 1 -b 8 -e unsigned", 11025},
        {AudioKind::Wave, "-r 8000 -c 2 -b 24", 48000},
        {AudioKind::Compressed, "-r 44100 -c 2 -b 16", 1000}};
    for (const auto& [kind, format, length] : units) {
        test::makeNoise(dir.file("t.wav"), format, 1.0);
        Track t;
        ASSERT_EQ(t.openFile(dir.file("t.wav"), kind), kAudioOk);
        EXPECT_EQ(t.len(), length) << format;
        ASSERT_EQ(t.seek(length / 2), kAudioOk);
        EXPECT_EQ(t.pos(), length / 2);
        EXPECT_EQ(t.seek(length + 1), kAudioBadRange);
    }
}

// ---- Against the null sink: what is played is heard back -----------------

// Records at the device rate, 44100 bytes a second; the null sink's monitor is
// the default source, so the recording hears what a second track plays,
// sample for sample, and keeps it once the lead-in second is cut.
TEST(WithServer, RecordsAtTheDeviceRateAndHearsWhatItPlaysExactly) {
    test::TempDir dir("with_server");
    const std::string tone = test::noise(11025);  // half a second
    ASSERT_EQ(writeWave16(dir.file("tone.wav"), 22050, 1, tone), kAudioOk);
    Track recorder, player;
    std::string captured;
    recorder.setCaptureSink([&](std::string_view pcm) { captured.append(pcm); });
    ASSERT_EQ(recorder.openNewWave(), kAudioOk);
    ASSERT_EQ(recorder.record(), kAudioOk);
    EXPECT_EQ(recorder.play(), kAudioWrongMode);
    ASSERT_TRUE(spinUntil([&] { return recorder.pos() > 0; }, 1000));
    QElapsedTimer timer;
    timer.start();
    const std::int64_t first = recorder.pos();
    ASSERT_TRUE(spinUntil([&] { return recorder.pos() >= 44100 + 4410; }, 2000));

    ASSERT_EQ(player.openFile(dir.file("tone.wav"), AudioKind::Wave), kAudioOk);
    ASSERT_EQ(player.play(), kAudioOk);
    ASSERT_TRUE(player.stoppedWithin(3000)) << "the end of the data stops the track by itself";
    EXPECT_EQ(player.pos(), 22050);
    spin(200);
    // Data comes in 20 ms steps, so allow a step either side.
    const double seconds = timer.nsecsElapsed() / 1e9;
    EXPECT_NEAR(static_cast<double>(recorder.pos() - first), seconds * 44100, 2 * 882 + 1000);

    ASSERT_EQ(recorder.stop(), kAudioOk);
    const std::int64_t recorded = recorder.len();
    EXPECT_EQ(static_cast<std::int64_t>(captured.size()), recorded);
    EXPECT_EQ(recorder.deleteFromStart(recorded + 2), kAudioBadRange);
    ASSERT_EQ(recorder.deleteFromStart(44100), kAudioOk);
    ASSERT_EQ(recorder.save(dir.file("take.wav")), kAudioOk);
    DecodedSound saved;
    ASSERT_EQ(decodeSoundFile(dir.file("take.wav"), saved), kAudioOk);
    EXPECT_EQ(std::tuple(saved.bitsPerSample, saved.sampleRate, saved.channels),
              std::tuple(16, 22050, 1));
    EXPECT_TRUE(saved.pcm == captured.substr(44100));
    const std::size_t at = saved.pcm.find(tone.substr(0, 64));
    ASSERT_NE(at, std::string::npos) << "the tone was not heard";
    ASSERT_EQ(at % 2, 0u);
    EXPECT_TRUE(saved.pcm.compare(at, tone.size(), tone) == 0) << "the tone came back altered";
}

TEST(WithServer, PlaybackPositionFollowsTheClock) {
    test::TempDir dir("with_server");
    constexpr std::int64_t perSec = 44100 * 2 * 2;  // a 44.1 kHz stereo wave, in bytes
    const std::string path = dir.file("stereo.wav");
    ASSERT_EQ(writeWave16(path, 44100, 2, std::string(2 * perSec, '\0')), kAudioOk);
    Track track;
    ASSERT_EQ(track.openFile(path, AudioKind::Wave), kAudioOk);
    // Started at `from`, the position never runs ahead of the wall clock, and
    // once moving keeps up with it but for what a busy machine kept this
    // thread waiting beyond the time asked for: it holds up the sound's too.
    const auto playsOn = [&](const std::function<int()>& start, std::int64_t from, int ms) {
        QElapsedTimer timer;
        timer.start();
        ASSERT_EQ(start(), kAudioOk);
        ASSERT_TRUE(spinUntil([&] { return track.pos() > from; }, 1000));
        const std::int64_t moving = track.pos();
        const double since = timer.nsecsElapsed() / 1e9;
        spin(ms);
        const double late = timer.nsecsElapsed() / 1e9 - since - ms / 1e3;
        const std::int64_t now = track.pos();
        EXPECT_LE(now - from, (timer.nsecsElapsed() / 1e9 + 0.06) * perSec);
        EXPECT_GE(now - moving, (ms / 1e3 - 0.06 - late) * perSec);
    };
    playsOn([&] { return track.play(); }, 0, 400);
    ASSERT_EQ(track.pause(), kAudioOk);
    const std::int64_t paused = track.pos();
    spin(300);
    EXPECT_EQ(track.pos(), paused);
    playsOn([&] { return track.playFrom(perSec * 3 / 2); }, perSec * 3 / 2, 200);
    ASSERT_TRUE(track.stoppedWithin(2000));
    EXPECT_EQ(track.pos(), 2 * perSec);
    ASSERT_EQ(track.playFrom(perSec / 2), kAudioOk);
    ASSERT_EQ(track.seek(perSec), kAudioOk);  // seeking ends playing
    spin(100);
    EXPECT_EQ(track.pos(), perSec);
}

// ---- A server that goes away mid-stream ----------------------------------

// Starts a private server of its own (Qt connects to a server once per
// process, so this must be the first test to touch audio) and stops it while
// a recording and a playback run.
TEST(LostServer, KeepsWhatWasRecorded) {
    if (::testing::UnitTest::GetInstance()->test_to_run_count() != 1)
        GTEST_SKIP() << "needs a process of its own: run it alone";
    test::TempDir dir("lost_server");
    const std::string script = std::string(LV_PULSE_SCRIPT) + " ";
    // The script says the server's environment as "export NAME=value" lines.
    test::runTool(script + "start " + dir.path().string() + " > " + dir.file("env"));
    std::istringstream lines(test::readFile(dir.file("env")));
    for (std::string line; std::getline(lines, line);)
        if (const auto eq = line.find('='); line.rfind("export ", 0) == 0 && eq != line.npos)
            ::setenv(line.substr(7, eq - 7).c_str(), line.substr(eq + 1).c_str(), 1);

    ASSERT_EQ(writeWave16(dir.file("a.wav"), 22050, 1, test::noise(5 * 22050)), kAudioOk);
    Track recorder, player;
    ASSERT_EQ(recorder.openNewWave(), kAudioOk);
    ASSERT_EQ(recorder.record(), kAudioOk);
    ASSERT_EQ(player.openFile(dir.file("a.wav"), AudioKind::Wave), kAudioOk);
    ASSERT_EQ(player.play(), kAudioOk);
    ASSERT_TRUE(spinUntil([&] { return recorder.pos() >= 8820; }, 1000));

    test::runTool(script + "stop " + dir.path().string());
    QElapsedTimer timer;
    timer.start();
    std::int64_t value;
    AudioMode mode;
    ASSERT_TRUE(spinUntil([&] { return recorder.position(value) == kAudioDeviceLost; }, 2000));
    for (Track* track : {&recorder, &player}) {
        EXPECT_EQ(std::pair(track->mode(mode), track->position(value)),
                  (std::pair<int, int>(kAudioDeviceLost, kAudioDeviceLost)));
        EXPECT_EQ(track->stop(), kAudioDeviceLost);  // reports the loss, lets the stream go
        EXPECT_EQ(track->state(), AudioMode::Stopped);
    }
    // What arrived before the loss is still there to save.
    ASSERT_EQ(recorder.save(dir.file("kept.wav")), kAudioOk);
    DecodedSound kept;
    ASSERT_EQ(decodeSoundFile(dir.file("kept.wav"), kept), kAudioOk);
    EXPECT_GE(kept.frames(), 4410);
    EXPECT_EQ(player.play(), kAudioNoDevice);
    EXPECT_LT(timer.elapsed(), 3000);
}

}  // namespace
}  // namespace lv
