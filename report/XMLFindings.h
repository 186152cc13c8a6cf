#ifndef VORNIC_REPORT_XML_FINDINGS_H
#define VORNIC_REPORT_XML_FINDINGS_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "report/Findings.h"
#include "xml/reader/XMLReader.h"

namespace vornic {

/// Makes findings of what the reader mends and of the fault that ends a reading:
///
///     XMLFindings sink(text, findings);
///     const XMLReading reading = readXML(text, XMLMode::tolerant, &builder, &sink);
///     sink.addFault(reading);
///
/// What the reader mends has a safe mend, with the reader's own edits. References to halves of a
/// UTF-16 pair, which the reader takes for text, are findings of their own; two that make a
/// character are one.
class XMLFindings final : public XMLMendSink {
  public:
    /// Both must outlive this.
    XMLFindings(std::string_view text, Findings& findings) : text_(text), findings_(findings) {}

    /// Whether findings of the rule are told by the reader: of the markup, and of references to
    /// characters that XML does not allow.
    [[nodiscard]] static bool tells(RuleId rule);

    void mend(const XMLMend& mend, std::string_view name) override;
    void edit(const XMLEdit& edit) override;
    void dropped(TextSpan characters) override;
    /// Whether the text had to be mended, also where that is not kept as a finding.
    [[nodiscard]] bool hasMends() const { return hasMends_; }

    /// Adds the fault that ended the reading, if one did. What the reader began to mend at that
    /// place is told by the fault alone.
    /// @return the finding of the fault; null when there is none or it was only counted.
    Finding* addFault(const XMLReading& reading);
    /// The same for a fault whose offsets are those of the text.
    Finding* addFault(const XMLFault& fault);

  private:
    // A mend that the reader has announced and not made yet.
    struct Pending {
        RuleId rule;
        std::size_t offset;
        std::string name;
    };

    // Adds the finding of the mend that is pending.
    void addPending();
    // A reference to one half of a character's UTF-16 pair.
    void addHalfPair(std::size_t offset);

    std::string_view text_;
    Findings& findings_;
    std::optional<Pending> pending_;
    // The finding of the last mend; null when it was only counted.
    Finding* last_ = nullptr;
    // Where that was, and by which rule.
    std::optional<std::pair<RuleId, std::size_t>> lastMade_;
    bool hasMends_ = false;
    // Whether `last_` has its own edits, whatever the reader did.
    bool hasOwnEdits_ = false;
    // Behind the last pair of references that is one character.
    std::size_t endOfPair_ = 0;
};

}  // namespace vornic

#endif
