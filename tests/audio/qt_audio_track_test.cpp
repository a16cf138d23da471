#include <gtest/gtest.h>
#include <sndfile.h>

#include <QElapsedTimer>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "common/qt_pump.h"
#include "audio/qt_audio_track.h"
#include "audio/wave_file.h"
#include "support/sound_files.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

constexpr std::int64_t kRecordBytesPerSec = 44100;

void spin(int ms) {
    QtPump pump;
    pump.wait(ms / 1000.0);
}

bool spinUntil(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > timeoutMs) return false;
        spin(5);
    }
    return true;
}

std::int64_t positionOf(AudioTrack& track) {
    std::int64_t p = -1;
    EXPECT_EQ(track.position(p), kAudioOk);
    return p;
}

std::int64_t lengthOf(AudioTrack& track) {
    std::int64_t n = -1;
    EXPECT_EQ(track.length(n), kAudioOk);
    return n;
}

AudioMode modeOf(AudioTrack& track) {
    AudioMode m = AudioMode::NotReady;
    EXPECT_EQ(track.mode(m), kAudioOk);
    return m;
}

// Loud noise no stretch of which repeats, so it can be found again exactly.
std::string noise(std::size_t samples) {
    std::string pcm(samples * 2, '\0');
    std::uint32_t state = 12345;
    for (std::size_t i = 0; i < samples; ++i) {
        state = state * 1664525u + 1013904223u;
        const auto v = static_cast<std::int16_t>(static_cast<int>(state >> 16) - 32768);
        std::memcpy(pcm.data() + 2 * i, &v, 2);
    }
    return pcm;
}

struct SavedWave {
    SF_INFO info{};
    std::string pcm;
};

SavedWave readWave(const std::string& path) {
    SavedWave w;
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &w.info);
    if (!f) return w;
    w.pcm.resize(static_cast<std::size_t>(w.info.frames * w.info.channels) * 2);
    sf_readf_short(f, reinterpret_cast<short*>(w.pcm.data()), w.info.frames);
    sf_close(f);
    return w;
}

// ---- Without any sound device needed -------------------------------------

TEST(AudioFiles, OpenReportsWhatIsWrongAndCommandsNeedTheRightTrack) {
    test::TempDir dir("audio_files");
    std::ofstream(dir.file("notes.mp3")) << "not a sound";
    const std::tuple<std::string, AudioKind, int> cases[] = {
        {dir.file("absent.wav"), AudioKind::Wave, kAudioFileNotFound},
        {dir.file("notes.mp3"), AudioKind::Compressed, kAudioBadFile},
        {LV_DUMMY_MP3, AudioKind::Wave, kAudioBadFile},  // an MP3 has no bytes to count
        {LV_DUMMY_MP3, AudioKind::Compressed, kAudioOk}};
    QtAudioTrack track;
    std::int64_t value;
    EXPECT_EQ(track.position(value), kAudioNotOpen);
    for (const auto& [path, kind, code] : cases) {
        ASSERT_EQ(track.openNewWave(), kAudioOk);  // a failed open leaves nothing open
        EXPECT_EQ(track.openFile(path, kind), code) << path;
        EXPECT_EQ(modeOf(track), code == kAudioOk ? AudioMode::Stopped : AudioMode::NotReady);
    }
    for (const int code : {track.record(), track.deleteFromStart(0), track.save(dir.file("x.wav"))})
        EXPECT_EQ(code, kAudioWrongMode);
    EXPECT_FALSE(std::filesystem::exists(dir.file("x.wav")));
}

// A wave counts bytes of its own encoding, whatever it decodes to; any other
// file counts milliseconds.
TEST(AudioFiles, PositionsCountInTheFilesOwnUnits) {
    test::TempDir dir("audio_files");
    const std::tuple<AudioKind, int, int, int, std::int64_t, std::int64_t> cases[] = {
        {AudioKind::Wave, SF_FORMAT_PCM_U8, 11025, 1, 11025, 11025},
        {AudioKind::Wave, SF_FORMAT_PCM_24, 8000, 2, 800, 4800},
        {AudioKind::Compressed, SF_FORMAT_PCM_16, 44100, 2, 4410, 100}};
    for (const auto& [kind, format, rate, channels, frames, length] : cases) {
        const std::string path = dir.file("t.wav");
        SF_INFO info{0, rate, channels, SF_FORMAT_WAV | format, 0, 0};
        SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
        ASSERT_NE(f, nullptr);
        const std::string pcm = noise(static_cast<std::size_t>(frames * channels));
        sf_writef_short(f, reinterpret_cast<const short*>(pcm.data()), frames);
        sf_close(f);
        QtAudioTrack track;
        ASSERT_EQ(track.openFile(path, kind), kAudioOk);
        EXPECT_EQ(lengthOf(track), length) << rate;
        ASSERT_EQ(track.seek(length / 2), kAudioOk);
        EXPECT_EQ(positionOf(track), length / 2);
        EXPECT_EQ(track.seek(length + 1), kAudioBadRange);
    }
}

// ---- No sound server: every device command fails at once ----------------

TEST(WithoutServer, DeviceCommandsFailAtOnce) {
    test::TempDir dir("no_server");
    const std::string wave = dir.file("a.wav");
    ASSERT_EQ(writeWave16(wave, 22050, 1, noise(22050)), kAudioOk);
    QElapsedTimer timer;
    timer.start();
    QtAudioTrack track;
    ASSERT_EQ(track.openNewWave(), kAudioOk);
    EXPECT_EQ(track.record(), kAudioNoDevice);
    EXPECT_EQ(modeOf(track), AudioMode::Stopped);
    EXPECT_EQ(lengthOf(track), 0);
    ASSERT_EQ(track.openFile(wave, AudioKind::Wave), kAudioOk);
    EXPECT_EQ(track.play(), kAudioNoDevice);
    EXPECT_EQ(track.playFrom(22050), kAudioNoDevice);
    EXPECT_EQ(modeOf(track), AudioMode::Stopped);
    EXPECT_EQ(positionOf(track), 22050);
    EXPECT_LT(timer.elapsed(), 2000);
}

// ---- Against the null sink: what is played is heard back -----------------

TEST(WithServer, RecordsAtTheDeviceRate) {
    test::TempDir dir("with_server");
    QtAudioTrack track;
    std::string captured;
    track.setCaptureSink([&](std::string_view pcm) { captured.append(pcm); });
    ASSERT_EQ(track.openNewWave(), kAudioOk);
    ASSERT_EQ(track.record(), kAudioOk);
    EXPECT_EQ(track.play(), kAudioWrongMode);

    ASSERT_TRUE(spinUntil([&] { return positionOf(track) > 0; }, 1000));
    QElapsedTimer timer;
    timer.start();
    const std::int64_t first = positionOf(track);
    spin(1500);
    const std::int64_t last = positionOf(track);
    const double seconds = timer.nsecsElapsed() / 1e9;
    // Data comes in 20 ms steps, so allow a step either side.
    EXPECT_NEAR(static_cast<double>(last - first), seconds * kRecordBytesPerSec, 2 * 882 + 1000);

    ASSERT_EQ(track.stop(), kAudioOk);
    const std::int64_t recorded = lengthOf(track);
    EXPECT_EQ(static_cast<std::int64_t>(captured.size()), recorded);
    EXPECT_EQ(track.deleteFromStart(recorded + 2), kAudioBadRange);
    ASSERT_EQ(track.deleteFromStart(kRecordBytesPerSec), kAudioOk);
    ASSERT_EQ(track.save(dir.file("take.wav")), kAudioOk);
    const SavedWave saved = readWave(dir.file("take.wav"));
    EXPECT_EQ(std::tuple(saved.info.format, saved.info.samplerate, saved.info.channels),
              std::tuple(SF_FORMAT_WAV | SF_FORMAT_PCM_16, 22050, 1));
    EXPECT_TRUE(saved.pcm == captured.substr(kRecordBytesPerSec));
}

// The null sink's monitor is the default source: a recording hears what a
// second track plays, sample for sample.
TEST(WithServer, HearsWhatItPlaysExactly) {
    test::TempDir dir("with_server");
    const std::string tone = noise(11025);  // half a second
    const std::string tonePath = dir.file("tone.wav");
    ASSERT_EQ(writeWave16(tonePath, 22050, 1, tone), kAudioOk);

    QtAudioTrack recorder, player;
    ASSERT_EQ(recorder.openNewWave(), kAudioOk);
    ASSERT_EQ(recorder.record(), kAudioOk);
    ASSERT_TRUE(spinUntil([&] { return positionOf(recorder) >= 4410; }, 1000));

    ASSERT_EQ(player.openFile(tonePath, AudioKind::Wave), kAudioOk);
    ASSERT_EQ(player.play(), kAudioOk);
    // The end of the data stops the track by itself.
    ASSERT_TRUE(spinUntil([&] { return modeOf(player) == AudioMode::Stopped; }, 3000));
    EXPECT_EQ(positionOf(player), 22050);
    spin(200);
    ASSERT_EQ(recorder.stop(), kAudioOk);

    ASSERT_EQ(recorder.save(dir.file("all.wav")), kAudioOk);
    const std::string heard = readWave(dir.file("all.wav")).pcm;
    const std::size_t at = heard.find(tone.substr(0, 64));
    ASSERT_NE(at, std::string::npos) << "the tone was not heard";
    ASSERT_EQ(at % 2, 0u);
    EXPECT_TRUE(heard.compare(at, tone.size(), tone) == 0) << "the tone came back altered";
}

TEST(WithServer, PlaybackPositionFollowsTheClock) {
    test::TempDir dir("with_server");
    constexpr std::int64_t perSec = 44100 * 2 * 2;  // a 44.1 kHz stereo wave, in bytes
    const std::string path = dir.file("stereo.wav");
    ASSERT_EQ(writeWave16(path, 44100, 2, std::string(2 * perSec, '\0')), kAudioOk);
    QtAudioTrack track;
    ASSERT_EQ(track.openFile(path, AudioKind::Wave), kAudioOk);
    const double tolerance = 0.06 * perSec;

    QElapsedTimer timer;
    timer.start();
    ASSERT_EQ(track.play(), kAudioOk);
    spin(400);
    EXPECT_NEAR(positionOf(track), timer.nsecsElapsed() / 1e9 * perSec, tolerance);

    ASSERT_EQ(track.pause(), kAudioOk);
    const std::int64_t paused = positionOf(track);
    spin(300);
    EXPECT_EQ(positionOf(track), paused);

    ASSERT_EQ(track.playFrom(perSec * 3 / 2), kAudioOk);
    spin(200);
    EXPECT_NEAR(positionOf(track), 1.7 * perSec, tolerance);
    ASSERT_TRUE(spinUntil([&] { return modeOf(track) == AudioMode::Stopped; }, 2000));
    EXPECT_EQ(positionOf(track), 2 * perSec);

    ASSERT_EQ(track.playFrom(perSec / 2), kAudioOk);
    ASSERT_EQ(track.seek(perSec), kAudioOk);  // seeking ends playing
    spin(100);
    EXPECT_EQ(positionOf(track), perSec);
}

// A VBR MP3 without a Xing/Info header plays to its very end, counted in
// milliseconds, and a jump lands where it was asked.
TEST(WithServer, HeaderlessVbrMp3PlaysWhole) {
    test::TempDir dir("with_server");
    const std::string mp3 = dir.file("vbr.mp3");
    test::makeNoise(dir.file("source.wav"), "-r 22050 -c 1 -b 16", 20);
    test::encodeMp3(dir.file("source.wav"), "-V 4 -t", mp3);
    QtAudioTrack track;
    ASSERT_EQ(track.openFile(mp3, AudioKind::Compressed), kAudioOk);
    QElapsedTimer timer;
    timer.start();
    ASSERT_EQ(track.playFrom(18'500), kAudioOk);
    spin(300);
    EXPECT_NEAR(positionOf(track), 18'500 + timer.elapsed(), 60);
    const std::int64_t length = lengthOf(track);
    EXPECT_GE(length, 20'000);
    EXPECT_LE(length, 20'070);
    ASSERT_TRUE(spinUntil([&] { return modeOf(track) == AudioMode::Stopped; }, 3000));
    EXPECT_EQ(positionOf(track), length);
    EXPECT_NEAR(timer.elapsed(), length - 18'500, 300);
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
    FILE* out = ::popen((script + "start " + dir.path().string()).c_str(), "r");
    ASSERT_NE(out, nullptr);
    std::string env;
    for (char buf[512]; std::fgets(buf, sizeof buf, out);) env += buf;
    ASSERT_EQ(::pclose(out), 0) << env;
    std::istringstream lines(env);
    for (std::string line; std::getline(lines, line);)
        if (const auto eq = line.find('='); line.rfind("export ", 0) == 0 && eq != line.npos)
            ::setenv(line.substr(7, eq - 7).c_str(), line.substr(eq + 1).c_str(), 1);

    const std::string wave = dir.file("a.wav");
    ASSERT_EQ(writeWave16(wave, 22050, 1, noise(5 * 22050)), kAudioOk);
    QtAudioTrack recorder, player;
    ASSERT_EQ(recorder.openNewWave(), kAudioOk);
    ASSERT_EQ(recorder.record(), kAudioOk);
    ASSERT_EQ(player.openFile(wave, AudioKind::Wave), kAudioOk);
    ASSERT_EQ(player.play(), kAudioOk);
    ASSERT_TRUE(spinUntil([&] { return positionOf(recorder) >= 8820; }, 1000));

    ASSERT_EQ(std::system((script + "stop " + dir.path().string()).c_str()), 0);
    QElapsedTimer timer;
    timer.start();
    std::int64_t value;
    AudioMode mode;
    ASSERT_TRUE(spinUntil([&] { return recorder.position(value) == kAudioDeviceLost; }, 2000));
    for (AudioTrack* track :
         {static_cast<AudioTrack*>(&recorder), static_cast<AudioTrack*>(&player)}) {
        EXPECT_EQ(track->mode(mode), kAudioDeviceLost);
        EXPECT_EQ(track->position(value), kAudioDeviceLost);
        EXPECT_EQ(track->stop(), kAudioDeviceLost);  // reports the loss, lets the stream go
        EXPECT_EQ(modeOf(*track), AudioMode::Stopped);
    }
    // What arrived before the loss is still there to save.
    ASSERT_EQ(recorder.save(dir.file("kept.wav")), kAudioOk);
    EXPECT_GE(readWave(dir.file("kept.wav")).info.frames, 4410);
    EXPECT_EQ(player.play(), kAudioNoDevice);
    EXPECT_LT(timer.elapsed(), 3000);
}

}  // namespace
}  // namespace lv
