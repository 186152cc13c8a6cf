#include "tests/project/Sessions.h"

#include <filesystem>
#include <sstream>
#include <string_view>

#include "tests/support/machine/FileState.h"
#include "tests/support/programs/ProgramRunner.h"

namespace vornic::test {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kShownHome = "/home/anna";

struct CodeBlock {
    std::string kind;
    std::vector<std::string> lines;
};

std::vector<CodeBlock> codeBlocks(const std::string& document) {
    constexpr std::string_view kFence = "```";
    std::vector<CodeBlock> blocks;
    bool inside = false;
    std::istringstream lines(document);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(kFence)) {
            inside = !inside;
            if (inside) {
                blocks.push_back({line.substr(kFence.size()), {}});
            }
        } else if (inside) {
            blocks.back().lines.push_back(line);
        }
    }
    return blocks;
}

std::string quoted(std::string text) {
    for (std::size_t at = text.find('\''); at != std::string::npos; at = text.find('\'', at + 4)) {
        text.replace(at, 1, "'\\''");
    }
    return "'" + text + "'";
}

std::string replacingAll(std::string text, std::string_view what, std::string_view with) {
    for (std::size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
    return text;
}

}  // namespace

std::vector<Session> sessionsOf(const std::string& document) {
    std::vector<Session> found;
    for (const CodeBlock& block : codeBlocks(document)) {
        if (block.kind != "console") {
            continue;
        }
        Session session;
        for (const std::string& line : block.lines) {
            session.shown += line + "\n";
            if (line.starts_with("$ ")) {
                session.commands.push_back(line.substr(2));
            }
        }
        found.push_back(std::move(session));
    }
    return found;
}

std::map<std::string, std::string> programsOf(const std::string& document) {
    std::map<std::string, std::string> programs;
    for (const CodeBlock& block : codeBlocks(document)) {
        if (block.lines.size() < 2 || !block.lines[0].starts_with("#!") ||
            !block.lines[1].starts_with("# ")) {
            continue;
        }
        const std::string name = block.lines[1].substr(2, block.lines[1].find(' ', 2) - 2);
        for (const std::string& line : block.lines) {
            programs[name] += line + "\n";
        }
    }
    return programs;
}

SessionPlayer::SessionPlayer(const std::string& projects) {
    fs::copy(material_.fixture(projects), projects_, fs::copy_options::recursive);
    fs::create_directory(added_);
}

void SessionPlayer::addProgram(const std::string& name, const std::string& script) const {
    const std::string path = added_ + "/" + name;
    writeBytes(path, script);
    fs::permissions(path, fs::perms::owner_all);
}

std::string SessionPlayer::play(const Session& session) const {
    std::string script = "exec 2>&1\n";
    for (const std::string& command : session.commands) {
        script += "status=$?; printf '%s\\n' " + quoted("$ " + command) + "; (exit $status)\n" +
                  command + "\n";
    }
    const std::string programs = fs::path(material_.program("vornic")).parent_path();
    const ProgramResult result =
        runProgram({.program = "/bin/bash",
                    .arguments = {"-c", script},
                    .environment = {"HOME=" + sandbox_.home(), "LC_ALL=C.UTF-8",
                                    "PATH=" + added_ + ":" + programs + ":/usr/bin:/bin"},
                    .folder = projects_});
    return replacingAll(result.output, sandbox_.home(), kShownHome);
}

}  // namespace vornic::test
