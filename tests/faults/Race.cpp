#include "tests/faults/Race.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace vornic::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* kVictim = "victim.xml";
constexpr const char* kKept = "Cut-kept.xml";
constexpr mode_t kModeOfFiles = 0640;

void writeTo(int file, std::string_view bytes) {
    if (write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
        std::perror("a race's own file");
    }
}

void writeFile(const std::string& path, int flags, std::string_view bytes) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, kModeOfFiles);
    writeTo(file, bytes);
    close(file);
}

}  // namespace

Race::Race(std::string name, const Scene& scene, const Baseline& baseline, const Baseline& newer)
    : name_(std::move(name)), scene_(scene), baseline_(baseline), newer_(newer) {
    static const std::map<std::string, Way> ways = {{"in-place", Way::inPlace},
                                                    {"renamed", Way::renamed},
                                                    {"saved-as", Way::savedAs},
                                                    {"half", Way::half},
                                                    {"link", Way::link}};
    way_ = ways.at(name_.substr(name_.find('-') + 1));
    bytes_ = isAboutCopy() ? soundDocument('f') : newerBytes(scene.kind());
}

std::vector<std::string> Race::namesFor(const SceneKind& kind) {
    // A copy that was made while another program wrote may be one of anything.
    if (newerBytes(kind) == kind.bytes || kind.work == SceneKind::Work::copy) {
        return {};
    }
    if (kind.work == SceneKind::Work::undo) {
        return {"source-in-place", "source-renamed", "source-saved-as"};
    }
    std::vector<std::string> names = {"source-in-place", "source-renamed", "source-saved-as",
                                      "source-half", "source-link"};
    if (kind.work == SceneKind::Work::repair || kind.work == SceneKind::Work::inPlace) {
        for (const char* name : {"copy-in-place", "copy-renamed", "copy-saved-as", "copy-link"}) {
            names.emplace_back(name);
        }
    }
    return names;
}

std::string Race::newerBytes(const SceneKind& kind) {
    constexpr std::string_view kOld = "Sand";
    std::string bytes = kind.bytes;
    for (std::size_t at = bytes.find(kOld); at != std::string::npos; at = bytes.find(kOld, at)) {
        bytes.replace(at, kOld.size(), "Reef");
    }
    return bytes;
}

void Race::write(const std::string& name, const std::string& bytes) {
    const std::string path = scene_.pathOf(name);
    const std::string aside = scene_.pathOf("../aside");
    switch (way_) {
        case Way::inPlace:
            open(path, bytes, "");
            break;
        case Way::renamed:
            writeFile(aside, O_EXCL, bytes);
            fs::rename(aside, path);
            break;
        case Way::savedAs:
            fs::remove(path);
            writeFile(path, O_EXCL, bytes);
            break;
        case Way::half:
            open(path, std::string_view(bytes).substr(0, bytes.size() / 2),
                 std::string_view(bytes).substr(bytes.size() / 2));
            break;
        case Way::link:
            link(name);
            break;
    }
}

// A file that the program has a lease on opens when it gives that back, which it cannot do while it
// stands still.
void Race::open(const std::string& path, std::string_view first, std::string_view rest) {
    constexpr int kFlags = O_WRONLY | O_TRUNC | O_CLOEXEC | O_NONBLOCK;
    held_ = ::open(path.c_str(), way_ == Way::inPlace ? kFlags | O_CREAT : kFlags, kModeOfFiles);
    if (held_ < 0 && errno == EWOULDBLOCK) {
        late_ = std::make_unique<LateWriter>(path, first, rest);
        return;
    }
    writeTo(held_, first);
    if (rest.empty()) {
        close(std::exchange(held_, -1));
    }
}

void Race::link(const std::string& name) const {
    std::error_code ignored;
    if (isAboutCopy()) {
        fs::remove(scene_.pathOf(name), ignored);
    } else {
        fs::rename(scene_.pathOf(name), scene_.pathOf(kKept), ignored);
    }
    writeFile(scene_.pathOf(kVictim), O_EXCL, bytes_);
    fs::create_symlink(kVictim, scene_.pathOf(name), ignored);
}

void Race::act() {
    write(isAboutCopy() ? workingCopyName(scene_.kind()) : scene_.kind().file, bytes_);
}

void Race::finish() {
    if (held_ >= 0) {
        writeTo(held_, std::string_view(bytes_).substr(bytes_.size() / 2));
        close(std::exchange(held_, -1));
    }
    if (late_ != nullptr) {
        late_->finish();
    }
}

Demands Race::demands() const {
    const bool isKept = scene_.kind().work == SceneKind::Work::repair ||
                        scene_.kind().work == SceneKind::Work::inPlace;
    Demands demands = demandsOf(scene_.kind(), baseline_);
    demands.strangers = {workingCopyName(scene_.kind()), kVictim, kKept};
    if (isAboutCopy()) {
        // What stood there before is gone by the other program's doing.
        const auto old = scene_.kind().others.find(workingCopyName(scene_.kind()));
        if (old != scene_.kind().others.end()) {
            std::erase(demands.kept, old->second);
        }
        if (way_ != Way::inPlace) {
            demands.kept.push_back(bytes_);
        }
        return demands;
    }
    demands.sameWork = false;
    if (scene_.kind().work == SceneKind::Work::undo) {
        // What another program has saved stays at the path, until the next run repairs it. It may
        // have been saved over the original that was back, or over what a repair had made.
        demands.atPath = {bytes_};
        demands.atPathInTheEnd = {newer_.before.files.at(scene_.kind().file)};
        std::erase(demands.kept, scene_.kind().bytes);
        std::erase(demands.kept, baseline_.before.files.at(scene_.kind().file));
        return demands;
    }
    if (way_ != Way::link) {
        demands.atPath = {bytes_, newer_.result};
        demands.atPathInTheEnd = {newer_.result};
        std::erase(demands.kept, scene_.kind().bytes);
    } else {
        demands.atPath = {std::string("-> ") + kVictim, newer_.result};
        demands.atPathInTheEnd.clear();
    }
    if (late_ != nullptr) {
        // What opened the file before the swap may write into it when it lies in the Trash.
        demands.atPath.push_back(baseline_.result);
        demands.atPathInTheEnd.clear();
    }
    if (isKept) {
        demands.kept.push_back(bytes_);
    }
    return demands;
}

std::vector<std::string> Race::wrongs(const World& world) const {
    const auto victim = world.files.find(kVictim);
    if (way_ != Way::link || victim == world.files.end()) {
        return {};
    }
    const bool isWhole =
        victim->second == bytes_ || (!isAboutCopy() && victim->second == newer_.result);
    return isWhole ? std::vector<std::string>()
                   : std::vector<std::string>{"the file behind the link was overwritten"};
}

}  // namespace vornic::test
