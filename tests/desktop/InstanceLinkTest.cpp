#include <QLocalSocket>
#include <optional>
#include <thread>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "desktop/InstanceLink.h"
#include "foundation/places/QMLocalPaths.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/support/machine/ScopedEnvironment.h"

namespace vornic::test {
namespace {

using Paths = InstanceLink::Paths;

/// Keeps what it is handed.
class RecordingReceiver : public FileReceiver {
  public:
    void whenDecided(std::function<void(bool mayOpen)> told) override {
        if (isDecided) {
            told(mayOpen);
        } else {
            undecided.push_back(std::move(told));
        }
    }
    bool receive(const Paths& paths, const std::string& activation) override {
        activations.push_back(activation);
        if (takes) {
            received.push_back(paths);
        }
        return takes;
    }

    bool isDecided = true;
    bool mayOpen = true;
    bool takes = true;
    std::vector<std::function<void(bool mayOpen)>> undecided;
    std::vector<Paths> received;
    std::vector<std::string> activations;
};

class InstanceLinkTest : public DesktopTest {
  protected:
    std::string folder = sandbox.path("instance folder");
    RecordingReceiver receiver;

    // Hands paths over on another thread, as another start of the program does.
    bool handOverFromElsewhere(const Paths& paths, InstanceLink::Patience patience = {}) {
        std::optional<bool> taken;
        std::thread other([&] {
            InstanceLink link(folder, patience);
            taken = link.handOver(paths);
        });
        EXPECT_TRUE(waitUntil([&taken] { return taken.has_value(); }));
        other.join();
        return taken.value_or(false);
    }

    // Says something to the program that runs and waits until it has said something itself.
    static void say(QLocalSocket& socket, const QByteArray& words, const QByteArray& awaited) {
        socket.write(words);
        socket.flush();
        QByteArray heard;
        EXPECT_TRUE(waitUntil([&] {
            heard += socket.readAll();
            return heard.contains(awaited);
        })) << heard.toStdString();
    }
    void connectTo(QLocalSocket& socket) const {
        socket.connectToServer(QString::fromStdString(folder + "/instance"));
        ASSERT_TRUE(socket.waitForConnected(20000));
    }
    // Lets the program that runs see all that was said to it.
    static void waitForTheEndOf(QLocalSocket& socket) {
        EXPECT_TRUE(
            waitUntil([&socket] { return socket.state() == QLocalSocket::UnconnectedState; }));
    }
    // What is said after another program's end is heard after it.
    void waitForAnotherHandOver() {
        const std::size_t before = receiver.received.size();
        EXPECT_TRUE(handOverFromElsewhere({"/other"}));
        EXPECT_EQ(receiver.received.size(), before + 1);
        receiver.received.pop_back();
    }
};

const QByteArray kMessage("/a\0\0", 4);

TEST_F(InstanceLinkTest, letsTheFirstStartRun) {
    InstanceLink link(folder);
    EXPECT_FALSE(link.handOver({"/a"}));
    struct stat status {};
    ASSERT_EQ(stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(InstanceLinkTest, handsTheFilesOfLaterStartsOver) {
    InstanceLink link(folder);
    ASSERT_FALSE(link.handOver({}));
    link.listen(receiver);
    const Paths odd = {"/with blank", "/with\nline", "/with \xFF byte", "/é"};
    EXPECT_TRUE(handOverFromElsewhere(odd));
    EXPECT_TRUE(handOverFromElsewhere({}));
    EXPECT_EQ(receiver.received, (std::vector<Paths>{odd, {}}));
}

TEST_F(InstanceLinkTest, handsOverWhatTheDesktopGaveToComeToTheFront) {
    InstanceLink link(folder);
    ASSERT_FALSE(link.handOver({}));
    link.listen(receiver);
    const ScopedEnvironment token("XDG_ACTIVATION_TOKEN", "token-1");
    EXPECT_TRUE(handOverFromElsewhere({"/a"}));
    EXPECT_TRUE(handOverFromElsewhere({}));
    EXPECT_EQ(receiver.received, (std::vector<Paths>{{"/a"}, {}}));
    EXPECT_EQ(receiver.activations, (std::vector<std::string>{"token-1", "token-1"}));
}

TEST_F(InstanceLinkTest, takesManyFiles) {
    InstanceLink link(folder);
    ASSERT_FALSE(link.handOver({}));
    link.listen(receiver);
    const Paths many(3000, "/" + std::string(200, 'x'));
    EXPECT_TRUE(handOverFromElsewhere(many));
    EXPECT_EQ(receiver.received, std::vector<Paths>{many});
}

TEST_F(InstanceLinkTest, runsAgainAfterTheOtherProgramHasEnded) {
    {
        InstanceLink link(folder);
        ASSERT_FALSE(link.handOver({}));
        link.listen(receiver);
    }
    InstanceLink next(folder);
    EXPECT_FALSE(next.handOver({}));
    next.listen(receiver);
    EXPECT_TRUE(handOverFromElsewhere({"/a"}));
    EXPECT_EQ(receiver.received, std::vector<Paths>{{"/a"}});
}

TEST_F(InstanceLinkTest, keepsTheFilesOfAStartThatTheOtherProgramTurnsAway) {
    InstanceLink link(folder);
    ASSERT_FALSE(link.handOver({}));
    link.listen(receiver);
    receiver.mayOpen = false;
    // It ends, so that the lock is to be had.
    platform::MainThread::performAfter(std::chrono::milliseconds(100), [&link] { link.stop(); });
    EXPECT_FALSE(handOverFromElsewhere({"/a"}));
    EXPECT_TRUE(receiver.received.empty());
}

TEST_F(InstanceLinkTest, keepsTheFilesOfAStartThatTheOtherProgramNoLongerTakes) {
    InstanceLink link(folder);
    ASSERT_FALSE(link.handOver({}));
    link.listen(receiver);
    receiver.takes = false;
    platform::MainThread::performAfter(std::chrono::milliseconds(100), [&link] { link.stop(); });
    EXPECT_FALSE(handOverFromElsewhere({"/a"}));
}

TEST_F(InstanceLinkTest, takesFilesBackFromAProgramThatSaysNothingMore) {
    InstanceLink link(folder);
    ASSERT_FALSE(link.handOver({}));
    link.listen(receiver);
    receiver.isDecided = false;
    EXPECT_FALSE(handOverFromElsewhere({"/a"}, {.forASign = std::chrono::milliseconds(100)}));
    // It would open them now.
    for (const auto& told : receiver.undecided) {
        told(true);
    }
    receiver.isDecided = true;
    waitForAnotherHandOver();
    EXPECT_TRUE(receiver.received.empty());
}

TEST_F(InstanceLinkTest, saysThatItIsThereUntilItKnowsWhetherItOpensFiles) {
    InstanceLink link(folder);
    ASSERT_FALSE(link.handOver({}));
    link.listen(receiver);
    receiver.isDecided = false;
    QLocalSocket later;
    connectTo(later);
    say(later, kMessage, "...");
    ASSERT_EQ(receiver.undecided.size(), 1U);
    receiver.undecided.front()(true);
    say(later, "", "?");
    EXPECT_TRUE(receiver.received.empty());
    say(later, "!", "+");
    EXPECT_EQ(receiver.received, std::vector<Paths>{{"/a"}});
}

TEST_F(InstanceLinkTest, opensNothingThatIsTakenBackBeforeItIsLeftToIt) {
    InstanceLink link(folder);
    ASSERT_FALSE(link.handOver({}));
    link.listen(receiver);
    QLocalSocket later;
    connectTo(later);
    say(later, kMessage, "?");
    later.abort();
    waitForAnotherHandOver();
    EXPECT_TRUE(receiver.received.empty());
}

TEST_F(InstanceLinkTest, opensNothingThatIsTakenBackBeforeItLooks) {
    InstanceLink link(folder);
    ASSERT_FALSE(link.handOver({}));
    link.listen(receiver);
    QLocalSocket later;
    connectTo(later);
    say(later, kMessage, "?");
    later.write("!");
    later.flush();
    // Nobody has looked at the socket yet.
    later.abort();
    waitForAnotherHandOver();
    EXPECT_TRUE(receiver.received.empty());
}

TEST_F(InstanceLinkTest, hangsUpOnThoseWhoWaitWhenItStops) {
    InstanceLink link(folder);
    ASSERT_FALSE(link.handOver({}));
    link.listen(receiver);
    receiver.isDecided = false;
    QLocalSocket later;
    connectTo(later);
    say(later, kMessage, ".");
    link.stop();
    waitForTheEndOf(later);
    InstanceLink next(folder);
    EXPECT_FALSE(next.handOver({}));
    EXPECT_FALSE(exists(folder + "/instance"));
}

TEST_F(InstanceLinkTest, knowsTheProgramsOfOneDisplayOnly) {
    EXPECT_EQ(InstanceLink::folderFor("xcb :0"), InstanceLink::folderFor("xcb :0"));
    EXPECT_NE(InstanceLink::folderFor("xcb :0"), InstanceLink::folderFor("xcb :1"));
    const std::string longest(300, 'x');
    EXPECT_LT(InstanceLink::folderFor(longest).size() + std::string("/instance").size(),
              QMLocalPaths::tempDirectory().size() + 50);
}

TEST_F(InstanceLinkTest, runsByItselfWhereOthersMayEnterTheFolder) {
    ASSERT_EQ(mkdir(folder.c_str(), 0700), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0777), 0);
    InstanceLink link(folder);
    EXPECT_FALSE(link.handOver({"/a"}));
    link.listen(receiver);
    EXPECT_FALSE(exists(folder + "/instance"));
}

TEST_F(InstanceLinkTest, runsByItselfWhereTheFolderIsALink) {
    ASSERT_EQ(mkdir(sandbox.path("real").c_str(), 0700), 0);
    ASSERT_EQ(symlink(sandbox.path("real").c_str(), folder.c_str()), 0);
    InstanceLink link(folder);
    EXPECT_FALSE(link.handOver({"/a"}));
    EXPECT_FALSE(exists(sandbox.path("real") + "/lock"));
}

}  // namespace
}  // namespace vornic::test
