#include "app/cli/FileMending.h"

#include <string_view>
#include <utility>

#include "app/cli/ExitStatus.h"
#include "base/FormatString.h"
#include "base/PathText.h"
#include "formats/FileKind.h"
#include "formats/fcpxml/Bundle.h"
#include "foundation/log/QMLog.h"
#include "job/JournaledSwap.h"
#include "job/MendFile.h"
#include "job/ResultFile.h"
#include "platform/files/FileSystem.h"
#include "platform/processes/Termination.h"
#include "report/RuleTable.h"

#ifndef VORNIC_VERSION
#error "VORNIC_VERSION is the project's version"
#endif

namespace vornic {

namespace {

constexpr std::string_view kProgram = "vornic-check";

void notMade(std::vector<MendRecord>& records, std::string_view why) {
    for (MendRecord& record : records) {
        if (record.isMade) {
            record.isMade = false;
            record.why = why;
        }
    }
}

// Fixes one file.
class Fixing {
  public:
    Fixing(const std::string& path, const CheckOptions& options, const FixSettings& settings)
        : path_(path), settings_(settings) {
        request_.asked = settings.asked;
        request_.toUTF8 = settings.toUTF8;
        request_.check = options;
        request_.check.fileName = lastComponent(path);
    }

    FixedFile run() && {
        hasWrongName_ = settings_.renames && needsOtherName();
        if (settings_.isDryRun || settings_.output || hasWrongName_) {
            fixCopy();
        } else {
            fixInPlace();
        }
        fixed_.report.path = path_;
        return std::move(fixed_);
    }

  private:
    [[nodiscard]] bool needsOtherName() const {
        ErrorSlot ignored;
        const std::optional<std::string> bytes = platform::readFile(path_, ignored);
        return bytes &&
               checkFile(*bytes, request_.check).findings.count("values-extension"_rule) != 0;
    }

    void fixInPlace() {
        // The run that has the file may take long; only an interruption ends the waiting.
        const Waiting waiting{
            .tell =
                [this](const std::string& path) {
                    fixed_.lines.push_back(
                        formatString("Waited for another program that used the file %@.", path));
                },
            .stop = untilInterrupted()};
        JournaledSwap journaled(std::string(kProgram), VORNIC_VERSION, JournalEntry::Action::mend);
        MendedFile result = mendFile(path_, request_, waiting, journaled);
        fixed_.lines.insert(fixed_.lines.end(), result.notes.begin(), result.notes.end());
        take(std::move(result.mended));
        if (result.error || result.isCancelled) {
            return refuse(result.error ? result.error->localizedDescription()
                                       : formatString("The file %@ was not mended.", path_));
        }
        if (!result.swap) {
            return;
        }
        const std::string original = formatString(
            "The original is %@%@", result.swap->original,
            journaled.isWrittenDown() ? "; vornic-repair --undo brings it back." : ".");
        QMLog::appendLog("The file %@ was mended. %@", path_, original);
        fixed_.lines.push_back(original);
        tellLost(result.lostMetadata);
    }

    void fixCopy() {
        ErrorSlot error;
        const std::optional<std::string> bytes = platform::readFile(path_, error);
        if (!bytes) {
            return refuse(error->localizedDescription());
        }
        MendedBytes mended = MendedBytes::of(*bytes, request_);
        if (settings_.isDryRun) {
            fixed_.difference = mended.difference(path_, path_);
            mended.report = checkFile(*bytes, request_.check);
            notMade(mended.records, "--dry-run writes nothing");
        }
        fixed_.report.kind = mended.report.kind;
        const bool writes = !settings_.isDryRun && mended.refusal.empty();
        const std::string result = writes ? mended.bytes : "";
        take(std::move(mended));
        if (writes) {
            writeCopy(result);
        }
    }

    void writeCopy(const std::string& bytes) {
        const std::string wanted = wantedPath();
        ErrorSlot error;
        const std::optional<ResultFile> written = writeResultFile(wanted, bytes, path_, error);
        if (!written) {
            return refuse(error->localizedDescription());
        }
        fixed_.lines.push_back(formatString("The mended file is %@", written->path));
        if (hasWrongName_) {
            tellName(written->path);
        }
        tellLost(written->lostMetadata);
    }

    // The copy has the ending that was missed.
    void tellName(const std::string& path) {
        for (MendRecord& record : *fixed_.report.mends) {
            if (record.finding.rule == "values-extension"_rule) {
                record.finding.mend =
                    Mend{Confidence::ask, "write a copy named " + lastComponent(path), {}};
                record.isMade = true;
                record.why.clear();
            }
        }
    }

    [[nodiscard]] std::string wantedPath() const {
        const std::string name = hasWrongName_ ? rightName() : lastComponent(path_);
        if (!settings_.output) {
            return path_.substr(0, path_.size() - lastComponent(path_).size()) + name;
        }
        return platform::isDirectory(*settings_.output)
                   ? joinPath(*settings_.output, nameOfBundle().value_or(name))
                   : *settings_.output;
    }

    // What a file that lies in a bundle is called outside of it.
    [[nodiscard]] std::optional<std::string> nameOfBundle() const {
        const std::string folder = parentFolder(path_);
        if (!fcpxml::isBundleName(folder)) {
            return std::nullopt;
        }
        return splitExtension(lastComponent(folder)).stem + ".fcpxml";
    }

    // The file's name with the ending that its contents ask for.
    [[nodiscard]] std::string rightName() const {
        const bool isFCPXML = fixed_.report.kind == nameOf(FileKind::fcpxml);
        return splitExtension(lastComponent(path_)).stem + (isFCPXML ? ".fcpxml" : ".xml");
    }

    void take(MendedBytes mended) {
        fixed_.report = std::move(mended.report);
        fixed_.report.mends = std::move(mended.records);
        if (!mended.refusal.empty()) {
            refuse(formatString("The file %@ was not mended: %@.", path_, mended.refusal));
        }
    }

    // The file is what it was, and so is what is said about it.
    void refuse(std::string reason) {
        fixed_.refusal = std::move(reason);
        ErrorSlot error;
        std::vector<MendRecord> records =
            std::move(fixed_.report.mends).value_or(std::vector<MendRecord>());
        notMade(records, "the file was not written");
        if (std::optional<std::string> bytes = platform::readFile(path_, error)) {
            fixed_.report = checkFile(*bytes, request_.check);
            fixed_.report.mends = std::move(records);
        }
    }

    void tellLost(const std::string& lostMetadata) {
        if (!lostMetadata.empty()) {
            fixed_.lines.push_back(
                formatString("Something of the file %@ was not kept. %@", path_, lostMetadata));
        }
    }

    const std::string& path_;
    const FixSettings& settings_;
    MendRequest request_;
    FixedFile fixed_;
    bool hasWrongName_ = false;
};

}  // namespace

FixedFile fixFile(const std::string& path, const CheckOptions& options,
                  const FixSettings& settings) {
    return Fixing(path, options, settings).run();
}

}  // namespace vornic
