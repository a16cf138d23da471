#include "audio/qt_audio_track.h"

#include <QAudioDevice>
#include <QAudioFormat>
#include <QDir>
#include <QMediaDevices>
#include <algorithm>

#include "audio/wave_file.h"

namespace lv {
namespace {

// The recording format: 22050 Hz, 16-bit, mono, 44100 bytes a second.
constexpr int kRecordRate = 22050;
constexpr int kRecordChannels = 1;
constexpr int kRecordBits = 16;
// Twenty milliseconds of recording: data arrives in small steps, so the
// position the recorder stamps frames by moves smoothly.
constexpr qsizetype kSourceBufferBytes = 882;
// How often the samples of a playback are topped up, and its end looked for.
constexpr int kFeedIntervalMs = 10;
// How long the stream of a finished playback is kept so that its last
// samples are heard.
constexpr int kDrainMs = 250;
// The most decoded at a time: the sink's free room decides how far ahead of
// what is heard the decoder runs.
constexpr std::int64_t kDecodeFrames = 8192;

QAudioFormat pcm16(int rate, int channels) {
    QAudioFormat format;
    format.setSampleRate(rate);
    format.setChannelCount(channels);
    format.setSampleFormat(QAudioFormat::Int16);
    return format;
}

}  // namespace

QtAudioTrack::QtAudioTrack(QObject* parent)
    : QObject(parent), m_captureFolder(QDir::tempPath().toStdString()) {
    m_feeder.setTimerType(Qt::PreciseTimer);
    m_feeder.setInterval(kFeedIntervalMs);
    connect(&m_feeder, &QTimer::timeout, this, [this] {
        feedOutput();
        settle();
    });
    m_drainTimer.setSingleShot(true);
    m_drainTimer.setInterval(kDrainMs);
    connect(&m_drainTimer, &QTimer::timeout, this, [this] { m_draining.reset(); });
}

QtAudioTrack::~QtAudioTrack() {
    releaseSource();
    releaseSink();
    m_draining.reset();
}

std::int64_t QtAudioTrack::unitsPerSecond() const {
    switch (m_content) {
        case Content::Compressed:
            return 1000;
        case Content::Wave:
            return std::max<std::int64_t>(
                1, static_cast<std::int64_t>(m_rate) * m_fileBits * m_channels / 8);
        default:
            return frameBytes() * m_rate;
    }
}

std::int64_t QtAudioTrack::recordedBytes() const {
    return m_captured ? std::max<std::int64_t>(0, m_captured->size() - m_cutBytes) : 0;
}

std::int64_t QtAudioTrack::knownFrames() const {
    if (m_content == Content::NewWave) return recordedBytes() / frameBytes();
    return m_decoder ? m_decoder->frames() : 0;
}

bool QtAudioTrack::outOfRange(std::int64_t position) const {
    if (position < 0) return true;
    const std::int64_t frames = knownFrames();
    return frames >= 0 && position > toUnits(frames);
}

std::unique_ptr<SoundDecoder> QtAudioTrack::recordedSound() const {
    return captureDecoder(m_captured, m_cutBytes, m_rate, m_channels);
}

std::int64_t QtAudioTrack::toUnits(std::int64_t frame) const {
    return frame * unitsPerSecond() / m_rate;
}

std::int64_t QtAudioTrack::toFrame(std::int64_t units) const {
    return units * m_rate / unitsPerSecond();
}

int QtAudioTrack::openNewWave() {
    close();
    m_content = Content::NewWave;
    m_rate = kRecordRate;
    m_channels = kRecordChannels;
    m_fileBits = kRecordBits;
    m_captured = std::make_shared<CaptureFile>();
    // Should the folder take no file, the sound is kept in memory instead.
    m_captured->open(m_captureFolder);
    m_cutBytes = 0;
    m_mode = AudioMode::Stopped;
    return kAudioOk;
}

int QtAudioTrack::openFile(const std::string& path, AudioKind kind) {
    close();
    // A wave's positions are bytes of its own encoding; other files have none.
    if (const int code = openSoundDecoder(path, kind, m_decoder); code != kAudioOk) return code;
    const SoundInfo& info = m_decoder->info();
    m_content = kind == AudioKind::Wave ? Content::Wave : Content::Compressed;
    m_path = path;
    m_rate = info.sampleRate;
    m_channels = info.channels;
    m_fileBits = info.bitsPerSample;
    m_mode = AudioMode::Stopped;
    return kAudioOk;
}

int QtAudioTrack::close() {
    releaseSource();
    releaseSink();
    m_drainTimer.stop();
    m_draining.reset();
    m_decoder.reset();
    m_captured.reset();
    m_cutBytes = 0;
    m_path.clear();
    m_content = Content::None;
    m_mode = AudioMode::NotReady;
    m_frame = 0;
    return kAudioOk;
}

bool QtAudioTrack::deviceLost() const {
    // Qt deletes the stream's I/O device when the server drops the stream.
    if (m_source) return !m_input || m_source->state() == QAudio::StoppedState;
    if (m_sink) return !m_output || m_sink->state() == QAudio::StoppedState;
    return false;
}

int QtAudioTrack::startSource() {
    const QAudioDevice device = QMediaDevices::defaultAudioInput();
    if (device.isNull()) return kAudioNoDevice;
    m_source = std::make_unique<QAudioSource>(device, pcm16(kRecordRate, kRecordChannels));
    m_source->setBufferSize(kSourceBufferBytes);
    m_input = m_source->start();
    // A server that refuses the stream says so at once, not by a later signal.
    if (!m_input || m_source->error() != QAudio::NoError ||
        m_source->state() == QAudio::StoppedState) {
        releaseSource();
        return kAudioNoDevice;
    }
    connect(m_input.data(), &QIODevice::readyRead, this, &QtAudioTrack::takeInput);
    return kAudioOk;
}

void QtAudioTrack::releaseSource() {
    if (!m_source) return;
    takeInput();
    if (m_input) disconnect(m_input.data(), nullptr, this, nullptr);
    m_source->stop();
    m_source.reset();
    m_input.clear();
}

void QtAudioTrack::takeInput() {
    if (!m_input) return;
    const QByteArray bytes = m_input->readAll();
    if (bytes.isEmpty() || !m_captured) return;
    m_captured->append(std::string_view(bytes.constData(), bytes.size()));
    if (m_capture) m_capture(std::string_view(bytes.constData(), bytes.size()));
}

int QtAudioTrack::startSink(std::int64_t frame) {
    const std::int64_t frames = knownFrames();
    m_frame = std::clamp<std::int64_t>(frame, 0, frames >= 0 ? frames : frame);
    // What was recorded is read afresh: it may have grown or been cut.
    if (m_content == Content::NewWave) m_decoder = recordedSound();
    if (!m_decoder) return kAudioNotOpen;
    const QAudioDevice device = QMediaDevices::defaultAudioOutput();
    if (device.isNull()) return kAudioNoDevice;
    m_sink = std::make_unique<QAudioSink>(device, pcm16(m_rate, m_channels));
    m_output = m_sink->start();
    if (!m_output || m_sink->error() != QAudio::NoError ||
        m_sink->state() == QAudio::StoppedState) {
        releaseSink();
        return kAudioNoDevice;
    }
    m_decoderDone = !m_decoder->seek(m_frame);
    m_sinkStartFrame = m_frame;
    m_fedBytes = 0;
    m_blockBytes = m_blockAt = 0;
    m_mode = AudioMode::Playing;
    feedOutput();
    m_feeder.start();
    return kAudioOk;
}

void QtAudioTrack::releaseSink() {
    m_feeder.stop();
    if (!m_sink) return;
    m_sink->stop();
    m_sink.reset();
    m_output.clear();
}

void QtAudioTrack::feedOutput() {
    if (!m_sink || !m_output || m_mode != AudioMode::Playing) return;
    const auto step = static_cast<qint64>(frameBytes());
    for (;;) {
        if (m_blockAt >= m_blockBytes) {
            // Decode only what the sink has room for: what is decoded is
            // heard soon, and a seek throws little away.
            const qint64 room = std::min<qint64>(m_sink->bytesFree() / step, kDecodeFrames);
            if (m_decoderDone || room <= 0) break;
            m_block.resize(static_cast<std::size_t>(room * m_channels));
            const std::int64_t got = m_decoder->read(m_block.data(), room);
            if (got <= 0) {
                m_decoderDone = true;
                break;
            }
            m_blockBytes = static_cast<std::size_t>(got * step);
            m_blockAt = 0;
        }
        qint64 n = std::min<qint64>(m_sink->bytesFree(),
                                    static_cast<qint64>(m_blockBytes - m_blockAt));
        n -= n % step;
        if (n <= 0) break;
        const qint64 done =
            m_output->write(reinterpret_cast<const char*>(m_block.data()) + m_blockAt, n);
        if (done <= 0) break;
        m_blockAt += static_cast<std::size_t>(done);
        m_fedBytes += done;
    }
}

std::int64_t QtAudioTrack::fedEnd() const { return m_sinkStartFrame + m_fedBytes / frameBytes(); }

std::int64_t QtAudioTrack::playedFrame() const {
    if (!m_sink) return m_frame;
    // The sink counts whole microseconds of the frames it took: rounding
    // gives back the exact frame, so that the end is reached.
    const std::int64_t played = (m_sink->processedUSecs() * m_rate + 500'000) / 1'000'000;
    return std::min(fedEnd(), m_sinkStartFrame + played);
}

void QtAudioTrack::settle() {
    if (m_mode != AudioMode::Playing || !m_sink || deviceLost()) return;
    if (!m_decoderDone || m_blockAt < m_blockBytes || playedFrame() < fedEnd()) return;
    // The sink's clock reaches the end a little before the last samples have
    // left the server, and closing the stream drops what it still holds: the
    // track is at its end now, but the stream is let go only a little later.
    m_feeder.stop();
    m_draining = std::move(m_sink);
    m_output.clear();
    m_drainTimer.start();
    m_frame = fedEnd();
    m_mode = AudioMode::Stopped;
}

int QtAudioTrack::record() {
    if (m_content == Content::None) return kAudioNotOpen;
    if (m_content != Content::NewWave) return kAudioWrongMode;
    if (m_mode == AudioMode::Recording) return deviceLost() ? kAudioDeviceLost : kAudioOk;
    if (m_mode != AudioMode::Stopped) return kAudioWrongMode;
    if (const int code = startSource(); code != kAudioOk) return code;
    m_mode = AudioMode::Recording;
    return kAudioOk;
}

int QtAudioTrack::play() {
    if (m_content == Content::None) return kAudioNotOpen;
    if (m_mode == AudioMode::Recording) return kAudioWrongMode;
    if (deviceLost()) return kAudioDeviceLost;
    if (m_mode == AudioMode::Playing) return kAudioOk;
    if (m_mode == AudioMode::Paused && m_sink) {
        m_sink->resume();
        m_mode = AudioMode::Playing;
        m_feeder.start();
        return kAudioOk;
    }
    return startSink(m_frame);
}

int QtAudioTrack::playFrom(std::int64_t position) {
    if (m_content == Content::None) return kAudioNotOpen;
    if (m_mode == AudioMode::Recording) return kAudioWrongMode;
    if (outOfRange(position)) return kAudioBadRange;
    if (deviceLost()) return kAudioDeviceLost;
    releaseSink();
    m_mode = AudioMode::Stopped;
    return startSink(toFrame(position));
}

int QtAudioTrack::pause() {
    if (m_content == Content::None) return kAudioNotOpen;
    if (m_mode == AudioMode::Recording) return kAudioWrongMode;
    if (deviceLost()) return kAudioDeviceLost;
    settle();
    if (m_mode != AudioMode::Playing) return kAudioOk;
    m_sink->suspend();
    m_feeder.stop();
    m_mode = AudioMode::Paused;
    return kAudioOk;
}

int QtAudioTrack::stop() {
    if (m_content == Content::None) return kAudioNotOpen;
    const bool lost = deviceLost();
    if (m_mode == AudioMode::Recording) {
        releaseSource();
        m_frame = knownFrames();
    } else {
        settle();
        m_frame = playedFrame();
        releaseSink();
    }
    m_mode = AudioMode::Stopped;
    return lost ? kAudioDeviceLost : kAudioOk;
}

int QtAudioTrack::seek(std::int64_t position) {
    if (m_content == Content::None) return kAudioNotOpen;
    if (m_mode == AudioMode::Recording) return kAudioWrongMode;
    if (outOfRange(position)) return kAudioBadRange;
    // Seeking ends playing, as stop does.
    releaseSink();
    m_mode = AudioMode::Stopped;
    m_frame = toFrame(position);
    return kAudioOk;
}

int QtAudioTrack::deleteFromStart(std::int64_t bytes) {
    if (m_content == Content::None) return kAudioNotOpen;
    // Only a recording's sound is cut; a file is never changed.
    if (m_content != Content::NewWave || m_mode == AudioMode::Recording ||
        m_mode == AudioMode::Playing)
        return kAudioWrongMode;
    if (outOfRange(bytes)) return kAudioBadRange;
    releaseSink();
    m_mode = AudioMode::Stopped;
    // Whole frames only, so the samples after the cut stay aligned.
    const std::int64_t frames = toFrame(bytes);
    m_cutBytes += frames * frameBytes();
    m_frame = std::max<std::int64_t>(0, m_frame - frames);
    return kAudioOk;
}

int QtAudioTrack::save(const std::string& path) {
    if (m_content == Content::None) return kAudioNotOpen;
    if (m_content == Content::Compressed || m_mode == AudioMode::Recording) return kAudioWrongMode;
    // A reader of its own, so that a playback's place is left alone.
    std::unique_ptr<SoundDecoder> from;
    if (m_content == Content::NewWave) {
        from = recordedSound();
    } else if (const int code = openSoundDecoder(m_path, AudioKind::Wave, from); code != kAudioOk) {
        return kAudioWriteFailed;
    }
    return writeWave16(path, *from);
}

int QtAudioTrack::position(std::int64_t& out) {
    if (m_content == Content::None) return kAudioNotOpen;
    if (deviceLost()) return kAudioDeviceLost;
    if (m_mode == AudioMode::Recording) {
        takeInput();
        out = recordedBytes();
        return kAudioOk;
    }
    settle();
    out = toUnits(m_mode == AudioMode::Stopped ? m_frame : playedFrame());
    return kAudioOk;
}

int QtAudioTrack::length(std::int64_t& out) {
    if (m_content == Content::None) return kAudioNotOpen;
    if (m_mode == AudioMode::Recording) {
        takeInput();
        out = recordedBytes();
    } else if (m_content == Content::NewWave) {
        out = toUnits(knownFrames());
    } else {
        out = toUnits(std::max<std::int64_t>(0, m_decoder->waitForFrames()));
    }
    return kAudioOk;
}

int QtAudioTrack::mode(AudioMode& out) {
    if (deviceLost()) return kAudioDeviceLost;
    settle();
    out = m_mode;
    return kAudioOk;
}

int QtAudioTrack::waveFormat(int& samplesPerSec, int& bitsPerSample, int& channels) {
    if (m_content == Content::None) return kAudioNotOpen;
    if (m_content == Content::Compressed) return kAudioWrongMode;
    samplesPerSec = m_rate;
    bitsPerSample = m_fileBits;
    channels = m_channels;
    return kAudioOk;
}

}  // namespace lv
