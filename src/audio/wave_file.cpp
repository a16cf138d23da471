#include "audio/wave_file.h"

#include <sndfile.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <system_error>
#include <vector>

#include "audio/audio_track.h"
#include "audio/sound_decoder.h"

namespace lv {
namespace {

struct SndfileCloser {
    void operator()(SNDFILE* f) const { sf_close(f); }
};
using SndfilePtr = std::unique_ptr<SNDFILE, SndfileCloser>;

constexpr sf_count_t kChunkFrames = 8192;

// Fills the buffer with up to n frames; the count, 0 at the end, -1 on failure.
using FrameReader = std::function<std::int64_t(short* out, std::int64_t n)>;

int writeWaveFrom(const std::string& path, int sampleRate, int channels, const FrameReader& next) {
    if (sampleRate <= 0 || channels <= 0) return kAudioWriteFailed;
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SndfilePtr file(sf_open(path.c_str(), SFM_WRITE, &info));
    if (!file) return kAudioWriteFailed;

    // Once opened, the file is ours: a failed write must not leave a wave
    // that looks whole.
    const auto fail = [&] {
        file.reset();
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
        return kAudioWriteFailed;
    };
    std::vector<short> chunk(static_cast<std::size_t>(kChunkFrames) * channels);
    for (;;) {
        const std::int64_t n = next(chunk.data(), kChunkFrames);
        if (n < 0) return fail();
        if (n == 0) break;
        if (sf_writef_short(file.get(), chunk.data(), static_cast<sf_count_t>(n)) !=
            static_cast<sf_count_t>(n))
            return fail();
    }
    // Closing writes the header's sizes; a full disk shows up here.
    if (sf_close(file.release()) != 0) {
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
        return kAudioWriteFailed;
    }
    return kAudioOk;
}

}  // namespace

int decodeSoundFile(const std::string& path, DecodedSound& out) {
    out = DecodedSound{};
    std::unique_ptr<SoundDecoder> decoder;
    if (const int code = openSoundDecoder(path, AudioKind::Compressed, decoder); code != kAudioOk)
        return code;
    const SoundInfo& info = decoder->info();
    // The frame count in a header is only a hint: read until the decoder has
    // nothing more.
    std::vector<std::int16_t> chunk(static_cast<std::size_t>(kChunkFrames * info.channels));
    for (;;) {
        const std::int64_t got = decoder->read(chunk.data(), kChunkFrames);
        if (got < 0) {
            out = DecodedSound{};
            return kAudioBadFile;
        }
        if (got == 0) break;
        out.pcm.append(reinterpret_cast<const char*>(chunk.data()),
                       static_cast<std::size_t>(got * info.channels) * sizeof(std::int16_t));
    }
    out.sampleRate = info.sampleRate;
    out.channels = info.channels;
    out.bitsPerSample = info.bitsPerSample;
    out.isWave = info.isWave;
    return kAudioOk;
}

int writeWave16(const std::string& path, int sampleRate, int channels, std::string_view pcm) {
    const std::size_t frameBytes = sizeof(short) * static_cast<std::size_t>(std::max(channels, 1));
    const std::size_t total = pcm.size() / frameBytes;
    std::size_t done = 0;
    return writeWaveFrom(path, sampleRate, channels, [&](short* out, std::int64_t n) {
        const std::size_t take = std::min<std::size_t>(total - done, static_cast<std::size_t>(n));
        std::memcpy(out, pcm.data() + done * frameBytes, take * frameBytes);
        done += take;
        return static_cast<std::int64_t>(take);
    });
}

int writeWave16(const std::string& path, SoundDecoder& from) {
    const SoundInfo& info = from.info();
    return writeWaveFrom(path, info.sampleRate, info.channels,
                         [&](short* out, std::int64_t n) { return from.read(out, n); });
}

}  // namespace lv
