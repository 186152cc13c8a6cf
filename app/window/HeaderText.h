#ifndef VORNIC_APP_WINDOW_HEADER_TEXT_H
#define VORNIC_APP_WINDOW_HEADER_TEXT_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/window/Inspection.h"
#include "formats/FileKind.h"
#include "repair/pipeline/RepairResult.h"

namespace vornic {

/// The sign beside the sentence of a window's header. A tick stands for a file with which all is
/// well and to which nothing was done that its user may not want.
enum class HeaderSign { none, good, warning, bad, neutral };

/// What a header offers to do about what it says.
enum class HeaderOffer {
    /// Show the lines that legal characters were removed from.
    showRemoved,
    /// Restore the original and make the safe mends.
    bringBackAndMend,
    /// Show the safe mends, which may then be made.
    mend,
    restoreOriginal,
    /// Repair the file as what its root element says, whatever its name says.
    treatAsContents,
    /// Choose the version that the root element is to declare.
    setVersion,
    /// Show what could be guessed of a file that is no XML any more, which may then be saved.
    saveSalvagedCopy,
};

/// What is known when the header is written.
struct HeaderFacts {
    enum class Action { none, check, repair, mend, restore, conversion, relink };
    /// What the window has done with the file last.
    Action action = Action::none;
    /// Of a repair.
    RepairOutcome outcome = RepairOutcome::stopped;
    /// Why a repair could not take the file, in the words of its report; "" where it says nothing.
    std::string reason = {};
    /// The version of a conversion.
    std::string version = {};
    /// How many media were relinked.
    std::size_t relinked = 0;
    /// Whether something stands at the file's path.
    bool isThere = true;
    /// Whether another program has written the file after the window's last action.
    bool hasChangedSince = false;
    /// Whether the change can be taken back.
    bool isUndoable = false;
    /// What was found; null while the file is looked at.
    std::shared_ptr<const Inspection> inspection = {};
};

struct HeaderText {
    HeaderSign sign = HeaderSign::none;
    /// One sentence, without a full stop.
    std::string sentence;
    std::vector<HeaderOffer> offers;
    /// What `treatAsContents` takes the file for.
    FileKind contents = FileKind::none;
};

[[nodiscard]] HeaderText headerText(const HeaderFacts& facts);

/// "version 1.10 · 12.3 KB". Where the contents are not of the kind that the file's name says, they
/// are named.
[[nodiscard]] std::string factsOf(const Report& report, FileKind byName);

/// The number with a comma after every three digits: "1,180".
[[nodiscard]] std::string withThousands(std::uint64_t number);

/// "1 problem", "1,180 problems".
[[nodiscard]] std::string counted(std::uint64_t count, std::string_view one, std::string_view many);

/// Whether a fault of the markup that nothing mends has ended the reading of a file.
[[nodiscard]] bool endsAtAFault(const Findings& findings);

/// How many of a file's findings have a mend that may be made without asking.
[[nodiscard]] std::size_t safeMendCount(const Findings& findings);

}  // namespace vornic

#endif
