#ifndef VORNIC_CONVERT_CONVERSION_ANALYSIS_H
#define VORNIC_CONVERT_CONVERSION_ANALYSIS_H

#include <optional>
#include <string>
#include <string_view>

#include "convert/ConversionHost.h"

namespace vornic {

/// Works out a file's XMEML version, the Final Cut Pro release that it needs and the lowest version
/// that holds it without loss, and fills the conversion dialog. Runs on the calling thread, which
/// may be any. Nothing is raised; messages go to the log and to alerts, which have no parent
/// window. A run that fails leaves the labels, the menu and the minimum as they were; each run
/// stops the busy indicator at its end.
/// @param path the file, or nothing, for which nothing else is done.
void populateConversionDataForFile(ConversionHost& host, const std::optional<std::string>& path);

/// True when the text holds an element that the version introduced ("1" is always required). Reads
/// the catalogue; logs the first element of its list that occurs, and reports a catalogue that
/// cannot be loaded or does not know the version. Nothing is raised.
[[nodiscard]] bool xmlStringRequiresVersion(std::string_view xmlString, const std::string& version);

}  // namespace vornic

#endif
