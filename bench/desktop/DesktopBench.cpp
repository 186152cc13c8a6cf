// Measures what a user of the window would feel: how long the main thread is busy at a stretch
// during a repair, how much longer a repair takes than without a window, and what a long report
// costs. Draws on whatever platform the toolkit is given (QT_QPA_PLATFORM=offscreen).

#include <QApplication>
#include <QMainWindow>
#include <QScrollBar>
#include <QTimer>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/SampleProject.h"
#include "desktop/Appearance.h"
#include "desktop/Application.h"
#include "desktop/BatchWindow.h"
#include "desktop/DocumentMainWindow.h"
#include "desktop/QtAlertPanel.h"
#include "desktop/QtRunLoop.h"
#include "desktop/SettingsPortal.h"
#include "foundation/log/QMLog.h"
#include "platform/settings/UserPreferences.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic::bench {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

// Of this thread, in milliseconds: what others do on the machine is not in it.
double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// The times between the turns of the event loop, which has a turn each millisecond.
class PauseWatch {
  public:
    PauseWatch() {
        QObject::connect(&timer_, &QTimer::timeout, [this] { note(); });
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.start(std::chrono::milliseconds(1));
        last_ = Clock::now();
    }
    [[nodiscard]] double longest() const {
        return pauses_.empty() ? 0 : *std::max_element(pauses_.begin(), pauses_.end());
    }
    // Those that none in a thousand is longer than.
    [[nodiscard]] double usual() const {
        std::vector<double> sorted = pauses_;
        std::sort(sorted.begin(), sorted.end());
        return sorted.empty() ? 0 : sorted[(sorted.size() - 1) * 999 / 1000];
    }
    [[nodiscard]] std::size_t turns() const { return pauses_.size(); }
    // Of the turns, without what others did on the machine meanwhile.
    [[nodiscard]] double mostWork() const { return mostWork_; }
    // Tells them. @return false when they are too long.
    bool report(const char* what) const {
        std::printf(
            "%-28s %zu turns, 99.9 %% at most %.1f ms (at most 16), longest %.1f ms (at most 50), "
            "with %.1f ms of work\n",
            what, turns(), usual(), longest(), mostWork());
        return usual() <= 16 && longest() <= 50;
    }

  private:
    void note() {
        const Clock::time_point now = Clock::now();
        pauses_.push_back(Milliseconds(now - last_).count());
        last_ = now;
        const double worked = processorTime();
        mostWork_ = std::max(mostWork_, worked - worked_);
        worked_ = worked;
    }

    QTimer timer_;
    Clock::time_point last_;
    std::vector<double> pauses_;
    double worked_ = processorTime();
    double mostWork_ = 0;
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

// A window of a document, as the application opens it.
struct OpenedFile {
    explicit OpenedFile(const std::string& path) {
        document->setFilePath(path);
        window = std::make_shared<DocumentMainWindow>(document, DocumentMainWindow::Actions());
        document->setWindow(window);
        window->resize(1000, 700);
        window->show();
        QApplication::processEvents();
    }
    ~OpenedFile() {
        document->close();
        window->hide();
    }
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;

    void waitForHeader() const {
        const auto* const header = window->findChild<QLabel*>(QStringLiteral("headerLabel"));
        runLoopUntil([header] {
            return !header->text().isEmpty() && !header->text().startsWith(u"Looking") &&
                   !header->text().startsWith(u"Repairing");
        });
    }

    std::shared_ptr<Document> document = Document::create();
    std::shared_ptr<DocumentMainWindow> window;
};

// Whether the window can be used while a file is repaired, checked and shown.
bool measureTurns(const std::string& path, const char* what) {
    bool reached = true;
    {
        const OpenedFile file(path);
        const PauseWatch watch;
        file.document->readFromURL(path, "", nullptr);
        const auto* const outcome = file.window->findChild<QLabel*>(QStringLiteral("outcomeLabel"));
        runLoopUntil([outcome] { return !outcome->text().isEmpty(); });
        file.waitForHeader();
        reached = watch.report((std::string(what) + ", repaired:").c_str());
    }
    const OpenedFile file(path);
    {
        const PauseWatch watch;
        file.window->check();
        file.waitForHeader();
        reached = watch.report((std::string(what) + ", checked:").c_str()) && reached;
    }
    const PauseWatch watch;
    for (const auto page : {DocumentMainWindow::Page::source, DocumentMainWindow::Page::changes,
                            DocumentMainWindow::Page::findings}) {
        file.window->showPage(page);
        const Clock::time_point until = Clock::now() + std::chrono::milliseconds(300);
        runLoopUntil([until] { return Clock::now() > until; });
    }
    return watch.report((std::string(what) + ", shown:").c_str()) && reached;
}

// A sequence of that many clips in four lanes, some of them with findings, zoomed and scrolled.
bool measureTimeline(const std::string& path, int clips) {
    {
        std::ofstream file(path);
        file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n<fcpxml "
                "version=\"1.10\"><resources><format id=\"r1\" frameDuration=\"1/25s\"/>\n"
                "</resources><project name=\"Long\"><sequence format=\"r1\"><spine>\n";
        for (int clip = 0; clip < clips / 4; ++clip) {
            // Every hundredth leaves a hole, which is a finding.
            const int hole = clip / 100;
            file << "<gap name=\"Interview " << clip << "\" offset=\"" << clip * 3 + hole
                 << "s\" start=\"0s\" duration=\"3s\">\n";
            for (const int lane : {1, 2, -1}) {
                file << "<gap name=\"Lane " << lane << " clip " << clip << "\" lane=\"" << lane
                     << "\" offset=\"0s\" duration=\"2s\"/>\n";
            }
            file << "</gap>\n";
        }
        file << "</spine></sequence></project></fcpxml>\n";
    }
    const OpenedFile opened(path);
    opened.window->check();
    opened.waitForHeader();
    opened.window->showPage(DocumentMainWindow::Page::timeline);
    runLoopUntil([&] { return opened.window->timeline().timeline() != nullptr; });
    TimelineArea& area = opened.window->timeline().area();
    const PauseWatch watch;
    double slowest = 0;
    double work = 0;
    for (const double zoom : {1.0, 4.0, 4.0, 4.0, 4.0}) {
        area.zoomBy(zoom);
        QScrollBar* const bar = area.horizontalScrollBar();
        constexpr int kPlaces = 100;
        for (int place = 0; place <= kPlaces; ++place) {
            const Clock::time_point begin = Clock::now();
            const double before = processorTime();
            bar->setValue(static_cast<int>(static_cast<long>(bar->maximum()) * place / kPlaces));
            area.viewport()->update();
            QApplication::processEvents();
            slowest = std::max(slowest, Milliseconds(Clock::now() - begin).count());
            work = std::max(work, processorTime() - before);
        }
    }
    std::printf(
        "timeline of %d clips: slowest scrolling %.1f ms (at most 16), of which %.1f ms are "
        "work\n",
        clips, slowest, work);
    return watch.report("the same, scrolled:") && slowest <= 16;
}

// That many files in the window of a batch: found, checked, filtered.
bool measureBatch(const std::string& folder, int files) {
    for (int file = 0; file < files; ++file) {
        constexpr int kInFolder = 500;
        const std::string part = folder + "/" + std::to_string(file / kInFolder);
        if (file % kInFolder == 0) {
            std::filesystem::create_directories(part);
        }
        std::ofstream(part + "/" + std::to_string(file) + ".xml")
            << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml "
               "version=\"5\"><sequence><name>"
            << (file % 3 == 0 ? "A & B" : "A") << "</name></sequence></xmeml>\n";
    }
    bool hasEnded = false;
    BatchWindow window({.open = [](const std::string&) {},
                        .showFile = [](const std::string&) {},
                        .notify = [&](const QString&, const QString&) { hasEnded = true; }});
    window.show();
    QApplication::processEvents();
    const Clock::time_point start = Clock::now();
    const PauseWatch watch;
    window.add({folder});
    runLoopUntil([&] { return window.model().rowCount() == files; });
    window.begin(BatchAction::check);
    runLoopUntil([&] { return hasEnded; });
    const double checked = Milliseconds(Clock::now() - start).count();
    window.findChild<QCheckBox*>(QStringLiteral("batchOnlyFailures"))->click();
    runLoopUntil([&] { return window.model().rowCount() < files; });
    std::printf("batch of %d files: found and checked in %.1f s\n", files, checked / 1e3);
    return watch.report("the same, in its window:");
}

// From the bytes of a file to its source on the screen.
bool measureSource(const std::string& path) {
    std::vector<double> times;
    for (int run = 0; run < 5; ++run) {
        std::ifstream file(path, std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(file)), {});
        SourceView view(QStringLiteral("Source"), nullptr);
        view.resize(900, 600);
        view.show();
        QApplication::processEvents();
        const Clock::time_point start = Clock::now();
        view.setSource(SourceText::of(std::move(bytes)));
        view.viewport()->repaint();
        times.push_back(Milliseconds(Clock::now() - start).count());
    }
    std::printf("source of 50 MB: shown in %.0f ms (less than 500)\n", median(times));
    return median(times) < 500;
}

// From the start of a process to the first thing that a window of it draws.
double timeToWindow(const char* kind) {
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    std::string program = self;
    std::string argument = kind;
    std::array<char*, 3> arguments = {program.data(), argument.data(), nullptr};
    const Clock::time_point start = Clock::now();
    pid_t child = 0;
    if (posix_spawn(&child, self.c_str(), nullptr, nullptr, arguments.data(), environ) != 0) {
        return 0;
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0 ? Milliseconds(Clock::now() - start).count() : 1e9;
}

bool measureFirstWindow() {
    constexpr int kRuns = 15;
    ErrorSlot ignored;
    std::ignore =
        platform::UserPreferences().setValue(AppController::kShowOpenDialogPreference, 0, ignored);
    std::vector<double> own;
    std::vector<double> empty;
    for (int run = 0; run < kRuns; ++run) {
        own.push_back(timeToWindow("--first-window"));
        empty.push_back(timeToWindow("--empty-window"));
    }
    const double ratio = median(own) / median(empty);
    std::printf(
        "first window: %.0f ms (at most 250), an empty one %.0f ms, ratio %.2f (at most 2)\n",
        median(own), median(empty), ratio);
    return median(own) <= 250 && ratio <= 2;
}

// Ends the process at the first thing that is drawn.
class FirstPaint : public QObject {
  public:
    bool eventFilter(QObject* /*object*/, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            std::_Exit(EXIT_SUCCESS);
        }
        return false;
    }
};

int showEmptyWindow(QApplication& toolkit) {
    FirstPaint paint;
    toolkit.installEventFilter(&paint);
    QMainWindow window;
    window.resize(460, 420);
    window.show();
    return QApplication::exec();
}

int showFirstWindow(QApplication& toolkit) {
    QMLog::createNewLog("Vornic", true);
    const Appearance appearance(SettingsPortal::sessionBus());
    Application application;
    FirstPaint paint;
    toolkit.installEventFilter(&paint);
    application.launch({});
    return QApplication::exec();
}

long residentMegabytes() {
    std::ifstream statm("/proc/self/statm");
    long pages = 0;
    statm >> pages >> pages;
    return pages * sysconf(_SC_PAGESIZE) / (1000 * 1000);
}

// A file with that many faults, in its window.
bool measureFindings(const std::string& path, int faults) {
    {
        std::ofstream file(path);
        file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml "
                "version=\"5\">\n";
        for (int fault = 0; fault < faults; ++fault) {
            file << "<name>R & D " << fault << "</name>\n";
        }
        file << "</xmeml>\n";
    }
    const OpenedFile opened(path);
    const PauseWatch watch;
    opened.window->check();
    opened.waitForHeader();
    const long used = residentMegabytes();
    std::printf("a file with %d findings: %ld MB in all (at most 300)\n", faults, used);
    return watch.report("the same, checked:") && used <= 300;
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
    const std::string_view wanted = argc > 1 ? argv[1] : "";
    if (wanted == "--empty-window") {
        return bench::showEmptyWindow(toolkit);
    }
    if (wanted == "--first-window") {
        return bench::showFirstWindow(toolkit);
    }
    std::string folder = "/tmp/vornic-bench-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror("mkdtemp");
        return EXIT_FAILURE;
    }
    setenv("HOME", folder.c_str(), 1);
    QMLog::createNewLog("Vornic", true);
    if (wanted == "--timeline" || wanted == "--batch") {
        const bool isFast = wanted == "--batch"
                                ? bench::measureBatch(folder + "/batch", 10'000)
                                : bench::measureTimeline(folder + "/long.fcpxml", 3000);
        platform::MainThread::shutdown();
        platform::joinDetachedThreads(std::chrono::seconds(10));
        return isFast ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    const std::string sound = folder + "/50 MB.xml";
    bool reached = bench::saveSampleProject({.bytes = 50'000'000}, sound);
    reached = bench::measureFirstWindow() && reached;
    reached = bench::measureReport(500'000) && reached;
    reached = bench::measureSource(sound) && reached;
    reached = bench::measureTimeline(folder + "/long.fcpxml", 3000) && reached;
    reached = bench::measureBatch(folder + "/batch", 10'000) && reached;
    reached = bench::measureTurns(sound, "50 MB") && reached;
    reached = bench::measureFindings(folder + "/faults.xml", 500'000) && reached;
    reached = bench::compareRepairs(sound, "repair a sound file, 50 MB:") && reached;
    platform::MainThread::shutdown();
    platform::joinDetachedThreads(std::chrono::seconds(10));
    QMLog::finishWriting();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return reached ? EXIT_SUCCESS : EXIT_FAILURE;
}
