#include "app/cli/ConvertCommand.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include <unistd.h>

#include "app/cli/ExitStatus.h"
#include "app/cli/StandardStreams.h"
#include "base/FormatString.h"
#include "base/PathText.h"
#include "base/TerminalText.h"
#include "base/Text.h"
#include "foundation/log/QMLog.h"
#include "job/LeftFiles.h"
#include "platform/files/FileSystem.h"
#include "platform/items/ItemStatus.h"
#include "platform/processes/Console.h"
#include "platform/processes/Termination.h"
#include "platform/settings/Bundle.h"
#include "repair/document/Document.h"
#include "ui/support/CrashReports.h"
#include "xml/tree/XMLDocument.h"

namespace vornic {

namespace {

constexpr std::string_view kSwitch = "-convertxmeml";
constexpr std::int64_t kOldestVersion = 1;
constexpr std::int64_t kNewestVersion = 5;

void say(std::string_view message) {
    platform::consoleLog(textForStream(message, STDERR_FILENO));
}

int fail(std::string_view message) {
    say(message);
    return 1;
}

// What the parser had to mend is no message of the converter, but the log keeps it.
void logMends(const XMLDocument& document, const std::string& path) {
    for (const XMLMend& mend : document.mends()) {
        QMLog::appendLog("%@: line %li, column %li: %@", path, mend.line, mend.column, mend.what);
    }
}

void convertFile(const std::string& path, std::int64_t version) {
    ErrorSlot error;
    std::unique_ptr<XMLDocument> xml = XMLDocument::load(path, XMLMode::tolerant, error);
    if (!xml) {
        say(formatString("Unable to load XML file %@: %@", path, error->localizedDescription()));
        return;
    }
    logMends(*xml, path);
    const std::shared_ptr<Document> document = Document::create();
    document->setHasGUI(false);
    document->convertXMEMLVersion(formatString("%i", version), std::move(xml), path);
}

// A conversion that was killed may have left the file aside.
bool existsOrComesBack(const std::string& path) {
    if (!platform::fileExists(path)) {
        for (const Note& note : clearLeftFiles(parentFolder(path))) {
            say(note.text());
        }
    }
    return platform::fileExists(path);
}

void convertArgument(const std::string& argument, std::int64_t version) {
    std::string path = argument;
    if (!existsOrComesBack(path)) {
        path = joinPath(platform::currentDirectory(), argument);
        if (!platform::fileExists(path)) {
            say(formatString("File %@ does not exist", path));
            if (const ErrorSlot reason = platform::failedLook(argument)) {
                say(reason->localizedDescription());
            }
            return;
        }
    }
    try {
        convertFile(path, version);
    } catch (const std::bad_alloc&) {
        say(formatString("Unable to load XML file %@: There is not enough memory.", path));
    } catch (const std::exception& exception) {
        // The next file may be better.
        say(formatString("Unable to convert XML file %@: %@", path, exception.what()));
    }
}

}  // namespace

bool ConvertCommand::isWanted(const std::vector<std::string>& arguments) {
    return std::find(arguments.begin(), arguments.end(), kSwitch) != arguments.end();
}

int ConvertCommand::run(const std::vector<std::string>& arguments) {
    const auto found = std::find(arguments.begin(), arguments.end(), kSwitch);
    if (arguments.end() - found < 3) {
        return fail("Error: invalid syntax");
    }
    const std::int64_t version = integerValue(found[1]);
    if (version < kOldestVersion || version > kNewestVersion) {
        return fail("Error: XMEML version must be between 1 and 5");
    }
    secureStandardStreams();
    startCrashReports(kConvertProgram);
    platform::catchInterruptions();
    QMLog::createNewLog(platform::applicationName());
    for (auto file = found + 2; file != arguments.end() && platform::interruption() == 0; ++file) {
        convertArgument(*file, version);
    }
    QMLog::finishWriting();
    // The status is about syntax and version alone.
    if (const ErrorSlot error = standardOutputError()) {
        say(error->localizedDescription());
    }
    return statusUnlessInterrupted(0);
}

}  // namespace vornic
