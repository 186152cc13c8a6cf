#ifndef VORNIC_TESTS_SUPPORT_MACHINE_UNPRIVILEGED_H
#define VORNIC_TESTS_SUPPORT_MACHINE_UNPRIVILEGED_H

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace vornic::test {

/// Makes a process that was started as root an unprivileged one while the object lives, so that
/// permissions hold and the log is the user's. Make it before the `Sandbox`, while no other thread
/// runs. Does nothing for other users.
class Unprivileged {
  public:
    Unprivileged() : wasRoot_(getuid() == 0) {
        if (wasRoot_) {
            EXPECT_EQ(setgroups(0, nullptr), 0);
            EXPECT_EQ(setresgid(kNobody, kNobody, 0), 0);
            EXPECT_EQ(setresuid(kNobody, kNobody, 0), 0);
            // Lets the process read its own /proc entries.
            prctl(PR_SET_DUMPABLE, 1, 0, 0, 0);
        }
    }
    ~Unprivileged() {
        if (wasRoot_) {
            EXPECT_EQ(setresuid(0, 0, 0), 0);
            EXPECT_EQ(setresgid(0, 0, 0), 0);
            prctl(PR_SET_DUMPABLE, 1, 0, 0, 0);
        }
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

  private:
    static constexpr unsigned kNobody = 65534;
    bool wasRoot_;
};

}  // namespace vornic::test

#endif
