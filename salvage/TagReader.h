#ifndef VORNIC_SALVAGE_TAG_READER_H
#define VORNIC_SALVAGE_TAG_READER_H

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "salvage/Change.h"
#include "salvage/NameTable.h"
#include "salvage/Tokenizer.h"
#include "xml/text/TextSpan.h"

namespace vornic::salvage {

/// Reads one start or end tag after the other, however broken. The changes that make a tag whole
/// are added to a list.
class TagReader {
  public:
    TagReader(std::string_view text, NameTable& names, const ValueJudge& judge, Changes& changes)
        : text_(text), names_(names), judge_(judge), changes_(changes) {}

    /// @param at the `<` of a start tag.
    /// @param nameStart where its name begins.
    [[nodiscard]] Token readStart(std::size_t at, std::size_t nameStart);
    /// @param at the `<` of `</`.
    [[nodiscard]] Token readEnd(std::size_t at);
    /// True when the last tag is where the text was cut off.
    [[nodiscard]] bool isCut() const { return isCut_; }

  private:
    struct Attribute {
        TextSpan name;
        TextSpan value;
        std::size_t end = 0;
    };

    [[nodiscard]] bool isAtEnd() const { return at_ >= text_.size(); }
    [[nodiscard]] char here() const { return text_[at_]; }
    [[nodiscard]] std::size_t nameEnd(std::size_t at) const;
    [[nodiscard]] std::size_t afterSpace(std::size_t at) const;
    /// Whether a `<` comes before the next `>`.
    [[nodiscard]] bool isNextLessThan();
    [[nodiscard]] bool readPart();
    [[nodiscard]] bool readSlash();
    [[nodiscard]] bool readAttribute();
    [[nodiscard]] bool readJunk();
    [[nodiscard]] bool beginsContent(std::size_t value);
    void readValue(Attribute& attribute);
    void readQuotedValue(Attribute& attribute);
    void readBareValue(Attribute& attribute);
    [[nodiscard]] std::size_t unclosedValueEnd(std::size_t from, std::size_t quoteEnd) const;
    [[nodiscard]] bool followsProperly(std::size_t at) const;
    void keepAttribute(const Attribute& attribute);
    void judge(Attribute& first, const Attribute& second);
    void closeTagAt(std::size_t offset);
    [[nodiscard]] Token finishStart(std::size_t at);
    [[nodiscard]] std::size_t splitName(std::size_t nameStart, std::size_t end);
    void add(ChangeKind kind, std::size_t offset, std::size_t length = 0, std::size_t other = 0);

    std::string_view text_;
    NameTable& names_;
    const ValueJudge& judge_;
    Changes& changes_;
    std::size_t at_ = 0;
    // Behind the last part of the tag that belongs to it.
    std::size_t partEnd_ = 0;
    std::size_t nextLessThan_ = 0;
    std::size_t nextGreaterThan_ = 0;
    std::string_view elementName_;
    std::vector<Attribute> attributes_;
    std::unordered_map<std::string_view, std::size_t> attributeIndex_;
    bool isEmpty_ = false;
    bool isCut_ = false;
};

}  // namespace vornic::salvage

#endif
