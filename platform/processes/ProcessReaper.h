#ifndef VORNIC_PLATFORM_PROCESSES_PROCESS_REAPER_H
#define VORNIC_PLATFORM_PROCESSES_PROCESS_REAPER_H

#include <memory>

#include "platform/processes/SpawnedProcess.h"

namespace vornic::platform {

/// Fetches the end of a child that nobody waits for, so that it leaves no zombie. One thread serves
/// all such children; it ends with the last of them, or when the program ends, which the children
/// may outlive. Any thread; never raises.
void reapInBackground(std::shared_ptr<SpawnedProcess> process);

}  // namespace vornic::platform

#endif
