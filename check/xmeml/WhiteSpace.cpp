#include "check/xmeml/WhiteSpace.h"

#include "xml/text/XMLCharacters.h"

namespace vornic::xmeml {

namespace {

// Goes through a text without the white space beside its tags.
class Reader {
  public:
    explicit Reader(std::string_view text) : text_(text) { skip(); }

    [[nodiscard]] bool isAtEnd() const { return at_ == text_.size(); }
    [[nodiscard]] char character() const { return text_[at_]; }
    void next() {
        ++at_;
        skip();
    }

  private:
    void skip() {
        if (at_ < literalEnd_) {
            return;
        }
        const std::size_t start = at_;
        while (at_ < text_.size() && xmlchars::is(text_[at_], xmlchars::kSpace)) {
            ++at_;
        }
        const bool isBesideTag =
            start == 0 || text_[start - 1] == '>' || at_ == text_.size() || text_[at_] == '<';
        literalEnd_ = at_;
        at_ = isBesideTag ? at_ : start;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    // Up to here every character counts.
    std::size_t literalEnd_ = 0;
};

}  // namespace

bool equalButForWhiteSpace(std::string_view left, std::string_view right) {
    Reader l(left);
    Reader r(right);
    while (!l.isAtEnd() && !r.isAtEnd() && l.character() == r.character()) {
        l.next();
        r.next();
    }
    return l.isAtEnd() && r.isAtEnd();
}

TextSpan withSpaceBefore(std::string_view text, TextSpan span) {
    std::size_t start = span.offset;
    while (start != 0 && xmlchars::is(text[start - 1], xmlchars::kSpace)) {
        --start;
    }
    return {start, span.end() - start};
}

}  // namespace vornic::xmeml
