#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "audio/capture_file.h"
#include "audio/sound_decoder.h"
#include "audio/wave_file.h"
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

std::string bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// Every kind of file the decoders meet: the exact length, read to the very
// end, and a seek that lands on the same sample a whole decode finds there.
// An MP3 carries the encoder's delay and padding, some tens of milliseconds;
// the VBR file made with -t has no Xing/Info header at all.
TEST(SoundDecoder, ReadsWholeFilesAndSeeksToTheSample) {
    struct Case {
        const char* name;
        const char* sox;   // format options of the sound sox writes
        const char* lame;  // encoder options; none: the wave itself is played
        AudioKind kind;
        int rate, channels, bits;
        double seconds;
        std::int64_t slackMs;
    };
    const Case cases[] = {
        {"8-bit.wav", "-r 11025 -c 1 -b 8 -e unsigned", nullptr, AudioKind::Wave, 11025, 1, 8, 3,
         0},
        {"24-bit.wav", "-r 48000 -c 2 -b 24", nullptr, AudioKind::Wave, 48000, 2, 24, 3, 0},
        {"float.wav", "-r 44100 -c 1 -b 32 -e floating-point", nullptr, AudioKind::Wave, 44100, 1,
         32, 3, 0},
        {"cbr.mp3", "-r 44100 -c 2 -b 16", "-b 128", AudioKind::Compressed, 44100, 2, 16, 6, 70},
        {"vbr-no-header.mp3", "-r 44100 -c 1 -b 16", "-V 4 -t", AudioKind::Compressed, 44100, 1, 16,
         20, 70},
    };
    test::TempDir dir("sound_decoder");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = dir.file(c.name);
        if (c.lame) {
            test::makeNoise(dir.file("source.wav"), c.sox, c.seconds);
            test::encodeMp3(dir.file("source.wav"), c.lame, path);
        } else {
            test::makeNoise(path, c.sox, c.seconds);
        }
        std::unique_ptr<SoundDecoder> d;
        ASSERT_EQ(openSoundDecoder(path, c.kind, d), kAudioOk);
        const SoundInfo& info = d->info();
        EXPECT_EQ(std::tuple(info.sampleRate, info.channels, info.bitsPerSample, info.isWave),
                  std::tuple(c.rate, c.channels, c.bits, c.lame == nullptr));
        const std::int64_t frames = d->waitForFrames();
        const auto encodedMs = static_cast<std::int64_t>(c.seconds * 1000);
        EXPECT_GE(framesToMs(frames, c.rate), encodedMs);
        EXPECT_LE(framesToMs(frames, c.rate), encodedMs + c.slackMs);

        const std::vector<std::int16_t> whole = readAll(*d);
        EXPECT_EQ(static_cast<std::int64_t>(whole.size()), frames * c.channels);
        // Near the end, then back near the start, each checked sample for sample.
        for (const double at : {0.9, 0.05}) {
            const auto frame = static_cast<std::int64_t>(frames * at);
            ASSERT_TRUE(d->seek(frame));
            std::vector<std::int16_t> got(1000 * static_cast<std::size_t>(c.channels));
            ASSERT_EQ(d->read(got.data(), 1000), 1000);
            EXPECT_TRUE(std::equal(got.begin(), got.end(), whole.begin() + frame * c.channels))
                << "after a seek to " << frame;
        }
        // A fresh decoder seeks at once, before its scan has told the length.
        std::unique_ptr<SoundDecoder> fresh;
        ASSERT_EQ(openSoundDecoder(path, c.kind, fresh), kAudioOk);
        const std::int64_t frame = frames / 2;
        ASSERT_TRUE(fresh->seek(frame));
        std::vector<std::int16_t> got(1000 * static_cast<std::size_t>(c.channels));
        ASSERT_EQ(fresh->read(got.data(), 1000), 1000);
        EXPECT_TRUE(std::equal(got.begin(), got.end(), whole.begin() + frame * c.channels));
    }
}

// The sound of a recording streams to disk as it arrives; the lead-in is cut
// by where reading starts. The wave saved from it is byte for byte the one
// written from the same samples held in memory, also when the capture
// folder takes no file and the sound stays in memory instead.
TEST(SoundDecoder, SavingACaptureWritesWhatMemoryWould) {
    test::TempDir dir("capture");
    std::string pcm(3 * 44100 + 10, '\0');
    std::uint32_t state = 1;
    for (char& b : pcm) b = static_cast<char>((state = state * 1664525u + 1013904223u) >> 24);
    const struct {
        std::string folder;
        std::int64_t cut;
        std::size_t piece;  // bytes per arrival, like the device's 20 ms
    } cases[] = {{dir.path().string(), 44100, 882},
                 {dir.path().string(), 0, 1001},
                 {dir.file("absent"), 44100, 882}};
    for (const auto& c : cases) {
        auto capture = std::make_shared<CaptureFile>();
        EXPECT_EQ(capture->open(c.folder), c.folder == dir.path().string());
        for (std::size_t at = 0; at < pcm.size(); at += c.piece)
            capture->append(std::string_view(pcm).substr(at, c.piece));
        ASSERT_EQ(capture->size(), static_cast<std::int64_t>(pcm.size()));
        auto reader = captureDecoder(capture, c.cut, 22050, 1);
        ASSERT_EQ(writeWave16(dir.file("streamed.wav"), *reader), kAudioOk);
        ASSERT_EQ(writeWave16(dir.file("memory.wav"), 22050, 1,
                              std::string_view(pcm).substr(static_cast<std::size_t>(c.cut))),
                  kAudioOk);
        const std::string saved = bytesOf(dir.file("streamed.wav"));
        EXPECT_EQ(saved.size(), 44 + (pcm.size() - c.cut) / 2 * 2);
        EXPECT_TRUE(saved == bytesOf(dir.file("memory.wav"))) << c.folder << " cut " << c.cut;
    }
    // Nothing of the capture is left in the folder.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 2);
}

}  // namespace
}  // namespace lv
