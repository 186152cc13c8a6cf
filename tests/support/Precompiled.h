#ifndef VORNIC_TESTS_SUPPORT_PRECOMPILED_H
#define VORNIC_TESTS_SUPPORT_PRECOMPILED_H

// What nearly every test includes, compiled once. Tests still include what they use.

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#endif
