#include "foundation/rights/AuthorizationHost.h"

#include "foundation/tasks/QMTaskEx.h"
#include "platform/processes/SystemTool.h"
#include "platform/settings/Directories.h"

namespace vornic {
namespace {

class SystemAuthorizationHost : public AuthorizationHost {
  public:
    [[nodiscard]] bool isSuperUser() const override { return platform::realUserId() == 0; }
    void runTask(const std::string& tool, const Arguments& arguments) override {
        QMTaskEx::runTask(platform::systemToolPath(tool), arguments);
    }
    void runTaskAndReturn(const std::string& tool, const Arguments& arguments) override {
        QMTaskEx::runTaskAndReturn(platform::systemToolPath(tool), arguments);
    }
    [[nodiscard]] platform::AuthorizationServices& services() override { return *services_; }

  private:
    std::shared_ptr<platform::AuthorizationServices> services_ =
        platform::systemAuthorizationServices();
};

}  // namespace

std::shared_ptr<AuthorizationHost> systemAuthorizationHost() {
    return std::make_shared<SystemAuthorizationHost>();
}

}  // namespace vornic
