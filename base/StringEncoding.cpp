#include "base/StringEncoding.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

#include "base/TextConverter.h"

namespace vornic::platform {
namespace {

using Text = std::optional<std::string>;

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

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
        case StringEncoding::macRoman:
            return TextConverter::kMacRoman;
        case StringEncoding::ascii:
            break;
    }
    return nullptr;
}

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
    return static_cast<unsigned char>(byte) < 0x80;
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
    const char* name = converterName(takeByteOrderMark(bytes, encoding));
    if (name == nullptr) {
        return std::nullopt;
    }
    TextConverter converter(name, "UTF-8");
    std::string text;
    const bool isWhole = converter.isOpen() && converter.convert(bytes, text) == bytes.size();
    return isWhole && staysWithinUnicode(text) ? Text(std::move(text)) : std::nullopt;
}

}  // namespace vornic::platform
