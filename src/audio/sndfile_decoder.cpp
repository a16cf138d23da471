#include "audio/sndfile_decoder.h"

#include <sndfile.h>

namespace lv {
namespace {

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

std::string kindOf(int format) {
    if (isRiffWave(format)) return "wav";
    SF_FORMAT_INFO info{};
    info.format = format & SF_FORMAT_TYPEMASK;
    if (sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0 && info.extension)
        return info.extension;
    return "sound";
}

class SndfileDecoder : public SoundDecoder {
public:
    SndfileDecoder(SNDFILE* file, const SF_INFO& sf) : m_file(file) {
        m_info.sampleRate = sf.samplerate;
        m_info.channels = sf.channels;
        m_info.bitsPerSample = encodingBits(sf.format);
        m_info.isWave = isRiffWave(sf.format);
        m_info.kind = kindOf(sf.format);
        // libsndfile's count is exact for the PCM containers; for MP3 it is
        // only a guess, which is why MP3s go to libmpg123 first.
        m_frames = sf.frames;
    }
    ~SndfileDecoder() override { sf_close(m_file); }
    SndfileDecoder(const SndfileDecoder&) = delete;
    SndfileDecoder& operator=(const SndfileDecoder&) = delete;

    const SoundInfo& info() const override { return m_info; }

    std::int64_t read(std::int16_t* out, std::int64_t frames) override {
        const sf_count_t got = sf_readf_short(m_file, out, frames);
        if (got > 0) return got;
        return sf_error(m_file) == SF_ERR_NO_ERROR ? 0 : -1;
    }

    bool seek(std::int64_t frame) override {
        if (frame >= m_frames) return sf_seek(m_file, 0, SEEK_END) >= 0;
        return sf_seek(m_file, frame, SEEK_SET) == frame;
    }

    std::int64_t frames() const override { return m_frames; }
    std::int64_t waitForFrames() override { return m_frames; }

private:
    SNDFILE* m_file;
    SoundInfo m_info;
    std::int64_t m_frames = 0;
};

}  // namespace

int openSndfileDecoder(const std::string& path, std::unique_ptr<SoundDecoder>& out,
                       bool acceptMpeg) {
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file) return kAudioBadFile;
    const bool mpeg = (info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_MPEG;
    if (info.channels <= 0 || info.samplerate <= 0 || info.frames < 0 || (mpeg && !acceptMpeg)) {
        sf_close(file);
        return kAudioBadFile;
    }
    out = std::make_unique<SndfileDecoder>(file, info);
    return kAudioOk;
}

}  // namespace lv
