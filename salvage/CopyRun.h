#ifndef VORNIC_SALVAGE_COPY_RUN_H
#define VORNIC_SALVAGE_COPY_RUN_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/ElementIndex.h"
#include "report/Findings.h"
#include "salvage/AfterCut.h"
#include "salvage/CopyOrigins.h"
#include "salvage/Structure.h"

namespace vornic::salvage {

inline constexpr std::string_view kTooManyFaults =
    "The file has more faults than a damaged project can have.";

/// Makes one of the copies of a broken text, and findings of all that was done for it: offsets of
/// the text in `where`, places of the copy in `inCopy`.
class CopyRun {
  public:
    /// All must outlive this.
    /// @param number of the copy, from 0.
    CopyRun(std::string_view text, Structure& structure, std::size_t number, Findings& findings)
        : text_(text), structure_(structure), number_(number), findings_(findings) {}

    /// @return false when what is left cannot be read; then `refusal` says why.
    [[nodiscard]] bool run();

    [[nodiscard]] std::string takeCopy() { return std::move(copy_); }
    [[nodiscard]] const std::string& refusal() const { return refusal_; }
    /// The version that the copy declares.
    [[nodiscard]] const std::string& version() const { return version_; }

  private:
    [[nodiscard]] bool mendInsideOfLines(const CopyOrigins& origins);
    void declareUTF8();
    void placeReaderMends(const CopyOrigins& origins, std::size_t first);
    void moveInCopy(const OffsetShifts& shifts);
    void makeIndex();
    [[nodiscard]] bool isCutOff() const;
    [[nodiscard]] bool hasLost() const;
    void completeAfterCut();
    void tellParts(const std::vector<AddedPart>& parts);
    void tellLostReferences(const CopyOrigins& origins);
    void placeInCopy();

    std::string_view text_;
    Structure& structure_;
    std::size_t number_;
    Findings& findings_;
    std::size_t first_ = 0;
    std::string copy_;
    std::optional<ElementIndex> index_;
    // What was done to the copy since it was made.
    CopyEdits mends_;
    CopyEdits declaration_;
    CopyEdits parts_;
    std::string version_;
    std::string refusal_;
};

}  // namespace vornic::salvage

#endif
