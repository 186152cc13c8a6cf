#ifndef VORNIC_XML_TEXT_SPAN_H
#define VORNIC_XML_TEXT_SPAN_H

#include <cstddef>
#include <string_view>

namespace vornic {

/// A piece of a text, in bytes from its beginning.
struct TextSpan {
    std::size_t offset = 0;
    std::size_t length = 0;

    [[nodiscard]] constexpr std::size_t end() const { return offset + length; }
    [[nodiscard]] constexpr std::string_view of(std::string_view text) const {
        return text.substr(offset, length);
    }
    friend constexpr bool operator==(const TextSpan&, const TextSpan&) = default;
};

}  // namespace vornic

#endif
