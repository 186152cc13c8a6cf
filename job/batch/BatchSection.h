#ifndef VORNIC_JOB_BATCH_BATCH_SECTION_H
#define VORNIC_JOB_BATCH_BATCH_SECTION_H

#include <string>
#include <vector>

#include "job/batch/BatchJob.h"
#include "job/batch/BatchRow.h"

namespace vornic {

/// What an action has to say about a file, as part of an HTML document that is well-formed XML as
/// well. All text is escaped.
[[nodiscard]] std::string sectionAbout(const std::string& path, const BatchOutcome& outcome);

/// The parts of the document around the sections: everything up to the table of the files, a line
/// of it, what comes between the table and the sections, and the end.
[[nodiscard]] std::string htmlHead(const std::string& title, const std::string& sentence);
[[nodiscard]] std::string htmlRow(const BatchRow& row, std::size_t number, bool hasSection);
[[nodiscard]] std::string htmlMiddle();
[[nodiscard]] std::string htmlSection(const BatchRow& row, std::size_t number,
                                      const std::string& section);
[[nodiscard]] std::string htmlEnd();

}  // namespace vornic

#endif
