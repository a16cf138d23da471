#pragma once
#include <cstdint>
#include <filesystem>
#include <ostream>

// What lvdtool says about the sound beside a recording, read with the
// player's own decoder: the first thing to check when needle and sound seem
// apart.
namespace lv::tool {

// "sound: <file name>, <kind> <rate> Hz <channels> ch", "sound_ms: <exact
// length>", "sound_minus_records_ms: <sound_ms - recordsMs>", one a line; the
// sound is the one the player takes (base + ".wav", else base + ".mp3").
// "sound: none" when there is none, and the reason when it cannot be read.
void writeSoundInfo(const std::filesystem::path& lvd, std::int64_t recordsMs, std::ostream& out);

}  // namespace lv::tool
