#ifndef VORNIC_REPAIR_DOCUMENT_EVENTS_H
#define VORNIC_REPAIR_DOCUMENT_EVENTS_H

#include "job/Events.h"

namespace vornic {

class Document;

/// Turns what a run reports into the operations of its document, one by one. A report begins anew
/// with the line that a repair starts with.
class DocumentEvents : public Events {
  public:
    /// @param document must outlive this
    explicit DocumentEvents(Document& document) : document_(document) {}

    void line(const ReportLine& line) override;
    void logLine(std::string_view text) override;
    void label(std::string_view text) override;
    void progressMaximum(std::int64_t maximum) override;
    void progressValue(std::int64_t value) override;
    void progressIsBusy() override;
    void verdict(const Verdict& verdict) override;

  private:
    Document& document_;
};

}  // namespace vornic

#endif
