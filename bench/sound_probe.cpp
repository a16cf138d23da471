// Drives the program's own sound track the way the player and the recorder
// do, on whatever sound server the environment names, and prints what the
// sound benchmark reports: memory, the time to first sound, how long the
// event loop was kept waiting, and how far the track's position is from the
// wall clock after playing, after a jump far in, and after skips.
//
//   sound_probe play FILE [--lvd LVD] [--seconds N] [--jump-ms MS]
//   sound_probe record --seconds N
#include <sys/resource.h>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include "audio/qt_audio_track.h"
#include "audio/sound_decoder.h"
#include "recording/lvd_file.h"
#include "recording/record_buffer.h"

namespace {

// CPU time of the whole process so far, in seconds.
double cpuSeconds() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_utime.tv_sec + u.ru_stime.tv_sec + (u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

double rssMb(const char* key = "VmRSS:") {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(key, 0) == 0) return std::atof(line.c_str() + std::strlen(key)) / 1024.0;
    return -1;
}

// The longest the event loop went without turning, since the last reset: a
// window would have stood frozen that long.
class LoopWatch {
public:
    LoopWatch() {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(2);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { tick(); });
        m_timer.start();
        reset();
    }
    void reset() {
        m_clock.start();
        m_last = 0;
        m_longest = 0;
    }
    void tick() {
        const qint64 now = m_clock.elapsed();
        m_longest = std::max(m_longest, now - m_last);
        m_last = now;
    }
    qint64 longestMs() {
        tick();
        return m_longest;
    }

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_last = 0;
    qint64 m_longest = 0;
};

void spin(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

struct Units {
    double perMs = 1;  // track units a millisecond
};

Units unitsOf(lv::AudioTrack& track, bool wave) {
    Units u;
    int rate = 0, bits = 0, channels = 0;
    if (wave && track.waveFormat(rate, bits, channels) == lv::kAudioOk)
        u.perMs = rate * bits * channels / 8.0 / 1000.0;
    return u;
}

double positionMs(lv::AudioTrack& track, const Units& u) {
    std::int64_t p = 0;
    track.position(p);
    return p / u.perMs;
}

// Plays from `fromMs` for `ms` and says how far the position is from where
// the wall clock puts it, in milliseconds.
double driftAfter(lv::AudioTrack& track, const Units& u, double fromMs, int ms) {
    QElapsedTimer clock;
    clock.start();
    track.playFrom(static_cast<std::int64_t>(fromMs * u.perMs));
    // The clock starts with the first sound, as the player's does.
    while (positionMs(track, u) <= fromMs && clock.elapsed() < 2000) spin(1);
    const double started = clock.nsecsElapsed() / 1e6;
    spin(ms);
    return positionMs(track, u) - (fromMs + clock.nsecsElapsed() / 1e6 - started);
}

int play(const std::string& path, const std::string& lvd, int seconds, double jumpMs) {
    LoopWatch watch;
    const bool wave = path.size() > 4 && path.compare(path.size() - 4, 4, ".wav") == 0;
    lv::RecBuffer buffer;
    if (!lvd.empty()) {
        const auto loaded = lv::loadLvdFile(lvd, std::nullopt, buffer,
                                            [](int) { QCoreApplication::processEvents(); });
        if (!loaded.ok()) std::fprintf(stderr, "sound_probe: %s is not a recording\n", lvd.c_str());
    }
    lv::QtAudioTrack track;
    QElapsedTimer clock;
    clock.start();
    if (const int rc = track.openFile(path, wave ? lv::AudioKind::Wave : lv::AudioKind::Compressed);
        rc != lv::kAudioOk) {
        std::fprintf(stderr, "sound_probe: %s: %s\n", path.c_str(), lv::audioErrorText(rc).c_str());
        return 1;
    }
    const double openMs = clock.nsecsElapsed() / 1e6;
    const Units u = unitsOf(track, wave);
    clock.restart();
    track.play();
    while (positionMs(track, u) <= 0 && clock.elapsed() < 5000) spin(1);
    const double firstSoundMs = clock.nsecsElapsed() / 1e6;
    const double cpuBefore = cpuSeconds();
    spin(seconds * 1000);
    const double cpuPercent = (cpuSeconds() - cpuBefore) * 100 / seconds;
    const double drift = positionMs(track, u) - clock.nsecsElapsed() / 1e6 + firstSoundMs;
    const qint64 frozen = watch.longestMs();
    const double rss = rssMb();

    std::int64_t length = 0;
    track.length(length);
    const double lengthMs = length / u.perMs;
    // Skips of 10 to 50 s either way around the jump, kept inside the sound.
    const auto inside = [&](double ms) {
        return std::clamp(ms, 0.0, std::max(0.0, lengthMs - 3000));
    };
    const double jumpDrift = driftAfter(track, u, inside(jumpMs), 2000);
    double worstSkip = 0;
    for (int i = 1; i <= 5; ++i) {
        const double d =
            driftAfter(track, u, inside(jumpMs + (i % 2 ? 1 : -1) * i * 10'000.0), 1000);
        if (std::abs(d) > std::abs(worstSkip)) worstSkip = d;
    }
    std::printf("open_ms %.1f\nfirst_sound_ms %.1f\nlongest_event_wait_ms %lld\n", openMs,
                firstSoundMs, static_cast<long long>(frozen));
    std::printf("rss_playing_mb %.1f\npeak_rss_mb %.1f\ncpu_playing_percent %.2f\n", rss,
                rssMb("VmHWM:"), cpuPercent);
    std::printf(
        "drift_after_%ds_ms %.1f\ndrift_after_jump_to_%.0fs_ms %.1f\nworst_drift_after_skips_ms "
        "%.1f\n",
        seconds, drift, jumpMs / 1000, jumpDrift, worstSkip);
    std::printf("length_ms %.0f\n", lengthMs);
    track.close();
    // How long the exact length takes to work out, off the event loop's thread.
    std::unique_ptr<lv::SoundDecoder> decoder;
    clock.restart();
    if (lv::openSoundDecoder(path, wave ? lv::AudioKind::Wave : lv::AudioKind::Compressed,
                             decoder) == lv::kAudioOk) {
        decoder->waitForFrames();
        std::printf("exact_length_known_after_ms %.0f\n", clock.nsecsElapsed() / 1e6);
    }
    return 0;
}

int record(int seconds) {
    lv::QtAudioTrack track;
    if (track.openNewWave() != lv::kAudioOk || track.record() != lv::kAudioOk) {
        std::fprintf(stderr, "sound_probe: cannot record\n");
        return 1;
    }
    // After the first minute, when everything a recording needs is in place.
    const int settle = std::min(60, seconds / 5);
    spin(settle * 1000);
    const double first = rssMb();
    spin((seconds - settle) * 1000);
    const double last = rssMb();
    std::int64_t bytes = 0;
    track.position(bytes);
    track.stop();
    std::printf("recorded_s %.1f\nrss_start_mb %.1f\nrss_end_mb %.1f\nrss_growth_mb_per_min %.3f\n",
                bytes / 44100.0, first, last, (last - first) * 60.0 / (seconds - settle));
    QElapsedTimer clock;
    clock.start();
    track.deleteFromStart(44100);
    const std::string out = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") +
                            "/sound_probe_take.wav";
    const int rc = track.save(out);
    std::printf("save_ms %.0f (%s)\n", clock.nsecsElapsed() / 1e6,
                rc == lv::kAudioOk ? "ok" : "failed");
    std::remove(out.c_str());
    return rc == lv::kAudioOk ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    std::string cmd = argc > 1 ? argv[1] : "", file, lvd;
    int seconds = 10;
    double jumpMs = 3'600'000;
    for (int i = 2; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--lvd" && i + 1 < argc)
            lvd = argv[++i];
        else if (a == "--seconds" && i + 1 < argc)
            seconds = std::atoi(argv[++i]);
        else if (a == "--jump-ms" && i + 1 < argc)
            jumpMs = std::atof(argv[++i]);
        else
            file = a;
    }
    int rc = 2;
    if (cmd == "play" && !file.empty())
        rc = play(file, lvd, seconds, jumpMs);
    else if (cmd == "record" && seconds > 0)
        rc = record(seconds);
    else
        std::fprintf(stderr,
                     "usage: sound_probe play FILE [--lvd LVD] [--seconds N] [--jump-ms MS]\n"
                     "       sound_probe record --seconds N\n");
    // Qt's sound client may abort after main returns once a stream was used.
    std::fflush(stdout);
    std::_Exit(rc);
}
