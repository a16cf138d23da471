#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "audio/capture_file.h"
#include "audio/sound_decoder.h"
#include "audio/wave_file.h"
#include "support/file_bytes.h"
#include "support/pcm_noise.h"
#include "support/sound_files.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

std::vector<std::int16_t> readAll(SoundDecoder& d) {
    std::vector<std::int16_t> all, chunk(4096 * static_cast<std::size_t>(d.info().channels));
    for (std::int64_t got; (got = d.read(chunk.data(), 4096)) > 0;)
        all.insert(all.end(), chunk.begin(), chunk.begin() + got * d.info().channels);
    return all;
}

// Every kind of file the decoders meet: the exact length, read to the very
// end, and a seek that lands on the same sample a whole decode finds there.
// An MP3 carries the encoder's delay and padding, some tens of milliseconds;
// the VBR file made with -t has no Xing/Info header at all. A wave counts
// bytes of its own encoding, whatever it decodes to: its bits are reported.
TEST(SoundDecoder, ReadsWholeFilesAndSeeksToTheSample) {
    // Name, format options of the sound sox writes, encoder options (none:
    // the sox file itself is played), the kind (Wave for a RIFF wave, which
    // is what says isWave), rate, channels, bits, seconds, length slack in ms.
    using W = std::tuple<const char*, const char*, const char*, AudioKind, int, int, int, double,
                         std::int64_t>;
    constexpr auto Wave = AudioKind::Wave, Other = AudioKind::Compressed;
    // clang-format off
    const W cases[] = {
        {"8-bit.wav", "-r 11025 -c 1 -b 8 -e unsigned", nullptr, Wave, 11025, 1, 8, 3, 0},
        {"24-bit.wav", "-r 48000 -c 2 -b 24", nullptr, Wave, 48000, 2, 24, 3, 0},
        {"float.wav", "-r 44100 -c 1 -b 32 -e floating-point", nullptr, Wave, 44100, 1, 32, 3, 0},
        {"16-bit.aiff", "-r 8000 -c 1 -b 16", nullptr, Other, 8000, 1, 16, 2, 0},
        {"cbr.mp3", "-r 44100 -c 2 -b 16", "-b 128", Other, 44100, 2, 16, 6, 70},
        {"vbr-no-header.mp3", "-r 44100 -c 1 -b 16", "-V 4 -t", Other, 44100, 1, 16, 20, 70}};
    // clang-format on
    test::TempDir dir("sound_decoder");
    for (const auto& [name, sox, lame, kind, rate, channels, bits, seconds, slackMs] : cases) {
        SCOPED_TRACE(name);
        const std::string path = dir.file(name);
        test::makeNoise(lame ? dir.file("source.wav") : path, sox, seconds);
        if (lame) test::encodeMp3(dir.file("source.wav"), lame, path);
        std::unique_ptr<SoundDecoder> d;
        ASSERT_EQ(openSoundDecoder(path, kind, d), kAudioOk);
        const SoundInfo& info = d->info();
        EXPECT_EQ(std::tuple(info.sampleRate, info.channels, info.bitsPerSample, info.isWave),
                  std::tuple(rate, channels, bits, kind == Wave));
        const std::int64_t frames = d->waitForFrames();
        const auto encodedMs = static_cast<std::int64_t>(seconds * 1000);
        EXPECT_LE(framesToMs(frames, rate) - encodedMs, slackMs);
        EXPECT_GE(framesToMs(frames, rate), encodedMs);

        const std::vector<std::int16_t> whole = readAll(*d);
        EXPECT_EQ(static_cast<std::int64_t>(whole.size()), frames * channels);
        // Near the end, back near the start, and a fresh decoder at once,
        // before its scan has told the length: each sample for sample.
        std::unique_ptr<SoundDecoder> fresh;
        ASSERT_EQ(openSoundDecoder(path, kind, fresh), kAudioOk);
        for (auto [decoder, at] : {std::pair{d.get(), 0.9}, {d.get(), 0.05}, {fresh.get(), 0.5}}) {
            const auto frame = static_cast<std::int64_t>(frames * at);
            ASSERT_TRUE(decoder->seek(frame));
            std::vector<std::int16_t> got(1000 * static_cast<std::size_t>(channels));
            ASSERT_EQ(decoder->read(got.data(), 1000), 1000);
            EXPECT_TRUE(std::equal(got.begin(), got.end(), whole.begin() + frame * channels))
                << "after a seek to " << frame;
        }
    }
}

// Saved waves are 16-bit PCM, header and data only; a partial frame is dropped.
TEST(WaveFile, WritesAndReadsBackAndReportsFailures) {
    test::TempDir dir("wave_file");
    // 10 bytes: 2 stereo frames and a half.
    const std::tuple<int, int, std::size_t, std::size_t> cases[] = {
        {22050, 1, 22050, 22050}, {48000, 2, 40000, 40000}, {8000, 1, 0, 0}, {22050, 2, 5, 4}};
    for (const auto& [rate, channels, samples, kept] : cases) {
        const std::string pcm = test::noise(samples);
        ASSERT_EQ(writeWave16(dir.file("t.wav"), rate, channels, pcm), kAudioOk);
        DecodedSound got;
        ASSERT_EQ(decodeSoundFile(dir.file("t.wav"), got), kAudioOk);
        EXPECT_EQ(std::tuple(got.sampleRate, got.channels, got.bitsPerSample, got.isWave),
                  std::tuple(rate, channels, 16, true));
        EXPECT_TRUE(got.pcm == pcm.substr(0, kept * 2)) << samples;
        EXPECT_EQ(std::filesystem::file_size(dir.file("t.wav")), 44 + kept * 2);
    }
    test::writeFile(dir.file("notes.wav"), "RIFF but not really a wave file at all");
    DecodedSound got;
    EXPECT_EQ(decodeSoundFile(dir.file("absent.wav"), got), kAudioFileNotFound);
    EXPECT_EQ(decodeSoundFile(dir.file("notes.wav"), got), kAudioBadFile);
    std::filesystem::remove(dir.file("t.wav"));
    EXPECT_EQ(writeWave16(dir.file("no/such/folder.wav"), 22050, 1, "pcm!"), kAudioWriteFailed);
    EXPECT_EQ(writeWave16(dir.file("t.wav"), 0, 1, "pcm!"), kAudioWriteFailed);
    EXPECT_FALSE(std::filesystem::exists(dir.file("t.wav")));
}

// The sound of a recording streams to disk as it arrives; the lead-in is cut
// by where reading starts. The wave saved from it is byte for byte the one
// written from the same samples held in memory, also when the capture
// folder takes no file and the sound stays in memory instead.
TEST(SoundDecoder, SavingACaptureWritesWhatMemoryWould) {
    test::TempDir dir("capture");
    const std::string pcm = test::noise(3 * 22050 + 5) + 'x';
    // The folder, the lead-in cut, bytes per arrival (like the device's 20 ms).
    const std::string here = dir.path().string();
    const std::tuple<std::string, std::int64_t, std::size_t> cases[] = {
        {here, 44100, 882}, {here, 0, 1001}, {dir.file("absent"), 44100, 882}};
    for (const auto& [folder, cut, piece] : cases) {
        auto capture = std::make_shared<CaptureFile>();
        EXPECT_EQ(capture->open(folder), folder == here);
        for (std::size_t at = 0; at < pcm.size(); at += piece)
            capture->append(std::string_view(pcm).substr(at, piece));
        ASSERT_EQ(capture->size(), static_cast<std::int64_t>(pcm.size()));
        auto reader = captureDecoder(capture, cut, 22050, 1);
        ASSERT_EQ(writeWave16(dir.file("streamed.wav"), *reader), kAudioOk);
        ASSERT_EQ(writeWave16(dir.file("memory.wav"), 22050, 1,
                              std::string_view(pcm).substr(static_cast<std::size_t>(cut))),
                  kAudioOk);
        const std::string saved = test::readFile(dir.file("streamed.wav"));
        EXPECT_EQ(saved.size(), 44 + (pcm.size() - cut) / 2 * 2);
        EXPECT_TRUE(saved == test::readFile(dir.file("memory.wav"))) << folder << " " << cut;
    }
    // Nothing of the capture is left in the folder.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 2);
}

}  // namespace
}  // namespace lv
