#include "salvage/Tokenizer.h"

#include <algorithm>
#include <optional>
#include <string>

#include "salvage/TagReader.h"
#include "xml/reader/XMLReader.h"
#include "xml/text/XMLCharacters.h"

namespace vornic::salvage {

namespace {

using xmlchars::is;
using xmlchars::kSpace;

constexpr std::size_t kNowhere = std::string_view::npos;
constexpr int kTabColumns = 4;
constexpr std::int16_t kDeepest = 30000;

// Where a fixed text stands next, found once for all who ask on the way there.
class NextOf {
  public:
    NextOf(std::string_view text, std::string_view needle) : text_(text), needle_(needle) {}

    [[nodiscard]] std::size_t from(std::size_t at) {
        if (!isKnown_ || next_ < at) {
            next_ = text_.find(needle_, at);
            isKnown_ = true;
        }
        return next_;
    }

  private:
    std::string_view text_;
    std::string_view needle_;
    std::size_t next_ = 0;
    bool isKnown_ = false;
};

class Tokenizer {
  public:
    Tokenizer(std::string_view text, std::string_view rootName, NameTable& names,
              const ValueJudge& judge)
        : text_(text),
          rootStart_("<" + std::string(rootName)),
          rootEnd_("</" + std::string(rootName)),
          rootName_(names.idOf(rootName)),
          tags_(text, names, judge, tokens_.changes),
          commentEnd_(text, "-->"),
          commentStart_(text, "<!--"),
          cdataEnd_(text, "]]>"),
          cdataStart_(text, "<![CDATA["),
          endTag_(text, "</"),
          instructionEnd_(text, "?>"),
          lessThan_(text, "<"),
          greaterThan_(text, ">"),
          newLine_(text, "\n") {}

    Tokens run() && {
        const auto marks = static_cast<std::size_t>(std::count(text_.begin(), text_.end(), '<'));
        tokens_.list.reserve(2 * marks + 2);
        while (at_ < text_.size()) {
            if (text_[at_] == '<' && readMarkup()) {
                continue;
            }
            readText();
        }
        return std::move(tokens_);
    }

  private:
    [[nodiscard]] bool startsHere(std::string_view beginning) const {
        return text_.substr(at_, beginning.size()) == beginning;
    }

    // @return false when the `<` begins no markup.
    bool readMarkup() {
        const std::size_t next = at_ + 1;
        if (next == text_.size()) {
            add(ChangeKind::dropCutTag, at_, 1);
            tokens_.isCut = true;
            at_ = next;
            return true;
        }
        const char c = text_[next];
        if (c == '/') {
            return isRootStartWithSlash() ? readRootStart() : readTag(tags_.readEnd(at_));
        }
        if (c == '?') {
            return readInstruction();
        }
        if (c == '!') {
            return readDeclaration();
        }
        if (startsHere("<DOCTYPE") || startsHere("<xml ")) {
            return dropDeclaration();
        }
        if (xmlchars::nameLength(text_.data() + next, text_.data() + text_.size()) == 0) {
            return false;
        }
        return readTag(tags_.readStart(at_, next));
    }

    // The root's end tag in front of all others, where no start tag of it follows and an end tag
    // does.
    [[nodiscard]] bool isRootStartWithSlash() const {
        return !hasTag_ && startsHere(rootEnd_) && text_.find(rootStart_, at_) == kNowhere &&
               text_.find(rootEnd_, at_ + 1) != kNowhere;
    }

    bool readRootStart() {
        add(ChangeKind::removeJunk, at_ + 1, 1);
        return readTag(tags_.readStart(at_, at_ + 2));
    }

    bool readTag(Token token) {
        if (tags_.isCut()) {
            dropCut(token.offset);
            return true;
        }
        sortChangesFrom(token.offset);
        token.indent = indentOf(token.offset);
        if (emptyRoot_ && (token.kind == TokenKind::end || token.name != rootName_)) {
            openEmptyRoot(tokens_.list[*emptyRoot_]);
        }
        const bool isCandidate =
            (!hasTag_ || emptyRoot_) && token.kind == TokenKind::empty && token.name == rootName_;
        emptyRoot_ = isCandidate ? std::optional(tokens_.list.size()) : std::nullopt;
        hasTag_ = true;
        push(token);
        return true;
    }

    // The file's elements follow: the slash stands where `>` was, or in front of it.
    void openEmptyRoot(Token& root) {
        root.kind = TokenKind::start;
        add(ChangeKind::removeJunk, text_.rfind('/', root.end - 1), 1);
        sortChangesFrom(root.offset);
    }

    // What makes a tag whole is not found in the order of the text.
    void sortChangesFrom(std::size_t offset) {
        auto from = tokens_.changes.end();
        while (from != tokens_.changes.begin() && std::prev(from)->offset >= offset) {
            --from;
        }
        if (!std::is_sorted(from, tokens_.changes.end(), isBefore)) {
            std::stable_sort(from, tokens_.changes.end(), isBefore);
        }
    }

    // What began here was cut off with the text.
    void dropCut(std::size_t from) {
        tokens_.isCut = true;
        Changes& changes = tokens_.changes;
        while (!changes.empty() && changes.back().offset >= from) {
            changes.pop_back();
        }
        add(ChangeKind::dropCutTag, from, text_.size() - from);
        at_ = text_.size();
    }

    void pushOther(std::size_t end) {
        Token token;
        token.kind = TokenKind::other;
        token.offset = static_cast<std::uint32_t>(at_);
        token.end = static_cast<std::uint32_t>(end);
        token.indent = indentOf(at_);
        push(token);
    }

    void push(const Token& token) {
        tokens_.list.push_back(token);
        at_ = token.end;
    }

    void add(ChangeKind kind, std::size_t offset, std::size_t length = 0) {
        Change change;
        change.kind = kind;
        change.offset = static_cast<std::uint32_t>(offset);
        change.length = static_cast<std::uint32_t>(length);
        tokens_.changes.push_back(change);
    }

    // Where the line ends that a comment or the like begins in, which is never closed.
    [[nodiscard]] std::size_t lineEnd(std::size_t from) {
        std::size_t end = std::min(newLine_.from(from), text_.size());
        while (end > from && is(text_[end - 1], kSpace)) {
            --end;
        }
        return end;
    }

    bool readInstruction() {
        const std::size_t end = instructionEnd_.from(at_ + 2);
        const std::size_t markup = lessThan_.from(at_ + 2);
        const bool hasName =
            xmlchars::nameLength(text_.data() + at_ + 2, text_.data() + text_.size()) != 0;
        if (!hasName) {
            return false;
        }
        if (end != kNowhere && (end < markup || newLine_.from(at_ + 2) > end)) {
            return pushReadable(end + 2);
        }
        const std::size_t greaterThan = greaterThan_.from(at_ + 2);
        if (markup == kNowhere && end == kNowhere && greaterThan == kNowhere) {
            dropCut(at_);
            return true;
        }
        std::size_t close = std::min(greaterThan, std::min(markup, lineEnd(at_ + 2)));
        const bool hasEnd = close < text_.size() && text_[close] == '>';
        while (close > at_ && is(text_[close - 1], kSpace)) {
            --close;
        }
        const std::size_t mark = text_[close - 1] == '?' ? 1 : 0;
        const std::size_t behind = close + (hasEnd ? 1 : 0);
        const std::string whole = std::string(text_.substr(at_, close - mark - at_)) + "?>";
        if (!isReadable(whole)) {
            return dropUnreadable(behind);
        }
        add(ChangeKind::closeInstruction, close - mark, behind - (close - mark));
        pushOther(behind);
        return true;
    }

    // A declaration that stays as it is, unless a reader would refuse the file for it.
    bool pushReadable(std::size_t end) {
        if (!isReadable(text_.substr(at_, end - at_))) {
            return dropUnreadable(end);
        }
        pushOther(end);
        return true;
    }

    // The XML declaration and the document type say nothing that is not known; what is meant for
    // other programs stays as a comment.
    bool dropUnreadable(std::size_t end) {
        const bool isKnown = startsHere("<?xml") || startsHere("<!DOCTYPE");
        add(isKnown ? ChangeKind::removeDeclaration : ChangeKind::commentText, at_, end - at_);
        at_ = end;
        return true;
    }

    bool readDeclaration() {
        if (startsHere("<!--")) {
            readComment();
            return true;
        }
        if (startsHere("<![CDATA[")) {
            readCDATA();
            return true;
        }
        if (startsHere("<!DOCTYPE")) {
            readDocumentType();
            return true;
        }
        const std::string_view rest = text_.substr(at_);
        if (rest.size() < 9 && (std::string_view("<!DOCTYPE").starts_with(rest) ||
                                std::string_view("<![CDATA[").starts_with(rest))) {
            dropCut(at_);
            return true;
        }
        return false;
    }

    [[nodiscard]] static bool isReadable(std::string_view declaration) {
        return !readXML(std::string(declaration) + "<a/>", XMLMode::tolerant).fault;
    }

    // Without its mark a declaration would be an element.
    bool dropDeclaration() {
        const std::size_t end = std::min(greaterThan_.from(at_), text_.size() - 1) + 1;
        add(ChangeKind::removeDeclaration, at_, end - at_);
        at_ = end;
        return true;
    }

    void readComment() {
        const std::size_t end = commentEnd_.from(at_ + 4);
        const std::size_t inner = commentStart_.from(at_ + 4);
        const std::size_t line = lineEnd(at_ + 4);
        if (end != kNowhere && inner > end) {
            pushOther(end + 3);
            return;
        }
        const std::size_t close = std::min({line, inner, text_.size()});
        tokens_.isCut = tokens_.isCut || newLine_.from(at_ + 4) == kNowhere;
        // What is left of its end does not count twice.
        const std::string_view content = text_.substr(at_ + 4, close - at_ - 4);
        const std::size_t hyphens = content.ends_with("--") ? 2 : content.ends_with("->") ? 2 : 0;
        add(ChangeKind::closeComment, close - hyphens, hyphens);
        pushOther(close);
    }

    void readCDATA() {
        std::size_t end = cdataEnd_.from(at_ + 9);
        Token token;
        token.kind = TokenKind::text;
        token.name = NameTable::kText;
        token.offset = static_cast<std::uint32_t>(at_);
        const std::size_t inner = cdataStart_.from(at_ + 9);
        if (end != kNowhere && inner > end) {
            token.end = static_cast<std::uint32_t>(end + 3);
            push(token);
            return;
        }
        const std::size_t markup = endTag_.from(at_ + 9);
        end = std::min(markup, text_.size());
        tokens_.isCut = tokens_.isCut || markup == kNowhere;
        std::size_t brackets = 0;
        while (brackets < 2 && text_[end - 1 - brackets] == ']' && end - brackets > at_ + 9) {
            ++brackets;
        }
        add(ChangeKind::closeCDATA, end - brackets, brackets);
        token.end = static_cast<std::uint32_t>(end);
        push(token);
    }

    void readDocumentType() {
        const std::size_t markup = text_.find_first_of("<>[", at_ + 9);
        if (markup == kNowhere) {
            dropCut(at_);
            return;
        }
        if (text_[markup] == '>') {
            static_cast<void>(pushReadable(markup + 1));
            return;
        }
        if (text_[markup] == '[') {
            const std::size_t subset = text_.find("]", markup);
            const std::size_t end = subset == kNowhere ? kNowhere : text_.find('>', subset);
            if (end != kNowhere) {
                static_cast<void>(pushReadable(end + 1));
                return;
            }
        }
        std::size_t close = markup;
        while (is(text_[close - 1], kSpace)) {
            --close;
        }
        if (!isReadable(std::string(text_.substr(at_, close - at_)) + ">")) {
            static_cast<void>(dropUnreadable(close));
            return;
        }
        add(ChangeKind::closeDocumentType, close);
        pushOther(close);
    }

    void readText() {
        const std::size_t from = at_;
        std::size_t end = at_;
        do {
            end = std::min(text_.find('<', end + 1), text_.size());
        } while (end < text_.size() && !isMarkupAt(end));
        at_ = end;
        std::size_t first = from;
        while (first < end && is(text_[first], kSpace)) {
            ++first;
        }
        if (first == end) {
            return;
        }
        std::size_t last = end;
        while (is(text_[last - 1], kSpace)) {
            --last;
        }
        for (std::size_t mark = text_.find('<', from); mark < end;
             mark = text_.find('<', mark + 1)) {
            add(ChangeKind::escapeLessThan, mark, 1);
        }
        Token token;
        token.kind = TokenKind::text;
        token.name = NameTable::kText;
        token.offset = static_cast<std::uint32_t>(first);
        token.end = static_cast<std::uint32_t>(last);
        tokens_.list.push_back(token);
    }

    [[nodiscard]] bool isMarkupAt(std::size_t at) const {
        if (at + 1 == text_.size()) {
            return true;
        }
        const char c = text_[at + 1];
        if (c == '/') {
            return true;
        }
        if (c == '?') {
            return xmlchars::nameLength(text_.data() + at + 2, text_.data() + text_.size()) != 0;
        }
        if (c == '!') {
            const std::string_view rest = text_.substr(at, 9);
            return rest.starts_with("<!--") || rest == "<![CDATA[" || rest == "<!DOCTYPE" ||
                   (rest.size() < 9 && (std::string_view("<!DOCTYPE").starts_with(rest) ||
                                        std::string_view("<![CDATA[").starts_with(rest)));
        }
        return xmlchars::nameLength(text_.data() + at + 1, text_.data() + text_.size()) != 0;
    }

    // The columns in front of what stands first on its line.
    [[nodiscard]] std::int16_t indentOf(std::size_t offset) const {
        std::size_t at = offset;
        int columns = 0;
        while (at > 0 && (text_[at - 1] == ' ' || text_[at - 1] == '\t') && columns < kDeepest) {
            --at;
            columns += text_[at] == '\t' ? kTabColumns : 1;
        }
        if (at > 0 && text_[at - 1] != '\n' && text_[at - 1] != '\r') {
            return Token::kNoIndent;
        }
        return static_cast<std::int16_t>(std::min<int>(columns, kDeepest));
    }

    std::string_view text_;
    std::string rootStart_;
    std::string rootEnd_;
    NameId rootName_;
    Tokens tokens_;
    TagReader tags_;
    NextOf commentEnd_;
    NextOf commentStart_;
    NextOf cdataEnd_;
    NextOf cdataStart_;
    NextOf endTag_;
    NextOf instructionEnd_;
    NextOf lessThan_;
    NextOf greaterThan_;
    NextOf newLine_;
    std::size_t at_ = 0;
    bool hasTag_ = false;
    // The tag before, where it and all in front of it are the root's and empty.
    std::optional<std::size_t> emptyRoot_;
};

}  // namespace

Tokens tokenize(std::string_view text, std::string_view rootName, NameTable& names,
                const ValueJudge& judge) {
    return Tokenizer(text, rootName, names, judge).run();
}

}  // namespace vornic::salvage
