#ifndef VORNIC_FORMATS_FCPXML_BUNDLE_H
#define VORNIC_FORMATS_FCPXML_BUNDLE_H

#include <string>
#include <string_view>

/// From FCPXML 1.10 on a project may be a bundle: a folder `NAME.fcpxmld` with the project in its
/// `Info.fcpxml`. All operations are pure and may be called from any thread.
namespace vornic::fcpxml {

inline constexpr std::string_view kBundleExtension = ".fcpxmld";
inline constexpr std::string_view kBundleContent = "Info.fcpxml";

/// Whether a path's last component is a bundle's name, in any case. Nothing is looked up on disk.
[[nodiscard]] bool isBundleName(std::string_view path);

/// What a user takes for the file: the bundle where the path leads into one, else the path.
[[nodiscard]] std::string bundleAround(const std::string& path);

/// The path of the project in a bundle.
[[nodiscard]] std::string contentOfBundle(std::string_view bundle);

}  // namespace vornic::fcpxml

#endif
