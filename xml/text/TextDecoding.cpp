#include "xml/text/TextDecoding.h"

#include <algorithm>
#include <array>

#include "base/Text.h"
#include "base/TextConverter.h"
#include "base/Utf8.h"
#include "xml/text/TextPlace.h"
#include "xml/text/XMLCharacters.h"
#include "xml/text/XMLErrorCode.h"

namespace vornic {

namespace {

Error encodingError(XMLErrorCode code, std::string description) {
    return {std::string(kXMLErrorDomain), static_cast<int>(code), std::move(description)};
}

// An encoding under one of its names, lower-cased, and under the name that iconv knows.
struct EncodingName {
    std::string_view name;
    const char* converter;
};

constexpr const char* kUTF8 = "UTF-8";
constexpr const char* kUTF16 = "UTF-16";
constexpr const char* kUTF16LittleEndian = "UTF-16LE";
constexpr const char* kUTF16BigEndian = "UTF-16BE";
constexpr const char* kASCII = "ASCII";

constexpr std::array<EncodingName, 26> kEncodings = {{
    {"utf-8", kUTF8},
    {"utf8", kUTF8},
    {"us-ascii", kASCII},
    {"ascii", kASCII},
    {"iso646-us", kASCII},
    {"utf-16", kUTF16},
    {"utf16", kUTF16},
    {"utf-16le", kUTF16LittleEndian},
    {"utf-16be", kUTF16BigEndian},
    {"iso-10646-ucs-2", kUTF16},
    {"ucs-2", kUTF16},
    {"iso-8859-1", "ISO-8859-1"},
    {"iso8859-1", "ISO-8859-1"},
    {"iso_8859-1", "ISO-8859-1"},
    {"latin1", "ISO-8859-1"},
    {"latin-1", "ISO-8859-1"},
    {"l1", "ISO-8859-1"},
    {"windows-1252", "CP1252"},
    {"cp1252", "CP1252"},
    {"cp-1252", "CP1252"},
    {"macintosh", TextConverter::kMacRoman},
    {"mac", TextConverter::kMacRoman},
    {"macroman", TextConverter::kMacRoman},
    {"mac-roman", TextConverter::kMacRoman},
    {"x-mac-roman", TextConverter::kMacRoman},
    {"x-macroman", TextConverter::kMacRoman},
}};

const char* converterFor(std::string_view name) {
    const std::string lowered = lowercased(name);
    const auto found =
        std::find_if(kEncodings.begin(), kEncodings.end(),
                     [&lowered](const EncodingName& encoding) { return encoding.name == lowered; });
    return found == kEncodings.end() ? nullptr : found->converter;
}

std::optional<std::string> convert(std::string_view bytes, const char* converter, TextDecoding& how,
                                   ErrorSlot& error) {
    TextConverter conversion(converter, kUTF8);
    if (!conversion.isOpen()) {
        error = encodingError(XMLErrorCode::unknownEncoding,
                              "The file's encoding, " + std::string(converter) +
                                  ", is not supported on this system.");
        return std::nullopt;
    }
    std::string text;
    text.reserve(bytes.size());
    const std::size_t converted =
        how.markLength + conversion.convert(bytes.substr(how.markLength), text);
    if (converted == bytes.size()) {
        return text;
    }
    how.faultOffset = converted;
    TextPlace place(text);
    place.moveTo(text.size());
    error = encodingError(
        XMLErrorCode::undecodableBytes,
        sentenceWithPlace(place.line(), place.column(),
                          "the bytes here (at offset " + std::to_string(converted) +
                              ") do not belong to the file's encoding, " + converter + "."));
    error->line = place.line();
    error->column = place.column();
    return std::nullopt;
}

// What the first bytes tell about the encoding.
struct Signature {
    std::string_view bytes;
    const char* converter;
    bool isMark;
};

// Longer signatures before those that they begin with. UTF-32 and EBCDIC are named to be refused.
constexpr std::array<Signature, 11> kSignatures = {{
    {std::string_view("\x00\x00\xFE\xFF", 4), "UTF-32", true},
    {std::string_view("\xFF\xFE\x00\x00", 4), "UTF-32", true},
    {kByteOrderMark, kUTF8, true},
    {"\xFE\xFF", kUTF16BigEndian, true},
    {"\xFF\xFE", kUTF16LittleEndian, true},
    {std::string_view("\x00\x00\x00\x3C", 4), "UTF-32", false},
    {std::string_view("\x3C\x00\x00\x00", 4), "UTF-32", false},
    {std::string_view("\x00\x3C\x00", 3), kUTF16BigEndian, false},
    {std::string_view("\x3C\x00", 2), kUTF16LittleEndian, false},
    {std::string_view("\x00\x3C", 2), kUTF16BigEndian, false},
    {"\x4C\x6F\xA7\x94", "EBCDIC", false},
}};

const Signature* signatureOf(std::string_view bytes) {
    const auto* const found = std::find_if(
        kSignatures.begin(), kSignatures.end(),
        [bytes](const Signature& candidate) { return bytes.starts_with(candidate.bytes); });
    return found == kSignatures.end() ? nullptr : &*found;
}

std::optional<std::string> unsupported(std::string_view name, TextDecoding& how, ErrorSlot& error) {
    how.encoding = excerpt(name);
    error = encodingError(XMLErrorCode::unknownEncoding,
                          "The file's encoding, " + how.encoding + ", is not supported.");
    return std::nullopt;
}

// Makes the text of bytes, of which something may be known.
class Decoder {
  public:
    Decoder(const TextSurvey* survey, TextDecoding& how, ErrorSlot& error)
        : survey_(survey), how_(how), error_(error) {}

    std::optional<std::string> decode(std::string bytes) {
        const Signature* const signature = signatureOf(bytes);
        if (signature == nullptr) {
            return decodeDeclared(std::move(bytes));
        }
        const std::string_view encoding = signature->converter;
        how_.markLength = signature->isMark ? signature->bytes.size() : 0;
        if (encoding == kUTF8) {
            return decodeUTF8(std::move(bytes));
        }
        if (!encoding.starts_with(kUTF16)) {
            return unsupported(encoding, how_, error_);
        }
        how_.encoding = encoding;
        return convert(bytes, signature->converter, how_, error_);
    }

  private:
    std::optional<std::string> decodeDeclared(std::string bytes) {
        const std::string name(declaredEncoding(bytes));
        if (name.empty()) {
            return decodeUTF8(std::move(bytes));
        }
        const char* const converter = converterFor(name);
        if (converter == nullptr) {
            return unsupported(firstInvalidUTF8(name) ? "unreadable" : name, how_, error_);
        }
        // A declaration that can be read byte by byte is not UTF-16, whatever it says.
        const std::string_view encoding = converter;
        if (encoding == kUTF8 || encoding.starts_with(kUTF16)) {
            return decodeUTF8(std::move(bytes));
        }
        how_.encoding = converter;
        return convert(bytes, converter, how_, error_);
    }

    std::optional<std::string> decodeUTF8(std::string bytes) {
        const TextSurvey survey = survey_ == nullptr ? TextSurvey(bytes) : *survey_;
        if (survey.isUTF8()) {
            how_.forbidden = survey.forbidden();
        } else {
            how_.faultOffset = firstInvalidUTF8(bytes).value_or(0);
        }
        return textFromUTF8(std::move(bytes), survey, error_);
    }

    const TextSurvey* survey_;
    TextDecoding& how_;
    ErrorSlot& error_;
};

std::optional<std::string> decode(std::string bytes, TextDecoding& how, ErrorSlot& error) {
    return Decoder(nullptr, how, error).decode(std::move(bytes));
}

}  // namespace

std::string_view declaredEncoding(std::string_view text) {
    constexpr std::string_view kKeyword = "encoding";
    if (!text.starts_with("<?xml")) {
        return {};
    }
    const std::string_view declaration = text.substr(0, text.find('>'));
    const std::size_t keyword = declaration.find(kKeyword);
    if (keyword == std::string_view::npos) {
        return {};
    }
    const std::size_t opening =
        declaration.find_first_not_of(" \t\r\n=", keyword + kKeyword.size());
    if (opening == std::string_view::npos ||
        (declaration[opening] != '"' && declaration[opening] != '\'')) {
        return {};
    }
    const std::size_t closing = declaration.find(declaration[opening], opening + 1);
    return closing == std::string_view::npos
               ? std::string_view()
               : declaration.substr(opening + 1, closing - opening - 1);
}

std::string_view encodingOfName(std::string_view name) {
    const char* const converter = converterFor(name);
    return converter == nullptr ? std::string_view() : std::string_view(converter);
}

std::optional<std::size_t> firstInvalidUTF8(std::string_view bytes) {
    const char* const end = bytes.data() + bytes.size();
    std::size_t offset = 0;
    while (offset != bytes.size()) {
        const char* const at = bytes.data() + offset;
        const std::size_t length = xmlchars::isASCII(*at) ? asciiPrefixLength(bytes.substr(offset))
                                                          : xmlchars::decode(at, end).length;
        if (length == 0) {
            return offset;
        }
        offset += length;
    }
    return std::nullopt;
}

std::optional<std::string> textFromUTF8(std::string bytes, ErrorSlot& error) {
    const TextSurvey survey(bytes);
    return textFromUTF8(std::move(bytes), survey, error);
}

std::optional<std::string> textFromUTF8(std::string bytes, const TextSurvey& survey,
                                        ErrorSlot& error) {
    const std::size_t markLength = bytes.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    if (survey.isUTF8()) {
        bytes.erase(0, markLength);
        return bytes;
    }
    const std::size_t invalid = firstInvalidUTF8(bytes).value_or(0);
    TextPlace place(std::string_view(bytes).substr(markLength));
    place.moveTo(invalid - markLength);
    error = Error{std::string(kTextErrorDomain), static_cast<int>(XMLErrorCode::invalidUTF8),
                  sentenceWithPlace(place.line(), place.column(),
                                    "the bytes here (at offset " + std::to_string(invalid) +
                                        ") are not UTF-8 text."),
                  place.line(), place.column()};
    return std::nullopt;
}

std::optional<std::string> decodeXMLBytes(std::string bytes, ErrorSlot& error) {
    TextDecoding ignored;
    return decode(std::move(bytes), ignored, error);
}

std::optional<std::string> decodeXMLText(std::string bytes, TextDecoding& how, ErrorSlot& error) {
    return decode(std::move(bytes), how, error);
}

std::optional<std::string> decodeXMLText(std::string bytes, const TextSurvey& survey,
                                         TextDecoding& how, ErrorSlot& error) {
    return Decoder(&survey, how, error).decode(std::move(bytes));
}

std::optional<DecodedText> decodeXMLText(std::string bytes, ErrorSlot& error) {
    TextDecoding how;
    std::optional<std::string> text = decode(std::move(bytes), how, error);
    if (!text) {
        return std::nullopt;
    }
    return DecodedText{std::move(*text), std::move(how)};
}

std::optional<std::string_view> textWithin(std::string_view bytes, TextDecoding& how) {
    const Signature* const signature = signatureOf(bytes);
    if (signature == nullptr) {
        const std::string name(declaredEncoding(bytes));
        const char* const converter = name.empty() ? kUTF8 : converterFor(name);
        const std::string_view encoding = converter == nullptr ? "" : converter;
        if (encoding != kUTF8 && !encoding.starts_with(kUTF16)) {
            return std::nullopt;
        }
    } else if (signature->converter != std::string_view(kUTF8)) {
        return std::nullopt;
    }
    const TextSurvey survey(bytes);
    if (!survey.isUTF8()) {
        return std::nullopt;
    }
    how.forbidden = survey.forbidden();
    how.encoding = kUTF8;
    how.markLength = signature == nullptr ? 0 : signature->bytes.size();
    return bytes.substr(how.markLength);
}

std::optional<std::string> encodeText(std::string_view text, const std::string& encoding) {
    if (encoding == kUTF8) {
        return std::string(text);
    }
    TextConverter conversion(kUTF8, encoding.c_str());
    std::string bytes;
    if (!conversion.isOpen() || conversion.convert(text, bytes) != text.size()) {
        return std::nullopt;
    }
    return bytes;
}

}  // namespace vornic
