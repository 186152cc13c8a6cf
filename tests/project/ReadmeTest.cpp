#include <gtest/gtest.h>

#include "tests/project/Sessions.h"

namespace vornic::test {

TEST(ReadmeSessions, printWhatTheReadmeShows) {
    const std::vector<Session> all = sessionsOf(readBytes(VORNIC_SOURCE "/README.md"));
    EXPECT_GE(all.size(), 3U);
    const SessionPlayer player("readme");
    for (const Session& session : all) {
        EXPECT_FALSE(session.commands.empty());
        EXPECT_EQ(player.play(session), session.shown);
    }
}

}  // namespace vornic::test
