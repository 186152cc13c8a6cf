#include "desktop/Release.h"

#include <utility>

#include "base/Exception.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic {

void releaseOnThread(std::vector<std::shared_ptr<const void>> kept) {
    // The box is what the main thread frees; its contents are gone by then.
    const auto box = std::make_shared<std::vector<std::shared_ptr<const void>>>(std::move(kept));
    platform::MainThread::perform([box] {
        try {
            platform::startUnattendedThread([box] { box->clear(); });
        } catch (const platform::Exception&) {
            // Then it is freed here.
            box->clear();
        }
    });
}

}  // namespace vornic
