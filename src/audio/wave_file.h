#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace lv {

class SoundDecoder;

// A sound file decoded whole into 16-bit samples (host byte order, the
// channels of a frame interleaved), with what the file says of itself. For
// short files and tools: the tracks stream through a SoundDecoder instead.
struct DecodedSound {
    int sampleRate = 0;
    int channels = 0;
    // Of the file's own encoding (8, 16, 24, ...): a wave's positions are
    // bytes of that encoding, not of the decoded samples.
    int bitsPerSample = 0;
    bool isWave = false;  // a RIFF wave, as opposed to MP3 and the rest
    std::string pcm;

    std::int64_t frames() const {
        return channels > 0 ? static_cast<std::int64_t>(pcm.size()) / (2 * channels) : 0;
    }
};

// Reads any sound file the decoders know. Returns kAudioOk,
// kAudioFileNotFound (nothing at path) or kAudioBadFile (not a readable sound).
int decodeSoundFile(const std::string& path, DecodedSound& out);

// Writes 16-bit PCM (host byte order; a trailing partial frame is dropped) as
// a wave file. Returns kAudioOk or kAudioWriteFailed.
int writeWave16(const std::string& path, int sampleRate, int channels, std::string_view pcm);

// The same, from the decoder's current point to its end, a piece at a time:
// the bytes written are those the first form writes for the same samples.
int writeWave16(const std::string& path, SoundDecoder& from);

}  // namespace lv
