#ifndef VORNIC_TESTS_SUPPORT_MACHINE_RIGHTS_OF_ROOT_H
#define VORNIC_TESTS_SUPPORT_MACHINE_RIGHTS_OF_ROOT_H

#include <gtest/gtest.h>
#include <sys/types.h>
#include <unistd.h>

namespace vornic::test {

/// Root's rights for a moment, in a process that gave them up by `Unprivileged`.
class RightsOfRoot {
  public:
    RightsOfRoot() : user_(geteuid()), available_(seteuid(0) == 0) {}
    ~RightsOfRoot() { EXPECT_EQ(seteuid(user_), 0); }
    RightsOfRoot(const RightsOfRoot&) = delete;
    RightsOfRoot& operator=(const RightsOfRoot&) = delete;
    [[nodiscard]] bool available() const { return available_; }

  private:
    uid_t user_;
    bool available_;
};

}  // namespace vornic::test

#endif
