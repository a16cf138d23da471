#pragma once
#include <cstdint>
#include <string>

#include "audio/audio_track.h"
#include "recording/record_buffer.h"

namespace lv {

// The two tracks the program has: the sound device, and the silent
// placeholder whose clock stands in when audio is off or the device fails.
// dummyPath is the placeholder file (dummy.mp3 in the data folder); it must
// exist for the placeholder to open.
struct AudioTracks {
    AudioTrack& sound;
    AudioTrack& placeholder;
    std::string dummyPath;
};

// What the recorder and the player share beside the record buffer.
struct RecordingState {
    RecBuffer buffer;
    bool RecNotSaved = false;  // from the end of a recording until it is saved
    bool RecHasData = false;   // from the end of a recording until the buffer is emptied
    std::int32_t playStart = 1;
    std::int32_t playEnd = 0;
    // 44100 for a wave recorded here, the wave's own rate when loaded, 1000
    // for a compressed track or the placeholder (positions in milliseconds).
    std::int32_t AudioBytesPerSec = 1000;
    AudioTrack* track = nullptr;  // the track in use: sound or placeholder
    int lastAudioError = 0;
    std::string SaveName;    // automatic name of this recording, no folder or extension
    std::string loadedBase;  // folder + name of the file loaded or saved last, no extension
    std::int32_t TagCount = 0;
    std::int16_t SkipSeconds = 10;
};

}  // namespace lv
