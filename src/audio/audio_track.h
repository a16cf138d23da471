#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace lv {

// Result codes of the audio track's commands: 0 is success. Every command
// returns one; the recorder and the player keep the last as "the last audio
// error" and use an answer only when its command succeeded.
enum AudioError : int {
    kAudioOk = 0,
    kAudioNoDevice = 1,      // no sound device, or the sound server is not running
    kAudioDeviceLost = 2,    // the device went away while in use
    kAudioFileNotFound = 3,  // the file to open (or the placeholder) is missing
    kAudioBadFile = 4,       // not a sound file the track can read
    kAudioNotOpen = 5,       // a command that needs an open track
    kAudioWrongMode = 6,     // e.g. record on a track opened for playback
    kAudioWriteFailed = 7,   // save could not write the file
    kAudioBadRange = 8,      // a position or range outside the track
};

// The text of a code, for the messages that show one.
std::string audioErrorText(int code);

// How a file is opened: as a wave (positions in bytes) or as a compressed
// track (positions in milliseconds), as the placeholder is.
enum class AudioKind { Wave, Compressed };

enum class AudioMode { NotReady, Stopped, Playing, Paused, Recording };

// The audio device of one recording or playback, one track at a time. The
// operations are those of the original command strings, nothing more:
//   open new wave          "open new type waveaudio alias WavFile" + its "set" line
//   openFile               "open <path> type waveaudio|mpegvideo alias WavFile"
//                          (+ "set WavFile time format bytes" for a wave)
//   record, stop, pause, play, playFrom, seek, deleteFromStart, save, close
//   position, length, mode, waveFormat    the "status WavFile ..." queries
class AudioTrack {
public:
    virtual ~AudioTrack() = default;

    // A new, empty wave for recording: 22050 Hz, 16-bit, mono, positions in
    // bytes (44100 a second).
    virtual int openNewWave() = 0;
    virtual int openFile(const std::string& path, AudioKind kind) = 0;
    virtual int close() = 0;

    virtual int record() = 0;
    virtual int play() = 0;
    virtual int playFrom(std::int64_t position) = 0;
    virtual int pause() = 0;
    virtual int stop() = 0;
    virtual int seek(std::int64_t position) = 0;  // 0 is "seek WavFile to start"
    // "delete WavFile from 0 to <bytes>": cuts the start of a recorded wave.
    virtual int deleteFromStart(std::int64_t bytes) = 0;
    virtual int save(const std::string& path) = 0;

    // Bytes for a wave, milliseconds otherwise.
    virtual int position(std::int64_t& out) = 0;
    virtual int length(std::int64_t& out) = 0;
    virtual int mode(AudioMode& out) = 0;
    // samplespersec, bitspersample, channels of an open wave.
    virtual int waveFormat(int& samplesPerSec, int& bitsPerSample, int& channels) = 0;

    // Not a device command: the recorded sound as it arrives, for the
    // recovery journal. The default track captures nothing.
    using CaptureSink = std::function<void(std::string_view pcm)>;
    virtual void setCaptureSink(CaptureSink) {}
};

}  // namespace lv
