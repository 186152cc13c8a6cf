#ifndef VORNIC_BASE_TEXT_CONVERTER_H
#define VORNIC_BASE_TEXT_CONVERTER_H

#include <cstddef>
#include <string>
#include <string_view>

namespace vornic {

/// Converts text from one encoding to another by the system's iconv, but Mac Roman by a table of
/// our own: the system's has an older form of it, without the euro sign and the apple. One thread
/// at a time.
class TextConverter {
  public:
    /// The name of Mac Roman, which is converted from and to UTF-8 alone.
    static constexpr const char* kMacRoman = "MACINTOSH";

    /// @param from,into names that iconv knows
    TextConverter(const char* from, const char* into);
    ~TextConverter();
    TextConverter(const TextConverter&) = delete;
    TextConverter& operator=(const TextConverter&) = delete;

    /// False when the system has no such converter; nothing can be converted then.
    [[nodiscard]] bool isOpen() const;
    /// Appends what the bytes become to the text, up to the first that cannot be converted.
    /// @return how many of the bytes could be.
    std::size_t convert(std::string_view bytes, std::string& text);

  private:
    enum class Kind { system, fromMacRoman, intoMacRoman };

    std::size_t convertBySystem(std::string_view bytes, std::string& text);

    Kind kind_;
    // iconv's, or -1.
    void* handle_;
};

}  // namespace vornic

#endif
