#include "base/StringEncoding.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <utility>

#include <iconv.h>

namespace vornic::platform {
namespace {

using Text = std::optional<std::string>;

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

/// The upper half of Mac Roman, 0x80 to 0xFF. The system's own converter has an older form of it,
/// without the euro sign and the apple.
constexpr std::array<char16_t, 128> kMacRoman{
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3,
    0x00E5, 0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3,
    0x00A7, 0x2022, 0x00B6, 0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA,
    0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D,
    0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1, 0x00CB, 0x00C8, 0x00CD, 0x00CE,
    0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7};

/// The system's name of an encoding; null for one that it is not asked for.
const char* converterName(StringEncoding encoding) {
    constexpr bool kLittle = std::endian::native == std::endian::little;
    switch (encoding) {
        case StringEncoding::japaneseEuc:
            return "EUC-JP";
        case StringEncoding::utf8:
            return "UTF-8";
        case StringEncoding::isoLatin1:
            return "ISO-8859-1";
        case StringEncoding::shiftJis:
            return "SHIFT_JIS";
        case StringEncoding::isoLatin2:
            return "ISO-8859-2";
        case StringEncoding::windowsCyrillic:
            return "CP1251";
        case StringEncoding::windowsLatin1:
            return "CP1252";
        case StringEncoding::windowsGreek:
            return "CP1253";
        case StringEncoding::windowsTurkish:
            return "CP1254";
        case StringEncoding::windowsLatin2:
            return "CP1250";
        case StringEncoding::iso2022Jp:
            return "ISO-2022-JP";
        case StringEncoding::utf16:
            return kLittle ? "UTF-16LE" : "UTF-16BE";
        case StringEncoding::utf16BigEndian:
            return "UTF-16BE";
        case StringEncoding::utf16LittleEndian:
            return "UTF-16LE";
        case StringEncoding::utf32:
            return kLittle ? "UTF-32LE" : "UTF-32BE";
        case StringEncoding::utf32BigEndian:
            return "UTF-32BE";
        case StringEncoding::utf32LittleEndian:
            return "UTF-32LE";
        case StringEncoding::ascii:
        case StringEncoding::macRoman:
            break;
    }
    return nullptr;
}

/// One converter of the system to UTF-8.
class Converter {
  public:
    explicit Converter(const char* from) : handle_(iconv_open("UTF-8", from)) {}
    ~Converter() {
        if (isOpen()) {
            iconv_close(handle_);
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    [[nodiscard]] Text convert(std::string_view bytes) {
        if (!isOpen()) {
            return std::nullopt;
        }
        std::string text;
        std::array<char, 4096> buffer;  // NOLINT: filled by the system
        // The interface takes a pointer to what it only reads.
        char* next =
            const_cast<char*>(bytes.data());  // NOLINT(cppcoreguidelines-pro-type-const-cast)
        std::size_t left = bytes.size();
        while (left > 0) {
            char* out = buffer.data();
            std::size_t room = buffer.size();
            const bool stopped = iconv(handle_, &next, &left, &out, &room) == kFailed;
            if (stopped && errno != E2BIG) {
                return std::nullopt;
            }
            text.append(buffer.data(), buffer.size() - room);
        }
        return text;
    }

  private:
    static constexpr std::size_t kFailed = static_cast<std::size_t>(-1);

    [[nodiscard]] bool isOpen() const {
        return handle_ != reinterpret_cast<iconv_t>(-1);  // NOLINT: as the interface has it
    }

    iconv_t handle_;
};

/// The system's converters let characters above the last one of Unicode through.
bool staysWithinUnicode(std::string_view utf8) {
    constexpr char kLastPlanes = '\xF4';
    constexpr unsigned char kFirstLead = 0xF5;
    constexpr unsigned char kFirstAfterLast = 0x90;
    for (std::size_t index = 0; index < utf8.size(); ++index) {
        const auto byte = static_cast<unsigned char>(utf8[index]);
        if (byte >= kFirstLead ||
            (utf8[index] == kLastPlanes && index + 1 < utf8.size() &&
             static_cast<unsigned char>(utf8[index + 1]) >= kFirstAfterLast)) {
            return false;
        }
    }
    return true;
}

bool isAscii(char byte) {
    return static_cast<unsigned char>(byte) < kMacRoman.size();
}

/// UTF-8 for a character of the basic plane that is no surrogate.
void appendCharacter(std::string& text, char16_t code) {
    constexpr unsigned kContinuation = 0x80;
    constexpr unsigned kSixBits = 0x3F;
    const unsigned value = code;
    if (value < 0x80) {
        text += static_cast<char>(value);
    } else if (value < 0x800) {
        text += static_cast<char>(0xC0U | (value >> 6U));
        text += static_cast<char>(kContinuation | (value & kSixBits));
    } else {
        text += static_cast<char>(0xE0U | (value >> 12U));
        text += static_cast<char>(kContinuation | ((value >> 6U) & kSixBits));
        text += static_cast<char>(kContinuation | (value & kSixBits));
    }
}

std::string decodeMacRoman(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        const auto number = static_cast<unsigned char>(byte);
        appendCharacter(text, isAscii(byte) ? number : kMacRoman[number - kMacRoman.size()]);
    }
    return text;
}

/// Takes a byte order mark off and tells the encoding that it stands for.
StringEncoding takeByteOrderMark(std::string_view& bytes, StringEncoding encoding) {
    using namespace std::literals;
    struct Mark {
        StringEncoding encoding;
        std::string_view bytes;
        StringEncoding meant;
    };
    static constexpr std::array<Mark, 5> kMarks{{
        {StringEncoding::utf8, kUtf8Mark, StringEncoding::utf8},
        {StringEncoding::utf16, "\xFE\xFF"sv, StringEncoding::utf16BigEndian},
        {StringEncoding::utf16, "\xFF\xFE"sv, StringEncoding::utf16LittleEndian},
        {StringEncoding::utf32, "\0\0\xFE\xFF"sv, StringEncoding::utf32BigEndian},
        {StringEncoding::utf32, "\xFF\xFE\0\0"sv, StringEncoding::utf32LittleEndian},
    }};
    for (const Mark& mark : kMarks) {
        if (mark.encoding == encoding && bytes.starts_with(mark.bytes)) {
            bytes.remove_prefix(mark.bytes.size());
            return mark.meant;
        }
    }
    return encoding;
}

}  // namespace

Text decodeString(std::string_view bytes, StringEncoding encoding) {
    if (encoding == StringEncoding::ascii) {
        return std::all_of(bytes.begin(), bytes.end(), isAscii) ? Text(std::string(bytes))
                                                                : std::nullopt;
    }
    if (encoding == StringEncoding::macRoman) {
        return decodeMacRoman(bytes);
    }
    const char* name = converterName(takeByteOrderMark(bytes, encoding));
    Text text = name != nullptr ? Converter(name).convert(bytes) : std::nullopt;
    return text && staysWithinUnicode(*text) ? std::move(text) : std::nullopt;
}

}  // namespace vornic::platform
