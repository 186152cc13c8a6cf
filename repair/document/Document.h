#ifndef VORNIC_REPAIR_DOCUMENT_H
#define VORNIC_REPAIR_DOCUMENT_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/Error.h"
#include "convert/ConversionAnalysis.h"
#include "convert/ConversionOffer.h"
#include "convert/VersionConversion.h"
#include "formats/FileKind.h"
#include "job/ConversionCommit.h"
#include "job/NamedSources.h"
#include "job/SwapObserver.h"
#include "repair/document/ConversionRun.h"
#include "repair/document/DocumentWindow.h"
#include "repair/pipeline/RepairResult.h"
#include "xml/tree/XMLDocument.h"

namespace vornic {

/// One open Final Cut Pro XML file: its flags, its report and its window. Repairs and analyses run
/// on threads of their own, which keep the document alive until they end; every operation that
/// touches the window runs on the main thread and is waited for. Flags may be read and written from
/// any thread.
///
/// Without a window (`hasGUI` false) report lines go to standard output, nothing is drawn, asked or
/// alerted, and operations run in place on the calling thread.
class Document : public std::enable_shared_from_this<Document> {
  public:
    using Text = std::optional<std::string>;
    using AlertDictionary = std::map<std::string, std::string>;

    /// A new document with `hasGUI` true and no file yet.
    [[nodiscard]] static std::shared_ptr<Document> create();
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    // The document's life.

    /// The name of the interface that the window is made from.
    [[nodiscard]] static std::string windowNibName() { return "Document"; }
    /// Gives the document its window. Main thread.
    void setWindow(std::shared_ptr<DocumentWindow> window);
    /// Remembers the file and starts its repair on a new thread; the contents are not kept.
    /// @param error when not null, filled with an error of the OS-status domain with code -4,
    ///     although the result is success.
    /// @return true.
    bool readFromURL(const std::string& path, std::string_view ofType, Error* error);
    /// Documents cannot be printed. @return null.
    [[nodiscard]] static std::nullptr_t printOperationWithSettings() { return nullptr; }
    /// True when the window may close; asks first while a repair runs. Main thread.
    [[nodiscard]] bool windowShouldClose();
    /// Ends the document's life on the screen: a run that is still going stops at its next check
    /// point and finds no window any more. Main thread.
    void close();
    /// The document's file, or nothing.
    [[nodiscard]] Text filePath() const;
    void setFilePath(Text path);

    // Repair.

    /// The user's action: starts a repair of the document's file on a new thread. Does nothing
    /// without a file. Main thread.
    void repair();
    /// The same for a file whose name says that it is of another kind.
    void repairAs(FileKind kind);
    /// Runs the whole repair of a file on the calling thread, with all that is shown of it. @return
    /// what came of it.
    RepairResult startRepair(const std::string& path);
    /// The function of the same name for any document.
    [[nodiscard]] std::string stripInvalidCharsFromData(std::string_view data);
    /// The function of the same name for this document. @return nothing when it was cancelled.
    [[nodiscard]] Text filterInvalidCharsInString(std::string_view text);

    // Conversion.

    /// Opens the conversion dialog and starts the analysis of the document's file on a new thread.
    /// Shows an alert instead when the file is gone. An earlier turn of the dialog that has not
    /// begun to write ends without writing. Main thread.
    void showConvertDialog();
    /// Closes the conversion dialog. A conversion ends without writing; one that is writing already
    /// is finished, and the window then says so. Main thread.
    void closeConvertDialog();
    /// Converts the document's file to the version chosen in the menu, then analyses it again, all
    /// on the calling thread. Does nothing without a file, and nothing while another conversion or
    /// a repair of the document is at work. Main thread.
    void convertVersion();
    /// The action of the convert button: `convertVersion` on a new thread, so that the window stays
    /// alive meanwhile. File and version are those of this moment. Main thread.
    void convertVersionOnThread();
    /// Rewrites an XMEML document to a version and saves it in place of the file, atomically, with
    /// the type and creator codes of Final Cut Pro XML. A downgrade below the document's minimum
    /// removes the elements that the target does not know; with a window the user is asked first,
    /// and without an agreement, also when nobody could be asked, the file is not touched. Failures
    /// are logged and printed, and shown as alerts when there is a window. What is raised inside
    /// (by an alert, say) passes on. The calling thread, which may be any.
    /// @param version the target, a decimal string, written as it stands
    void convertXMEMLVersion(const std::string& version, std::unique_ptr<XMLDocument> forDocument,
                             const std::string& filePath);
    /// Removes the elements, with all that is in them, that every catalogue version above the
    /// target introduced. Any thread.
    /// @return the same document, or null after an exception, which is logged.
    [[nodiscard]] std::unique_ptr<XMLDocument> stripTagsFromXMLDoc(
        std::unique_ptr<XMLDocument> document, const std::string& forVersion);
    /// Works out a file's version, the release that it needs and the lowest version that holds it
    /// without loss, and fills the conversion dialog, on the calling thread, which may be any.
    /// Messages go to the log and to alerts without a parent window. A run that fails leaves the
    /// labels, the menu and the minimum as they were; each run stops the busy indicator at its end.
    void populateConversionDataForFile(const Text& path);
    /// True when the text holds an element that the version introduced ("1" is always required).
    /// Logs the element, and reports a catalogue that cannot be loaded or does not know the
    /// version.
    [[nodiscard]] bool xmlStringRequiresVersion(std::string_view xmlString,
                                                const std::string& version);
    /// The document's window, parent of its sheets; null for a headless document. Any thread.
    [[nodiscard]] QMAlert::Window windowMain() const;
    /// Enables or disables the version menu and the convert button. Any thread; without a window
    /// nothing happens.
    void enableConvertInterface();
    void disableConvertInterface();

    // Flags.

    [[nodiscard]] bool hasGUI() const { return hasGUI_; }
    void setHasGUI(bool hasGUI) { hasGUI_ = hasGUI; }
    [[nodiscard]] int xmlType() const { return xmlType_; }
    void setXmlType(int type) { xmlType_ = type; }
    /// The kind of file that the number stands for.
    [[nodiscard]] FileKind fileKind() const { return fileKindOfType(xmlType_); }
    [[nodiscard]] bool fileHasErrs() const;
    void setFileHasErrs(bool hasErrors);
    [[nodiscard]] bool fileWasRepaired() const;
    void setFileWasRepaired(bool wasRepaired);
    /// True from `startProgress` to `endProgress`.
    [[nodiscard]] bool isRunning() const;
    /// True until the window has been told what came of a conversion. Main thread.
    [[nodiscard]] bool isConverting() const;
    /// True once the user has cancelled, the document was closed, or the interruption flag is set.
    [[nodiscard]] bool progressCancelled() const;
    void setProgressCancelled(bool cancelled);
    /// The lowest version that loses nothing; 0 until an analysis has run.
    [[nodiscard]] std::int64_t minDowngradeVersion() const;
    void setMinDowngradeVersion(std::int64_t version);

    // Progress. Any thread; "busy" is a bar without a measure.

    /// Marks a run as going on and not cancelled, and shows the busy progress sheet.
    void startProgress();
    /// Takes the sheet away and marks the run as ended.
    void endProgress();
    void setProgressLabel(std::string_view text);
    /// Gives the bar a measure from 0, where it stands now, to a maximum in units of the caller.
    void setProgressMax(std::int64_t maximum);
    /// Makes the bar busy again.
    void setIndeterminateProgress();
    /// Adds 1 to the bar's value.
    void incrementProgress();
    void setProgressValue(std::int64_t value);
    /// The action of the cancel button: asks the run to end, which takes the sheet away when it
    /// does. Main thread.
    void cancelProgress();
    /// The bar as it stands: its maximum (0 while it is busy) and its value.
    [[nodiscard]] std::int64_t progressMax() const;
    [[nodiscard]] std::int64_t progressValue() const;

    // The report text. Any thread. A line is also written to the log, whatever the window shows.

    void clearInfoText();
    void appendInfoText(std::string_view text);
    void appendBoldInfoText(std::string_view text);
    void appendErrorInfoText(std::string_view text);
    void appendBoldErrorInfoText(std::string_view text);
    /// Puts an entry at the end of the report, red for an error and bold when asked, with an empty
    /// line before it when it is not the first; without a window it is a line of standard output.
    void appendInfoText(std::string_view text, bool isError, bool isBold);

    // Alerts.

    /// Logs an alert and shows it as a sheet without waiting for its answer. Any thread.
    /// @param message nothing: neither logged nor shown
    /// @param info nothing: the empty text. It is read as a format without arguments.
    void displayAlert(std::optional<std::string_view> message,
                      std::optional<std::string_view> info);
    /// Shows the alert of a dictionary with the keys "message" and "infotext". Main thread.
    void displayAlertOnMainThread(const AlertDictionary& dictionary);

    // Headless use.

    /// Where report lines of a headless document go instead of standard output; an empty function
    /// drops them.
    void setReportOutput(std::function<void(std::string_view line)> output);
    /// Who is told the alerts that a headless document would have shown.
    void setAlertOutput(
        std::function<void(std::string_view message, std::string_view info)> output);
    /// A flag, non-zero once a signal asked the program to end, that counts as a cancellation. It
    /// must outlive the document.
    void setInterruptionFlag(const std::atomic<int>* flag) { interruption_ = flag; }

  private:
    Document();

    [[nodiscard]] RepairResult startRepair(const std::string& path, FileKind kind);
    [[nodiscard]] RepairResult runPipeline(const std::string& path, FileKind kind,
                                           SwapObserver& observer);
    // Over which window the alerts of the thread come that have no parent.
    [[nodiscard]] std::weak_ptr<AlertWindow> placeOfAlerts() const;
    // Runs something that draws, on the main thread, when there is a window to draw in.
    void inWindow(const std::function<void(DocumentWindow&)>& draw) const;
    void setConvertInterfaceEnabled(bool enabled);
    void appendInPlace(std::string_view text, bool isError, bool isBold);
    void startRepairOnThread(const std::string& path, FileKind kind, const char* forMethod);
    // Runs the work on a new thread. @param forMethod logged when the system has no thread to give.
    // @return false then, which the user has to be told.
    [[nodiscard]] bool runDetached(std::function<void(Document&)> work, const char* forMethod);
    void tellNoThread(std::string_view message, const std::string& path);

    // Conversion. Each turn of the dialog is a run; what an older run has for the dialog is dropped
    // on the main thread.
    using Run = std::shared_ptr<ConversionRun>;
    using DrawInDialog = std::function<void(ConversionDialog&)>;
    void inDialog(const Run& run, const DrawInDialog& draw) const;
    [[nodiscard]] bool isLatest(const Run& run) const;
    void setLatestRun(const Run& run);
    void stopLatestRun();
    [[nodiscard]] Run beginConversion();
    void convert(const Run& run);
    void tellUnexpectedException();
    void convertFile(const Run& run);
    std::optional<DialogConversion> convertDocument(const Run& run, const std::string& version,
                                                    std::unique_ptr<XMLDocument> document,
                                                    const std::string& path);
    ConversionResult commit(const Run& run, XMLDocument* document, const ConversionPlan& plan,
                            const std::string& path, DialogConversion& made);
    void tellState(const Run& run, std::string_view text) const;
    void tellConverted(const Run& run, const DialogConversion& made) const;
    [[nodiscard]] bool agreeToLoss(const Run& run, const ConversionPlan& plan);
    [[nodiscard]] bool userAgreesToLoss(const Run& run);
    void analyse(const Run& run);
    void fillDialog(const Run& run, const std::string& path);
    void showCurrentVersion(const Run& run, const ConvertibleFile& file) const;
    void showOffer(const Run& run, const ConversionOffer& offer);

    void endCloseQuestion();

    std::atomic<bool> hasGUI_ = true;
    std::atomic<int> xmlType_ = 0;
    std::atomic<bool> fileHasErrs_ = false;
    std::atomic<bool> fileWasRepaired_ = false;
    std::atomic<bool> isRunning_ = false;
    std::atomic<bool> progressCancelled_ = false;
    std::atomic<bool> closed_ = false;
    std::atomic<std::int64_t> minDowngradeVersion_ = 0;
    std::atomic<std::int64_t> progressMax_ = 0;
    std::atomic<std::int64_t> progressValue_ = 0;
    const std::atomic<int>* interruption_ = nullptr;

    // These belong to the main thread.
    std::shared_ptr<DocumentWindow> window_;
    std::shared_ptr<QMAlert> closeQuestion_;
    Text filePath_;
    // While the document is open.
    std::unique_ptr<NamedSource> named_;

    // The latest turn of the dialog, null once it is closed; the latest conversion; the question
    // that it waits for. They belong to the main thread.
    Run latestRun_;
    Run conversion_;
    std::shared_ptr<QMAlert> lossQuestion_;
    std::atomic<std::uint64_t> runCount_ = 0;

    std::function<void(std::string_view)> reportOutput_;
    std::function<void(std::string_view, std::string_view)> alertOutput_;
};

}  // namespace vornic

#endif
