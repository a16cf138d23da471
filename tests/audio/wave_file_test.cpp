#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "recording/audio_track.h"
#include "recording/wave_file.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

// Distinct samples, full scale both ways, so a dropped, doubled or swapped
// byte shows.
std::string pattern(std::size_t samples) {
    std::string pcm(samples * 2, '\0');
    for (std::size_t i = 0; i < samples; ++i) {
        const auto v = static_cast<std::int16_t>((i * 7919u) & 0xFFFFu);
        std::memcpy(pcm.data() + 2 * i, &v, 2);
    }
    return pcm;
}

TEST(WaveFile, WritesAndReadsBack) {
    struct Case {
        int rate, channels;
        std::size_t frames;
    };
    const Case cases[] = {{22050, 1, 22050}, {44100, 2, 1000}, {8000, 1, 0}, {48000, 2, 20000}};
    test::TempDir dir("wave_file");
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.rate) + " Hz x" + std::to_string(c.channels));
        const std::string path = dir.file("t.wav");
        const std::string pcm = pattern(c.frames * c.channels);
        ASSERT_EQ(writeWave16(path, c.rate, c.channels, pcm), kAudioOk);
        DecodedSound got;
        ASSERT_EQ(decodeSoundFile(path, got), kAudioOk);
        EXPECT_EQ(got.sampleRate, c.rate);
        EXPECT_EQ(got.channels, c.channels);
        EXPECT_EQ(got.bitsPerSample, 16);
        EXPECT_TRUE(got.isWave);
        EXPECT_EQ(got.frames(), static_cast<std::int64_t>(c.frames));
        EXPECT_TRUE(got.pcm == pcm);
        // 44-byte header and the samples, nothing else.
        EXPECT_EQ(std::filesystem::file_size(path), 44 + pcm.size());
    }
}

TEST(WaveFile, DropsAPartialFrame) {
    test::TempDir dir("wave_file");
    const std::string pcm = pattern(5);  // 10 bytes: 2 stereo frames and a half
    ASSERT_EQ(writeWave16(dir.file("t.wav"), 22050, 2, pcm), kAudioOk);
    DecodedSound got;
    ASSERT_EQ(decodeSoundFile(dir.file("t.wav"), got), kAudioOk);
    EXPECT_EQ(got.pcm, pcm.substr(0, 8));
}

// A wave's positions count bytes of its own encoding, whatever it decodes to.
TEST(WaveFile, ReportsTheFilesOwnEncoding) {
    struct Case {
        int format, bits;
        bool wave;
    };
    const Case cases[] = {
        {SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 8, true},
        {SF_FORMAT_WAV | SF_FORMAT_PCM_24, 24, true},
        {SF_FORMAT_WAV | SF_FORMAT_FLOAT, 32, true},
        {SF_FORMAT_WAV | SF_FORMAT_ULAW, 8, true},
        {SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 16, true},
        {SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 16, false},
        {SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 16, false},
    };
    test::TempDir dir("wave_file");
    const std::vector<short> samples = {0, 1000, -1000, 32000, -32000, 0};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.format);
        const std::string path = dir.file("t.snd");
        SF_INFO info{};
        info.samplerate = 11025;
        info.channels = 1;
        info.format = c.format;
        SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
        ASSERT_NE(f, nullptr) << sf_strerror(nullptr);
        sf_write_short(f, samples.data(), static_cast<sf_count_t>(samples.size()));
        sf_close(f);

        DecodedSound got;
        ASSERT_EQ(decodeSoundFile(path, got), kAudioOk);
        EXPECT_EQ(got.bitsPerSample, c.bits);
        EXPECT_EQ(got.isWave, c.wave);
        EXPECT_EQ(got.sampleRate, 11025);
        EXPECT_EQ(got.frames(), static_cast<std::int64_t>(samples.size()));
    }
}

// The placeholder that ships with the program: about a second of silence.
TEST(WaveFile, ShippedPlaceholderIsASilentMp3) {
    DecodedSound got;
    ASSERT_EQ(decodeSoundFile(LV_DUMMY_MP3, got), kAudioOk);
    EXPECT_FALSE(got.isWave);
    EXPECT_EQ(got.channels, 1);
    EXPECT_NEAR(static_cast<double>(got.frames()) / got.sampleRate, 1.0, 0.15);
    int loudest = 0;
    for (std::size_t i = 0; i + 1 < got.pcm.size(); i += 2) {
        std::int16_t v;
        std::memcpy(&v, got.pcm.data() + i, 2);
        loudest = std::max(loudest, std::abs(static_cast<int>(v)));
    }
    EXPECT_LE(loudest, 4);
}

TEST(WaveFile, ReportsFailures) {
    test::TempDir dir("wave_file");
    std::ofstream(dir.file("notes.wav")) << "RIFF but not really a wave file at all";
    DecodedSound got;
    struct Case {
        std::string path;
        int code;
    };
    const Case reads[] = {{dir.file("absent.wav"), kAudioFileNotFound},
                          {dir.path().string(), kAudioFileNotFound},
                          {dir.file("notes.wav"), kAudioBadFile}};
    for (const auto& c : reads) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(decodeSoundFile(c.path, got), c.code);
        EXPECT_TRUE(got.pcm.empty());
    }
    EXPECT_EQ(writeWave16(dir.file("no/such/folder.wav"), 22050, 1, pattern(10)),
              kAudioWriteFailed);
    EXPECT_EQ(writeWave16(dir.file("t.wav"), 0, 1, pattern(10)), kAudioWriteFailed);
    EXPECT_FALSE(std::filesystem::exists(dir.file("t.wav")));
}

}  // namespace
}  // namespace lv
