#ifndef VORNIC_APP_WINDOW_FINDINGS_REPORT_H
#define VORNIC_APP_WINDOW_FINDINGS_REPORT_H

#include <string>

#include "app/window/FindingsTable.h"

namespace vornic {

/// What stands above the findings of a file that are saved.
struct FindingsReportHead {
    /// The program's version.
    std::string version;
    /// "2026-11-22 13:05:00"
    std::string date;
    /// SHA-256 of the file as it was checked, in hexadecimal; "" where it is not known.
    std::string digest;
    /// The same of the original.
    std::string originalDigest;
};

/// Date and digests for a table, read from the files; a digest of a file that has changed since is
/// left out. Any thread.
[[nodiscard]] FindingsReportHead reportHeadFor(const FindingsTable& table, std::string version);

/// The findings of a table with what has become of them, as plain text. Text from files is escaped
/// as `escapedForTerminal` does.
[[nodiscard]] std::string findingsAsText(const FindingsTable& table,
                                         const FindingsReportHead& head);
/// The same as an HTML document without references to anything outside it.
[[nodiscard]] std::string findingsAsHTML(const FindingsTable& table,
                                         const FindingsReportHead& head);
/// The same in JSON (RFC 8259): members "program", "version", "date", "file" and, where there is
/// one, "original", each with "path", "sha256" and "report", which is a report as vornic-check
/// writes it.
[[nodiscard]] std::string findingsAsJSON(const FindingsTable& table,
                                         const FindingsReportHead& head);

}  // namespace vornic

#endif
