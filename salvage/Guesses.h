#ifndef VORNIC_SALVAGE_GUESSES_H
#define VORNIC_SALVAGE_GUESSES_H

#include <cstddef>
#include <string_view>

#include "report/Findings.h"
#include "salvage/Structure.h"

namespace vornic::salvage {

/// Makes findings of the changes that make a copy: offsets of the broken text in `where`, those of
/// the copy in `inCopy`.
class Guesses final : public ChangeSink {
  public:
    /// All must outlive this.
    Guesses(std::string_view text, const Structure& structure, Findings& findings);

    void made(const Change& change, std::size_t copyOffset) override;

  private:
    Finding* findingOf(const Change& change, TextSpan where);
    Finding* attributeTwice(const Change& change, TextSpan where);
    void tellLostAttributes(const Change& change, TextSpan where, std::size_t copyOffset);
    [[nodiscard]] std::string_view textAt(std::size_t offset, std::size_t length) const;

    std::string_view text_;
    const Structure& structure_;
    Findings& findings_;
    // The finding about the end of a text that was cut off.
    Finding* end_ = nullptr;
    std::size_t open_ = 0;
};

}  // namespace vornic::salvage

#endif
