#pragma once
#include <memory>
#include <string>

#include "audio/sound_decoder.h"

namespace lv {

// Opens any file libsndfile reads (waves of every encoding, and the rest of
// its containers) as a decoder. Returns kAudioOk or kAudioBadFile, also for
// an MPEG file unless acceptMpeg: libsndfile only guesses an MP3's length.
int openSndfileDecoder(const std::string& path, std::unique_ptr<SoundDecoder>& out,
                       bool acceptMpeg = false);

}  // namespace lv
