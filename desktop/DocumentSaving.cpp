#include <QBuffer>
#include <QFileDialog>
#include <QPageSize>
#include <QPdfWriter>
#include <QProcess>
#include <QStandardPaths>
#include <QTextDocument>
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "app/window/FindingsReport.h"
#include "base/PathText.h"
#include "base/Text.h"
#include "desktop/DocumentMainWindow.h"
#include "desktop/DocumentThread.h"
#include "desktop/FileIcons.h"
#include "desktop/QtText.h"
#include "formats/fcpxml/Bundle.h"
#include "foundation/log/QMLog.h"
#include "platform/files/AtomicFile.h"
#include "platform/files/FileSystem.h"
#include "platform/session/WorkspaceOpener.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

// What the window of a document writes beside the file, and hands to other programs.

namespace vornic {

namespace {

constexpr int kPDFFontSize = 8;

QFileDialog* makePanel(DocumentMainWindow* window, const char* objectName, const QString& title,
                       const QString& proposal) {
    auto* const panel = new QFileDialog(window, title);
    panel->setObjectName(QString::fromLatin1(objectName));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    FileIcons::useIn(*panel);
    panel->selectFile(proposal);
    return panel;
}

// Written under a name of its own first, so that a failure leaves no half of it.
bool writePDF(const std::string& html, const std::string& path, ErrorSlot& error) {
    QByteArray bytes;
    {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        QPdfWriter writer(&buffer);
        writer.setTitle(QStringLiteral("Findings"));
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageOrientation(QPageLayout::Landscape);
        QTextDocument document;
        QFont small = document.defaultFont();
        small.setPointSize(kPDFFontSize);
        document.setDefaultFont(small);
        document.setHtml(toQString(html));
        document.print(&writer);
    }
    return platform::writeFileAtomically(path, bytes.toStdString(), platform::Durability::synced,
                                         error);
}

// @return why it could not be written; "" when it was
std::string writeFindings(const FindingsTable& table, const std::string& path) {
    const FindingsReportHead head = reportHeadFor(table, VORNIC_VERSION);
    const std::string extension = lowercased(pathExtension(path));
    ErrorSlot error;
    bool isWritten = false;
    if (extension == "pdf") {
        isWritten = writePDF(findingsAsHTML(table, head), path, error);
    } else {
        const std::string text = extension == "html" || extension == "htm"
                                     ? findingsAsHTML(table, head)
                                 : extension == "json" ? findingsAsJSON(table, head)
                                                       : findingsAsText(table, head);
        isWritten = platform::writeFileAtomically(path, text, platform::Durability::synced, error);
    }
    return isWritten ? "" : error ? error->localizedDescription() : "There is no reason known.";
}

struct Editor {
    const char* program;
    // What stands before the line; with %1 where file and line are one argument.
    const char* line;
};

// Editors with a window that can be told a line, in the order in which they are looked for.
constexpr std::array kEditors = {
    Editor{"kate", "-l"},  Editor{"gnome-text-editor", "+"},
    Editor{"gedit", "+"},  Editor{"xed", "+"},
    Editor{"pluma", "+"},  Editor{"mousepad", "-l"},
    Editor{"geany", "-l"}, Editor{"code", "%1:%2"},
    Editor{"gvim", "+"},
};

QStringList argumentsFor(const Editor& editor, const QString& path, std::size_t line) {
    const QString number = QString::number(line);
    const QString form = QString::fromLatin1(editor.line);
    if (form.contains(u'%')) {
        return {QStringLiteral("-g"), form.arg(path, number)};
    }
    return form == QStringLiteral("+") ? QStringList{form + number, path}
                                       : QStringList{form, number, path};
}

}  // namespace

void DocumentMainWindow::saveFindings() {
    if (isStillLookedAt()) {
        return;
    }
    QFileDialog* const panel = makePanel(this, "saveFindingsPanel", tr("Save Findings"),
                                         proposedPath(tr(" findings") + QStringLiteral(".html")));
    panel->setNameFilters({tr("Web page (*.html)"), tr("PDF (*.pdf)"), tr("Text (*.txt)"),
                           tr("JSON (*.json)"), tr("All files (*)")});
    panel->setDefaultSuffix(QStringLiteral("html"));
    connect(panel, &QFileDialog::filterSelected, panel, [panel](const QString& filter) {
        const qsizetype dot = filter.indexOf(QStringLiteral("*."));
        if (dot >= 0) {
            panel->setDefaultSuffix(filter.mid(dot + 2).chopped(1));
        }
    });
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& chosen) { saveFindingsTo(pathFromQString(chosen)); });
    panel->open();
}

QString DocumentMainWindow::proposedPath(const QString& ending) const {
    return pathToQString(withoutExtension(fcpxml::bundleAround(path_))) + ending;
}

bool DocumentMainWindow::isOwnFile(const std::string& path, const std::string& headline) {
    std::error_code ignored;
    const bool isOwn = std::filesystem::equivalent(path, path_, ignored);
    if (isOwn) {
        beginAlertSheet(headline, "It would take the place of the project file.");
    }
    return isOwn;
}

void DocumentMainWindow::saveFindingsTo(const std::string& path) {
    if (!table_ || isOwnFile(path, "Unable to save the findings")) {
        return;
    }
    header_->setBusy(tr("Saving the findings…"));
    runOnThread<std::string>([table = table_, path] { return writeFindings(*table, path); },
                             [this](const std::string& failure) {
                                 writeHeader();
                                 if (!failure.empty()) {
                                     beginAlertSheet("Unable to save the findings", failure);
                                 }
                             });
}

void DocumentMainWindow::saveMendedCopy() {
    const std::string extension = pathExtension(path_);
    QFileDialog* const panel =
        makePanel(this, "saveCopyPanel", tr("Save Repaired Copy"),
                  pathToQString(withoutExtension(path_)) + tr(" repaired") +
                      pathToQString(extension.empty() ? "" : "." + extension));
    // What stands there stays; the copy gets a number.
    panel->setOption(QFileDialog::DontConfirmOverwrite);
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& chosen) { saveMendedCopyTo(pathFromQString(chosen)); });
    panel->open();
}

void DocumentMainWindow::saveMendedCopyTo(const std::string& to) {
    if (isActing_) {
        return;
    }
    header_->setBusy(tr("Saving the repaired copy…"));
    runOnThread<FileActionResult>([path = path_, to] { return vornic::saveMendedCopy(path, to); },
                                  [this](const FileActionResult& result) {
                                      writeHeader();
                                      if (!result.isDone) {
                                          tellFailure(tr("Unable to save the copy"), result);
                                          return;
                                      }
                                      QString outcome =
                                          tr("The copy is called %1. The file is as it was.")
                                              .arg(fileNameOf(result.replaced));
                                      for (const std::string& note : result.notes) {
                                          outcome += QStringLiteral(" ") + toQString(note);
                                      }
                                      setOutcome(outcome, true, false);
                                  });
}

std::size_t DocumentMainWindow::currentLine() const {
    if (page() != Page::findings) {
        // The source goes along with the timeline.
        const bool isSource = page() == Page::source || page() == Page::timeline;
        return isSource ? source_->currentLine() : changes_->file().currentLine();
    }
    const ListedFinding* const listed =
        findings_->model().findingAt(findings_->tree().currentIndex());
    const bool hasLine = listed != nullptr && !listed->isInOriginal;
    return hasLine && listed->finding->where.line != 0 ? listed->finding->where.line : 1;
}

void DocumentMainWindow::openInEditor() {
    for (const Editor& editor : kEditors) {
        const QString program = QStandardPaths::findExecutable(QString::fromLatin1(editor.program));
        if (!program.isEmpty() &&
            QProcess::startDetached(program,
                                    argumentsFor(editor, pathToQString(path_), currentLine()))) {
            return;
        }
    }
    ErrorSlot error;
    if (!platform::WorkspaceOpener::shared()->openFile(path_, error)) {
        beginAlertSheet("No editor could be opened",
                        error ? error->localizedDescription() : std::string());
    }
}

}  // namespace vornic
