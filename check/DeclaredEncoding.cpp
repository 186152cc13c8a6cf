#include "check/DeclaredEncoding.h"

#include <algorithm>
#include <string>

namespace vornic {

namespace {

constexpr std::string_view kUTF8 = "UTF-8";
constexpr std::string_view kUTF16 = "UTF-16";

bool isSingleByte(std::string_view encoding) {
    return encoding != kUTF8 && !encoding.starts_with(kUTF16);
}

// Letters of a single-byte encoding that form UTF-8 throughout are not meant as themselves.
bool isUTF8InDisguise(std::string_view bytes) {
    const bool hasLetters = std::any_of(
        bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    return hasLetters && !firstInvalidUTF8(bytes);
}

EncodingClaim judge(std::string_view bytes, std::string_view named, std::string_view real) {
    if (named == real) {
        return isSingleByte(real) && isUTF8InDisguise(bytes) ? EncodingClaim::misleading
                                                             : EncodingClaim::right;
    }
    if (named == kUTF16 && real.starts_with(kUTF16)) {
        return EncodingClaim::right;
    }
    return named.starts_with(kUTF16) && real == kUTF8 ? EncodingClaim::refused
                                                      : EncodingClaim::wrong;
}

}  // namespace

EncodingClaim checkDeclaredEncoding(std::string_view bytes, std::string_view text,
                                    const TextDecoding& decoding, Findings& findings) {
    const std::string_view declared = declaredEncoding(text);
    const std::string_view named = encodingOfName(declared);
    if (declared.empty() || named.empty()) {
        return EncodingClaim::right;
    }
    const EncodingClaim claim = judge(bytes, named, decoding.encoding);
    if (claim == EncodingClaim::right) {
        return claim;
    }
    const std::string_view real = claim == EncodingClaim::misleading ? kUTF8 : decoding.encoding;
    const std::string_view right = real.starts_with(kUTF16) ? kUTF16 : real;
    const auto offset = static_cast<std::size_t>(declared.data() - text.data());
    Finding* const finding = findings.add(
        "xml-declared-encoding"_rule,
        claim == EncodingClaim::refused ? Severity::error : Severity::warning,
        {offset, declared.size()}, {{"declared", declared}, {"real", real}, {"right", right}});
    if (finding != nullptr) {
        finding->mend =
            Mend{claim == EncodingClaim::misleading ? Confidence::ask : Confidence::safe,
                 "write encoding=\"" + std::string(right) + "\"",
                 {{offset, declared.size(), std::string(right)}}};
    }
    return claim;
}

}  // namespace vornic
