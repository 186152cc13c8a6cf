#ifndef VORNIC_SALVAGE_GRAMMAR_H
#define VORNIC_SALVAGE_GRAMMAR_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "formats/FileKind.h"
#include "formats/fcpxml/Definition.h"
#include "salvage/NameTable.h"
#include "salvage/Token.h"

namespace vornic::salvage {

/// What a format allows, as costs: 0 for what is normal, a few for what is never seen.
class Format {
  public:
    virtual ~Format() = default;
    /// A child in a parent behind a previous sibling (`NameTable::kStart` for none).
    [[nodiscard]] virtual float costOfChild(NameId parent, NameId previous, NameId child) = 0;
    [[nodiscard]] virtual float costOfText(NameId parent) = 0;
    /// The end of a parent behind its last child.
    [[nodiscard]] virtual float costOfEnd(NameId parent, NameId last) = 0;
};

/// By the content models of FCPXML. Puts the format's names into the table.
[[nodiscard]] std::unique_ptr<Format> makeFCPXMLFormat(const fcpxml::Definition& definition,
                                                       NameTable& names);
/// By the catalogue of which elements of XMEML stand in which. Puts the format's names into the
/// table.
[[nodiscard]] std::unique_ptr<Format> makeXMEMLFormat(NameTable& names);

/// What is likely in a file: what its format allows, and what the rest of the file does. A broken
/// place is rare in a file, so that what stands in it more than twice is taken for right, and a tag
/// of which there are as many ends as starts for whole.
class Grammar {
  public:
    Grammar(std::unique_ptr<Format> format, const NameTable& names);

    /// Goes once through the whole text. Linear.
    void learn(const std::vector<Token>& tokens);

    [[nodiscard]] float costOfChild(NameId parent, NameId previous, NameId child) {
        return cost(parent, previous, child);
    }
    [[nodiscard]] float costOfText(NameId parent) {
        return cost(parent, NameTable::kStart, NameTable::kText);
    }
    [[nodiscard]] float costOfEnd(NameId parent, NameId last) {
        return cost(parent, last, NameTable::kEnd);
    }
    /// Costs of a child's and an end tag's indentation in an element that is indented by `around`.
    /// Who is indented like the sibling in front adds little.
    [[nodiscard]] float costOfIndent(int around, int previous, int child) const;
    [[nodiscard]] float costOfEndIndent(int start, int end) const;
    [[nodiscard]] int step() const { return step_; }

    /// How many start tags the name has more than end tags.
    [[nodiscard]] int surplus(NameId name) const {
        return name < surplus_.size() ? surplus_[name] : 0;
    }
    [[nodiscard]] bool isKnown(NameId name) const { return names_.isKnown(name); }
    [[nodiscard]] bool isRoot(NameId name) const { return name == fcpxml_ || name == xmeml_; }
    /// The root element that the file should have.
    [[nodiscard]] NameId rootName() const { return root_; }
    void setRootName(NameId root) { root_ = root; }
    /// How often the name begins an element in the text.
    [[nodiscard]] unsigned starts(NameId name) const {
        return name < starts_.size() ? starts_[name] : 0;
    }

  private:
    struct Entry {
        std::uint64_t key = 0;
        std::uint32_t count = 0;
        // Unknown until it is asked for.
        float cost = -1;
    };
    struct Open {
        NameId name;
        NameId last;
        std::int16_t indent;
        // Of the first child; -2 before it.
        std::int16_t firstChild;
    };

    static constexpr NameId kAnything = NameTable::kNameless;

    [[nodiscard]] Entry& entry(NameId parent, NameId previous, NameId child);
    [[nodiscard]] std::uint32_t countOf(NameId parent, NameId previous, NameId child) {
        return entry(parent, previous, child).count;
    }
    void count(NameId parent, NameId previous, NameId child) {
        ++entry(parent, previous, child).count;
    }
    void grow();
    [[nodiscard]] float cost(NameId parent, NameId previous, NameId child);
    [[nodiscard]] float makeCost(NameId parent, NameId previous, NameId child);
    void learnStart(const Token& token);
    void learnEnd(const Token& token);
    void learnLayout(const std::vector<Token>& tokens);
    void finishLayout();

    std::unique_ptr<Format> format_;
    const NameTable& names_;
    NameId fcpxml_;
    NameId xmeml_;
    NameId root_ = NameTable::kOther;
    // Open addressing; a size that is a power of two.
    std::vector<Entry> entries_;
    std::size_t used_ = 0;
    std::vector<int> surplus_;
    std::vector<unsigned> starts_;
    std::vector<Open> open_;
    int step_ = 0;
    float childWeight_ = 0;
    float endWeight_ = 0;
    std::array<std::uint32_t, 65> stepCounts_{};
    std::uint32_t children_ = 0;
    std::uint32_t ends_ = 0;
    std::uint32_t evenEnds_ = 0;
};

}  // namespace vornic::salvage

#endif
