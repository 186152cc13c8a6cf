#include "repair/pipeline/SourcePlaces.h"

#include <algorithm>

#include "base/Text.h"

namespace vornic {

void SourcePlaces::passEdits(std::size_t offset) {
    while (!edits_.empty()) {
        const XMLEdit& edit = edits_.front();
        const auto change = static_cast<std::ptrdiff_t>(edit.replacement.size()) -
                            static_cast<std::ptrdiff_t>(edit.length);
        const auto end = static_cast<std::ptrdiff_t>(edit.offset + edit.length);
        if (static_cast<std::ptrdiff_t>(offset) < end + surplusBytes_ + change) {
            return;
        }
        surplusBytes_ += change;
        surplusUnits_ +=
            static_cast<std::int64_t>(utf16Length(edit.replacement)) -
            static_cast<std::int64_t>(utf16Length(source_.substr(edit.offset, edit.length)));
        edits_ = edits_.subspan(1);
    }
}

std::size_t SourcePlaces::sourceOffset(std::size_t offset) {
    passEdits(offset);
    const auto source =
        static_cast<std::size_t>(static_cast<std::ptrdiff_t>(offset) - surplusBytes_);
    return edits_.empty() ? source : std::min(source, edits_.front().offset);
}

Place SourcePlaces::of(TextSpan span) {
    Place place;
    if (start_) {
        const std::size_t offset = sourceOffset(span.offset);
        lines_.moveTo(offset);
        place.offset = *start_ + offset;
        place.length = span.length;
        place.line = lines_.line();
        place.column = lines_.column();
    }
    return place;
}

std::int64_t SourcePlaces::sourceIndex(std::int64_t index, std::size_t offset) {
    passEdits(offset);
    return index - surplusUnits_;
}

}  // namespace vornic
