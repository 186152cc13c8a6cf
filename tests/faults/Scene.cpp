#include "tests/faults/Scene.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "tests/faults/AllocationPlan.h"
#include "tests/support/machine/RightsOfRoot.h"

namespace vornic::test {

namespace fs = std::filesystem;

namespace {

constexpr long kRoomForEverything = 16L << 20U;
constexpr mode_t kModeOfTheFile = 0640;

class Recorder : public CallObserver {
  public:
    Verdict look(const SystemCall& call) override {
        calls.push_back(call);
        return {};
    }
    [[nodiscard]] bool wantsPaths(const SystemCall& /*call*/) const override { return true; }
    [[nodiscard]] bool isDone() const override { return false; }
    std::vector<SystemCall> calls;
};

}  // namespace

Scene::Scene(const Stage& stage, const SceneKind& kind, VolumeSizes volumes)
    : stage_(stage), kind_(kind) {
    std::string pattern = stage.folder + "/vornic-faults-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        std::perror(pattern.c_str());
        std::abort();
    }
    root_ = pattern;
    for (const char* folder : {"/files", "/home", "/tmp"}) {
        fs::create_directory(root_ + folder);
    }
    if (kind.homeIsApart && volumes.home == 0) {
        volumes.home = kRoomForEverything;
    }
    ready_ = (volumes.files == 0 || mountVolume("/files", volumes.files)) &&
             (volumes.home == 0 || mountVolume("/home", volumes.home));
    for (const auto& [name, bytes] : kind.others) {
        ready_ = ready_ && write(name, bytes);
    }
    ready_ = ready_ && write(kind.file, kind.bytes) && chmod(path().c_str(), kModeOfTheFile) == 0;
    // A volume without attributes has nothing to lose.
    setxattr(path().c_str(), "user.label", "blue", 4, 0);
    ready_ = ready_ && (kind.work != SceneKind::Work::undo || repair());
}

Scene::~Scene() {
    for (const std::string& folder : mounted_) {
        const RightsOfRoot rights;
        static_cast<void>(stage_.mounts.unmountVolume(folder));
    }
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

bool Scene::mountVolume(const std::string& folder, long size) {
    const std::string path = root_ + folder;
    const std::string owner = std::to_string(geteuid());
    const std::string options =
        "size=" + std::to_string(size) + ",mode=0755,uid=" + owner + ",gid=" + owner;
    const RightsOfRoot rights;
    if (!rights.available() || !stage_.mounts.mountVolume(path, "tmpfs", options)) {
        return false;
    }
    mounted_.push_back(path);
    return true;
}

bool Scene::write(const std::string& name, const std::string& bytes) const {
    std::ofstream stream(pathOf(name), std::ios::binary);
    stream << bytes;
    stream.close();
    return stream.good();
}

std::string Scene::path() const {
    return pathOf(kind_.file);
}

std::string Scene::pathOf(const std::string& name) const {
    return root_ + "/files/" + name;
}

ProgramStart Scene::start() const {
    switch (kind_.work) {
        case SceneKind::Work::conversion:
            return startOf({"-convertxmeml", "5"}, "/vornic");
        case SceneKind::Work::undo:
            return startOf({"--undo"}, "/vornic-repair");
        case SceneKind::Work::inPlace:
        case SceneKind::Work::copy:
            return startOf({kind_.command.begin() + 1, kind_.command.end()},
                           "/" + kind_.command.front());
        case SceneKind::Work::repair:
            break;
    }
    return startOf({}, "/vornic-repair");
}

ProgramStart Scene::startOf(const std::vector<std::string>& options,
                            const std::string& program) const {
    ProgramStart start;
    start.program = stage_.programs + program;
    start.arguments = options;
    start.arguments.push_back(path());
    const std::string home = root_ + "/home";
    start.environment = {"HOME=" + home,
                         "TMPDIR=" + root_ + "/tmp",
                         "XDG_DATA_HOME=" + home + "/.local/share",
                         "XDG_CACHE_HOME=" + home + "/.cache",
                         "PATH=/usr/bin:/bin",
                         "LC_ALL=C.UTF-8"};
    start.folder = root_ + "/files";
    return start;
}

bool Scene::repair() const {
    CallObserver observer;
    return run(startOf({}, "/vornic-repair"), observer).status == 0;
}

ProgramEnd Scene::run(const ProgramStart& start, CallObserver& observer) const {
    ProgramEnd end = TracedProgram(start, observer).run(stage_.longest);
    for (std::string* text : {&end.output, &end.errors}) {
        for (std::size_t at = text->find(root_); at != std::string::npos; at = text->find(root_)) {
            text->replace(at, root_.size(), "@");
        }
    }
    return end;
}

ProgramEnd Scene::runLater() const {
    ProgramStart later =
        kind_.work == SceneKind::Work::undo ? startOf({}, "/vornic-repair") : start();
    later.environment.push_back("LD_PRELOAD=" + stage_.allocations);
    later.environment.push_back(kLaterVariable + std::string("=86400"));
    CallObserver observer;
    return run(later, observer);
}

BaselineResult makeBaseline(const Stage& stage, const SceneKind& kind) {
    BaselineResult result;
    const Scene scene(stage, kind);
    result.ready = scene.isReady();
    if (!result.ready) {
        return result;
    }
    Recorder recorder;
    Baseline& baseline = result.baseline;
    baseline.before = scene.look();
    baseline.end = scene.run(scene.start(), recorder);
    baseline.world = scene.look();
    baseline.calls = std::move(recorder.calls);
    const auto file = baseline.world.files.find(kind.file);
    baseline.result = file == baseline.world.files.end() ? "" : file->second;
    baseline.again = scene.runLater();
    const std::string said = baseline.end.output + baseline.end.errors;
    result.good = said.find(kind.proof) != std::string::npos && !baseline.calls.empty() &&
                  !baseline.end.hung && baseline.end.signal == 0;
    constexpr int kWrongUsage = 2;
    if (kind.work == SceneKind::Work::undo) {
        // A program without it says so.
        result.ready = baseline.end.status != kWrongUsage;
        result.good = result.good && baseline.end.status == 0 && baseline.result == kind.bytes &&
                      baseline.before.files.at(kind.file) != kind.bytes;
    }
    if (kind.work == SceneKind::Work::inPlace) {
        result.good = result.good && baseline.end.status == 0 && baseline.result != kind.bytes;
    }
    if (kind.work == SceneKind::Work::copy) {
        result.good = result.good && baseline.world.files.contains(kind.made) &&
                      baseline.result == kind.bytes;
    }
    if (result.ready && !result.good) {
        std::fprintf(stderr, "%s without faults: status %d, signal %d\n%s%s\n", kind.name.c_str(),
                     baseline.end.status, baseline.end.signal, baseline.end.output.c_str(),
                     baseline.end.errors.c_str());
    }
    return result;
}

}  // namespace vornic::test
