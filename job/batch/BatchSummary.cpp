#include "job/batch/BatchSummary.h"

#include <utility>

#include "base/FormatString.h"

namespace vornic {

namespace {

constexpr std::array<std::string_view, kBatchResultCount> kNames = {
    "",         "sound",    "problems", "repaired", "mended",   "converted",
    "relinked", "restored", "not done", "failed",   "cancelled"};

// What follows a number in a summary.
constexpr std::array<std::pair<BatchResult, std::string_view>, 10> kCounted = {
    {{BatchResult::sound, "sound"},
     {BatchResult::findings, "with problems"},
     {BatchResult::repaired, "repaired"},
     {BatchResult::mended, "mended"},
     {BatchResult::converted, "converted"},
     {BatchResult::relinked, "relinked"},
     {BatchResult::restored, "restored"},
     {BatchResult::unable, "left as they were"},
     {BatchResult::failed, "failed"},
     {BatchResult::cancelled, "cancelled"}}};

std::string_view beginningOf(BatchAction action) {
    switch (action) {
        case BatchAction::check:
            return "%@ checked";
        case BatchAction::repair:
            return "Repair of %@";
        case BatchAction::mend:
            return "Mending of %@";
        case BatchAction::convert:
            return "Conversion of %@";
        case BatchAction::relink:
            return "Relinking of %@";
        default:
            return "Restoring of %@";
    }
}

}  // namespace

std::string_view nameOf(BatchResult result) {
    return kNames[static_cast<std::size_t>(result)];
}

bool isFailure(BatchResult result) {
    return result == BatchResult::findings || result == BatchResult::unable ||
           result == BatchResult::failed;
}

std::string BatchSummary::sentence() const {
    std::size_t ended = 0;
    std::string parts;
    for (const auto& [result, words] : kCounted) {
        const std::size_t number = count(result);
        ended += number;
        if (number != 0) {
            const bool isOne = result == BatchResult::unable && number == 1;
            parts += (parts.empty() ? ": " : ", ") +
                     formatString("%zu %@", number, isOne ? "left as it was" : words);
        }
    }
    const std::string all = formatString("%zu %@", files, files == 1 ? "file" : "files");
    const std::string some =
        isCancelled && ended < files ? formatString("%zu of %@", ended, all) : all;
    const std::string_view beginning = beginningOf(action);
    const std::size_t place = beginning.find("%@");
    return std::string(isCancelled ? "Cancelled. " : "")
        .append(beginning.substr(0, place))
        .append(some)
        .append(beginning.substr(place + 2))
        .append(parts + ".")
        .append(complaint.empty() ? "" : " " + complaint);
}

}  // namespace vornic
