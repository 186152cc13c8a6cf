#include "app/cli/Program.h"

#include <cstdio>
#include <new>

#include "app/cli/Complaint.h"
#include "app/cli/ExitStatus.h"
#include "app/cli/InterruptedRuns.h"
#include "app/cli/StandardStreams.h"
#include "base/Error.h"
#include "base/FormatString.h"
#include "foundation/log/QMLog.h"
#include "platform/processes/Termination.h"
#include "platform/settings/Bundle.h"
#include "ui/support/CrashReports.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

int statusUnlessInterrupted(int status) {
    const int signal = platform::interruption();
    return signal == 0 ? status : kSignalStatus + signal;
}

StopToken untilInterrupted() {
    return StopToken([] { return platform::interruption() != 0; });
}

int Program::run(const std::vector<std::string>& arguments,
                 const std::function<int(const CommandLine&)>& action) const {
    secureStandardStreams();
    try {
        const CommandLine line = CommandLine::parse(arguments, options);
        if (!line.fault().empty()) {
            return refuseUsage(line.fault());
        }
        if (line.has("--help")) {
            return print(usage);
        }
        if (line.has("--version")) {
            return print(formatString("%@ %s\n", name, VORNIC_VERSION));
        }
        return action(line);
    } catch (const std::bad_alloc&) {
        complainOfMemory(name);
        return kNotDone;
    }
}

int Program::runOnFiles(bool changesFiles, const std::function<int()>& work) const {
    if (log.empty()) {
        startCrashReports(name);
    } else {
        startCrashReports(name, log);
    }
    platform::catchInterruptions();
    if (!log.empty()) {
        QMLog::sharedController().setAppName(std::string(log));
    }
    QMLog::createNewLog(log.empty() ? platform::applicationName() : std::string(log), true);
    if (changesFiles) {
        for (const std::string& sentence : settleInterruptedRuns()) {
            complain(name, sentence);
        }
    }
    const int status = work();
    QMLog::finishWriting();
    return status;
}

int Program::refuseUsage(std::string_view fault) const {
    complain(name, fault);
    static_cast<void>(std::fwrite(usage.data(), 1, usage.size(), stderr));
    return kWrongUsage;
}

int Program::print(std::string_view text) const {
    writeToStandardOutput(text, true);
    if (const ErrorSlot error = standardOutputError()) {
        complain(name, error->localizedDescription());
        return kSomethingToSay;
    }
    return kNothingToSay;
}

}  // namespace vornic
