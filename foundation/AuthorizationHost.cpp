#include "foundation/AuthorizationHost.h"

#include "foundation/QMTaskEx.h"
#include "platform/Directories.h"
#include "platform/SystemTool.h"

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
