// A journal is whatever a crash left on the disk: torn, zero-filled or not a
// journal at all. Scanning it must be safe, and keeping it must give exactly
// its valid records back as an ordinary recording, and the journal only goes
// once that recording is there.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/fuzz_scratch.h"
#include "recording/lvd_file.h"
#include "recording/recovery_journal.h"

namespace {

namespace fs = std::filesystem;
using lv::RecoveryJournal;

void check(bool condition) {
    if (!condition) std::abort();
}

void write(const fs::path& path, const std::uint8_t* data, std::size_t size) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

std::string readAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

constexpr std::size_t kHeaderSize = 512;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fs::path dir = lv::fuzz::scratchFolder("fuzz_recovery_journal");
    const fs::path into = dir / RecoveryJournal::kRecoveredFolder;
    std::error_code ec;
    fs::remove_all(into, ec);
    write(dir / RecoveryJournal::kRecordsFile, data, size);
    // The sound: the input's first bytes, as much of it as a short run needs.
    write(dir / RecoveryJournal::kAudioFile, data, size < 4096 ? size : 4096);

    const auto found = RecoveryJournal::find(dir);
    if (found) {
        check(size >= kHeaderSize + lv::kLvdRecordSize);
        check(found->recordCount >= 1 &&
              static_cast<std::size_t>(found->recordCount) <= (size - kHeaderSize) / 20);
    }

    const lv::Settings settings;
    const auto kept = RecoveryJournal::preserve(dir, into, settings);
    using Outcome = RecoveryJournal::Preserved::Outcome;
    check((kept.outcome == Outcome::Kept) == found.has_value());
    check(!RecoveryJournal::find(dir));
    if (!found) return 0;

    check(kept.recordCount == found->recordCount);
    check(kept.wavFile.has_value() == found->pcmFile.has_value());
    const std::string lvd = readAll(kept.lvdFile);
    check(lvd.size() == static_cast<std::size_t>(found->recordCount) * lv::kLvdRecordSize);
    // Records 1 and 2 carry the start stamp in bytes 14..18; the rest is as journalled.
    for (std::size_t i = 0; i < lvd.size(); ++i) {
        const std::size_t inRecord = i % lv::kLvdRecordSize;
        if (i < 2 * lv::kLvdRecordSize && inRecord >= 14 && inRecord <= 18) continue;
        check(static_cast<std::uint8_t>(lvd[i]) == data[kHeaderSize + i]);
    }
    lv::RecBuffer buffer;
    const lv::LoadResult loaded = lv::loadLvdFile(kept.lvdFile, std::nullopt, buffer);
    check(loaded.ok() == (found->recordCount >= 5));
    if (loaded.ok()) check(buffer.RecCount == found->recordCount);
    return 0;
}
