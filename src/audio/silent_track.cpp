#include "audio/silent_track.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <system_error>

namespace lv {

double SilentTrack::steadySeconds() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

SilentTrack::SilentTrack(Clock seconds) : m_seconds(std::move(seconds)) {}

// There is nothing to record into: a new wave needs the sound device.
int SilentTrack::openNewWave() {
    return kAudioWrongMode;
}

int SilentTrack::openFile(const std::string& path, AudioKind kind) {
    close();
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) return kAudioFileNotFound;
    // Positions in bytes would need a wave format the placeholder does not have.
    if (kind != AudioKind::Compressed) return kAudioBadFile;
    m_mode = AudioMode::Stopped;
    return kAudioOk;
}

int SilentTrack::close() {
    m_mode = AudioMode::NotReady;
    m_positionMs = 0;
    return kAudioOk;
}

std::int64_t SilentTrack::currentMs() const {
    if (!running()) return m_positionMs;
    // Measured from where the clock last started, not summed per query, so
    // that frequent queries lose no fractions; the nanosecond added makes up
    // for the rounding of the clock's seconds.
    const double elapsedMs = std::max(0.0, (m_seconds() - m_startedAt) * 1000.0);
    const auto ms = static_cast<std::int64_t>(std::floor(elapsedMs + 1e-6));
    return std::min(kLengthMs, m_positionMs + ms);
}

void SilentTrack::freeze(AudioMode mode) {
    m_positionMs = currentMs();
    m_mode = mode;
}

void SilentTrack::settle() {
    if (running() && currentMs() >= kLengthMs) freeze(AudioMode::Stopped);
}

int SilentTrack::start(AudioMode mode) {
    if (m_mode == AudioMode::NotReady) return kAudioNotOpen;
    settle();
    if (!running()) m_startedAt = m_seconds();
    m_mode = mode;
    return kAudioOk;
}

int SilentTrack::record() {
    return start(AudioMode::Recording);
}
int SilentTrack::play() {
    return start(AudioMode::Playing);
}

int SilentTrack::playFrom(std::int64_t position) {
    if (const int code = seek(position); code != kAudioOk) return code;
    return start(AudioMode::Playing);
}

int SilentTrack::pause() {
    if (m_mode == AudioMode::NotReady) return kAudioNotOpen;
    settle();
    if (running()) freeze(AudioMode::Paused);
    return kAudioOk;
}

int SilentTrack::stop() {
    if (m_mode == AudioMode::NotReady) return kAudioNotOpen;
    freeze(AudioMode::Stopped);
    return kAudioOk;
}

int SilentTrack::seek(std::int64_t position) {
    if (m_mode == AudioMode::NotReady) return kAudioNotOpen;
    if (position < 0 || position > kLengthMs) return kAudioBadRange;
    // As on the sound device, seeking ends playing.
    m_mode = AudioMode::Stopped;
    m_positionMs = position;
    return kAudioOk;
}

// Nothing was recorded, so there is nothing to cut.
int SilentTrack::deleteFromStart(std::int64_t) {
    return m_mode == AudioMode::NotReady ? kAudioNotOpen : kAudioOk;
}

// Saving would leave a wave file beside the recording that holds no sound.
int SilentTrack::save(const std::string&) {
    return m_mode == AudioMode::NotReady ? kAudioNotOpen : kAudioWrongMode;
}

int SilentTrack::position(std::int64_t& out) {
    if (m_mode == AudioMode::NotReady) return kAudioNotOpen;
    settle();
    out = currentMs();
    return kAudioOk;
}

int SilentTrack::length(std::int64_t& out) {
    if (m_mode == AudioMode::NotReady) return kAudioNotOpen;
    out = kLengthMs;
    return kAudioOk;
}

int SilentTrack::mode(AudioMode& out) {
    settle();
    out = m_mode;
    return kAudioOk;
}

int SilentTrack::waveFormat(int&, int&, int&) {
    return m_mode == AudioMode::NotReady ? kAudioNotOpen : kAudioWrongMode;
}

}  // namespace lv
