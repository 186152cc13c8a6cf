#include "xml/text/NumberReference.h"

#include <charconv>

namespace vornic {

NumberReference numberReferenceAt(std::string_view text) {
    constexpr std::size_t kLongest = 16;
    if (!text.starts_with("&#")) {
        return {};
    }
    const std::size_t end = text.substr(0, kLongest).find(';');
    if (end == std::string_view::npos) {
        return {};
    }
    std::string_view digits = text.substr(2, end - 2);
    const bool isHexadecimal = digits.starts_with('x');
    digits.remove_prefix(isHexadecimal ? 1 : 0);
    NumberReference reference;
    const char* const last = digits.data() + digits.size();
    const auto [stop, error] =
        std::from_chars(digits.data(), last, reference.number, isHexadecimal ? 16 : 10);
    reference.length = error == std::errc() && stop == last ? end + 1 : 0;
    return reference;
}

}  // namespace vornic
