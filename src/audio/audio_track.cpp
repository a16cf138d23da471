#include "audio/audio_track.h"

namespace lv {

std::string audioErrorText(int code) {
    switch (code) {
    case kAudioOk: return "The command completed.";
    case kAudioNoDevice: return "No sound device is available (is the sound server running?).";
    case kAudioDeviceLost: return "The sound device stopped working while in use.";
    case kAudioFileNotFound: return "The sound file cannot be found.";
    case kAudioBadFile: return "The file is not a sound file that can be played.";
    case kAudioNotOpen: return "No sound track is open.";
    case kAudioWrongMode: return "The sound track cannot do this in its present mode.";
    case kAudioWriteFailed: return "The sound file could not be written.";
    case kAudioBadRange: return "The position lies outside the sound track.";
    default: return "Unknown sound error " + std::to_string(code) + ".";
    }
}

}  // namespace lv
