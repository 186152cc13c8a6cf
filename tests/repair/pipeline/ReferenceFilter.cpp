#include "tests/repair/pipeline/ReferenceFilter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/Exception.h"
#include "xml/text/TextSpan.h"

namespace vornic::test {

namespace {

using Units = std::u16string;

void append(Units& output, std::string_view ascii) {
    output.append(ascii.begin(), ascii.end());
}

std::size_t lengthOf(char lead) {
    const auto byte = static_cast<unsigned char>(lead);
    return byte < 0x80 ? 1 : (byte < 0xE0 ? 2 : (byte < 0xF0 ? 3 : 4));
}

std::vector<TextSpan> charactersOf(std::string_view text) {
    std::vector<TextSpan> characters;
    for (std::size_t i = 0; i < text.size();) {
        const TextSpan character{i, lengthOf(text[i])};
        characters.insert(characters.end(), character.length == 4 ? 2 : 1, character);
        i = character.end();
    }
    return characters;
}

class SilentObserver : public CharacterFilterObserver {
  public:
    bool isCancelled() override { return false; }
    void removedUnit(std::int64_t /*index*/, TextSpan /*character*/) override {}
    bool finishedUnits(std::int64_t /*first*/, std::int64_t /*last*/) override { return true; }
};

class ReferenceFilter {
  public:
    ReferenceFilter(CharacterFilterObserver& observer, std::string_view text)
        : observer_(observer), input_(unitsOf(text)), characters_(charactersOf(text)) {}

    std::optional<Units> run() {
        for (i_ = 0; i_ < input_.size(); ++i_) {
            if (observer_.isCancelled()) {
                return std::nullopt;
            }
            takeUnit(input_[i_]);
            const auto index = static_cast<std::int64_t>(i_);
            if (!observer_.finishedUnits(index, index)) {
                return std::nullopt;
            }
        }
        return output_;
    }

  private:
    void takeUnit(char16_t u) {
        if (inTag_ || inCDATA_) {
            if (u == 60) {
                append(output_, "&lt;");
                return;
            }
            if (inCDATA_) {
                output_.push_back(u);
                tail(u);
                return;
            }
            classify(u);
            tail(u);
            return;
        }
        switch (u) {
            case 34:
                append(output_, "&quot;");
                break;
            case 39:
                append(output_, "&apos;");
                break;
            case 62:
                append(output_, "&gt;");
                break;
            case 38:
                append(output_, semicolonFollows() ? "&" : "&amp;");
                break;
            default:
                classify(u);
                tail(u);
                return;
        }
        inTag_ = false;
        inCDATA_ = false;
    }

    [[nodiscard]] bool semicolonFollows() const {
        for (std::size_t k = i_; k < std::min(i_ + 6, input_.size()); ++k) {
            if (input_[k] == u';') {
                return true;
            }
        }
        return false;
    }

    void classify(char16_t u) {
        if (u == 9 || u == 10 || u == 13) {
            output_.push_back(u);
        } else if (u < 0x20 || u >= 0xD800) {
            observer_.removedUnit(static_cast<std::int64_t>(i_), characters_[i_]);
        } else if (u >= 0x7F) {
            append(output_, "&#" + std::to_string(static_cast<unsigned>(u)) + ";");
        } else {
            output_.push_back(u);
        }
    }

    void tail(char16_t u) {
        if (u == 62) {
            inTag_ = false;
            if (i_ < 2) {
                throw platform::RangeException("before the beginning");
            }
            if (input_.substr(i_ - 2, 3) == u"]]>") {
                inCDATA_ = false;
            }
        }
        if (u == 60) {
            inTag_ = true;
            if (i_ + 8 < input_.size() && input_.substr(i_, 8) == u"<![CDATA") {
                inCDATA_ = true;
            }
        }
    }

    CharacterFilterObserver& observer_;
    Units input_;
    // The bytes that each unit belongs to.
    std::vector<TextSpan> characters_;
    Units output_;
    std::size_t i_ = 0;
    bool inTag_ = false;
    bool inCDATA_ = false;
};

}  // namespace

std::u16string unitsOf(std::string_view text) {
    std::u16string units;
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lengthOf(text[i]);
        char32_t code = length == 1 ? lead : lead & (0xFFU >> (length + 1));
        for (std::size_t k = 1; k < length; ++k) {
            code = (code << 6U) | (static_cast<unsigned char>(text.at(i + k)) & 0x3FU);
        }
        if (code >= 0x10000) {
            units.push_back(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10U)));
            units.push_back(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FFU)));
        } else {
            units.push_back(static_cast<char16_t>(code));
        }
        i += length;
    }
    return units;
}

std::string textOf(std::u16string_view units) {
    std::string text;
    const auto put = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    for (std::size_t i = 0; i < units.size(); ++i) {
        char32_t code = units[i];
        if (code >= 0xD800 && code < 0xDC00 && i + 1 < units.size()) {
            code = 0x10000 + ((code - 0xD800) << 10U) + (units[++i] - 0xDC00U);
        }
        if (code < 0x80) {
            put(code);
        } else if (code < 0x800) {
            put(0xC0 | (code >> 6U));
            put(0x80 | (code & 0x3FU));
        } else if (code < 0x10000) {
            put(0xE0 | (code >> 12U));
            put(0x80 | ((code >> 6U) & 0x3FU));
            put(0x80 | (code & 0x3FU));
        } else {
            put(0xF0 | (code >> 18U));
            put(0x80 | ((code >> 12U) & 0x3FU));
            put(0x80 | ((code >> 6U) & 0x3FU));
            put(0x80 | (code & 0x3FU));
        }
    }
    return text;
}

std::optional<std::string> referenceFilter(std::string_view text,
                                           CharacterFilterObserver& observer) {
    const std::optional<Units> output = ReferenceFilter(observer, text).run();
    return output ? std::optional(textOf(*output)) : std::nullopt;
}

std::optional<std::string> referenceFilter(std::string_view text) {
    SilentObserver observer;
    return referenceFilter(text, observer);
}

}  // namespace vornic::test
