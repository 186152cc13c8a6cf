// Measures what a user of the window would feel: how long the main thread is busy at a stretch
// during a repair, how much longer a repair takes than without a window, and what a long report
// costs. Draws on whatever platform the toolkit is given (QT_QPA_PLATFORM=offscreen).

#include <QApplication>
#include <QScrollBar>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

#include "bench/SampleProject.h"
#include "desktop/DocumentMainWindow.h"
#include "desktop/QtAlertPanel.h"
#include "desktop/QtRunLoop.h"
#include "foundation/log/QMLog.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic::bench {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

// The longest time between two turns of the event loop.
class PauseWatch {
  public:
    PauseWatch() {
        QObject::connect(&timer_, &QTimer::timeout, [this] { note(); });
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.start(std::chrono::milliseconds(1));
        last_ = Clock::now();
    }
    [[nodiscard]] double longest() const { return longest_.count(); }

  private:
    void note() {
        const Clock::time_point now = Clock::now();
        longest_ = std::max(longest_, Milliseconds(now - last_));
        last_ = now;
    }

    QTimer timer_;
    Clock::time_point last_;
    Milliseconds longest_{0};
};

double median(std::vector<double> values) {
    std::nth_element(values.begin(),
                     values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

void runLoopUntil(const std::function<bool()>& isDone) {
    while (!isDone()) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

double repairHeadless(const std::string& path) {
    const auto document = Document::create();
    document->setHasGUI(false);
    document->setReportOutput({});
    const Clock::time_point start = Clock::now();
    document->startRepair(path);
    return Milliseconds(Clock::now() - start).count();
}

struct Shown {
    double milliseconds;
    double longestPause;
};

Shown repairInWindow(const std::string& path) {
    const auto document = Document::create();
    document->setFilePath(path);
    const auto window =
        std::make_shared<DocumentMainWindow>(document, DocumentMainWindow::Actions());
    document->setWindow(window);
    window->show();
    QApplication::processEvents();
    const Clock::time_point start = Clock::now();
    const PauseWatch watch;
    document->readFromURL(path, "", nullptr);
    const auto* const outcome = window->findChild<QLabel*>(QStringLiteral("outcomeLabel"));
    runLoopUntil([outcome] { return !outcome->text().isEmpty(); });
    const Shown shown{Milliseconds(Clock::now() - start).count(), watch.longest()};
    document->close();
    window->hide();
    return shown;
}

bool compareRepairs(const std::string& path, const char* what) {
    constexpr int kRuns = 5;
    std::vector<double> headless;
    std::vector<double> shown;
    std::vector<double> pauses;
    for (int run = 0; run < kRuns; ++run) {
        headless.push_back(repairHeadless(path));
        const Shown result = repairInWindow(path);
        shown.push_back(result.milliseconds);
        pauses.push_back(result.longestPause);
    }
    const double ratio = median(shown) / median(headless);
    const double longest = *std::max_element(pauses.begin(), pauses.end());
    std::printf(
        "%-28s headless %7.1f ms, in a window %7.1f ms, ratio %.2f (at most 1.3); longest "
        "pause %.1f ms (at most 50)\n",
        what, median(headless), median(shown), ratio, longest);
    return ratio <= 1.3 && longest <= 50;
}

long residentMegabytes() {
    std::ifstream statm("/proc/self/statm");
    long pages = 0;
    statm >> pages >> pages;
    return pages * sysconf(_SC_PAGESIZE) / (1000 * 1000);
}

bool measureReport(int lines) {
    ReportView view(nullptr);
    view.resize(700, 500);
    view.show();
    QApplication::processEvents();
    const long before = residentMegabytes();
    const Clock::time_point start = Clock::now();
    for (int line = 0; line < lines; ++line) {
        const std::string text = std::string(line == 0 ? "" : "\n\n") +
                                 "Invalid character at byte " + std::to_string(line * 1000L) +
                                 " removed.";
        view.append(text, true, false);
        if (line % 1000 == 0) {
            QApplication::processEvents();
        }
    }
    const double filled = Milliseconds(Clock::now() - start).count();
    QScrollBar* const bar = view.verticalScrollBar();
    double slowest = 0;
    constexpr int kPlaces = 50;
    for (int place = 0; place <= kPlaces; ++place) {
        const Clock::time_point begin = Clock::now();
        bar->setValue(static_cast<int>(static_cast<long>(bar->maximum()) * place / kPlaces));
        view.viewport()->repaint();
        slowest = std::max(slowest, Milliseconds(Clock::now() - begin).count());
    }
    const long used = residentMegabytes();
    std::printf(
        "report of %d entries: filled in %.0f ms, slowest scrolling %.1f ms, %ld MB more, "
        "%ld MB in all (at most 300)\n",
        lines, filled, slowest, used - before, used);
    return used <= 300 && slowest <= 50;
}

}  // namespace

}  // namespace vornic::bench

int main(int argc, char** argv) {
    using namespace vornic;
    QApplication toolkit(argc, argv);
    platform::MainThread::adopt();
    platform::MainThread::setLoop(std::make_shared<QtRunLoop>());
    QMAlert::setPanelFactory(std::make_shared<QtAlertPanelFactory>());
    std::string folder = "/tmp/vornic-bench-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror("mkdtemp");
        return EXIT_FAILURE;
    }
    setenv("HOME", folder.c_str(), 1);
    QMLog::createNewLog("Vornic", true);
    const std::string sound = folder + "/50 MB.xml";
    bool reached = bench::saveSampleProject({.bytes = 50'000'000}, sound);
    reached = bench::measureReport(500'000) && reached;
    reached = bench::compareRepairs(sound, "repair a sound file, 50 MB:") && reached;
    platform::MainThread::shutdown();
    platform::joinDetachedThreads(std::chrono::seconds(10));
    QMLog::finishWriting();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return reached ? EXIT_SUCCESS : EXIT_FAILURE;
}
