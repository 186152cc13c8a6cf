#ifndef VORNIC_DESKTOP_SHEET_THREAD_H
#define VORNIC_DESKTOP_SHEET_THREAD_H

#include <QPointer>
#include <functional>
#include <memory>
#include <new>
#include <utility>

#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

namespace vornic {

/// Runs something for a sheet on a thread, and the rest on the main one while the sheet is there.
/// @param work makes what has a `refusal`, a sentence that says what went wrong
/// @throws platform::Exception when the system has no thread to give
template <typename Sheet, typename Result>
void runForSheet(Sheet* sheet, std::function<Result()> work,
                 std::function<void(Sheet&, Result)> then) {
    platform::detachNewThread(
        [self = QPointer<Sheet>(sheet), work = std::move(work), then = std::move(then)] {
            Result result;
            try {
                result = work();
            } catch (const std::bad_alloc&) {
                result = {};
                result.refusal = "There is not enough memory to read the file.";
            }
            platform::MainThread::perform(
                [self, then, result = std::make_shared<Result>(std::move(result))] {
                    if (self) {
                        then(*self, std::move(*result));
                    }
                });
        });
}

}  // namespace vornic

#endif
