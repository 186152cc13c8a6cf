#include "platform/files/FileChangeNotice.h"

#include <utility>

#include "base/Replaceable.h"

namespace vornic::platform {
namespace {

Replaceable<FileChangeObserver>& observer() {
    static Replaceable<FileChangeObserver> instance;
    return instance;
}

}  // namespace

void noteFileSystemChanged(const std::optional<std::string>& path) {
    if (const FileChangeObserver own = observer().value()) {
        own(path);
    }
}

void setFileChangeObserver(FileChangeObserver newObserver) {
    observer().set(std::move(newObserver));
}

}  // namespace vornic::platform
