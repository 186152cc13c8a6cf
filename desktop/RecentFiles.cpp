#include "desktop/RecentFiles.h"

#include <QPointer>
#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

#include "base/Exception.h"
#include "base/PathText.h"
#include "base/Utf8.h"
#include "desktop/QtText.h"
#include "platform/files/FileSystem.h"
#include "platform/settings/PropertyList.h"
#include "platform/settings/UserPreferences.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic {

namespace {

constexpr const char* kKey = "recentFiles";
// By path.
constexpr const char* kOutcomesKey = "recentOutcomes";

platform::PropertyList storedOutcomes() {
    return platform::UserPreferences().value(kOutcomesKey).value_or(platform::PropertyList());
}

std::string outcomeIn(const platform::PropertyList& outcomes, const std::string& path) {
    const platform::PropertyList* const outcome = outcomes.find(path);
    const std::string* const text = outcome != nullptr ? outcome->string() : nullptr;
    return text != nullptr ? *text : "";
}

std::vector<std::string> stored() {
    std::vector<std::string> paths;
    const std::optional<platform::PropertyList> value = platform::UserPreferences().value(kKey);
    const platform::PropertyList::Array* const entries = value ? value->array() : nullptr;
    if (entries != nullptr) {
        for (const platform::PropertyList& entry : *entries) {
            if (const std::string* const path = entry.string()) {
                paths.push_back(*path);
            }
        }
    }
    return paths;
}

void store(const std::vector<std::string>& paths) {
    platform::PropertyList::Array entries;
    for (const std::string& path : paths) {
        entries.emplace_back(path);
    }
    ErrorSlot ignored;  // a list that cannot be stored is one that is not there next time
    std::ignore = platform::UserPreferences().setValue(
        kKey, platform::PropertyList(std::move(entries)), ignored);
}

// What is known of the files, and which of them are being looked at.
struct Looks {
    std::set<std::string> gone;
    std::set<std::string> underWay;
};

Looks& looks() {
    static Looks instance;
    return instance;
}

// @return whether the answer is news.
bool noteAnswer(const std::string& path, bool exists) {
    looks().underWay.erase(path);
    return exists ? looks().gone.erase(path) > 0 : looks().gone.insert(path).second;
}

}  // namespace

std::vector<std::string> RecentFiles::paths() {
    std::vector<std::string> paths = stored();
    std::erase_if(paths, [](const std::string& path) { return looks().gone.contains(path); });
    return paths;
}

void RecentFiles::look(QObject& owner, const std::function<void()>& changed) {
    for (const std::string& path : stored()) {
        if (!looks().underWay.insert(path).second) {
            continue;
        }
        const auto answer = [path, changed, owner = QPointer<QObject>(&owner)](bool exists) {
            if (noteAnswer(path, exists) && owner) {
                changed();
            }
        };
        try {
            platform::startUnattendedThread([path, answer] {
                const bool exists = platform::fileExists(path);
                platform::MainThread::perform([answer, exists] { answer(exists); });
            });
        } catch (const platform::Exception&) {
            looks().underWay.erase(path);
        }
    }
}

void RecentFiles::add(const std::string& path) {
    std::string text;
    appendAsValidUtf8(text, path);
    if (text != path) {
        return;
    }
    looks().gone.erase(path);
    std::vector<std::string> paths = stored();
    std::erase(paths, path);
    paths.insert(paths.begin(), path);
    if (paths.size() > kMost) {
        paths.resize(kMost);
    }
    store(paths);
}

void RecentFiles::setOutcome(const std::string& path, const std::string& outcome) {
    const std::vector<std::string> listed = stored();
    const platform::PropertyList before = storedOutcomes();
    if (std::find(listed.begin(), listed.end(), path) == listed.end() ||
        outcomeIn(before, path) == outcome) {
        return;
    }
    platform::PropertyList::Dictionary outcomes;
    for (const std::string& each : listed) {
        const std::string text = each == path ? outcome : outcomeIn(before, each);
        if (!text.empty()) {
            outcomes.emplace(each, text);
        }
    }
    ErrorSlot ignored;  // what cannot be stored is not shown next time
    std::ignore = platform::UserPreferences().setValue(
        kOutcomesKey, platform::PropertyList(std::move(outcomes)), ignored);
}

QString RecentFiles::about(const std::string& path) {
    QString text = oneLine(pathToQString(parentFolder(path)));
    if (const std::string outcome = outcomeIn(storedOutcomes(), path); !outcome.empty()) {
        text += QStringLiteral(" · ") + oneLine(toQString(outcome));
    }
    return text;
}

void RecentFiles::forget(const std::string& path) {
    setOutcome(path, "");
    std::vector<std::string> paths = stored();
    std::erase(paths, path);
    store(paths);
}

void RecentFiles::clear() {
    store({});
    ErrorSlot ignored;  // as above
    std::ignore = platform::UserPreferences().setValue(
        kOutcomesKey, platform::PropertyList(platform::PropertyList::Dictionary()), ignored);
}

}  // namespace vornic
