#include "platform/archives/ArchivedLinks.h"

#include <algorithm>
#include <deque>
#include <utility>
#include <vector>

#include "base/PathText.h"

namespace vornic::platform {
namespace {

/// @return the next component that is neither empty nor ".", taken off the text; "" at the end.
std::string_view takeComponent(std::string_view& path) {
    while (!path.empty()) {
        const std::size_t slash = std::min(path.find('/'), path.size());
        const std::string_view component = path.substr(0, slash);
        path.remove_prefix(std::min(slash + 1, path.size()));
        if (!component.empty() && component != ".") {
            return component;
        }
    }
    return {};
}

/// The links of an archive as a tree of the folders that lead to them. Each link is followed once;
/// whoever comes by it later is told where it leads.
class LinkTree {
  public:
    explicit LinkTree(const ArchivedLinks& links) {
        for (const auto& [path, target] : links) {
            Node* node = &top_;
            std::string_view way = path;
            for (std::string_view name = takeComponent(way); !name.empty();
                 name = takeComponent(way)) {
                Node*& child = node->children[name];
                if (child == nullptr) {
                    child = &nodes_.emplace_back(Node{.parent = node});
                }
                node = child;
            }
            node->target = &target;
            links_.emplace_back(node, &path);
        }
    }

    std::optional<std::string> findLinkOut() {
        for (const auto& [node, path] : links_) {
            if (!follow(*node)) {
                return *path;
            }
        }
        return std::nullopt;
    }

  private:
    struct Node;
    /// Where a path leads: a folder above some link, or one so many levels below it where there are
    /// no links.
    struct Place {
        Node* node = nullptr;
        std::size_t below = 0;
    };
    struct Node {
        Node* parent = nullptr;
        std::map<std::string_view, Node*> children = {};
        /// Of a link.
        const std::string* target = nullptr;
        bool isBegun = false;
        bool isFollowed = false;
        /// Nothing for a link that leads in a circle, which the system does not follow.
        std::optional<Place> place = std::nullopt;
    };
    /// A link that is being followed.
    struct Walk {
        Node* link = nullptr;
        std::string_view left;
        Place place;
    };

    /// @return false when the link, or one on its way, leads out.
    bool follow(Node& link) {
        if (link.isFollowed) {
            return true;
        }
        begin(link);
        while (!walks_.empty()) {
            Walk& walk = walks_.back();
            const std::string_view component = takeComponent(walk.left);
            if (component.empty()) {
                end(walk.place);
            } else if (component == ".." ? !leave(walk.place) : !enter(walk, component)) {
                return false;
            }
        }
        return true;
    }

    void begin(Node& link) {
        link.isBegun = true;
        walks_.push_back({.link = &link, .left = *link.target, .place = {.node = link.parent}});
    }
    void end(std::optional<Place> place) {
        walks_.back().link->isFollowed = true;
        walks_.back().link->place = place;
        walks_.pop_back();
    }

    /// One level up. @return false at the top.
    static bool leave(Place& place) {
        if (place.below > 0) {
            --place.below;
        } else {
            place.node = place.node->parent;
        }
        return place.node != nullptr;
    }

    /// One level down, or to where a link leads. @return false when that is out of the folder.
    bool enter(Walk& walk, std::string_view name) {
        const auto found = walk.place.below > 0 ? walk.place.node->children.end()
                                                : walk.place.node->children.find(name);
        if (found == walk.place.node->children.end()) {
            ++walk.place.below;
            return true;
        }
        Node& child = *found->second;
        if (child.target == nullptr) {
            walk.place.node = &child;
        } else if (child.target->starts_with('/')) {
            return false;
        } else if (!child.isBegun) {
            // The link comes first, this walk then takes the same step again.
            walk.left = {name.data(), static_cast<std::size_t>(walk.left.data() - name.data()) +
                                          walk.left.size()};
            begin(child);
        } else if (child.isFollowed && child.place) {
            walk.place = *child.place;
        } else {
            end(std::nullopt);
        }
        return true;
    }

    Node top_;
    std::deque<Node> nodes_;
    std::vector<std::pair<Node*, const std::string*>> links_;
    std::vector<Walk> walks_;
};

}  // namespace

std::optional<std::string> nameInsideFolder(std::string_view name) {
    if (name.starts_with('/')) {
        return std::nullopt;
    }
    std::string path;
    path.reserve(name.size());
    for (std::string_view component = takeComponent(name); !component.empty();
         component = takeComponent(name)) {
        if (component == "..") {
            return std::nullopt;
        }
        path.append(path.empty() ? "" : "/").append(component);
    }
    return path;
}

std::size_t depthOf(std::string_view name) {
    return name.empty() ? 0
                        : 1 + static_cast<std::size_t>(std::count(name.begin(), name.end(), '/'));
}

std::optional<std::string> entryBelowLink(const std::set<std::string>& names,
                                          const ArchivedLinks& links) {
    for (const auto& [path, target] : links) {
        const std::string folder = path + "/";
        const auto below = names.lower_bound(folder);
        if (below != names.end() && below->starts_with(folder)) {
            return *below;
        }
    }
    return std::nullopt;
}

std::optional<std::string> linkOutOfFolder(const ArchivedLinks& links) {
    const auto absolute = std::find_if(
        links.begin(), links.end(), [](const auto& link) { return link.second.starts_with('/'); });
    return absolute != links.end() ? std::optional(absolute->first) : LinkTree(links).findLinkOut();
}

}  // namespace vornic::platform
