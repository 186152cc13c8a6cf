#ifndef VORNIC_CHECK_FCPXML_TIME_READER_H
#define VORNIC_CHECK_FCPXML_TIME_READER_H

#include <string_view>

#include "formats/ElementIndex.h"
#include "formats/fcpxml/StoryElement.h"
#include "report/Findings.h"

namespace vornic {

using fcpxml::isStoryItem;
using fcpxml::StoryElement;
using fcpxml::StoryKind;
using fcpxml::TimeAttribute;

/// Reads the times of elements and reports those that are malformed. One thread.
class TimeReader final : public fcpxml::StoryReader {
  public:
    TimeReader(const ElementIndex& index, Findings& findings)
        : StoryReader(index), findings_(findings) {}

  private:
    [[nodiscard]] fcpxml::Time judgedTime(ElementNumber element, std::string_view attribute,
                                          const fcpxml::ParsedTime& parsed,
                                          TextSpan place) const override;
    void addFault(fcpxml::TimeFault fault, ElementNumber element, std::string_view attribute,
                  TextSpan place) const;

    Findings& findings_;
};

}  // namespace vornic

#endif
