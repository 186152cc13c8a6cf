#ifndef VORNIC_PLATFORM_PROCESSES_RANDOM_BYTES_H
#define VORNIC_PLATFORM_PROCESSES_RANDOM_BYTES_H

#include <cstddef>

namespace vornic::platform {

/// Fills the buffer with unpredictable bytes of the system. Any thread.
void fillWithRandomBytes(unsigned char* bytes, std::size_t count);

}  // namespace vornic::platform

#endif
