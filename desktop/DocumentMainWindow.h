#ifndef VORNIC_DESKTOP_DOCUMENT_MAIN_WINDOW_H
#define VORNIC_DESKTOP_DOCUMENT_MAIN_WINDOW_H

#include <QLabel>
#include <QMainWindow>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "app/window/ConversionPreview.h"
#include "app/window/FileActions.h"
#include "app/window/HeaderText.h"
#include "app/window/MediaActions.h"
#include "app/window/SalvagePreview.h"
#include "desktop/ChangesView.h"
#include "desktop/ConvertSheet.h"
#include "desktop/DocumentHeader.h"
#include "desktop/FileInspector.h"
#include "desktop/FindBar.h"
#include "desktop/FindingsView.h"
#include "desktop/MediaView.h"
#include "desktop/ProgressSheet.h"
#include "desktop/ReportView.h"
#include "desktop/SourceView.h"
#include "desktop/VersionSheet.h"
#include "desktop/timeline/TimelinePage.h"
#include "repair/document/Document.h"

namespace vornic {

/// The window of a document (`windowMain`): what the file is and how it is; what was found, and the
/// report; its source; what has changed; and where the files are. Its sheets are modal to it alone.
class DocumentMainWindow : public QMainWindow, public DocumentWindow {
  public:
    /// What the window asks the application for.
    struct Actions {
        /// The window has been closed; the document goes. Called once.
        std::function<void(DocumentMainWindow&)> closed;
        /// Shows a file in its folder.
        std::function<void(const std::string& path)> showFile;
        std::function<void()> showTrash;
        /// What the header says of the file has changed.
        std::function<void(const std::string& path, const std::string& sentence)> tellOutcome = {};
    };

    DocumentMainWindow(const std::shared_ptr<Document>& document, Actions actions);
    ~DocumentMainWindow() override;
    DocumentMainWindow(const DocumentMainWindow&) = delete;
    DocumentMainWindow& operator=(const DocumentMainWindow&) = delete;

    /// Keeps the document alive, as a window owns its document. Null ends that: the document goes
    /// then unless somebody else keeps it.
    void keepDocument(std::shared_ptr<Document> document) { kept_ = std::move(document); }
    /// The document; null once it has gone.
    [[nodiscard]] std::shared_ptr<Document> document() const { return document_.lock(); }
    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] ReportView& report() { return *report_; }
    [[nodiscard]] FindBar& findBar() { return *findBar_; }
    [[nodiscard]] FindingsView& findings() { return *findings_; }
    [[nodiscard]] SourceView& source() { return *source_; }
    [[nodiscard]] ChangesView& changes() { return *changes_; }
    [[nodiscard]] MediaView& media() { return *media_; }
    [[nodiscard]] TimelinePage& timeline() { return *timeline_; }

    /// The pages below the header.
    enum class Page { findings, source, changes, media, timeline };
    void showPage(Page page);
    [[nodiscard]] Page page() const;

    /// Asks where to on a sheet, and writes the report there as plain text.
    void saveReport();

    // Commands. Each says so when there is nothing to do.

    /// Reads and checks the file; nothing is written. In the place of a repair when the file is
    /// opened, too.
    void check();
    /// Asks where to, and writes what was found there as HTML, PDF, text or JSON, by the ending.
    void saveFindings();
    void saveFindingsTo(const std::string& path);
    /// Asks where to, and writes a picture of the timeline as SVG, PNG or PDF, by the ending.
    void savePicture();
    void savePictureTo(const std::string& path);
    /// Asks where to, and writes what the safe mends make of the file as a new file.
    void saveMendedCopy();
    void saveMendedCopyTo(const std::string& to);
    /// Opens the file in an editor, at the line that is looked at where the editor can be told.
    void openInEditor();
    /// The line of the file that is looked at, from 1.
    [[nodiscard]] std::size_t currentLine() const;
    /// Shows what the ticked mends would change, and makes them when the user agrees.
    void mendTicked();
    /// The same for all mends that are safe.
    void mendSafely();
    /// Brings the file's original back. Asks first when the file has changed since.
    void restoreOriginal();
    /// Shows the file beside its original.
    void compareWithOriginal();
    /// Asks for a folder and searches it for the media that are not there; shows what was found,
    /// and relinks when the user agrees.
    void findMediaInFolder();
    void findMediaIn(const std::string& folder, std::optional<Pick> pick);
    /// Asks which folder of media has moved, and goes on in the same way.
    void changeMediaFolder();
    /// Shows the medium that is chosen on the page of the media in its folder.
    void showMedium();
    /// Shows to which versions of FCPXML the file can be converted, and converts it or a copy.
    void convertFCPXMLVersion();
    /// Asks which version the root element is to declare, and writes that.
    void setVersion();
    /// Shows what can be guessed of a file that is no XML any more, and saves it as a new file.
    void saveSalvagedCopy();
    void saveSalvagedCopyTo(const std::string& to, const SalvagePreview& preview);
    /// Repairs the file as what its root element says, whatever its name says.
    void treatAsContents();
    /// Copies what is selected in the view that has the focus.
    void copy();
    void selectAll();

    [[nodiscard]] bool hasAttachedSheet() const override;
    void makeKeyAndOrderFront() override;

    void clearReport() override;
    [[nodiscard]] bool reportIsEmpty() const override;
    void insertReportText(std::string_view text, bool isError, bool isBold) override;

    void setProgressCancelEnabled(bool enabled) override;
    void startProgressAnimation() override;
    void stopProgressAnimation() override;
    void setProgressIndeterminate(bool indeterminate) override;
    void setProgressStatusText(std::string_view text) override;
    [[nodiscard]] bool progressSheetIsVisible() const override;
    [[nodiscard]] bool progressSheetIsSheet() const override;
    void beginProgressSheet() override;
    void endProgressSheet() override;
    void showOutcome(const RepairResult& result) override;

    void beginAlertSheet(std::string_view message, std::string_view info) override;

    [[nodiscard]] ConversionDialog& conversionDialog() override { return *convert_; }
    void showConverted(const DialogConversion& conversion) override;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    QWidget* makePages();
    QWidget* makeFoot();
    TimelinePage* makeTimeline();
    // Where the files are, below the pages.
    void setOutcome(const QString& text, bool showsFile, bool showsTrash);
    void writeReport(const std::string& path);

    void inspect(HeaderFacts facts, const std::string& original);
    // After an action that has changed nothing.
    void inspectAfterFailure();
    void takeSource(std::shared_ptr<const SourceText> source);
    void takeTable(std::shared_ptr<const FindingsTable> table);
    void takeChange(bool isThere);
    void writeHeader();
    void accept(HeaderOffer offer);
    void showPlaceOf(const ListedFinding& listed);
    void showRemoved();

    void changeFolder(const std::string& oldFolder, const std::string& newFolder);
    void askToRelink(const RelinkPreview& preview, std::optional<Pick> pick,
                     const std::string& searched);
    void relink(const RelinkPreview& preview);
    void takeRelinked(const FileActionResult& result, std::size_t count);
    void convertVersion(VersionSheet& sheet, const VersionRequest& request);
    void takeConverted(const ConvertedVersion& converted, const VersionRequest& request);
    void askToSalvage(const SalvagePreview& preview);
    void setVersionTo(const std::string& version);

    void preview(std::vector<const Finding*> findings);
    void askToMend(const MendPreview& preview);
    void mend(const MendRequest& request);
    void restore(bool evenIfChanged, bool mendsAfterwards);
    void takeRestored(const RestoreResult& result, bool mendsAfterwards);
    void takeMended(const FileActionResult& result);
    void tellFailure(const QString& message, const FileActionResult& result);
    void tellDone(const QString& outcome, const FileActionResult& result);
    // Runs something on a thread, and the rest on the main one while the window is there.
    template <typename Result>
    void runOnThread(std::function<Result()> work, std::function<void(const Result&)> then);
    void setActing(bool isActing);
    // A name for something beside the file, or beside its bundle: "Cut timeline.svg".
    [[nodiscard]] QString proposedPath(const QString& ending) const;
    // Says so where something is to be saved in the place of the file.
    [[nodiscard]] bool isOwnFile(const std::string& path, const std::string& headline);
    // Says so while nothing is known of the file yet.
    [[nodiscard]] bool isStillLookedAt();
    void tellNoThread();

    std::weak_ptr<Document> document_;
    std::shared_ptr<Document> kept_;
    std::string path_;
    Actions actions_;

    DocumentHeader* header_ = nullptr;
    QTabWidget* pages_ = nullptr;
    FindingsView* findings_ = nullptr;
    SourceView* source_ = nullptr;
    ChangesView* changes_ = nullptr;
    MediaView* media_ = nullptr;
    TimelinePage* timeline_ = nullptr;
    FileInspector* inspector_ = nullptr;
    // What the header is written from, and what was found last.
    HeaderFacts facts_;
    std::shared_ptr<const FindingsTable> table_;
    // Where the file's original is, for the next inspection; "" for nowhere.
    std::string original_;
    QPointer<VersionSheet> versionSheet_;
    bool isActing_ = false;
    // What a thread brings to a window that is closed is shown to nobody.
    bool isClosed_ = false;
    bool showsChangesNext_ = false;
    // A change that came while the window was changing the file itself, and whether it is there.
    std::optional<bool> untoldChange_;

    QLabel* outcomeLabel_ = nullptr;
    QPushButton* showFileButton_ = nullptr;
    QPushButton* showTrashButton_ = nullptr;
    QPushButton* mendButton_ = nullptr;
    QPushButton* saveCopyButton_ = nullptr;
    QPushButton* repairButton_ = nullptr;
    ReportView* report_;
    FindBar* findBar_;
    ProgressSheet* progress_;
    ConvertSheet* convert_;
};

}  // namespace vornic

#endif
