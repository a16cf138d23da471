#pragma once
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "audio/audio_track.h"

namespace lv::test {

// An audio track that writes down every command, as the original's command
// strings would read ("open new", "record", "status position", "seek 0",
// "delete 0 44100", "save /x/a.wav", "play from 800", ...). The test moves the
// position; `fail` makes a command (by its first word, or whole text) return
// a code; onCommand runs after each command (a clock that moves meanwhile).
class FakeAudioTrack : public AudioTrack {
public:
    std::vector<std::string> log;
    std::map<std::string, int> fail;
    std::function<void(const std::string&)> onCommand;
    std::int64_t pos = 0;
    std::int64_t len = 0;
    AudioMode currentMode = AudioMode::NotReady;
    int samplesPerSec = 22050, bitsPerSample = 16, channels = 1;
    bool isOpen = false;
    CaptureSink capture;

    int openNewWave() override { return run("open new", [&] { openAs(AudioMode::Stopped); }); }
    int openFile(const std::string& path, AudioKind kind) override {
        return run(std::string("open ") + (kind == AudioKind::Wave ? "wave " : "compressed ") + path,
                   [&] { openAs(AudioMode::Stopped); });
    }
    int close() override {
        return run("close", [&] {
            isOpen = false;
            currentMode = AudioMode::NotReady;
        });
    }
    int record() override { return run("record", [&] { currentMode = AudioMode::Recording; }); }
    int play() override { return run("play", [&] { currentMode = AudioMode::Playing; }); }
    int playFrom(std::int64_t p) override {
        return run("play from " + std::to_string(p), [&] {
            pos = p;
            currentMode = AudioMode::Playing;
        });
    }
    int pause() override { return run("pause", [&] { currentMode = AudioMode::Paused; }); }
    int stop() override { return run("stop", [&] { currentMode = AudioMode::Stopped; }); }
    int seek(std::int64_t p) override {
        return run("seek " + std::to_string(p), [&] { pos = p; });
    }
    int deleteFromStart(std::int64_t bytes) override {
        return run("delete 0 " + std::to_string(bytes), [&] { len = len > bytes ? len - bytes : 0; });
    }
    int save(const std::string& path) override { return run("save " + path, [] {}); }
    int position(std::int64_t& out) override {
        return run("status position", [&] { out = pos; });
    }
    int length(std::int64_t& out) override { return run("status length", [&] { out = len; }); }
    int mode(AudioMode& out) override { return run("status mode", [&] { out = currentMode; }); }
    int waveFormat(int& rate, int& bits, int& ch) override {
        return run("status format", [&] {
            rate = samplesPerSec;
            bits = bitsPerSample;
            ch = channels;
        });
    }
    void setCaptureSink(CaptureSink sink) override { capture = std::move(sink); }

private:
    void openAs(AudioMode m) {
        isOpen = true;
        currentMode = m;
    }
    template <typename F>
    int run(const std::string& command, F&& effect) {
        log.push_back(command);
        int code = kAudioOk;
        if (auto it = fail.find(command); it != fail.end()) code = it->second;
        else if (auto w = fail.find(command.substr(0, command.find(' '))); w != fail.end())
            code = w->second;
        if (code == kAudioOk) effect();
        if (onCommand) onCommand(command);
        return code;
    }
};

}  // namespace lv::test
