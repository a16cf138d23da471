#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include "audio/audio_track.h"
#include "audio/wave_file.h"
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

TEST(WaveFile, WritesAndReadsBackDroppingAPartialFrame) {
    test::TempDir dir("wave_file");
    // 10 bytes: 2 stereo frames and a half.
    const std::tuple<int, int, std::size_t, std::size_t> cases[] = {
        {22050, 1, 22050, 22050}, {48000, 2, 40000, 40000}, {8000, 1, 0, 0}, {22050, 2, 5, 4}};
    for (const auto& [rate, channels, samples, kept] : cases) {
        const std::string pcm = pattern(samples);
        ASSERT_EQ(writeWave16(dir.file("t.wav"), rate, channels, pcm), kAudioOk);
        DecodedSound got;
        ASSERT_EQ(decodeSoundFile(dir.file("t.wav"), got), kAudioOk);
        EXPECT_EQ(std::tuple(got.sampleRate, got.channels, got.bitsPerSample, got.isWave),
                  std::tuple(rate, channels, 16, true));
        EXPECT_TRUE(got.pcm == pcm.substr(0, kept * 2)) << samples;
        EXPECT_EQ(std::filesystem::file_size(dir.file("t.wav")), 44 + kept * 2);  // header + data
    }
}

// A wave's positions count bytes of its own encoding, whatever it decodes to.
TEST(WaveFile, ReportsTheFilesOwnEncoding) {
    const std::tuple<int, int, bool> cases[] = {{SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 8, true},
                                                {SF_FORMAT_WAV | SF_FORMAT_FLOAT, 32, true},
                                                {SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 16, true},
                                                {SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 16, false}};
    test::TempDir dir("wave_file");
    const std::vector<short> samples = {0, 1000, -1000, 32000, -32000, 0};
    for (const auto& [format, bits, wave] : cases) {
        const std::string path = dir.file("t.snd");
        SF_INFO info{0, 11025, 1, format, 0, 0};
        SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
        ASSERT_NE(f, nullptr) << sf_strerror(nullptr);
        sf_write_short(f, samples.data(), static_cast<sf_count_t>(samples.size()));
        sf_close(f);
        DecodedSound got;
        ASSERT_EQ(decodeSoundFile(path, got), kAudioOk);
        EXPECT_EQ(std::tuple(got.bitsPerSample, got.isWave, got.frames()),
                  std::tuple(bits, wave, std::int64_t{6}))
            << format;
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
    EXPECT_EQ(decodeSoundFile(dir.file("absent.wav"), got), kAudioFileNotFound);
    EXPECT_EQ(decodeSoundFile(dir.file("notes.wav"), got), kAudioBadFile);
    EXPECT_TRUE(got.pcm.empty());
    EXPECT_EQ(writeWave16(dir.file("no/such/folder.wav"), 22050, 1, pattern(10)),
              kAudioWriteFailed);
    EXPECT_EQ(writeWave16(dir.file("t.wav"), 0, 1, pattern(10)), kAudioWriteFailed);
    EXPECT_FALSE(std::filesystem::exists(dir.file("t.wav")));
}

}  // namespace
}  // namespace lv
