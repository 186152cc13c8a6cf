#include "platform/ArchivedLinks.h"

#include <algorithm>
#include <vector>

#include "platform/PathText.h"

namespace vornic::platform {
namespace {

/// Without empty components and ".".
std::vector<std::string> componentsOf(std::string_view path) {
    std::vector<std::string> components;
    while (!path.empty()) {
        const std::size_t slash = std::min(path.find('/'), path.size());
        const std::string_view component = path.substr(0, slash);
        if (!component.empty() && component != ".") {
            components.emplace_back(component);
        }
        path.remove_prefix(std::min(slash + 1, path.size()));
    }
    return components;
}

/// A place below the folder while a path is followed.
class Walk {
  public:
    explicit Walk(const ArchivedLinks& links) : links_(links) {}

    /// Follows a path from the folder itself, links included. @return false when it leads out.
    bool follow(const std::string& path) {
        // The system follows no more links than that in one path.
        constexpr int kMostLinks = 40;
        push(path);
        for (int followed = 0; !left_.empty() && followed <= kMostLinks;) {
            const std::string component = left_.back();
            left_.pop_back();
            if (component == "..") {
                if (place_.empty()) {
                    return false;
                }
                leave();
                continue;
            }
            place_ = place_.empty() ? component : joinPath(place_, component);
            const auto link = links_.find(place_);
            if (link == links_.end()) {
                continue;
            }
            if (link->second.starts_with('/')) {
                return false;
            }
            ++followed;
            leave();
            push(link->second);
        }
        return true;
    }

  private:
    void push(const std::string& path) {
        const std::vector<std::string> components = componentsOf(path);
        left_.insert(left_.end(), components.rbegin(), components.rend());
    }
    void leave() {
        const std::size_t slash = place_.rfind('/');
        place_.erase(slash == std::string::npos ? 0 : slash);
    }

    const ArchivedLinks& links_;
    std::string place_;
    /// The components still to be followed, the next one last.
    std::vector<std::string> left_;
};

}  // namespace

std::optional<std::string> nameInsideFolder(std::string_view name) {
    if (name.starts_with('/')) {
        return std::nullopt;
    }
    std::string path;
    for (const std::string& component : componentsOf(name)) {
        if (component == "..") {
            return std::nullopt;
        }
        path = path.empty() ? component : joinPath(path, component);
    }
    return path;
}

std::optional<std::string> linkOutOfFolder(const ArchivedLinks& links) {
    const auto out = std::find_if(links.begin(), links.end(), [&links](const auto& link) {
        return !Walk(links).follow(link.first);
    });
    return out == links.end() ? std::nullopt : std::optional(out->first);
}

}  // namespace vornic::platform
