#include "audio/wave_file.h"

#include <sndfile.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "audio/audio_track.h"

namespace lv {
namespace {

struct SndfileCloser {
    void operator()(SNDFILE* f) const { sf_close(f); }
};
using SndfilePtr = std::unique_ptr<SNDFILE, SndfileCloser>;

constexpr sf_count_t kChunkFrames = 8192;

int encodingBits(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_PCM_S8:
        case SF_FORMAT_PCM_U8:
        case SF_FORMAT_ULAW:
        case SF_FORMAT_ALAW:
            return 8;
        case SF_FORMAT_PCM_24:
            return 24;
        case SF_FORMAT_PCM_32:
        case SF_FORMAT_FLOAT:
            return 32;
        case SF_FORMAT_DOUBLE:
            return 64;
        case SF_FORMAT_IMA_ADPCM:
        case SF_FORMAT_MS_ADPCM:
            return 4;
        default:
            return 16;
    }
}

bool isRiffWave(int format) {
    const int major = format & SF_FORMAT_TYPEMASK;
    return major == SF_FORMAT_WAV || major == SF_FORMAT_WAVEX || major == SF_FORMAT_RF64;
}

}  // namespace

int decodeSoundFile(const std::string& path, DecodedSound& out) {
    out = DecodedSound{};
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) return kAudioFileNotFound;

    SF_INFO info{};
    SndfilePtr file(sf_open(path.c_str(), SFM_READ, &info));
    if (!file || info.channels <= 0 || info.samplerate <= 0) return kAudioBadFile;

    // The frame count in the header is only a hint (an MP3 has none): read
    // until the decoder has nothing more.
    std::vector<short> chunk(static_cast<std::size_t>(kChunkFrames * info.channels));
    for (;;) {
        const sf_count_t got = sf_readf_short(file.get(), chunk.data(), kChunkFrames);
        if (got <= 0) break;
        out.pcm.append(reinterpret_cast<const char*>(chunk.data()),
                       static_cast<std::size_t>(got * info.channels) * sizeof(short));
    }
    if (sf_error(file.get()) != SF_ERR_NO_ERROR) {
        out = DecodedSound{};
        return kAudioBadFile;
    }
    out.sampleRate = info.samplerate;
    out.channels = info.channels;
    out.bitsPerSample = encodingBits(info.format);
    out.isWave = isRiffWave(info.format);
    return kAudioOk;
}

int writeWave16(const std::string& path, int sampleRate, int channels, std::string_view pcm) {
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
    const std::size_t frameBytes = sizeof(short) * static_cast<std::size_t>(channels);
    const std::size_t total = pcm.size() / frameBytes;
    std::vector<short> chunk(static_cast<std::size_t>(kChunkFrames) * channels);
    for (std::size_t done = 0; done < total;) {
        const std::size_t n = std::min<std::size_t>(total - done, kChunkFrames);
        std::memcpy(chunk.data(), pcm.data() + done * frameBytes, n * frameBytes);
        if (sf_writef_short(file.get(), chunk.data(), static_cast<sf_count_t>(n)) !=
            static_cast<sf_count_t>(n))
            return fail();
        done += n;
    }
    // Closing writes the header's sizes; a full disk shows up here.
    if (sf_close(file.release()) != 0) {
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
        return kAudioWriteFailed;
    }
    return kAudioOk;
}

}  // namespace lv
