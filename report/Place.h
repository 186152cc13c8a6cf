#ifndef VORNIC_REPORT_PLACE_H
#define VORNIC_REPORT_PLACE_H

#include <cstddef>
#include <string>

namespace vornic {

/// Where something is in a user's file.
struct Place {
    /// Bytes of the file. While a check runs, bytes of the text that it reads; `PlaceFinder` makes
    /// them the file's and fills in the rest.
    std::size_t offset = 0;
    std::size_t length = 0;
    /// 1-based; columns count Unicode characters. 0 for a finding about the file as a whole.
    std::size_t line = 0;
    std::size_t column = 0;
    /// The element that the place lies in, as editing programs print it:
    /// "/fcpxml[1]/resources[1]/format[16]". "" outside of all elements.
    std::string path;
    /// What a user calls it: the name of the nearest clip, sequence or file around the place; ""
    /// for none.
    std::string name;
    /// Where in its sequence, such as "01:00:04:12"; "" where that is not known.
    std::string timecode;

    friend bool operator==(const Place&, const Place&) = default;
};

}  // namespace vornic

#endif
