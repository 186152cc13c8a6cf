#ifndef VORNIC_TESTS_PLATFORM_TEXT_FORM_H
#define VORNIC_TESTS_PLATFORM_TEXT_FORM_H

#include <cctype>
#include <cstddef>
#include <string_view>

namespace vornic::test {

/// True when the text has the form: "#" stands for a decimal digit, "X" for a hexadecimal one in
/// upper case, every other character for itself.
[[nodiscard]] inline bool hasForm(std::string_view text, std::string_view form) {
    bool fits = text.size() == form.size();
    for (std::size_t index = 0; fits && index < text.size(); ++index) {
        const auto character = static_cast<unsigned char>(text[index]);
        const bool isDigit = std::isdigit(character) != 0;
        switch (form[index]) {
            case '#':
                fits = isDigit;
                break;
            case 'X':
                fits = isDigit || (character >= 'A' && character <= 'F');
                break;
            default:
                fits = text[index] == form[index];
        }
    }
    return fits;
}

}  // namespace vornic::test

#endif
