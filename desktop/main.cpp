#include <QApplication>
#include <QIcon>
#include <QSocketNotifier>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include <unistd.h>

#include "app/cli/StandardStreams.h"
#include "app/cli/WindowHelp.h"
#include "desktop/Appearance.h"
#include "desktop/Application.h"
#include "desktop/CloseRequests.h"
#include "desktop/DisplayName.h"
#include "desktop/InstanceLink.h"
#include "desktop/QtAlertPanel.h"
#include "desktop/QtRunLoop.h"
#include "foundation/log/QMLog.h"
#include "platform/processes/Termination.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"
#include "ui/support/CrashReports.h"

namespace {

// Long enough for a run on a slow disk to reach its next check point.
constexpr std::chrono::seconds kLongestEnd{60};

bool hasDisplay() {
    const auto isSet = [](const char* name) {
        const char* const value = std::getenv(name);
        return value != nullptr && *value != '\0';
    };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM");
}

// Ends the program, which has nothing to lose yet, with what the toolkit says and without a crash.
void refuseToStart(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    if (type == QtFatalMsg) {
        static_cast<void>(std::fprintf(stderr, "vornic: No window can be opened. %s\n",
                                       qPrintable(text.section(u'\n', 0, 0))));
        std::_Exit(EXIT_FAILURE);
    }
}

// The files that the program is started with, as bytes, whatever the locale makes of them. What
// begins with a hyphen, and the toolkit's own options, are none, but for what follows "--".
std::vector<std::string> filesOf(int argc, char** argv) {
    std::vector<std::string> paths;
    char* const folder = getcwd(nullptr, 0);
    const std::string workingFolder = std::string(folder != nullptr ? folder : "") + "/";
    std::free(folder);  // NOLINT(cppcoreguidelines-no-malloc): getcwd allocates
    bool onlyFiles = false;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (!onlyFiles && argument == "--") {
            onlyFiles = true;
        } else if (!argument.empty() && (onlyFiles || argument.front() != '-')) {
            paths.push_back(argument.front() == '/' ? argument : workingFolder + argument);
        }
    }
    return paths;
}

QIcon makeIcon() {
    QIcon icon;
    for (const char* const size : {"16", "32", "48", "64", "128", "256"}) {
        icon.addFile(QStringLiteral(":/icons/vornic-%1.png").arg(QLatin1String(size)));
    }
    return icon;
}

}  // namespace

int main(int argc, char** argv) {
    vornic::secureStandardStreams();
    if (const std::optional<int> status = vornic::answerWithoutWindow(
            std::vector<std::string>(argv, argv + argc), "vornic-desktop")) {
        return *status;
    }
    vornic::startCrashReports(vornic::kDesktopProgram);
    if (!hasDisplay()) {
        static_cast<void>(std::fputs(
            "vornic: There is no display to open a window on (DISPLAY and WAYLAND_DISPLAY are not "
            "set).\nTo repair files without one: vornic-repair FILE...\n",
            stderr));
        return EXIT_FAILURE;
    }
    const std::string chosenDisplay = vornic::displayOption(argc, argv);
    qInstallMessageHandler(refuseToStart);
    QApplication toolkit(argc, argv);
    qInstallMessageHandler(nullptr);
    QApplication::setApplicationName(QStringLiteral("Vornic"));
    QApplication::setDesktopFileName(QStringLiteral("com.quillmark.Vornic"));
    QApplication::setWindowIcon(makeIcon());
    QApplication::setQuitOnLastWindowClosed(false);
    const std::vector<std::string> files = filesOf(argc, argv);

    vornic::InstanceLink link(vornic::InstanceLink::folderFor(
        vornic::displayName(QApplication::platformName().toStdString(), chosenDisplay)));
    const bool isAlone = std::getenv("VORNIC_NEW_INSTANCE") != nullptr;
    if (!isAlone && link.handOver(files)) {
        return EXIT_SUCCESS;
    }
    const vornic::Appearance appearance(vornic::SettingsPortal::sessionBus());
    vornic::platform::MainThread::adopt();
    vornic::platform::MainThread::setLoop(std::make_shared<vornic::QtRunLoop>());
    vornic::QMAlert::setPanelFactory(std::make_shared<vornic::QtAlertPanelFactory>());
    {
        vornic::Application application;
        const vornic::CloseRequests closeRequests;
        vornic::platform::catchInterruptions();
        QSocketNotifier interruption(vornic::platform::interruptionDescriptor(),
                                     QSocketNotifier::Read);
        QObject::connect(&interruption, &QSocketNotifier::activated, &application,
                         [&application, &interruption] {
                             interruption.setEnabled(false);
                             application.terminate();
                         });
        if (!isAlone) {
            link.listen(application);
        }
        application.launch(files);
        application.run();
        application.finish();
        // A start from here on is one of its own.
        link.stop();
        vornic::platform::MainThread::shutdown();
        vornic::platform::joinDetachedThreads(kLongestEnd);
        vornic::QMLog::finishWriting();
        vornic::platform::postWillTerminate();
    }
    vornic::platform::MainThread::setLoop(nullptr);
    return EXIT_SUCCESS;
}
