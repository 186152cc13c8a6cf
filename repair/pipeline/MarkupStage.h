#ifndef VORNIC_REPAIR_PIPELINE_MARKUP_STAGE_H
#define VORNIC_REPAIR_PIPELINE_MARKUP_STAGE_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Error.h"
#include "base/StopToken.h"
#include "repair/pipeline/RepairReport.h"
#include "repair/pipeline/SourcePlaces.h"
#include "repair/pipeline/Stage.h"
#include "xml/reader/XMLReader.h"
#include "xml/tree/XMLDocument.h"

namespace vornic {

/// The text of a file, or what is left of it.
struct SourceText {
    std::string text;
    /// The offset in the file of the first byte; nothing when that can't be determined.
    std::optional<std::size_t> start;
    /// For a text with mends in it: the text as it was, and the mends.
    std::string source{};
    std::vector<XMLEdit> edits{};
    /// Of the text.
    XMLForbidden forbidden = XMLForbidden::unknown;

    /// The text as it was.
    [[nodiscard]] std::string_view unmended() const { return edits.empty() ? text : source; }
    /// The text must stay where it is as long as they are used.
    [[nodiscard]] SourcePlaces places() const;
};

/// A text that was read as XML.
struct LoadedText {
    SourceText text;
    /// Whether it can be read at all.
    bool hasDocument = false;
    /// Of the text as it is, where it has no fault and nothing was mended in it.
    std::optional<XMLReading> reading{};
};

/// The stages of a repair that read the markup: mend it, filter its characters, read it strictly.
/// They say what they do and find in the given order. One thread, the run's.
class MarkupStage {
  public:
    /// All must outlive this. @param error the run's slot, which is filled and never emptied
    MarkupStage(RepairReport& report, const StopToken& stop, ErrorSlot& error)
        : report_(report), stop_(stop), error_(error) {}

    /// Reads the text and mends it; filters one that can't be mended and reads it strictly.
    [[nodiscard]] Stage<LoadedText> load(SourceText text);
    /// Filters a text that was loaded and reads it strictly.
    /// @return null for a text that the filter has left, or made, unreadable.
    [[nodiscard]] Stage<std::unique_ptr<XMLDocument>> filterAndParse(LoadedText loaded);

  private:
    struct Filtered {
        std::string text;
        XMLReading reading;
    };

    [[nodiscard]] Stage<LoadedText> filterAfterFailedLoad(SourceText text);
    [[nodiscard]] Stage<Filtered> readFiltered(SourceText text, std::optional<XMLReading> reading);
    [[nodiscard]] Stage<Done> sayMends(const std::vector<XMLMend>& mends);
    void countFilteredFault(XMLFault fault, const SourceText& text);

    RepairReport& report_;
    const StopToken& stop_;
    ErrorSlot& error_;
};

}  // namespace vornic

#endif
