#ifndef VORNIC_FOUNDATION_TASK_NOTIFICATION_H
#define VORNIC_FOUNDATION_TASK_NOTIFICATION_H

#include <map>
#include <string>

namespace vornic {

inline constexpr const char* kAsyncTaskDataNotification = "QMAsyncTaskDataNotification";
/// The key under which a notification carries its chunk.
inline constexpr const char* kFileHandleNotificationDataItem = "NSFileHandleNotificationDataItem";

/// One chunk of an asynchronous run on its way from the reading loop to the delegate. It has no
/// sender and is handed over directly.
struct TaskNotification {
    std::string name = kAsyncTaskDataNotification;
    std::map<std::string, std::string> userInfo;
};

}  // namespace vornic

#endif
