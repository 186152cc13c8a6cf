#include "job/MendFile.h"

#include <cerrno>
#include <utility>

#include "foundation/FormatString.h"
#include "job/WorkingCopy.h"
#include "platform/Failure.h"
#include "platform/FileSystem.h"
#include "platform/PathText.h"

namespace vornic {

namespace {

// Out of the way of every name that a user may have given.
std::string copyPath(const std::string& path) {
    return platform::joinPath(platform::parentFolder(path),
                              "." + platform::lastComponent(path) + ".vornic-mend");
}

// Writes what was mended in memory; the copy goes when the file does not take its place.
class InPlace {
  public:
    InPlace(const std::string& path, Waiting& waiting, MendedFile& result)
        : path_(path), copy_(path, copyPath(path), waiting), result_(result) {}

    void run(const std::string& bytesRead, SwapObserver& observer) {
        const bool isMade = make() && isUnchanged(bytesRead) && save();
        if (isMade) {
            result_.swap = copy_.swap(observer);
            result_.lostMetadata = copy_.lostMetadata();
            takeOutcome();
        }
        if (copy_.isMade() && !(result_.swap && result_.swap->end == SwapEnd::done)) {
            ErrorSlot ignored;
            copy_.remove(ignored);
        }
        result_.notes = copy_.takeNotes();
    }

  private:
    bool make() {
        for (auto step : {&WorkingCopy::clearPath, &WorkingCopy::create}) {
            const WorkingCopy::Clearing clearing = (copy_.*step)(result_.error);
            if (clearing != WorkingCopy::Clearing::done) {
                result_.isCancelled = clearing == WorkingCopy::Clearing::cancelled;
                return false;
            }
        }
        return true;
    }

    bool isUnchanged(const std::string& bytesRead) {
        const std::optional<std::string> bytes = copy_.read(result_.error);
        if (bytes && *bytes != bytesRead) {
            platform::failFileBecause(result_.error, path_, "mended", EBUSY,
                                      "another program has changed it since it was read");
        }
        return bytes && *bytes == bytesRead;
    }

    bool save() {
        copy_.save([this](const WorkingCopy::Sink& sink) { return sink(result_.mended.bytes); },
                   result_.error);
        return !result_.error;
    }

    void takeOutcome() {
        if (result_.swap->end == SwapEnd::done) {
            return;
        }
        result_.error = result_.swap->error;
        if (!result_.error) {
            platform::failFileBecause(result_.error, path_, "mended", EBUSY,
                                      "another program has changed it since it was read");
        }
    }

    const std::string& path_;
    WorkingCopy copy_;
    MendedFile& result_;
};

}  // namespace

MendedFile mendFile(const std::string& path, const MendRequest& request, Waiting& waiting,
                    SwapObserver& observer) {
    MendedFile result;
    std::optional<std::string> bytes = platform::readFile(path, result.error);
    if (!bytes) {
        return result;
    }
    result.mended = MendedBytes::of(*bytes, request);
    if (result.mended.bytes != *bytes) {
        InPlace(path, waiting, result).run(*bytes, observer);
    }
    return result;
}

}  // namespace vornic
