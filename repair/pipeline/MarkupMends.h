#ifndef VORNIC_REPAIR_PIPELINE_MARKUP_MENDS_H
#define VORNIC_REPAIR_PIPELINE_MARKUP_MENDS_H

#include <string_view>
#include <vector>

#include "xml/reader/XMLReader.h"

namespace vornic {

/// Which of the reader's edits to make before a text is filtered: all but those that take out what
/// the character filter takes out itself, and reports.
/// @param text that the edits are for
[[nodiscard]] std::vector<XMLEdit> editsBeforeFilter(std::string_view text,
                                                     const std::vector<XMLEdit>& edits);

}  // namespace vornic

#endif
