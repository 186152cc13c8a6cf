#include "picture/TimelineMarks.h"

#include <optional>

#include "xml/text/FileOffsets.h"

namespace vornic {

namespace {

// Finds the places of the text that ascending places of the file belong to.
class TextOffsets {
  public:
    TextOffsets(std::string_view text, const TextDecoding& decoding)
        : text_(text), offsets_(text, decoding) {}

    std::size_t of(std::size_t fileOffset) {
        // Far places are reached by long steps, which end in front of the place.
        while (at_ + kStep <= text_.size() && offsets_.of(at_ + kStep) <= fileOffset) {
            at_ += kStep;
        }
        while (at_ < text_.size() && offsets_.of(at_) < fileOffset) {
            ++at_;
        }
        return at_;
    }

  private:
    static constexpr std::size_t kStep = 4096;

    std::string_view text_;
    FileOffsets offsets_;
    std::size_t at_ = 0;
};

}  // namespace

std::vector<TimelineMark> marksOn(const Timeline& timeline, std::string_view text,
                                  const TextDecoding& decoding, const Findings& findings) {
    std::vector<TimelineMark> marks;
    TextOffsets offsets(text, decoding);
    for (std::size_t number = 0; number < findings.kept().size(); ++number) {
        const Finding& finding = findings.kept()[number];
        // What is about the whole file lies nowhere.
        if (finding.where.line == 0) {
            continue;
        }
        if (const auto item = timeline.itemAt(offsets.of(finding.where.offset))) {
            marks.push_back({*item, finding.severity, finding.message(), number});
        }
    }
    return marks;
}

}  // namespace vornic
