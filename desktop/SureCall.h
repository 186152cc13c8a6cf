#ifndef VORNIC_DESKTOP_SURE_CALL_H
#define VORNIC_DESKTOP_SURE_CALL_H

#include <chrono>
#include <functional>
#include <new>
#include <thread>

#include "platform/threads/MainThread.h"

namespace vornic {

/// Calls a function on the main thread, later. Where there is no memory for the call this waits for
/// some, since a window that is not told of an end would wait for it for ever. Any thread but the
/// main one.
/// @param makeCall gives the function, each time that it is tried; may run out of memory as well
template <typename MakeCall>
void performSurely(const MakeCall& makeCall) {
    constexpr std::chrono::milliseconds kPause{20};
    while (!platform::MainThread::isShutDown()) {
        try {
            platform::MainThread::perform(makeCall());
            return;
        } catch (const std::bad_alloc&) {
            std::this_thread::sleep_for(kPause);
        }
    }
}

}  // namespace vornic

#endif
