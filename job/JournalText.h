#ifndef VORNIC_JOB_JOURNAL_TEXT_H
#define VORNIC_JOB_JOURNAL_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "job/JournalEntry.h"

/// The journal's lines. Each is a word ("begin" or "end"), the entry's number and fields like
/// "file=/a/Cut%20A.xml", with a blank between them and a line feed at its end; bytes that mean
/// something here, or are no printable ASCII, are percent-encoded.
namespace vornic {

/// "begin 00c0ffee… date=2026-11-22T05:00:00Z program=… …"
[[nodiscard]] std::string beginLine(const JournalEntry& entry);
/// "end 00c0ffee… done original=/…" or "end 00c0ffee… back", by the entry's state.
[[nodiscard]] std::string endLine(const JournalEntry& entry);

/// What a journal's text says, oldest entry first.
struct JournalContents {
    std::vector<JournalEntry> entries;
    /// Where the line of the first entry begins that has no end, or else where the last whole line
    /// ends.
    std::size_t settled = 0;
};

/// Reads a journal. A last line without its end and malformed lines are ignored.
[[nodiscard]] JournalContents parseJournal(std::string_view text);

}  // namespace vornic

#endif
