#ifndef VORNIC_FOUNDATION_PLACES_NOTIFICATION_CENTER_H
#define VORNIC_FOUNDATION_PLACES_NOTIFICATION_CENTER_H

#include <cstddef>
#include <functional>
#include <string>

#include "platform/settings/PropertyList.h"

namespace vornic {

/// Tells observers in this process, by a name, that something has happened. Any thread.
class NotificationCenter {
  public:
    /// What the poster says about it.
    using UserInfo = platform::PropertyList::Dictionary;
    using Observer = std::function<void(const UserInfo& userInfo)>;

    /// Observes the notifications of a name until the object goes. An observer that is being called
    /// on another thread meanwhile comes to its end.
    class Observation {
      public:
        Observation(std::string name, Observer observer);
        ~Observation();
        Observation(const Observation&) = delete;
        Observation& operator=(const Observation&) = delete;

      private:
        std::size_t token_;
    };

    /// Calls the observers of the name in the order in which they came, on the calling thread. An
    /// observer may observe, let go and post itself; one that has gone before its turn is not
    /// called.
    static void post(const std::string& name, const UserInfo& userInfo = {});
};

}  // namespace vornic

#endif
