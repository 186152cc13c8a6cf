#ifndef VORNIC_MEDIA_PATH_MAP_H
#define VORNIC_MEDIA_PATH_MAP_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/MediaPath.h"

namespace vornic {

/// Where folders of media have moved: beginnings of paths, and what stands in their place. Each
/// side may be a path of macOS, Linux or Windows, a share, or the URL of one. Names are compared as
/// a whole; however their accents are written, and those of Windows in any case of their letters.
class PathMap {
  public:
    /// @param rule "OLD=NEW". Where a path has an "=" in its name, the one counts behind which an
    ///     absolute path begins.
    /// @return what is wrong with the rule, as a sentence without a full stop; "" when nothing is.
    [[nodiscard]] std::string add(std::string_view rule);
    /// @return false, and nothing is added, unless both paths are absolute and the old one has no
    ///     other new place.
    [[nodiscard]] bool add(const MediaPath& oldPath, const MediaPath& newPath);
    [[nodiscard]] bool isEmpty() const { return rules_.empty(); }

    /// The path by the rule whose OLD has the most names; nothing when none fits.
    [[nodiscard]] std::optional<MediaPath> apply(const MediaPath& path) const;

  private:
    struct Rule {
        MediaPath oldPath;
        // The names of `oldPath`, as they are compared.
        std::vector<std::string> keys;
        MediaPath newPath;
    };

    std::vector<Rule> rules_;
};

}  // namespace vornic

#endif
