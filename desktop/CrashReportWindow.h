#ifndef VORNIC_DESKTOP_CRASH_REPORT_WINDOW_H
#define VORNIC_DESKTOP_CRASH_REPORT_WINDOW_H

#include <QLabel>
#include <QPlainTextEdit>
#include <QWidget>
#include <string>

namespace vornic {

/// Shows the report of a crash, and what the user can do about it. Nothing is sent. Main thread
/// only.
class CrashReportWindow : public QWidget {
    Q_OBJECT

  public:
    /// How much of a report is shown and copied, in bytes.
    static constexpr qint64 kLongestReport = 1 << 20;

    /// @param path of the report, absolute; what cannot be read is said in the report's place.
    explicit CrashReportWindow(const std::string& path);

  private:
    void readReport();
    void copyReport();
    void showInFileManager();

    std::string path_;
    QLabel* message_;
    QPlainTextEdit* report_;
    QLabel* done_;
};

}  // namespace vornic

#endif
