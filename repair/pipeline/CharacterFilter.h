#ifndef VORNIC_REPAIR_PIPELINE_CHARACTER_FILTER_H
#define VORNIC_REPAIR_PIPELINE_CHARACTER_FILTER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/StopToken.h"
#include "repair/pipeline/RepairReport.h"
#include "xml/reader/XMLReading.h"
#include "xml/text/TextSpan.h"

namespace vornic {

/// Follows the progress of `filterInvalidCharacters`. Indexes count UTF-16 code units from 0.
class CharacterFilterObserver {
  public:
    virtual ~CharacterFilterObserver() = default;
    /// Asked often; true ends the filtering.
    [[nodiscard]] virtual bool isCancelled() = 0;
    /// A character that XML does not take was left out. One outside the Basic Multilingual Plane is
    /// told twice, for each of its two units.
    /// @param character the bytes of the text that it is
    virtual void removedUnit(std::int64_t index, TextSpan character) = 0;
    /// The units from `first` to `last` are done. Every unit is reported once, in order; a removed
    /// one by itself, after its removal.
    /// @return false to end the filtering.
    [[nodiscard]] virtual bool finishedUnits(std::int64_t first, std::int64_t last) = 0;
};

/// What the filter makes of a text.
struct FilteredText {
    /// False when every character stays as it is; `text` is then empty.
    bool isChanged = false;
    /// Whether the reading that was handed over is now that of the result.
    bool isRead = false;
    std::string text{};

    /// The result. @param source the text that was filtered.
    [[nodiscard]] std::string of(std::string source) && {
        return isChanged ? std::move(text) : std::move(source);
    }
};

/// Rewrites the text of an XML file so that it will parse, in one pass: removes the characters that
/// XML does not allow (and all from U+E000 up), escapes markup characters that stand in text, and
/// turns other non-ASCII characters into decimal character references. Markup is left alone: inside
/// a tag only less-than signs are escaped and non-ASCII characters turned into references; inside a
/// CDATA section less-than signs are escaped and everything else is kept.
///
/// An ampersand in text is kept when a semicolon follows within the next five units. A CDATA
/// section is known by "<![CDATA" only when at least one unit follows it.
///
/// @param text well-formed UTF-8.
/// @param reading of a text that was read without a fault and without a mend; null for none. Where
///     the result has the same markup it becomes what reading that would give; else it is void.
/// @return the filtered text, or nothing when the observer cancelled.
/// @throws platform::RangeException for a text that begins with "<>", when the end of a CDATA
///     section would be looked for before the beginning of the text.
[[nodiscard]] std::optional<FilteredText> filterInvalidCharacters(std::string_view text,
                                                                  CharacterFilterObserver& observer,
                                                                  XMLReading* reading = nullptr);

/// True when the filter takes every character of a piece of text outside CDATA sections out.
[[nodiscard]] bool isRemovedByFilter(std::string_view piece);

/// Where in a text the byte of its filtered form comes from: what a fault in the filtered text is
/// to the user. The filter runs again, up to there, and keeps nothing.
/// @param text as `filterInvalidCharacters` takes it. @param filteredOffset in what that makes of
/// it.
/// @return the offset in the text of the byte, or of the character that was written otherwise; of
///     the text's end for offsets from the end of the filtered text on.
/// @throws platform::RangeException as `filterInvalidCharacters` does.
[[nodiscard]] std::size_t originOfFilteredOffset(std::string_view text, std::size_t filteredOffset);

/// `filterInvalidCharacters` for a run: logs what it does, reports its progress (with a maximum for
/// texts of 512001 units and more) and reports each removal.
/// @param places the text, and where in the user's file it is
/// @param reading as `filterInvalidCharacters` takes it
/// @return the filtered text, or nothing when the run was stopped.
[[nodiscard]] std::optional<FilteredText> filterInvalidCharsInString(SourcePlaces& places,
                                                                     RepairReport& report,
                                                                     const StopToken& stop,
                                                                     XMLReading* reading = nullptr);

/// Keeps exactly the bytes from 0x20 to 0x7E, in order.
[[nodiscard]] std::string stripInvalidCharsFromData(std::string_view data);

}  // namespace vornic

#endif
