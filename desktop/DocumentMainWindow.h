#ifndef VORNIC_DESKTOP_DOCUMENT_MAIN_WINDOW_H
#define VORNIC_DESKTOP_DOCUMENT_MAIN_WINDOW_H

#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "desktop/ConvertSheet.h"
#include "desktop/FindBar.h"
#include "desktop/OutcomeBadge.h"
#include "desktop/ProgressSheet.h"
#include "desktop/ReportView.h"
#include "repair/Document.h"

namespace vornic {

/// The window of a document (`windowMain`): the file's name and kind, the report, how the last run
/// ended, and the repair button. Its sheets are modal to it alone.
class DocumentMainWindow : public QMainWindow, public DocumentWindow {
  public:
    /// What the window asks the application for.
    struct Actions {
        /// The window has been closed; the document goes. Called once.
        std::function<void(DocumentMainWindow&)> closed;
        std::function<void(DocumentMainWindow&)> showFile;
        std::function<void()> showTrash;
    };

    DocumentMainWindow(const std::shared_ptr<Document>& document, Actions actions);

    /// Makes the window an owner of its document, which knows the window as long, or gives that up
    /// (null).
    void keepDocument(std::shared_ptr<Document> document) { kept_ = std::move(document); }
    /// The document; null once it has gone.
    [[nodiscard]] std::shared_ptr<Document> document() const { return document_.lock(); }
    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] ReportView& report() { return *report_; }
    [[nodiscard]] FindBar& findBar() { return *findBar_; }
    /// Asks where to on a sheet, and writes the report there as plain text.
    void saveReport();

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
    void showConverted(std::string_view version) override;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    QWidget* makeHead();
    QWidget* makeFoot();
    void setOutcome(OutcomeBadge::Kind kind, const QString& text);
    // The ways to the places that a repair has put files in.
    void showPlaces(bool showsFile, bool showsTrash);
    void writeReport(const std::string& path);

    std::weak_ptr<Document> document_;
    std::shared_ptr<Document> kept_;
    std::string path_;
    Actions actions_;

    OutcomeBadge* outcomeBadge_ = nullptr;
    QLabel* outcomeLabel_ = nullptr;
    QPushButton* showFileButton_ = nullptr;
    QPushButton* showTrashButton_ = nullptr;
    QPushButton* repairButton_ = nullptr;
    ReportView* report_;
    FindBar* findBar_;
    ProgressSheet* progress_;
    ConvertSheet* convert_;
};

}  // namespace vornic

#endif
