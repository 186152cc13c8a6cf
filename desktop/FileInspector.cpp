#include "desktop/FileInspector.h"

#include <QPointer>
#include <chrono>
#include <new>
#include <utility>

#include "base/Exception.h"
#include "base/PathText.h"
#include "desktop/Release.h"
#include "foundation/log/QMLog.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileSystem.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic {

namespace {

// Programs write a file in several steps.
constexpr std::chrono::milliseconds kSettling{250};

std::optional<platform::FileVersion> versionBehind(const std::string& path) {
    const ErrnoOr<platform::FileDescriptor> file = platform::openForMetadata(path, true);
    return file ? platform::versionOf(file->get()).value() : std::nullopt;
}

}  // namespace

FileInspector::FileInspector(std::string path, Listener listener, QObject* parent)
    : QObject(parent), path_(std::move(path)), listener_(std::move(listener)) {
    clock_.setSingleShot(true);
    connect(&clock_, &QTimer::timeout, this, [this] { look(); });
    watch();
}

// The system takes its time to end a watch.
FileInspector::~FileInspector() {
    notifier_.reset();
    if (watch_) {
        releaseOnThread({std::make_shared<platform::FolderWatch>(std::move(*watch_))});
    }
}

// A volume whose server has gone would hold the window up.
void FileInspector::watch() {
    const auto begin = [self = QPointer<FileInspector>(this), folder = parentFolder(path_)] {
        ErrorSlot error;
        auto watch = std::make_shared<std::optional<platform::FolderWatch>>(
            platform::FolderWatch::of(folder, error));
        if (!*watch) {
            QMLog::appendLog("%@", error->localizedDescription());
            return;
        }
        platform::MainThread::perform([self, watch] {
            if (!self) {
                return;
            }
            self->watch_ = std::move(*watch);
            self->notifier_ = std::make_unique<QSocketNotifier>(self->watch_->descriptor(),
                                                                QSocketNotifier::Read);
            connect(self->notifier_.get(), &QSocketNotifier::activated, self,
                    [inspector = self.data()] { inspector->takeChanges(); });
        });
    };
    try {
        platform::startUnattendedThread(begin);
    } catch (const platform::Exception&) {
        // Changes are then seen when the window is used.
        return;
    }
}

void FileInspector::takeChanges() {
    const std::string name = lastComponent(path_);
    for (const std::string& changed : watch_->takeChanges()) {
        if (changed.empty() || changed == name) {
            clock_.start(kSettling);
        }
    }
}

FileInspector::Seen FileInspector::seenAt(const std::string& path) {
    return {.version = versionBehind(path)};
}

void FileInspector::inspect(const std::string& original) {
    original_ = original;
    ++number_;
    if (isBusy_) {
        isToBeginAgain_ = true;
        return;
    }
    start();
}

void FileInspector::start() {
    isBusy_ = true;
    isToBeginAgain_ = false;
    const auto work = [self = QPointer<FileInspector>(this), number = number_, path = path_,
                       original = original_] {
        Seen seen = seenAt(path);
        std::shared_ptr<const FindingsTable> table;
        try {
            const auto inspection =
                vornic::inspect(path, original, [&](std::shared_ptr<const SourceText> source) {
                    platform::MainThread::perform([self, number, source = std::move(source)] {
                        if (self && number == self->number_) {
                            self->listener_.read(source);
                        }
                    });
                });
            seen.digest = inspection->file.digest;
            table = std::make_shared<FindingsTable>(inspection);
        } catch (const std::bad_alloc&) {
            QMLog::appendLog("There is not enough memory to check the file %@.", path);
        }
        platform::MainThread::perform([self, number, table, seen] {
            if (self) {
                self->finish(number, table, seen);
            }
        });
    };
    try {
        platform::detachNewThread(work);
    } catch (const platform::Exception&) {
        isBusy_ = false;
    }
}

void FileInspector::finish(unsigned number, std::shared_ptr<const FindingsTable> table,
                           const Seen& seen) {
    isBusy_ = false;
    if (isToBeginAgain_) {
        start();
        return;
    }
    if (number == number_ && table) {
        seen_ = seen;
        listener_.inspected(std::move(table));
    }
    if (std::exchange(isToLookAgain_, false)) {
        look();
    }
}

FileInspector::Look FileInspector::lookAt(const std::string& path, const Seen& seen) {
    Look look;
    look.seen.version = versionBehind(path);
    look.isThere = look.seen.version.has_value();
    look.isSame = look.isThere == seen.version.has_value() &&
                  (!look.isThere || platform::compareVersions(*look.seen.version, *seen.version) ==
                                        platform::VersionMatch::same);
    if (look.isSame || !look.isThere || !seen.version) {
        return look;
    }
    // Renamed there and back, say, or given an attribute.
    const ErrnoOr<platform::FileDescriptor> file = platform::openRegularFile(path, true);
    const auto digest = file ? platform::ContentDigest::ofFile(file->get()).value() : std::nullopt;
    look.isSame = digest && *digest == seen.digest;
    look.seen.digest = seen.digest;
    return look;
}

void FileInspector::look() {
    if (isBusy_ || isLooking_) {
        isToLookAgain_ = true;
        return;
    }
    isLooking_ = true;
    try {
        platform::startUnattendedThread(
            [self = QPointer<FileInspector>(this), number = number_, path = path_, seen = seen_] {
                const Look look = lookAt(path, seen);
                platform::MainThread::perform([self, number, look] {
                    if (self) {
                        self->finishLook(number, look);
                    }
                });
            });
    } catch (const platform::Exception&) {
        isLooking_ = false;
    }
}

void FileInspector::finishLook(unsigned number, const Look& look) {
    isLooking_ = false;
    if (number == number_ && !isBusy_) {
        if (look.isSame) {
            seen_.version = look.seen.version;
        } else {
            // Told once.
            seen_ = look.seen;
            listener_.changed(look.isThere);
        }
    }
    if (std::exchange(isToLookAgain_, false)) {
        look.isSame ? this->look() : clock_.start(kSettling);
    }
}

}  // namespace vornic
