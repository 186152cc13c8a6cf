#ifndef VORNIC_JOB_JOURNAL_ENTRY_H
#define VORNIC_JOB_JOURNAL_ENTRY_H

#include <cstdint>
#include <string>

#include "platform/files/ContentDigest.h"
#include "platform/files/FileSystem.h"

namespace vornic {

/// A file as the journal knows it.
struct JournalFile {
    /// Of what stands under the name: of a link itself.
    platform::FileIdentity identity = {};
    /// Of the contents, in bytes; a link's are those of its target.
    std::uint64_t size = 0;
    platform::ContentDigest::Value digest{};
    bool isLink = false;
    /// The text of a link; empty where it was not written down.
    std::string linkText = {};
    friend bool operator==(const JournalFile&, const JournalFile&) = default;
};

/// One change of a user's file in its place: the file that stood there went to the Trash, and
/// another one took its name.
struct JournalEntry {
    enum class Action { repair, mend, relink, convert, undo };
    enum class State {
        /// Announced; whether it was made is not known.
        begun,
        done,
        /// The file is what it was before.
        takenBack,
    };

    /// Known all over the journal; never 0.
    std::uint64_t id = 0;
    /// Seconds since 1970-01-01 UTC.
    std::int64_t date = 0;
    std::string program = {};
    std::string version = {};
    Action action = Action::repair;
    /// Absolute.
    std::string file = {};
    /// Where the new file stood before, and the old one between the two moves.
    std::string workingCopy = {};
    JournalFile before = {};
    JournalFile after = {};
    /// The entry that this one takes back, or 0.
    std::uint64_t undoes = 0;
    State state = State::begun;
    /// Where the old file lies in the Trash, once it is done.
    std::string original = {};
    friend bool operator==(const JournalEntry&, const JournalEntry&) = default;
};

}  // namespace vornic

#endif
