#ifndef VORNIC_CHECK_XMEML_RULES_H
#define VORNIC_CHECK_XMEML_RULES_H

#include <cstdint>
#include <optional>
#include <string>

#include "formats/xmeml/View.h"
#include "report/Findings.h"

/// The rules of XMEML, a function for each subject. All are linear in the size of the file and look
/// at nothing outside of it. Elements that the reading of a damaged file ended in are not said to
/// lack anything.
///
/// Those that look at each element by itself take a piece of the file at a time, so that its text
/// is still in the processor's cache when the next one looks at it.
namespace vornic::xmeml {

/// The largest frame number that all programs read: they keep it in 32 bits.
inline constexpr std::int64_t kMostFrames = 0x7FFFFFFF;

/// What stands in the root.
void checkRoot(const View& view, Findings& findings);
/// What must stand in an element.
void checkParts(const View& view, ElementRange range, Findings& findings);

/// The version that the file declares, the elements that are newer than it, and what a receiver
/// that reads up to a version can't read.
/// @param reads that version; nothing to look at the declared one alone.
/// @param missing what the mend of a version that is not declared would write.
void checkVersions(const View& view, std::optional<int> reads,
                   const std::optional<std::string>& missing, Findings& findings);

/// Ids and what refers to them: files, clip items and their links, master clips. Needs the whole
/// file.
void checkReferences(const View& view, Findings& findings);

/// How times, indexes and sizes are written, and whether programs can hold them.
void checkNumbers(const View& view, ElementRange range, Findings& findings);
/// Frame rates, and timecodes against them.
void checkRates(const View& view, ElementRange range, Findings& findings);
/// That things end after they begin.
void checkSpans(const View& view, ElementRange range, Findings& findings);
/// What the tracks of sequences hold: lengths, places, transitions, and the media behind them.
void checkTimelines(const View& view, Findings& findings);

/// Booleans, words of a list, channels and sample rates.
void checkValues(const View& view, ElementRange range, Findings& findings);
/// The paths of media files.
void checkPathURLs(const View& view, Findings& findings);

}  // namespace vornic::xmeml

#endif
