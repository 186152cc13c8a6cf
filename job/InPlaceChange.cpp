#include "job/InPlaceChange.h"

#include <cerrno>
#include <utility>

#include "base/FormatString.h"
#include "base/PathText.h"
#include "foundation/log/QMLog.h"
#include "platform/files/Failure.h"
#include "platform/files/FileSystem.h"

namespace vornic {

namespace {

// Out of the way of every name that a user may have given.
std::string copyPath(const std::string& path, const std::string& verb) {
    return joinPath(parentFolder(path), "." + lastComponent(path) + ".vornic-" + verb);
}

}  // namespace

InPlaceChange::InPlaceChange(const std::string& path, Words words, const Waiting& waiting,
                             InPlaceResult& result)
    : path_(path),
      words_(std::move(words)),
      copy_(path, copyPath(path, words_.verb), waiting),
      result_(result) {}

// After an exception.
InPlaceChange::~InPlaceChange() {
    if (isLeft()) {
        static_cast<void>(copy_.discard());
    }
}

std::optional<std::string> InPlaceChange::read(
    const std::optional<platform::ContentDigest::Value>& expected) {
    std::optional<std::string> bytes = readUndigested();
    if (bytes) {
        expect(*bytes);
    }
    if (bytes && expected && *expected != digestRead_) {
        platform::failFileBecause(result_.error, path_, words_.participle, EBUSY,
                                  "another program has changed it since it was read");
        return std::nullopt;
    }
    return bytes;
}

void InPlaceChange::clearLeft() {
    ErrorSlot ignored;
    result_.isCancelled =
        copy_.clearPath(ignored) == WorkingCopy::Clearing::cancelled || !copy_.settleLeft();
}

std::optional<std::string> InPlaceChange::readUndigested() {
    clearLeft();
    return result_.isCancelled ? std::nullopt : platform::readFile(path_, result_.error);
}

void InPlaceChange::expect(std::string_view bytesRead) {
    digestRead_ = platform::ContentDigest::of(bytesRead);
}

// The check of the bytes may still go on.
void InPlaceChange::write(const std::string& bytes) {
    write([&bytes](const WorkingCopy::Sink& sink) { return sink(bytes); });
}

void InPlaceChange::write(const WorkingCopy::Writer& bytes) {
    isWritten_ =
        !result_.error && !result_.isCancelled && (copy_.isMade() || make()) && save(bytes);
    if (isWritten_) {
        copy_.synchronize();
    }
}

void InPlaceChange::finish(bool isWanted, SwapObserver& observer) {
    if (isWritten_ && isWanted) {
        swap(observer);
    }
    if (isLeft()) {
        ErrorSlot error;
        copy_.remove(error);
        isRemoved_ = true;
        // A copy that could not be filled is gone already.
        if (error && error->code != ENOENT) {
            result_.notes.push_back(error->localizedDescription());
        }
    }
}

void InPlaceChange::takeNotes() {
    for (const Note& note : copy_.takeNotes()) {
        if (note.isForLog) {
            QMLog::appendLog("%@", note.text());
        } else {
            result_.notes.push_back(note.text());
        }
    }
}

bool InPlaceChange::isLeft() const {
    return copy_.isMade() && !isRemoved_ && !(result_.swap && result_.swap->end == SwapEnd::done);
}

bool InPlaceChange::make() {
    for (auto step : {&WorkingCopy::clearPath, &WorkingCopy::createEmpty}) {
        const WorkingCopy::Clearing clearing = (copy_.*step)(result_.error);
        if (clearing != WorkingCopy::Clearing::done) {
            result_.isCancelled = clearing == WorkingCopy::Clearing::cancelled;
            return false;
        }
    }
    copy_.expect(digestRead_);
    return true;
}

bool InPlaceChange::save(const WorkingCopy::Writer& bytes) {
    copy_.save(bytes, result_.error, WorkingCopy::Sending::atOnce);
    return !result_.error;
}

void InPlaceChange::swap(SwapObserver& observer) {
    if (copy_.isSourceBeingWritten()) {
        platform::failFileBecause(result_.error, path_, words_.participle, EBUSY,
                                  "another program has it open to write it");
        return;
    }
    result_.swap = copy_.swap(observer);
    result_.lostMetadata = copy_.lostMetadata();
    takeOutcome();
}

void InPlaceChange::takeOutcome() {
    const SwapResult& swap = *result_.swap;
    if (swap.end == SwapEnd::done) {
        if (swap.error) {
            result_.notes.push_back(swap.error->localizedDescription());
        }
        return;
    }
    result_.error = swap.error;
    if (!result_.error) {
        platform::failFileBecause(result_.error, path_, words_.participle, EBUSY,
                                  swap.end == SwapEnd::copyChanged
                                      ? "another program has changed its working copy"
                                      : "another program has changed it since it was read");
    }
    // Where files are that could not be put back.
    if (!swap.original.empty() && swap.original != path_) {
        result_.notes.push_back(formatString("The original is %@", swap.original));
    }
    if (!swap.repaired.empty() && swap.repaired != copy_.path()) {
        result_.notes.push_back(
            formatString("The %@ file is %@", words_.participle, swap.repaired));
    }
}

}  // namespace vornic
