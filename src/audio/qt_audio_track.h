#pragma once
#include <QAudioSink>
#include <QAudioSource>
#include <QIODevice>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "audio/audio_track.h"
#include "audio/capture_file.h"
#include "audio/sound_decoder.h"

namespace lv {

// The sound device: records from the default input to a file and plays a
// sound file (or what was recorded) to the default output, streaming both
// ways so that memory stays flat however long the sound.
//
// Recording runs a QAudioSource at 22050 Hz, 16-bit mono; its position is the
// count of bytes received, because the source's own time is not a frame count.
// The bytes go to a capture file as they arrive; cutting the lead-in moves
// where the sound starts, and saving copies it into a wave a piece at a time.
// Playback decodes (libsndfile for waves, libmpg123 for MP3) just ahead of a
// QAudioSink in push mode; its position is the frame it started from plus the
// time the sink reports as played, which stands still while paused; a seek is
// a seek of the decoder. Positions are bytes of the file's own encoding for a
// wave and milliseconds for a compressed track.
//
// Without a sound server every command that needs the device answers
// kAudioNoDevice at once. If the server goes away while a stream runs, the
// commands answer kAudioDeviceLost until stop() or close() lets the dead
// stream go; what was recorded until then stays, to be cut and saved.
class QtAudioTrack : public QObject, public AudioTrack {
    Q_OBJECT
public:
    explicit QtAudioTrack(QObject* parent = nullptr);
    ~QtAudioTrack() override;

    // Where the sound of a recording waits until it is saved; the system's
    // temporary folder unless set.
    void setCaptureFolder(const std::string& folder) { m_captureFolder = folder; }

    int openNewWave() override;
    int openFile(const std::string& path, AudioKind kind) override;
    int close() override;

    // Appends to the end of the wave, wherever the current point is.
    int record() override;
    int play() override;
    int playFrom(std::int64_t position) override;
    int pause() override;
    int stop() override;
    int seek(std::int64_t position) override;
    int deleteFromStart(std::int64_t bytes) override;
    int save(const std::string& path) override;

    int position(std::int64_t& out) override;
    // An MP3's exact length may wait for its scan to finish.
    int length(std::int64_t& out) override;
    int mode(AudioMode& out) override;
    int waveFormat(int& samplesPerSec, int& bitsPerSample, int& channels) override;

    void setCaptureSink(CaptureSink sink) override { m_capture = std::move(sink); }

private:
    enum class Content { None, NewWave, Wave, Compressed };

    std::int64_t frameBytes() const { return 2 * static_cast<std::int64_t>(m_channels); }
    // Frames of the sound; -1 while an MP3's length is still being worked out.
    std::int64_t knownFrames() const;
    std::int64_t recordedBytes() const;
    std::int64_t unitsPerSecond() const;
    std::int64_t toUnits(std::int64_t frame) const;
    std::int64_t toFrame(std::int64_t units) const;
    bool outOfRange(std::int64_t position) const;
    // A reader of what was recorded, from the cut on.
    std::unique_ptr<SoundDecoder> recordedSound() const;

    int startSource();
    int startSink(std::int64_t frame);
    void releaseSource();
    void releaseSink();
    void takeInput();
    void feedOutput();
    std::int64_t fedEnd() const;
    std::int64_t playedFrame() const;
    // True while a stream the server has dropped is still held.
    bool deviceLost() const;
    // Ends playback that has reached the end of the sound.
    void settle();

    Content m_content = Content::None;
    AudioMode m_mode = AudioMode::NotReady;
    std::string m_path;                      // of an open file
    std::unique_ptr<SoundDecoder> m_decoder;  // what playback reads
    std::shared_ptr<CaptureFile> m_captured;  // a recording's sound
    std::int64_t m_cutBytes = 0;              // cut from its start
    std::string m_captureFolder;
    int m_rate = 22050;
    int m_channels = 1;
    int m_fileBits = 16;       // of the file's own encoding: what positions count in
    std::int64_t m_frame = 0;  // the current point while no stream runs
    CaptureSink m_capture;

    std::unique_ptr<QAudioSource> m_source;
    QPointer<QIODevice> m_input;  // deleted by Qt when the server goes away
    std::unique_ptr<QAudioSink> m_sink;
    QPointer<QIODevice> m_output;
    std::int64_t m_sinkStartFrame = 0;
    std::int64_t m_fedBytes = 0;        // handed to the sink since it started
    std::vector<std::int16_t> m_block;  // decoded, not yet all handed over
    std::size_t m_blockBytes = 0;
    std::size_t m_blockAt = 0;
    bool m_decoderDone = false;
    QTimer m_feeder;
    std::unique_ptr<QAudioSink> m_draining;  // a finished playback's last samples
    QTimer m_drainTimer;
};

}  // namespace lv
