#include "foundation/places/NotificationCenter.h"

#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace vornic {

namespace {

struct Registration {
    std::string name;
    std::shared_ptr<const NotificationCenter::Observer> observer;
};

struct Registry {
    std::mutex mutex;
    std::size_t lastToken = 0;
    /// By their tokens, so in the order in which they came.
    std::map<std::size_t, Registration> registrations;
};

/// Never destroyed: static objects may hold observations.
Registry& registry() {
    static Registry* const instance = new Registry;  // NOLINT(cppcoreguidelines-owning-memory)
    return *instance;
}

std::vector<std::size_t> observersOf(const std::string& name) {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    std::vector<std::size_t> tokens;
    for (const auto& [token, registration] : all.registrations) {
        if (registration.name == name) {
            tokens.push_back(token);
        }
    }
    return tokens;
}

std::shared_ptr<const NotificationCenter::Observer> observerOf(std::size_t token) {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    const auto found = all.registrations.find(token);
    return found != all.registrations.end() ? found->second.observer : nullptr;
}

}  // namespace

NotificationCenter::Observation::Observation(std::string name, Observer observer) {
    auto shared = std::make_shared<const Observer>(std::move(observer));
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    token_ = ++all.lastToken;
    all.registrations[token_] = {std::move(name), std::move(shared)};
}

NotificationCenter::Observation::~Observation() {
    Registry& all = registry();
    // What the observer holds goes after the lock.
    Registration gone;
    const std::lock_guard lock(all.mutex);
    const auto found = all.registrations.find(token_);
    gone = std::move(found->second);
    all.registrations.erase(found);
}

void NotificationCenter::post(const std::string& name, const UserInfo& userInfo) {
    for (const std::size_t token : observersOf(name)) {
        if (const auto observer = observerOf(token)) {
            (*observer)(userInfo);
        }
    }
}

}  // namespace vornic
