#ifndef VORNIC_SALVAGE_STRUCTURE_H
#define VORNIC_SALVAGE_STRUCTURE_H

#include <string>
#include <string_view>
#include <vector>

#include "formats/FileKind.h"
#include "formats/fcpxml/Version.h"
#include "salvage/Balancer.h"
#include "salvage/MergedChanges.h"
#include "salvage/NameTable.h"

namespace vornic::salvage {

/// The part of a broken text that makes one copy.
struct CopyRange {
    std::size_t offset = 0;
    std::size_t end = 0;
};

/// What turns a broken text into documents whose tags fit.
struct Structure {
    FileKind kind = FileKind::none;
    /// What the file declares; the newest for XMEML and where that is lost.
    fcpxml::Version version;
    NameTable names;
    ChangeLists changes;
    /// One for each root element, in the order of the text.
    std::vector<CopyRange> copies;
    /// Whether the text ends before its root element does.
    bool isCut = false;
    float cost = 0;
};

/// By the name of the root element, and where that is lost by the elements that only one format
/// has; `FileKind::none` where nothing tells.
[[nodiscard]] FileKind guessKind(std::string_view text);

/// Finds the likeliest documents in a text whose markup is broken.
/// @param text UTF-8 without forbidden characters.
[[nodiscard]] Structure findStructure(std::string_view text, FileKind kind,
                                      const Weights& weights = {});

/// Told of each change that is made, with where it is in the copy.
class ChangeSink {
  public:
    virtual ~ChangeSink() = default;
    virtual void made(const Change& change, std::size_t copyOffset) = 0;
};

/// Makes one of the copies. Linear.
[[nodiscard]] std::string makeCopy(std::string_view text, const Structure& structure,
                                   const CopyRange& range, ChangeSink& sink);

}  // namespace vornic::salvage

#endif
