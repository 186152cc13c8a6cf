#ifndef VORNIC_APP_WINDOW_INSPECTION_H
#define VORNIC_APP_WINDOW_INSPECTION_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/window/SourceText.h"
#include "base/Error.h"
#include "mend/LineDifference.h"
#include "platform/files/ContentDigest.h"
#include "report/Report.h"

namespace vornic {

/// A file as it was read and checked.
struct InspectedFile {
    std::string path;
    /// Why it could not be read; then the rest says nothing.
    ErrorSlot error;
    std::shared_ptr<const SourceText> source;
    /// With the path.
    Report report;
    platform::ContentDigest::Value digest{};

    [[nodiscard]] bool isRead() const { return source != nullptr; }
};

/// Characters that a file had and has no more, though XML allows them.
struct RemovedCharacters {
    std::uint64_t count = 0;
    /// In how many different lines they stood.
    std::size_t lines = 0;
    /// Whether each of these lines is a name.
    bool areNames = false;
    /// The first of these lines in the original, from 1; 0 for none.
    std::size_t firstLine = 0;
};

/// What a window shows of its document's file: the file as it is now and, where something took its
/// place, the original. It never changes, so that any thread may read it.
struct Inspection {
    InspectedFile file;
    /// What it was before; nothing where nothing has changed it or the original has gone.
    std::optional<InspectedFile> original;
    /// From the original to the file, without regard to indentation.
    std::vector<LineChange> changes;
    RemovedCharacters removed;
};

/// The findings of a rule that a window lists; more are counted.
inline constexpr std::size_t kMostListedOfARule = 5000;

/// Reads and checks a file, and its original, and compares them. Writes nothing. Costs what
/// `checkFile` costs, for either file. Any thread.
/// @param original its path; "" for none
/// @param read called once the file's text can be shown, before it is checked
[[nodiscard]] std::shared_ptr<const Inspection> inspect(
    const std::string& path, const std::string& original,
    const std::function<void(std::shared_ptr<const SourceText>)>& read);

/// What characters beyond ASCII the original had more of.
[[nodiscard]] RemovedCharacters removedCharacters(const SourceText& original,
                                                  const SourceText& file);

/// The lines of a text, without their ends.
[[nodiscard]] std::vector<std::string_view> linesOf(const SourceText& source);

}  // namespace vornic

#endif
