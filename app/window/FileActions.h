#ifndef VORNIC_APP_WINDOW_FILE_ACTIONS_H
#define VORNIC_APP_WINDOW_FILE_ACTIONS_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/window/Inspection.h"
#include "job/InPlaceChange.h"
#include "job/MendedBytes.h"
#include "job/Undo.h"

namespace vornic {

/// What a window's action has done with a file in its place.
struct FileActionResult {
    /// Whether another file has the path now.
    bool isDone = false;
    /// Where that is which stood there before; "" when it is gone.
    std::string replaced = {};
    bool isUndoable = false;
    /// Why it was not done; "" when it was.
    std::string failure = {};
    /// What else the user should know, a sentence each.
    std::vector<std::string> notes = {};
};

/// Takes what has become of a change in place, and logs it.
void takeResult(const std::string& path, InPlaceResult& result, FileActionResult& action);

/// How the restoring of an original ended.
struct RestoreResult : FileActionResult {
    UndoResult::End end = UndoResult::End::failed;
};

/// Brings the original of a file back, as `vornic-repair --undo` does. Any thread; may wait for
/// other programs.
/// @param path absolute
/// @param program,version who does it, for the journal
/// @param evenIfChanged whether a file that is not what the last change has left is replaced as
///     well; without, the end is `changed` and nothing is touched
[[nodiscard]] RestoreResult restoreOriginal(const std::string& path, const std::string& program,
                                            const std::string& version, bool evenIfChanged);

/// Where the original of a file lies that `restoreOriginal` would bring back; "" where there is
/// none. Any thread.
[[nodiscard]] std::string originalOf(const std::string& path);

/// Mends a file in its place; the original goes to the Trash and can be restored. Any thread; may
/// wait for other programs.
[[nodiscard]] FileActionResult mendInPlace(const std::string& path, const MendRequest& request,
                                           const std::string& program, const std::string& version);

/// Writes a version into the root element of a file, whatever stood there, in the file's place; the
/// original goes to the Trash and can be restored. Any thread; may wait for other programs.
/// @param to a version of XMEML or FCPXML, as the root element asks for
[[nodiscard]] FileActionResult setVersionInPlace(const std::string& path, const std::string& to,
                                                 const std::string& program,
                                                 const std::string& version);

/// Writes what the safe mends make of a file as a new file; the file itself stays. Any thread.
/// @param to a name that is free, or gets a number
/// @return `replaced` is where it was written
[[nodiscard]] FileActionResult saveMendedCopy(const std::string& path, const std::string& to);

/// What chosen mends would do, to be looked at. Any thread.
struct MendPreview {
    /// A difference in the unified format; "" where nothing would change.
    std::string difference = {};
    /// Why they cannot be made; "" when they can.
    std::string refusal = {};
    std::size_t count = 0;
    MendRequest request = {};
};

/// @param findings with mends, of the file that was inspected
[[nodiscard]] MendPreview previewMends(const InspectedFile& file,
                                       const std::vector<const Finding*>& findings);
/// The same for all mends of the file that are safe.
[[nodiscard]] std::vector<const Finding*> safelyMendable(const Findings& findings);

}  // namespace vornic

#endif
