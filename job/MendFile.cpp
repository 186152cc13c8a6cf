#include "job/MendFile.h"

#include <cerrno>
#include <utility>

#include "foundation/FormatString.h"
#include "job/WorkingCopy.h"
#include "platform/ContentDigest.h"
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

// Writes what is mended in memory into a working copy, which goes when it does not take the file's
// place.
class InPlace {
  public:
    InPlace(const std::string& path, Waiting& waiting, MendedFile& result)
        : path_(path), copy_(path, copyPath(path), waiting), result_(result) {}
    // After an exception.
    ~InPlace() {
        if (isLeft()) {
            static_cast<void>(copy_.discard());
        }
    }
    InPlace(const InPlace&) = delete;
    InPlace& operator=(const InPlace&) = delete;

    // Waits for a run that mends the file, and clears what a killed one has left.
    std::optional<std::string> read() {
        ErrorSlot ignored;
        result_.isCancelled =
            copy_.clearPath(ignored) == WorkingCopy::Clearing::cancelled || !copy_.settleLeft();
        std::optional<std::string> bytes =
            result_.isCancelled ? std::nullopt : platform::readFile(path_, result_.error);
        if (bytes) {
            digestRead_ = platform::ContentDigest::of(*bytes);
        }
        return bytes;
    }

    [[nodiscard]] const platform::ContentDigest::Value& digestRead() const { return digestRead_; }

    // The check of the bytes may still go on.
    void write(const std::string& bytes) {
        isWritten_ =
            !result_.error && !result_.isCancelled && (copy_.isMade() || make()) && save(bytes);
    }

    void finish(SwapObserver& observer) {
        if (isWritten_ && result_.mended.refusal.empty()) {
            swap(observer);
        }
        if (isLeft()) {
            ErrorSlot error;
            copy_.remove(error);
            isRemoved_ = true;
            if (error) {
                result_.notes.push_back(error->localizedDescription());
            }
        }
    }

    void takeNotes() {
        for (std::string& note : copy_.takeNotes()) {
            result_.notes.push_back(std::move(note));
        }
    }

  private:
    [[nodiscard]] bool isLeft() const {
        return copy_.isMade() && !isRemoved_ &&
               !(result_.swap && result_.swap->end == SwapEnd::done);
    }

    bool make() {
        for (auto step : {&WorkingCopy::clearPath, &WorkingCopy::create}) {
            const WorkingCopy::Clearing clearing = (copy_.*step)(result_.error);
            if (clearing != WorkingCopy::Clearing::done) {
                result_.isCancelled = clearing == WorkingCopy::Clearing::cancelled;
                return false;
            }
        }
        copy_.expect(digestRead_);
        return true;
    }

    bool save(const std::string& bytes) {
        copy_.save([&bytes](const WorkingCopy::Sink& sink) { return sink(bytes); }, result_.error);
        return !result_.error;
    }

    void swap(SwapObserver& observer) {
        if (copy_.isSourceBeingWritten()) {
            platform::failFileBecause(result_.error, path_, "mended", EBUSY,
                                      "another program has it open to write it");
            return;
        }
        result_.swap = copy_.swap(observer);
        result_.lostMetadata = copy_.lostMetadata();
        takeOutcome();
    }

    void takeOutcome() {
        const SwapResult& swap = *result_.swap;
        if (swap.end == SwapEnd::done) {
            if (swap.error) {
                result_.notes.push_back(swap.error->localizedDescription());
            }
            return;
        }
        result_.error = swap.error;
        if (!result_.error) {
            platform::failFileBecause(result_.error, path_, "mended", EBUSY,
                                      swap.end == SwapEnd::copyChanged
                                          ? "another program has changed its working copy"
                                          : "another program has changed it since it was read");
        }
        // Where files are that could not be put back.
        if (!swap.original.empty() && swap.original != path_) {
            result_.notes.push_back(formatString("The original is %@", swap.original));
        }
        if (!swap.repaired.empty() && swap.repaired != copy_.path()) {
            result_.notes.push_back(formatString("The mended file is %@", swap.repaired));
        }
    }

    const std::string& path_;
    platform::ContentDigest::Value digestRead_{};
    WorkingCopy copy_;
    MendedFile& result_;
    bool isWritten_ = false;
    bool isRemoved_ = false;
};

}  // namespace

MendedFile mendFile(const std::string& path, const MendRequest& request, Waiting& waiting,
                    SwapObserver& observer) {
    MendedFile result;
    InPlace place(path, waiting, result);
    std::optional<std::string> bytes = place.read();
    if (bytes && request.expected && *request.expected != place.digestRead()) {
        platform::failFileBecause(result.error, path, "mended", EBUSY,
                                  "another program has changed it since it was read");
    } else if (bytes) {
        result.mended =
            MendedBytes::of(std::move(*bytes), request,
                            [&place](const std::string& mended) { place.write(mended); });
        place.finish(observer);
    }
    place.takeNotes();
    return result;
}

}  // namespace vornic
