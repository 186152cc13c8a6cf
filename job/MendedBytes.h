#ifndef VORNIC_JOB_MENDED_BYTES_H
#define VORNIC_JOB_MENDED_BYTES_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "check/Check.h"
#include "mend/EditList.h"
#include "mend/MendPlan.h"
#include "platform/files/ContentDigest.h"

namespace vornic {

/// Which mends a user wants.
struct MendRequest {
    /// Rules whose mends are made although they ask.
    std::vector<RuleId> asked;
    /// Whether a file in another encoding becomes UTF-8, with every character.
    bool toUTF8 = false;
    /// The mends that are made, and no others, in ascending order; then the file is not looked at
    /// for more. Nothing for all that may be made.
    std::optional<std::vector<ChosenMend>> chosen = {};
    /// Of the bytes that the user has seen: a file with others is not mended. Nothing for any.
    std::optional<platform::ContentDigest::Value> expected = {};
    /// How the file is checked, before and afterwards. Only what these look at is mended.
    CheckOptions check;
};

/// What mends make of the bytes of a file, in memory.
struct MendedBytes {
    /// Without mends, or with a refusal, what they were.
    std::string bytes;
    /// The old bytes; where the encoding is changed, their text in UTF-8.
    std::string old;
    bool isEncodingChanged = false;
    /// From `old` to `bytes`; their text in that encoding.
    EditList edits;
    /// What was made, and what was found and not made, in the order of the file. Places are those
    /// of the old bytes.
    std::vector<MendRecord> records;
    /// Of `bytes`, without the path.
    Report report;
    /// Why nothing may be written although something could be mended; "" otherwise.
    std::string refusal;

    /// Takes what comes of a file while other threads are at work on it. All or nothing is set.
    struct Watcher {
        /// The bytes of the file, while they are checked for the first time; returns before `write`
        /// is called. Of a large file on a thread of its own.
        std::function<void(std::string_view old)> look;
        /// Bytes, and edits of them, that make what is to be written, unless the check that goes on
        /// meanwhile refuses it. What it is given last makes the result.
        std::function<void(std::string_view bytes, const EditList& edits)> write;
        /// Called once when the bytes that were given last have been checked and are the result,
        /// while the report is put together.
        std::function<void()> accept;
    };

    /// Checks a file, makes the mends that may be made, and checks again what came of it, until
    /// nothing is left that waited for another mend. A mend that leaves its own finding or brings
    /// one that was not there is a fault of this program: then nothing is mended, and the refusal
    /// names the rule. Linear for each round; mends rarely wait for each other. Any thread.
    /// @param watch called on this thread while another one makes the bytes and checks them;
    ///     without it that is done here
    [[nodiscard]] static MendedBytes of(std::string bytes, const MendRequest& request,
                                        const Watcher& watch = {});

    /// What is changed, for people and for `patch`: the difference between the texts, whatever the
    /// encoding of the file.
    [[nodiscard]] std::string difference(std::string_view oldName, std::string_view newName) const;
};

}  // namespace vornic

#endif
