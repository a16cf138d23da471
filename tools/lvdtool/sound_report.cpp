#include "lvdtool/sound_report.h"

#include <memory>
#include <string>
#include <system_error>

#include "audio/sound_decoder.h"

namespace lv::tool {

void writeSoundInfo(const std::filesystem::path& lvd, std::int64_t recordsMs, std::ostream& out) {
    // The player's choice: the wave first, the MP3 when there is no wave or
    // the wave cannot be read.
    std::filesystem::path base = lvd;
    base.replace_extension();
    std::error_code ec;
    std::string unreadable;
    for (const auto& [extension, kind] :
         {std::pair{".wav", AudioKind::Wave}, std::pair{".mp3", AudioKind::Compressed}}) {
        std::filesystem::path sound = base;
        sound += extension;
        if (!std::filesystem::is_regular_file(sound, ec)) continue;
        std::unique_ptr<SoundDecoder> decoder;
        if (const int code = openSoundDecoder(sound.string(), kind, decoder); code != kAudioOk) {
            if (unreadable.empty())
                unreadable = sound.filename().string() + ", unreadable: " + audioErrorText(code);
            continue;
        }
        const SoundInfo& info = decoder->info();
        const std::int64_t soundMs = framesToMs(decoder->waitForFrames(), info.sampleRate);
        out << "sound: " << sound.filename().string() << ", " << info.kind << ' ' << info.sampleRate
            << " Hz " << info.channels << " ch\n";
        out << "sound_ms: " << soundMs << '\n';
        out << "sound_minus_records_ms: " << soundMs - recordsMs << '\n';
        return;
    }
    out << "sound: " << (unreadable.empty() ? "none" : unreadable) << '\n';
}

}  // namespace lv::tool
