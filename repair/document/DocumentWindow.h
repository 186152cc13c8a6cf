#ifndef VORNIC_REPAIR_DOCUMENT_WINDOW_H
#define VORNIC_REPAIR_DOCUMENT_WINDOW_H

#include <string>
#include <string_view>
#include <vector>

#include "repair/document/ConversionDialog.h"
#include "repair/pipeline/RepairResult.h"
#include "ui/alerts/QMAlert.h"

namespace vornic {

/// What a conversion of the dialog has made of a document's file.
struct DialogConversion {
    std::string version;
    /// Where the file as it was lies in the Trash; "" where it was not kept.
    std::string original;
    /// Whether it can be brought back from there.
    bool isUndoable = false;
    /// What else the user should know, a sentence each.
    std::vector<std::string> notes;
};

/// The window of a document with its progress sheet and its conversion dialog, as far as the
/// document drives them. The desktop draws it; a test records what it is told. Main thread only.
///
/// The bar's maximum and value are not told: while the sheet is up the window reads the document's
/// `progressMax` and `progressValue` whenever it paints, so that a run never waits for its bar.
class DocumentWindow : public AlertWindow {
  public:
    // The report text (`infoText`).
    virtual void clearReport() = 0;
    [[nodiscard]] virtual bool reportIsEmpty() const = 0;
    /// Puts text at the end of the report: red for an error, else in the colour of labels; 12
    /// points, bold or plain; afterwards the view is read-only and will be redrawn.
    virtual void insertReportText(std::string_view text, bool isError, bool isBold) = 0;

    // The progress sheet (`windowProgress`, `progressBar`, `progressStatusText`,
    // `progressCancelBtn`).
    virtual void setProgressCancelEnabled(bool enabled) = 0;
    /// While animated, the bar moves (busy) or follows the document's value.
    virtual void startProgressAnimation() = 0;
    virtual void stopProgressAnimation() = 0;
    virtual void setProgressIndeterminate(bool indeterminate) = 0;
    virtual void setProgressStatusText(std::string_view text) = 0;
    [[nodiscard]] virtual bool progressSheetIsVisible() const = 0;
    /// Whether it is attached to this window.
    [[nodiscard]] virtual bool progressSheetIsSheet() const = 0;
    /// Attaches the sheet to this window, in front, and returns at once.
    virtual void beginProgressSheet() = 0;
    /// Takes it off the screen.
    virtual void endProgressSheet() = 0;
    /// Tells how a run has ended, after its sheet is gone.
    virtual void showOutcome(const RepairResult& result) = 0;

    /// Shows a sheet with the standard button and returns at once.
    virtual void beginAlertSheet(std::string_view message, std::string_view info) = 0;

    /// The conversion dialog, which lives as long as the window.
    [[nodiscard]] virtual ConversionDialog& conversionDialog() = 0;
    /// Tells that the file has been converted, also after the dialog was closed.
    virtual void showConverted(const DialogConversion& conversion) = 0;
};

}  // namespace vornic

#endif
