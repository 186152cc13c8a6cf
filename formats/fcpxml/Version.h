#ifndef VORNIC_FORMATS_FCPXML_VERSION_H
#define VORNIC_FORMATS_FCPXML_VERSION_H

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace vornic::fcpxml {

/// A version of FCPXML that the catalogue knows: 1.0 to 1.14. Versions are numbers behind the
/// point, so that 1.9 comes before 1.10.
class Version {
  public:
    static constexpr int kNewestMinor = 14;

    constexpr Version() = default;
    /// @param minor the number behind the point, 0 to `kNewestMinor`.
    constexpr explicit Version(int minor) : minor_(minor) {}

    /// The version that a root element's `version` attribute names, such as "1.10".
    /// @return nothing for a text that is no version, or one that the catalogue does not know.
    [[nodiscard]] static std::optional<Version> parse(std::string_view text);

    [[nodiscard]] constexpr int minor() const { return minor_; }
    /// "1.10".
    [[nodiscard]] std::string text() const;

    friend constexpr auto operator<=>(Version, Version) = default;

  private:
    int minor_ = 0;
};

/// The first release of Final Cut Pro that writes a version, such as "10.6"; "" where none is
/// known.
[[nodiscard]] std::string_view releaseOf(Version version);

/// An unbroken run of versions, both ends included.
struct VersionRun {
    Version first;
    Version last;

    [[nodiscard]] constexpr bool holds(Version version) const {
        return first <= version && version <= last;
    }
};

}  // namespace vornic::fcpxml

#endif
