#ifndef VORNIC_TESTS_REPAIR_DOCUMENT_TEST_H
#define VORNIC_TESTS_REPAIR_DOCUMENT_TEST_H

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/threads/Thread.h"
#include "repair/document/Document.h"
#include "tests/repair/pipeline/PipelineTest.h"
#include "tests/support/fakes/RecordingDocumentWindow.h"
#include "tests/support/texts/EngineTest.h"

namespace vornic::test {

/// A document with a window that writes down what it is told.
class DocumentTest : public EngineTest {
  protected:
    void SetUp() override {
        writeUsualCatalogue();
        document->setWindow(window);
    }
    void TearDown() override { waitForThreads(); }

    /// Waits for every thread that a document started, while the main thread's events go on.
    static void waitForThreads() {
        // What is dispatched may start another one.
        for (bool isDone = false; !isDone;) {
            EXPECT_TRUE(platform::joinDetachedThreads(std::chrono::minutes(2)));
            isDone = true;
            while (platform::MainThread::dispatchOne(std::chrono::milliseconds(0))) {
                isDone = false;
            }
        }
    }
    /// The entries of the report, with their marks.
    [[nodiscard]] Strings insertions() const {
        Strings texts = window->callsOf("insert: ");
        for (std::string& text : texts) {
            text.erase(0, text.starts_with("\n\n") ? 2 : 0);
        }
        return texts;
    }

    std::shared_ptr<RecordingDocumentWindow> window = std::make_shared<RecordingDocumentWindow>();
    std::shared_ptr<Document> document = Document::create();
};

}  // namespace vornic::test

#endif
