#include "xml/reader/XMLDeclarationReader.h"

#include <algorithm>
#include <cctype>

#include "base/ASCII.h"
#include "xml/text/TextDecoding.h"

namespace vornic {

namespace {

using xmlchars::is;

bool isVersion(std::string_view value) {
    return value.size() > 2 && value.starts_with("1.") &&
           std::all_of(value.begin() + 2, value.end(), isDigit);
}

bool isEncoding(std::string_view value) {
    return !value.empty() && isLetter(value[0]) &&
           std::all_of(value.begin(), value.end(), [](char c) {
               return isLetter(c) || isDigit(c) || c == '.' || c == '_' || c == '-';
           });
}

bool isStandalone(std::string_view value) {
    return value == "yes" || value == "no";
}

// Goes through the parts of a declaration as long as they are well-formed.
class DeclarationScan {
  public:
    explicit DeclarationScan(std::string_view text) : rest_(text) {}

    bool take(std::string_view expected) {
        if (!rest_.starts_with(expected)) {
            return false;
        }
        rest_.remove_prefix(expected.size());
        return true;
    }
    bool takeSpace() {
        const std::size_t before = rest_.size();
        while (!rest_.empty() && is(rest_[0], xmlchars::kSpace)) {
            rest_.remove_prefix(1);
        }
        return rest_.size() != before;
    }
    bool takePart(std::string_view name, bool (*isValue)(std::string_view)) {
        const std::string_view before = rest_;
        if (takeSpace() && take(name)) {
            takeSpace();
            if (take("=")) {
                takeSpace();
                return takeQuoted(isValue);
            }
        }
        rest_ = before;
        return true;
    }
    [[nodiscard]] std::string_view rest() const { return rest_; }

  private:
    bool takeQuoted(bool (*isValue)(std::string_view)) {
        if (rest_.empty() || (rest_[0] != '"' && rest_[0] != '\'')) {
            return false;
        }
        const std::size_t closing = rest_.find_first_of("\"'<>", 1);
        if (closing == std::string_view::npos || rest_[closing] != rest_[0] ||
            !isValue(rest_.substr(1, closing - 1))) {
            return false;
        }
        rest_.remove_prefix(closing + 1);
        return true;
    }

    std::string_view rest_;
};

// The length of a well-formed declaration that ends with `ending`, or 0.
std::size_t declarationLength(std::string_view text, std::string_view ending) {
    DeclarationScan scan(text);
    const bool versioned = scan.take("<?xml") && scan.rest().find_first_of(" \t\r\n") == 0 &&
                           scan.takePart("version", isVersion);
    const std::size_t afterVersion = scan.rest().size();
    if (!versioned || afterVersion + 5 == text.size() || !scan.takePart("encoding", isEncoding) ||
        !scan.takePart("standalone", isStandalone)) {
        return 0;
    }
    scan.takeSpace();
    return scan.take(ending) ? text.size() - scan.rest().size() : 0;
}

bool beginsDeclaration(std::string_view text) {
    return text.size() >= 5 && text.starts_with("<?") && (text[2] == 'x' || text[2] == 'X') &&
           (text[3] == 'm' || text[3] == 'M') && (text[4] == 'l' || text[4] == 'L') &&
           xmlchars::nameTokenLength(text.data() + 5, text.data() + text.size()) == 0;
}

// How much of the text a malformed declaration takes, or 0 when that is in doubt.
std::size_t malformedLength(std::string_view text) {
    const std::size_t end = text.find_first_of("<>", 1);
    if (end == std::string_view::npos || text[end] == '<') {
        return 0;
    }
    const bool closed = text[end - 1] == '?' && end > 5;
    return closed ? end + 1 : declarationLength(text, ">");
}

// Passes over white space and byte order marks before the declaration or the document.
const char* dropBeginning(XMLInput& in) {
    const char* place = in.begin();
    const char* afterMark = place;
    for (;;) {
        place = in.afterSpace(place);
        if (!in.startsWith(place, kByteOrderMark)) {
            break;
        }
        place += kByteOrderMark.size();
        afterMark = place;
    }
    const auto left = static_cast<std::size_t>(in.end() - place);
    const char* const dropEnd = beginsDeclaration({place, left}) ? place : afterMark;
    if (dropEnd != in.begin()) {
        in.mendOrFault(
            XMLErrorCode::misplacedXMLDeclaration, in.begin(),
            "white space or a byte order mark stands before the XML declaration.",
            "white space or a byte order mark before the XML declaration was passed over");
        in.edit(in.begin(), static_cast<std::size_t>(dropEnd - in.begin()), "");
    }
    return dropEnd;
}

}  // namespace

void readXMLDeclaration(XMLInput& input) {
    const char* const start = dropBeginning(input);
    input.moveTo(start);
    const std::string_view text(start, static_cast<std::size_t>(input.end() - start));
    if (!beginsDeclaration(text)) {
        return;
    }
    std::size_t length = declarationLength(text, "?>");
    if (length == 0) {
        input.mendOrFault(XMLErrorCode::malformedXMLDeclaration, start,
                          "the XML declaration is malformed.",
                          "a malformed XML declaration was read as a right one");
        length = malformedLength(text);
        if (length == 0) {
            input.fault(XMLErrorCode::malformedXMLDeclaration, start,
                        "the XML declaration is malformed, and it is not clear where it ends.");
        }
        input.edit(start, length, R"(<?xml version="1.0" encoding="UTF-8"?>)");
    }
    input.moveTo(start + length);
}

}  // namespace vornic
