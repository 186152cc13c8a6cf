#ifndef VORNIC_CONVERT_CONVERSION_ANALYSIS_H
#define VORNIC_CONVERT_CONVERSION_ANALYSIS_H

#include <optional>
#include <string>
#include <string_view>

#include "convert/ConversionHost.h"

namespace vornic {

/// Works out a file's XMEML version, the Final Cut Pro release that it needs and the lowest version
/// that holds it without loss, and fills the conversion dialog. Runs on the calling thread, which may
/// be any. Nothing is raised; messages go to the log and to alerts.
/// @param path the file, or nothing, for which nothing is done.
void populateConversionDataForFile(ConversionHost& host, const std::optional<std::string>& path);

/// True when the text holds an element that the version introduced ("1" is always required).
[[nodiscard]] bool xmlStringRequiresVersion(std::string_view xmlString, const std::string& version);

}  // namespace vornic

#endif
