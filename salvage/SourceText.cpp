#include "salvage/SourceText.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/Text.h"
#include "base/Utf8.h"
#include "xml/reader/ForbiddenCharacters.h"
#include "xml/text/FileOffsets.h"
#include "xml/text/TextPlace.h"
#include "xml/text/XMLCharacters.h"

namespace vornic::salvage {

namespace {

constexpr std::size_t kFewBytes = 2;

// Bytes 0x80 to 0x9F of Windows-1252; 0 for those that it lacks.
constexpr std::array<char32_t, 32> kWindowsMarks = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

char32_t windowsCharacter(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value < 0x80 ? value : value < 0xA0 ? kWindowsMarks[value - 0x80U] : value;
}

bool isUTF16(const std::string& bytes) {
    return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

// Whether the bytes are meant to be UTF-8: no other encoding is declared.
bool saysUTF8(const std::string& bytes) {
    constexpr std::size_t kHead = 200;
    const std::string head = lowercasedLetters(bytes.substr(0, kHead));
    const std::string declaration = head.substr(0, head.find("?>"));
    const std::size_t encoding = declaration.find("encoding");
    return encoding == std::string::npos ||
           declaration.find("utf-8", encoding) != std::string::npos ||
           declaration.find("ascii", encoding) != std::string::npos;
}

// Whether the bytes name an encoding that nobody knows, which may itself be damaged.
bool namesUnknownEncoding(const std::string& bytes) {
    constexpr std::size_t kHead = 200;
    const std::string head = bytes.substr(0, std::min(bytes.find("?>"), kHead));
    TextDecoding how;
    ErrorSlot error;
    return head.starts_with("<?xml") && !decodeXMLText(head, how, error) && error &&
           error->code == static_cast<int>(XMLErrorCode::unknownEncoding);
}

// Half of a character beyond the first 65,536 is none; it becomes one that XML forbids.
void clearLoneSurrogates(std::string& bytes) {
    const std::size_t high = bytes.starts_with("\xFE") ? 0 : 1;
    const auto kindOf = [&](std::size_t at) {
        const auto lead = at + 1 < bytes.size() ? static_cast<unsigned char>(bytes[at + high]) : 0U;
        return lead & 0xFCU;
    };
    for (std::size_t at = 2; at + 1 < bytes.size(); at += 2) {
        const bool isFirst = kindOf(at) == 0xD8;
        if (isFirst && kindOf(at + 2) == 0xDC) {
            at += 2;
        } else if (isFirst || kindOf(at) == 0xDC) {
            bytes[at] = '\0';
            bytes[at + 1] = '\0';
        }
    }
}

std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80;
    }));
}

std::size_t invalidRun(const std::string& bytes, std::size_t from) {
    const char* const end = bytes.data() + bytes.size();
    std::size_t at = from;
    while (at < bytes.size() && xmlchars::decode(bytes.data() + at, end).length == 0) {
        ++at;
    }
    return at - from;
}

}  // namespace

std::optional<SourceText> SourceText::of(std::string bytes, Findings& findings, ErrorSlot& error) {
    SourceText source;
    if (isUTF16(bytes) && bytes.size() % 2 != 0) {
        bytes.pop_back();  // half of a character, where the file was cut off
    }
    if (isUTF16(bytes)) {
        clearLoneSurrogates(bytes);
    }
    const bool isUnknown = namesUnknownEncoding(bytes);
    if (isUnknown || (!isUTF16(bytes) && saysUTF8(bytes) && firstInvalidUTF8(bytes))) {
        source.decodeLeniently(bytes, findings);
        if (isUnknown) {
            source.tellEncoding(findings);
        }
    } else {
        std::optional<DecodedText> decoded = decodeXMLText(std::move(bytes), error);
        if (!decoded) {
            return std::nullopt;
        }
        source.text_ = std::move(decoded->text);
        source.decoding_ = std::move(decoded->decoding);
        source.encoding_ = source.decoding_.encoding;
    }
    if (ForbiddenCharacters::runsIn(source.text_) != 0) {
        source.dropForbidden(findings);
    }
    return source;
}

void SourceText::tellEncoding(Findings& findings) const {
    const std::string_view name = declaredEncoding(text_);
    const auto offset = name.empty() ? 0 : static_cast<std::size_t>(name.data() - text_.data());
    findings.add("salvage-encoding-unknown"_rule, {offset, name.size()},
                 {{"encoding", excerpt(name)}});
    findings.sort();
}

void SourceText::decodeLeniently(const std::string& bytes, Findings& findings) {
    isLenient_ = true;
    encoding_ = "UTF-8";
    std::size_t at = bytes.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    toBytes_.add(0, static_cast<std::ptrdiff_t>(at));
    text_.reserve(bytes.size());
    while (at < bytes.size()) {
        const auto invalid = firstInvalidUTF8(std::string_view(bytes).substr(at));
        const std::size_t valid = invalid.value_or(bytes.size() - at);
        text_.append(bytes, at, valid);
        at += valid;
        const std::size_t run = invalidRun(bytes, at);
        if (run == 0) {
            break;
        }
        const std::string_view odd = std::string_view(bytes).substr(at, run);
        const bool isReadable =
            run <= kFewBytes && std::all_of(odd.begin(), odd.end(),
                                            [](char byte) { return windowsCharacter(byte) != 0; });
        const std::size_t offset = text_.size();
        for (const char byte : isReadable ? odd : std::string_view()) {
            appendUtf8(text_, windowsCharacter(byte));
        }
        at += run;
        toBytes_.add(text_.size(),
                     static_cast<std::ptrdiff_t>(at) - static_cast<std::ptrdiff_t>(text_.size()));
        findings.add(
            isReadable ? "salvage-bytes-read-as-windows"_rule : "salvage-bytes-dropped"_rule,
            {offset, text_.size() - offset}, {{"count", run}});
    }
}

void SourceText::dropForbidden(Findings& findings) {
    whole_ = std::move(text_);
    text_.clear();
    text_.reserve(whole_.size());
    // What was told of the whole text gets its place in the remaining one.
    const std::size_t told = findings.kept().size();
    std::size_t moved = 0;
    const auto moveUpTo = [&](std::size_t end, std::size_t removed) {
        for (; moved < told && findings.kept()[moved].where.offset < end; ++moved) {
            Place& where = findings.kept()[moved].where;
            where.offset = std::min(where.offset - removed, text_.size());
        }
    };
    std::size_t at = 0;
    ForbiddenCharacters::forEachRun(whole_, [&](TextSpan run) {
        const std::size_t removed = at - text_.size();
        text_.append(whole_, at, run.offset - at);
        at = run.end();
        moveUpTo(at, removed);
        toWhole_.add(text_.size(), static_cast<std::ptrdiff_t>(at - text_.size()));
        findings.add("salvage-characters-dropped"_rule, {text_.size(), 0},
                     {{"count", characterCount(run.of(whole_))}});
    });
    const std::size_t removed = at - text_.size();
    text_.append(whole_, at);
    moveUpTo(whole_.size() + 1, removed);
}

void SourceText::place(Findings& findings) const {
    TextPlace lines(whole_.empty() ? text_ : whole_);
    FileOffsets offsets(whole_.empty() ? text_ : whole_, decoding_);
    const auto original = [&](std::size_t offset) {
        return isLenient_ ? toBytes_.of(offset) : offsets.of(offset);
    };
    for (Finding& finding : findings.kept()) {
        Place& where = finding.where;
        const std::size_t from = toWhole_.of(where.offset);
        lines.moveTo(from);
        where.line = lines.line();
        where.column = lines.column();
        const std::size_t end = original(toWhole_.of(where.offset + where.length));
        where.offset = original(from);
        where.length = std::max(end, where.offset) - where.offset;
    }
}

}  // namespace vornic::salvage
