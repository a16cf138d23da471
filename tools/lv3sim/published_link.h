#pragma once
#include <string>

// The --link symlink by which programs and tests find the pseudo-terminal.
namespace lv::sim {

class PublishedLink {
public:
    PublishedLink() = default;
    ~PublishedLink() { remove(); }
    PublishedLink(const PublishedLink&) = delete;
    PublishedLink& operator=(const PublishedLink&) = delete;

    // Replaces whatever is at `link` in one step (a temporary link renamed
    // over it), so a reader never sees the path missing or half made.
    bool publish(const std::string& link, const std::string& target, std::string& error);

    // Removes the link, but only while it still points at our target: a newer
    // meter may have taken the name over.
    void remove();

private:
    std::string m_link;
    std::string m_target;
};

}  // namespace lv::sim
