#include "tests/faults/Judge.h"

#include <algorithm>
#include <csignal>
#include <utility>

namespace vornic::test {

namespace {

bool isAmong(const std::string& text, const std::vector<std::string>& texts) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

bool says(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

Demands demandsOf(const SceneKind& kind, const Baseline& baseline) {
    Demands demands;
    demands.atPath = {kind.bytes, baseline.result};
    demands.atPathInTheEnd = {baseline.result};
    if (kind.work != SceneKind::Work::conversion) {
        demands.kept.push_back(kind.bytes);
    }
    if (kind.work == SceneKind::Work::undo) {
        const std::string repaired = baseline.before.files.at(kind.file);
        demands.atPath.push_back(repaired);
        demands.kept.push_back(repaired);
        demands.atPathInTheEnd = {repaired};
    }
    for (const auto& [name, bytes] : kind.others) {
        demands.kept.push_back(bytes);
    }
    return demands;
}

Judge::Judge(const SceneKind& kind, const Baseline& baseline, Demands demands)
    : kind_(kind), baseline_(baseline), demands_(std::move(demands)) {}

// The copy's own name, or one with a number where that was taken.
bool Judge::isCopyName(const std::string& name) const {
    const std::size_t dot = kind_.made.rfind('.');
    return !kind_.made.empty() && name.starts_with(kind_.made.substr(0, dot)) &&
           name.ends_with(kind_.made.substr(dot));
}

std::string Judge::bytesAtPath(const World& world) const {
    const auto file = world.files.find(kind_.file);
    return file == world.files.end() ? "" : file->second;
}

std::string Judge::nameOfBytes(const std::string& bytes) const {
    if (bytes.empty()) {
        return "nothing";
    }
    if (bytes == kind_.bytes) {
        return "the original";
    }
    if (bytes == baseline_.result) {
        return "the result";
    }
    return std::to_string(bytes.size()) + " other bytes beginning \"" + bytes.substr(0, 60) + "\"";
}

void Judge::judgeEnd(const ProgramEnd& end) {
    if (!demands_.hasBegun && end.signal != 0) {
        return;
    }
    if (end.hung) {
        add("the program hung");
    } else if (end.signal != 0 && !end.killed && end.signal != SIGXFSZ && !demands_.mayCrash) {
        add("signal " + std::to_string(end.signal) + " ended the program");
    } else if (end.signal != 0 && !end.killed && end.errors.empty()) {
        add("signal " + std::to_string(end.signal) + " ended the program without a word");
    }
}

void Judge::judgeFiles(const World& world, const std::vector<std::string>& atPath) {
    const std::string bytes = bytesAtPath(world);
    if (!isAmong(bytes, atPath)) {
        add("at the path there is " + nameOfBytes(bytes));
    }
    for (const std::string& kept : demands_.kept) {
        if (!world.holds(kept)) {
            add("lost: " + nameOfBytes(kept));
        }
    }
    for (const auto& [name, made] : world.files) {
        if (isCopyName(name) && made != baseline_.world.files.at(kind_.made)) {
            add("the copy " + name + " is not whole");
        }
    }
    for (const auto& [name, others] : kind_.others) {
        const auto found = world.files.find(name);
        const bool stands = found != world.files.end() && found->second == others;
        const bool mayGo = name == workingCopyName(kind_) && world.isInTrash(others);
        if (!stands && !mayGo && !isAmong(name, demands_.strangers)) {
            add("the file " + name + " is not as it was");
        }
    }
}

void Judge::judgeRun(const ProgramEnd& end, const World& world) {
    judgeEnd(end);
    judgeFiles(world, demands_.atPath);
    if (end.signal == 0 && !end.hung) {
        judgeTruth(end, world);
    }
}

void Judge::judgeTruth(const ProgramEnd& end, const World& world) {
    if (!demands_.sameWork) {
        return;
    }
    switch (kind_.work) {
        case SceneKind::Work::repair:
            judgeRepair(end, world);
            break;
        case SceneKind::Work::conversion:
            judgeConversion(end, world);
            break;
        case SceneKind::Work::undo:
            judgeUndo(end, world);
            break;
        case SceneKind::Work::inPlace:
            judgeInPlace(end, world);
            break;
        case SceneKind::Work::copy:
            judgeCopy(end, world);
            break;
    }
    judgeMetadata(end, world);
}

void Judge::judgeRepair(const ProgramEnd& end, const World& world) {
    const bool isSound = baseline_.result == kind_.bytes;
    const bool isDone =
        bytesAtPath(world) == baseline_.result && (isSound || world.isInTrash(kind_.bytes));
    const bool isGood = baseline_.end.status == 0 && isDone;
    if (end.status == 0 && !isGood) {
        add("status 0, and the file is not sound or not in the Trash");
    }
    if (end.status != 0 && end.status != 1) {
        add("status " + std::to_string(end.status));
    }
    // A run that cannot mend a file says so in its report.
    const bool reported = baseline_.end.status != 0 || says(end.output, "Unable to");
    if (end.status == 1 && demands_.canSpeak && end.errors.empty() && !reported) {
        add("status 1, and no word why");
    }
    if (!isSound && !isDone && says(end.output, "No repair was necessary")) {
        add("a damaged file passed for sound");
    }
    const bool leftCopy = world.files.contains(workingCopyName(kind_)) &&
                          !kind_.others.contains(workingCopyName(kind_)) &&
                          !isAmong(workingCopyName(kind_), demands_.strangers);
    if (leftCopy && !says(end.output + end.errors, "-backup.")) {
        add("a working copy is left, and no word of it");
    }
}

void Judge::judgeInPlace(const ProgramEnd& end, const World& world) {
    const bool isDone = bytesAtPath(world) == baseline_.result && world.isInTrash(kind_.bytes);
    if (end.status == 0 && !isDone) {
        add("status 0, and the file is not changed or the original not in the Trash");
    }
    const bool isTold = end.status == 3 && !end.errors.empty();
    if (!isDone && demands_.canSpeak && !isTold) {
        add("not changed, and no word why, with status " + std::to_string(end.status));
    }
    if (isDone && end.status != 0 && demands_.canSpeak && end.errors.empty()) {
        add("changed, with status " + std::to_string(end.status) + " and no word why");
    }
    // Without memory it cannot be determined what had been done by then.
    if (isDone && end.status == 3 && demands_.failureMustBeTrue &&
        !says(end.errors, "not enough memory")) {
        add("changed, and told as a failure");
    }
    if (world.files.contains(workingCopyName(kind_)) &&
        !isAmong(workingCopyName(kind_), demands_.strangers) &&
        !says(end.errors, workingCopyName(kind_))) {
        add("a working copy is left, and no word of it");
    }
}

// A copy that is there is whole, whatever has happened.
void Judge::judgeCopy(const ProgramEnd& end, const World& world) {
    const bool isMade = world.files.contains(kind_.made);
    if (!isMade && end.status == baseline_.end.status) {
        add("no copy, and the status of one that was made");
    }
    if (!isMade && demands_.canSpeak && (end.status != 3 || end.errors.empty())) {
        add("no copy, and no word why, with status " + std::to_string(end.status));
    }
    if (isMade && end.status == 3 && demands_.failureMustBeTrue &&
        !says(end.errors, "not enough memory")) {
        add("a copy, and told as a failure");
    }
}

void Judge::judgeUndo(const ProgramEnd& end, const World& world) {
    const std::string& repaired = baseline_.before.files.at(kind_.file);
    const bool isDone = bytesAtPath(world) == kind_.bytes && world.isInTrash(repaired);
    if (end.status == 0 && !isDone) {
        add("status 0, and the original is not back or the result not in the Trash");
    }
    if (end.status != 0 && end.status != 1 && end.status != 3) {
        add("status " + std::to_string(end.status));
    }
    if (end.status != 0 && demands_.canSpeak && end.errors.empty()) {
        add("not undone, and no word why");
    }
    if (end.status == 3 && isDone && demands_.failureMustBeTrue) {
        add("undone, and told as a failure");
    }
}

void Judge::judgeConversion(const ProgramEnd& end, const World& world) {
    const bool isConverted = bytesAtPath(world) == baseline_.result;
    const std::string said = end.output + end.errors;
    if (demands_.canSpeak && !isConverted && said.empty()) {
        add("not converted, and no word why");
    }
    if (demands_.failureMustBeTrue && baseline_.result != kind_.bytes && isConverted &&
        says(said, "Unable to save file")) {
        add("converted, and told as a failure");
    }
}

void Judge::judgeMetadata(const ProgramEnd& end, const World& world) {
    const bool isSilent = end.output == baseline_.end.output && end.errors == baseline_.end.errors;
    if (demands_.canSpeak && isSilent && end.status == 0 &&
        bytesAtPath(world) == baseline_.result && world.metadata != baseline_.world.metadata) {
        add("mode or attributes are not as without faults, and no word of it");
    }
}

void Judge::judgeNextRun(const ProgramEnd& end, const World& world) {
    const std::size_t before = wrongs_.size();
    demands_.mayCrash = false;
    demands_.hasBegun = true;
    judgeEnd(end);
    const bool isFixed = !demands_.atPathInTheEnd.empty();
    judgeFiles(world, isFixed ? demands_.atPathInTheEnd : demands_.atPath);
    if (demands_.sameWork && end.status != baseline_.end.status &&
        end.status != baseline_.again.status) {
        add("status " + std::to_string(end.status) + ": " + end.errors);
    }
    for (const auto& [name, bytes] : world.files) {
        const bool isKnown = name == kind_.file || kind_.others.contains(name) ||
                             isCopyName(name) || isAmong(name, demands_.strangers);
        if (!isKnown) {
            add(name + " is still there");
        }
    }
    for (const auto& [path, ignored] : world.temporaries) {
        add("the temporary file " + path + " is still there");
    }
    for (std::size_t index = before; index < wrongs_.size(); ++index) {
        wrongs_[index] = "after the next run: " + wrongs_[index];
    }
}

}  // namespace vornic::test
