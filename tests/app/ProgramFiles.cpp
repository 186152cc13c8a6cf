#include "tests/app/ProgramFiles.h"

#include <utility>

#include "tests/support/texts/LogText.h"

namespace vornic::test {

namespace {

constexpr std::string_view kName = "<name>Harbour</name>";

std::string xmeml(std::string_view version, std::string_view name) {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE xmeml>\n"
        "<xmeml version=\"";
    text.append(version);
    text +=
        "\">\n"
        "    <sequence id=\"harbour\">\n"
        "        ";
    text.append(name);
    text +=
        "\n"
        "        <duration>250</duration>\n"
        "    </sequence>\n"
        "</xmeml>\n";
    return text;
}

std::string report(const std::string& path, const std::string& finding,
                   const std::string& outcome) {
    return "Starting repair for file " + path +
           "...\n"
           "Creating temporary file...\n"
           "Checking file...\n"
           "File loaded successfully.\n"
           "Filtering invalid characters...\n" +
           finding +
           "Checking header tags...\n"
           "Checking version tags...\n"
           "Updating type/creator codes...\n" +
           outcome;
}

std::vector<std::string> logOf(const std::string& path, const std::string& report) {
    std::vector<std::string> messages{"Beginning repair for file " + path + "..."};
    for (const std::string& line : linesOf(report)) {
        messages.push_back(line);
        if (line == "Filtering invalid characters...") {
            messages.emplace_back("Filtering invalid characters from string...");
        } else if (line == "Checking header tags..." || line == "Checking version tags...") {
            // The step says it in the report, and the check that it calls in the log.
            messages.push_back(line);
        }
    }
    // The alert says once more how the run ended.
    messages.push_back(messages.back());
    return messages;
}

}  // namespace

ProgramSettings ProgramFiles::settings(std::string_view program,
                                       std::vector<std::string> arguments) const {
    ProgramSettings settings;
    settings.program = material_.program(program);
    settings.arguments = std::move(arguments);
    settings.folder = folder();
    settings.environment = {"HOME=" + home(), "TMPDIR=" + home() + "/../tmp",
                            "XDG_DATA_HOME=" + home() + "/.local/share",
                            "XDG_CACHE_HOME=" + home() + "/.cache",
                            "XDG_CONFIG_HOME=" + home() + "/.config"};
    return settings;
}

ProgramSettings ProgramFiles::repairer(std::vector<std::string> arguments) const {
    return settings("vornic-repair", std::move(arguments));
}

ProgramSettings ProgramFiles::converter(std::vector<std::string> arguments) const {
    return settings("vornic", std::move(arguments));
}

ProgramResult ProgramFiles::repair(std::vector<std::string> arguments) const {
    return runProgram(repairer(std::move(arguments)));
}

ProgramResult ProgramFiles::convert(std::vector<std::string> arguments) const {
    return runProgram(converter(std::move(arguments)));
}

std::string ProgramFiles::library(std::string_view folder) const {
    return home() + "/.local/share/quillmark/" + std::string(folder);
}

std::string ProgramFiles::logPath(int generation) const {
    return library("Logs/Quillmark/Vornic.") + std::to_string(generation) + ".log";
}

std::vector<std::string> ProgramFiles::log() const {
    return withoutLogHeader(logMessages(readBytes(logPath())));
}

std::string ProgramFiles::writeSound(std::string_view name) const {
    return write(name, soundXMEML());
}

std::string ProgramFiles::writeDamaged(std::string_view name) const {
    return write(name, damagedXMEML());
}

std::string soundXMEML(std::string_view version) {
    return xmeml(version, kName);
}

std::string damagedXMEML() {
    return xmeml("5", "<name>Har\vbour</name>");
}

std::string repairedXMEML() {
    return xmeml("5", kName);
}

std::string soundReport(const std::string& path) {
    return report(path, "",
                  "No repair was necessary. No critical errors were found in the file.\n");
}

std::string repairedReport(const std::string& path) {
    const std::size_t index = damagedXMEML().find('\v');
    return report(path, "Invalid character at byte " + std::to_string(index) + " removed.\n",
                  "The file was repaired successfully. Errors were found in the file and were "
                  "successfully repaired.\n");
}

bool tellsOriginal(const std::string& errors, const std::string& trash) {
    const std::string ending = "; vornic-repair --undo brings it back.\n";
    return errors.starts_with("The original is " + trash + "/") && errors.ends_with(ending) &&
           errors.find(ending) == errors.size() - ending.size();
}

std::vector<std::string> soundLog(const std::string& path) {
    return logOf(path, soundReport(path));
}

std::vector<std::string> repairedLog(const std::string& path) {
    return logOf(path, repairedReport(path));
}

}  // namespace vornic::test
