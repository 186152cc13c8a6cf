#include "formats/xmeml/Number.h"

#include <charconv>

namespace vornic::xmeml {

Number readNumber(std::string_view text) {
    Number number;
    // A plus sign is read by every library but this one.
    text.remove_prefix(text.starts_with('+') && !text.starts_with("+-") ? 1 : 0);
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number.value);
    if (read.ec == std::errc::invalid_argument) {
        return {};
    }
    std::string_view rest(read.ptr, static_cast<std::size_t>(end - read.ptr));
    if (rest.empty()) {
        number.form = read.ec == std::errc() ? NumberForm::whole : NumberForm::tooLarge;
        return read.ec == std::errc() ? number : Number{NumberForm::tooLarge, 0};
    }
    if (rest.size() < 2 || rest[0] != '.' ||
        rest.find_first_not_of("0123456789", 1) != std::string_view::npos) {
        return {};
    }
    const bool isWhole = rest.find_first_not_of('0', 1) == std::string_view::npos;
    number.form = isWhole ? NumberForm::wholeWithFraction : NumberForm::fraction;
    return read.ec == std::errc() ? number : Number{NumberForm::tooLarge, 0};
}

}  // namespace vornic::xmeml
