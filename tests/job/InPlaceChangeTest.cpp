#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "job/InPlaceChange.h"
#include "tests/job/JobTest.h"
#include "tests/support/fakes/RecordingSwapObserver.h"
#include "tests/support/machine/FileState.h"

namespace vornic {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class InPlaceChangeTest : public test::SandboxTest {
  protected:
    std::vector<std::string> names() const { return test::namesIn(sandbox.folder()); }
    void change() {
        InPlaceChange place(path, {"change", "changed"}, waiting, result);
        ASSERT_EQ(place.readUndigested(), "old");
        afterReading();
        place.expect("old");
        place.write("new");
        afterWriting();
        place.finish(true, observer);
        place.takeNotes();
    }
    // @param kept what stands at the path afterwards
    void expectRefused(const std::string& kept) const {
        ASSERT_TRUE(result.error);
        EXPECT_THAT(result.error->localizedDescription(),
                    HasSubstr("another program has changed it since it was read"));
        EXPECT_EQ(test::readBytes(path), kept);
        EXPECT_THAT(names(), ElementsAre("Cut.xml"));
    }

    test::RecordingWaiting waiting;
    test::RecordingSwapObserver observer;
    InPlaceResult result;
    std::string path = sandbox.write("Cut.xml", "old");
    std::function<void()> afterReading = [] {};
    std::function<void()> afterWriting = [] {};
};

TEST_F(InPlaceChangeTest, putsTheNewBytesIntoThePlaceOfThoseThatWereRead) {
    change();
    ASSERT_TRUE(result.swap);
    EXPECT_EQ(test::readBytes(path), "new");
    EXPECT_EQ(test::readBytes(result.swap->original), "old");
    EXPECT_THAT(names(), ElementsAre("Cut.xml"));
}

TEST_F(InPlaceChangeTest, leavesAFileThatWasWrittenSinceItWasRead) {
    afterReading = [this] { sandbox.write("Cut.xml", "own"); };
    change();
    expectRefused("own");
}

TEST_F(InPlaceChangeTest, leavesAFileThatWasExchangedSinceItWasRead) {
    afterWriting = [this] {
        ASSERT_EQ(rename(sandbox.write("Other.xml", "old").c_str(), path.c_str()), 0);
    };
    change();
    expectRefused("old");
}

TEST_F(InPlaceChangeTest, leavesAFileWhoseBytesNobodyHasDigested) {
    InPlaceChange place(path, {"change", "changed"}, waiting, result);
    ASSERT_EQ(place.readUndigested(), "old");
    place.write("new");
    place.finish(true, observer);
    expectRefused("old");
}

TEST_F(InPlaceChangeTest, holdsItsPlaceWithoutACopyOfTheFile) {
    InPlaceChange place(path, {"change", "changed"}, waiting, result);
    ASSERT_EQ(place.read(), "old");
    const std::string held = sandbox.path(".Cut.xml.vornic-change");
    place.write([&held](const WorkingCopy::Sink&) {
        EXPECT_EQ(test::readBytes(held), "");
        return false;
    });
    EXPECT_TRUE(result.error);
    place.finish(true, observer);
    EXPECT_EQ(test::readBytes(path), "old");
    EXPECT_THAT(names(), ElementsAre("Cut.xml"));
}

TEST_F(InPlaceChangeTest, saysNothingOfACopyThatIsGoneAlready) {
    InPlaceChange place(path, {"change", "changed"}, waiting, result);
    ASSERT_EQ(place.read(), "old");
    place.write([this](const WorkingCopy::Sink&) {
        EXPECT_EQ(unlink(sandbox.path(".Cut.xml.vornic-change").c_str()), 0);
        return false;
    });
    EXPECT_TRUE(result.error);
    place.finish(true, observer);
    place.takeNotes();
    EXPECT_THAT(result.notes, ::testing::IsEmpty());
    EXPECT_THAT(names(), ElementsAre("Cut.xml"));
}

}  // namespace

}  // namespace vornic
