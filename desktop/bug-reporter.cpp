// Shows the report of a crash: what the programs hand reports of the run before to.

#include <QApplication>
#include <QIcon>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "app/cli/StandardStreams.h"
#include "desktop/Appearance.h"
#include "desktop/CrashReportWindow.h"

namespace {

int refuseUsage() {
    static_cast<void>(
        std::fputs("Usage: vornic-bug-reporter REPORT\n"
                   "Shows the report of a crash. Nothing is sent.\n",
                   stderr));
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    vornic::secureStandardStreams();
    if (argc == 2 && std::string_view(argv[1]) == "--version") {
        return std::puts("vornic-bug-reporter " VORNIC_VERSION) < 0 ? EXIT_FAILURE : EXIT_SUCCESS;
    }
    if (argc < 2 || argv[argc - 1][0] == '-') {
        return refuseUsage();
    }
    const QApplication toolkit(argc, argv);
    if (argc != 2) {
        return refuseUsage();
    }
    QApplication::setApplicationName(QStringLiteral("Vornic"));
    QApplication::setDesktopFileName(QStringLiteral("com.quillmark.BugReporter"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/vornic-128.png")));
    const vornic::Appearance appearance(vornic::SettingsPortal::sessionBus());
    vornic::CrashReportWindow window(std::filesystem::absolute(argv[1]));
    window.show();
    return QApplication::exec();
}
