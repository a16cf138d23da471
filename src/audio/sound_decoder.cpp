#include "audio/sound_decoder.h"

#include <filesystem>
#include <system_error>

#include "audio/mpg123_decoder.h"
#include "audio/sndfile_decoder.h"

namespace lv {

int openSoundDecoder(const std::string& path, AudioKind kind, std::unique_ptr<SoundDecoder>& out) {
    out.reset();
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) return kAudioFileNotFound;
    if (kind == AudioKind::Wave) {
        if (const int code = openSndfileDecoder(path, out); code != kAudioOk) return code;
        if (out->info().isWave) return kAudioOk;
        out.reset();
        return kAudioBadFile;
    }
    // An ".mp3" that is really some other sound is still played; MPEG goes
    // to libmpg123, and to libsndfile only if libmpg123 cannot read it.
    if (openSndfileDecoder(path, out) == kAudioOk) return kAudioOk;
    if (openMpg123Decoder(path, out) == kAudioOk) return kAudioOk;
    return openSndfileDecoder(path, out, true);
}

}  // namespace lv
