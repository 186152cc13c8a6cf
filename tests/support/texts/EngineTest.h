#ifndef VORNIC_TESTS_SUPPORT_TEXTS_ENGINE_TEST_H
#define VORNIC_TESTS_SUPPORT_TEXTS_ENGINE_TEST_H

#include <memory>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/support/fakes/CatalogueBundle.h"
#include "tests/support/fakes/RecordingAlertPanels.h"
#include "tests/support/machine/Sandbox.h"
#include "tests/support/machine/Unprivileged.h"
#include "tests/support/texts/LogCapture.h"
#include "xml/tree/XMLDocument.h"

namespace vornic::test {

/// Parses a text that is well-formed; a failure is a failure of the running test.
[[nodiscard]] inline std::unique_ptr<XMLDocument> parsed(std::string_view text) {
    ErrorSlot error;
    std::unique_ptr<XMLDocument> document =
        XMLDocument::parse(std::string(text), XMLMode::strict, error);
    EXPECT_NE(document, nullptr) << (error ? error->localizedDescription() : "no error");
    return document;
}

/// Base class of tests of the engines: an unprivileged process with a home folder, a log, alerts
/// and a version catalogue of its own.
class EngineTest : public ::testing::Test {
  protected:
    /// The catalogue that most tests start with: as many versions as there are, short lists.
    void writeUsualCatalogue() const {
        catalogue.write({{"1", {"4", {}}},
                         {"2", {"5", {{"<multiclip", "<angle"}}}},
                         {"3", {"5.1.2", {{"<metadata", "<uuid"}}}},
                         {"4", {"6", {{"<itemhistory"}}}},
                         {"5", {"7", {{"<anchoroffset", "<color"}}}}});
    }

    Unprivileged unprivileged;
    Sandbox sandbox;
    LogCapture log;
    InstalledAlertPanels alerts;
    CatalogueBundle catalogue{sandbox};
};

}  // namespace vornic::test

#endif
