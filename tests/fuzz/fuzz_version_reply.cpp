// A version reply can come from any device on any port: parsing it must be
// safe, and a reply the parser accepts must name a code of at most two
// characters drawn from what the collector keeps.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "device/protocol.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string kept;
    for (std::size_t i = 0; i < size; ++i) {
        const char c = static_cast<char>(data[i]);
        if (c == lv::protocol::kCR) break;
        if (lv::protocol::keptInVersionReply(c)) kept += c;
    }
    lv::protocol::VersionInfo info;
    const bool ok = lv::protocol::parseVersionReply(kept, info);
    if (ok != (kept.rfind("V,LV", 0) == 0)) std::abort();
    if (ok && info.code.size() > 2) std::abort();
    for (const std::string* field : {&info.hardware, &info.code, &info.boot, &info.firmware})
        for (char c : *field)
            if (!lv::protocol::keptInVersionReply(c)) std::abort();
    return 0;
}
