#include "lv3sim/published_link.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

namespace lv::sim {

bool PublishedLink::publish(const std::string& link, const std::string& target,
                            std::string& error) {
    // Replacing an old link is the point; replacing a file is a typo's damage.
    struct stat existing {};
    if (::lstat(link.c_str(), &existing) == 0 && !S_ISLNK(existing.st_mode)) {
        error = link + " exists and is not a symlink";
        return false;
    }
    const std::string temporary = link + ".tmp." + std::to_string(::getpid());
    ::unlink(temporary.c_str());
    if (::symlink(target.c_str(), temporary.c_str()) != 0) {
        error = "cannot create " + temporary + ": " + std::strerror(errno);
        return false;
    }
    if (std::rename(temporary.c_str(), link.c_str()) != 0) {
        error = "cannot rename to " + link + ": " + std::strerror(errno);
        ::unlink(temporary.c_str());
        return false;
    }
    m_link = link;
    m_target = target;
    return true;
}

void PublishedLink::remove() {
    if (m_link.empty()) return;
    std::vector<char> buf(m_target.size() + 2);
    const ssize_t n = ::readlink(m_link.c_str(), buf.data(), buf.size());
    if (n >= 0 && std::string(buf.data(), static_cast<std::size_t>(n)) == m_target)
        ::unlink(m_link.c_str());
    m_link.clear();
}

}  // namespace lv::sim
