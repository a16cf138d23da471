#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "audio/audio_track.h"

namespace lv {

// What a sound file says of itself.
struct SoundInfo {
    int sampleRate = 0;
    int channels = 0;
    // Of the file's own encoding (8, 16, 24, ...): a wave's positions are
    // bytes of that encoding, not of the decoded samples.
    int bitsPerSample = 0;
    bool isWave = false;  // a RIFF wave, as opposed to MP3 and the rest
    // A short name for reports: "wav" or "mp3", or the container's.
    std::string kind;
};

// A sound read a piece at a time, as 16-bit samples (host byte order, the
// channels of a frame interleaved), so that nothing ever holds a whole file.
class SoundDecoder {
public:
    virtual ~SoundDecoder() = default;

    virtual const SoundInfo& info() const = 0;
    // Up to `frames` frames into out; 0 at the end, -1 when the file fails.
    virtual std::int64_t read(std::int16_t* out, std::int64_t frames) = 0;
    // Sample-exact; a frame past the end leaves the decoder at its end.
    virtual bool seek(std::int64_t frame) = 0;
    // The exact length in frames, or -1 while it is still being worked out
    // (an MP3 is scanned to its end on a thread of its own).
    virtual std::int64_t frames() const = 0;
    // The exact length, waiting for the scan if it is still running.
    virtual std::int64_t waitForFrames() = 0;
};

// Opens a sound file for reading: a wave with libsndfile, anything else with
// libmpg123 first (exact length and positions for every MP3, with or without
// a VBR header) and libsndfile if that cannot read it. Returns kAudioOk,
// kAudioFileNotFound or kAudioBadFile; a Wave must be a RIFF wave.
int openSoundDecoder(const std::string& path, AudioKind kind, std::unique_ptr<SoundDecoder>& out);

// Milliseconds of `frames` at `rate`, rounded down.
inline std::int64_t framesToMs(std::int64_t frames, int rate) {
    return rate > 0 ? frames * 1000 / rate : 0;
}

}  // namespace lv
