#pragma once
#include <cstdint>
#include <functional>
#include <string>

#include "audio/audio_track.h"

namespace lv {

// The placeholder time base used when audio is off: a silent track in
// milliseconds that only needs its placeholder file to exist. It plays and
// "records" nothing; its position is a clock that runs while playing or
// recording and stands still otherwise, so recording and playback take their
// time from a track position in either case.
class SilentTrack : public AudioTrack {
public:
    // Seconds from any fixed origin, never going back.
    using Clock = std::function<double()>;
    // Long enough for any session; playing up to it stops the clock.
    static constexpr std::int64_t kLengthMs = 24LL * 3600 * 1000;

    explicit SilentTrack(Clock seconds = steadySeconds);

    int openNewWave() override;
    int openFile(const std::string& path, AudioKind kind) override;
    int close() override;

    int record() override;
    int play() override;
    int playFrom(std::int64_t position) override;
    int pause() override;
    int stop() override;
    int seek(std::int64_t position) override;
    int deleteFromStart(std::int64_t bytes) override;
    int save(const std::string& path) override;

    int position(std::int64_t& out) override;
    int length(std::int64_t& out) override;
    int mode(AudioMode& out) override;
    int waveFormat(int& samplesPerSec, int& bitsPerSample, int& channels) override;

    static double steadySeconds();

private:
    bool running() const { return m_mode == AudioMode::Playing || m_mode == AudioMode::Recording; }
    int start(AudioMode mode);
    std::int64_t currentMs() const;
    // Stops the clock where it stands now.
    void freeze(AudioMode mode);
    // Stops a clock that has run to the end.
    void settle();

    Clock m_seconds;
    AudioMode m_mode = AudioMode::NotReady;
    std::int64_t m_positionMs = 0;  // where the clock stood when it last started or stopped
    double m_startedAt = 0;         // the injected clock's reading when it last started
};

}  // namespace lv
