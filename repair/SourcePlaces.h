#ifndef VORNIC_REPAIR_SOURCE_PLACES_H
#define VORNIC_REPAIR_SOURCE_PLACES_H

#include <cstddef>
#include <optional>
#include <string_view>

#include "report/Place.h"
#include "xml/TextPlace.h"
#include "xml/TextSpan.h"

namespace vornic {

/// Where in the user's file the bytes of a text are that a repair reads. Places that ascend cost
/// one pass over the text, however many they are.
class SourcePlaces {
  public:
    /// @param text must outlive this
    /// @param start the offset in the file of the text's first byte; nothing for a text of which
    ///     too little is left to tell places, whose findings are about the file as a whole
    SourcePlaces(std::string_view text, std::optional<std::size_t> start)
        : text_(text), start_(start), lines_(text) {}

    [[nodiscard]] std::string_view text() const { return text_; }
    [[nodiscard]] Place of(TextSpan span) {
        Place place;
        if (start_) {
            lines_.moveTo(span.offset);
            place.offset = *start_ + span.offset;
            place.length = span.length;
            place.line = lines_.line();
            place.column = lines_.column();
        }
        return place;
    }

  private:
    std::string_view text_;
    std::optional<std::size_t> start_;
    TextPlace lines_;
};

}  // namespace vornic

#endif
