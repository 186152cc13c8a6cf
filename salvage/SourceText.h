#ifndef VORNIC_SALVAGE_SOURCE_TEXT_H
#define VORNIC_SALVAGE_SOURCE_TEXT_H

#include <cstddef>
#include <optional>
#include <string>

#include "base/Error.h"
#include "report/Findings.h"
#include "salvage/OffsetShifts.h"
#include "xml/text/TextDecoding.h"

namespace vornic::salvage {

/// The bytes of a broken file as text that XML allows, whatever bytes are in it, and the way back.
class SourceText {
  public:
    /// Decodes bytes as a check does, and where that fails for single bytes, without them: a byte
    /// or two between letters of a file in UTF-8 are read as Windows-1252, longer runs are dropped,
    /// as are characters that XML forbids. What was done is added to the findings, with offsets of
    /// the text.
    /// @return nothing, with the slot filled, when the encoding is not known.
    [[nodiscard]] static std::optional<SourceText> of(std::string bytes, Findings& findings,
                                                      ErrorSlot& error);

    [[nodiscard]] const std::string& text() const { return text_; }
    [[nodiscard]] const std::string& encoding() const { return encoding_; }

    /// Gives findings whose places are offsets of the text the offsets, lines and columns of the
    /// file. They have to be in the order of the text.
    void place(Findings& findings) const;

  private:
    void decodeLeniently(const std::string& bytes, Findings& findings);
    void tellEncoding(Findings& findings) const;
    void dropForbidden(Findings& findings);

    // The file's characters, with those that XML forbids; empty where there are none of these.
    std::string whole_;
    std::string text_;
    std::string encoding_;
    TextDecoding decoding_;
    // From the text to the whole one, and from that to bytes where single ones were read leniently.
    OffsetShifts toWhole_;
    OffsetShifts toBytes_;
    bool isLenient_ = false;
};

}  // namespace vornic::salvage

#endif
