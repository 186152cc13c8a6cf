#ifndef VORNIC_BASE_FORMAT_READER_H
#define VORNIC_BASE_FORMAT_READER_H

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "base/FormatString.h"

namespace vornic {

/// One conversion of a format, from its percent sign to its letter.
struct FormatConversion {
    /// How wide the argument is said to be: hh, h, any longer word, or not said.
    enum class Length { none, byte, half, wide };

    bool leftJustified = false;
    bool showsPlus = false;
    bool showsBlank = false;
    bool alternate = false;
    bool zeroPadded = false;
    int width = 0;
    std::optional<int> precision;
    Length length = Length::none;
    char letter = 0;
    const FormatArgument* argument = nullptr;
};

/// Takes a format apart into plain text and conversions, each of which takes its arguments. What
/// turns out to be no conversion, or one without all of its arguments, is plain text and takes
/// none.
class FormatReader {
  public:
    FormatReader(std::string_view format, std::span<const FormatArgument> arguments)
        : format_(format), arguments_(arguments) {}

    [[nodiscard]] bool atEnd() const { return position_ == format_.size(); }
    /// The plain text up to the next percent sign or the end.
    [[nodiscard]] std::string_view readText();
    /// Reads what begins with the percent sign at hand.
    /// @param asItStands set to the text to be written when there is no conversion
    [[nodiscard]] std::optional<FormatConversion> readConversion(std::string_view& asItStands);

  private:
    [[nodiscard]] char peek() const { return atEnd() ? '\0' : format_[position_]; }
    std::optional<FormatConversion> parse();
    void parseFlags(FormatConversion& conversion);
    bool parseWidth(FormatConversion& conversion);
    bool parsePrecision(FormatConversion& conversion);
    void parseLength(FormatConversion& conversion);
    std::optional<int> parseField();
    const FormatArgument* takeArgument();

    std::string_view format_;
    std::span<const FormatArgument> arguments_;
    std::size_t position_ = 0;
    std::size_t nextArgument_ = 0;
};

}  // namespace vornic

#endif
