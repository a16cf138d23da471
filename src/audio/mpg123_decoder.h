#pragma once
#include <memory>
#include <string>

#include "audio/sound_decoder.h"

namespace lv {

// Opens an MPEG audio file (MP3, MP2) with libmpg123. It decodes sample-exact
// and, once its scan has run, knows the exact length of any MP3, a VBR file
// without a Xing/Info header included. The scan reads the whole file, so it
// runs on a thread of its own: opening costs only the first frame. Returns
// kAudioOk or kAudioBadFile.
int openMpg123Decoder(const std::string& path, std::unique_ptr<SoundDecoder>& out);

}  // namespace lv
