#include "job/batch/BatchFilter.h"

#include "base/Text.h"

namespace vornic {

namespace {

bool has(std::string_view text, const std::string& lowercasedPart) {
    return lowercasedLetters(text).find(lowercasedPart) != std::string::npos;
}

}  // namespace

bool BatchFilter::shows(const BatchRow& row) const {
    if (onlyFailures && !isFailure(row.result)) {
        return false;
    }
    const std::string wanted = lowercasedLetters(text);
    return wanted.empty() || has(row.name, wanted) || has(row.folder, wanted) ||
           has(nameOf(row.result), wanted) || has(row.reason, wanted);
}

}  // namespace vornic
