#ifndef VORNIC_TESTS_SUPPORT_FAKES_RECORDING_AUTHORIZATION_HOST_H
#define VORNIC_TESTS_SUPPORT_FAKES_RECORDING_AUTHORIZATION_HOST_H

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "foundation/rights/AuthorizationHost.h"
#include "platform/rights/AuthorizationServices.h"

namespace vornic::test {

/// A process in which nothing is ever run: every request is kept as a line of text, such as
/// "execute /bin/rm -Rdf /a" for a run with rights and "start /bin/rm -Rdf /a" for one of the
/// super-user's own.
class RecordingAuthorizationHost : public AuthorizationHost,
                                   private platform::AuthorizationServices {
  public:
    [[nodiscard]] bool isSuperUser() const override { return superUser; }
    void runTask(const std::string& tool, const Arguments& arguments) override {
        record("run " + tool, arguments);
    }
    void runTaskAndReturn(const std::string& tool, const Arguments& arguments) override {
        record("start " + tool, arguments);
    }
    [[nodiscard]] platform::AuthorizationServices& services() override { return *this; }

    /// The runs alone, without what was done to obtain rights.
    [[nodiscard]] std::vector<std::string> runs() const {
        std::vector<std::string> lines;
        for (const std::string& line : events) {
            if (line.starts_with("run ") || line.starts_with("start ") ||
                line.starts_with("execute ")) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    bool superUser = false;
    /// Whether something can ask the user, and whether rights that were given are still there.
    bool canAsk = true;
    bool isHelperAlive = true;
    /// What a privileged parent handed over.
    platform::AuthorizationRef inherited;
    platform::AuthorizationStatus createStatus = 0;
    platform::AuthorizationStatus rightsStatus = 0;
    platform::AuthorizationStatus executeStatus = 0;
    /// Called when rights are asked for, before the line is kept.
    std::function<void()> whenAsked;
    /// Called when a tool is run, before the line is kept.
    std::function<void()> whenExecuted;
    /// What the tool of a run that is waited for writes, chunk by chunk.
    /// What the caller saw at the arguments of the last run with rights.
    std::vector<platform::SeenPath> seenPaths;
    std::vector<std::string> output;
    std::vector<std::string> events;

  private:
    class Pipe : public platform::CommunicationsPipe {
      public:
        explicit Pipe(RecordingAuthorizationHost& host) : host_(host), left_(host.output) {}
        std::string readAvailable() override {
            if (left_.empty()) {
                host_.events.emplace_back("end of output");
                return "";
            }
            std::string chunk = left_.front();
            left_.erase(left_.begin());
            host_.events.push_back("read " + chunk);
            return chunk;
        }

      private:
        RecordingAuthorizationHost& host_;
        std::vector<std::string> left_;
    };

    void record(std::string line, const Arguments& arguments) {
        for (const std::string& argument : arguments) {
            line += " " + argument;
        }
        events.push_back(std::move(line));
    }
    static std::string describe(const platform::AuthorizationEnvironment& environment) {
        std::string text;
        for (const platform::AuthorizationItem& item : environment) {
            text += " " + item.name + "=" + std::string(item.value.view()) + "/" +
                    std::to_string(item.flags);
        }
        return text;
    }

    platform::AuthorizationStatus copyPrivilegedReference(
        platform::AuthorizationRef& reference, platform::AuthorizationFlags flags) override {
        events.push_back("copyPrivilegedReference " + std::to_string(flags));
        reference = inherited;
        return inherited ? 0 : platform::kAuthorizationInvalidReference;
    }
    platform::AuthorizationStatus create(const platform::AuthorizationEnvironment& environment,
                                         platform::AuthorizationFlags flags,
                                         platform::AuthorizationRef& reference) override {
        events.push_back("create " + std::to_string(flags) + describe(environment));
        // Like the real one, it may leave something behind when it fails.
        reference = std::make_shared<platform::Authorization>();
        return createStatus;
    }
    platform::AuthorizationStatus copyRights(const platform::AuthorizationRef& /*reference*/,
                                             std::string_view right,
                                             const platform::AuthorizationEnvironment& environment,
                                             platform::AuthorizationFlags flags) override {
        if (whenAsked) {
            whenAsked();
        }
        events.push_back("copyRights " + std::string(right) + " " + std::to_string(flags) +
                         describe(environment));
        return rightsStatus;
    }
    [[nodiscard]] bool isAlive(const platform::AuthorizationRef& /*reference*/) const override {
        return isHelperAlive;
    }
    [[nodiscard]] bool canAskUser() const override { return canAsk; }
    platform::AuthorizationStatus free(const platform::AuthorizationRef& reference,
                                       platform::AuthorizationFlags flags) override {
        events.push_back((reference ? "free " : "free nothing ") + std::to_string(flags));
        return 0;
    }
    platform::AuthorizationStatus executeWithPrivileges(
        const platform::AuthorizationRef& /*reference*/, const std::string& tool,
        platform::AuthorizationFlags /*flags*/, const std::vector<std::string>& arguments,
        const std::vector<platform::SeenPath>& seen,
        std::unique_ptr<platform::CommunicationsPipe>* pipe) override {
        seenPaths = seen;
        if (whenExecuted) {
            whenExecuted();
        }
        record("execute " + tool, arguments);
        if (pipe != nullptr && executeStatus == 0) {
            *pipe = std::make_unique<Pipe>(*this);
        }
        return executeStatus;
    }
};

}  // namespace vornic::test

#endif
