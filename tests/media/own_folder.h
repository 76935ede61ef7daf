// SPDX-License-Identifier: MIT
// A folder for the files of one test.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "media/utf8_path.h"

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace kfx::test {

// Empty at first; removed with all that is in it.
struct OwnFolder {
    std::filesystem::path path;

    OwnFolder() {
        // The native tests and those under Wine run at the same time, and so may two checkouts.
#ifdef _WIN32
        const long process = _getpid();
#else
        const long process = getpid();
#endif
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        path = std::filesystem::temp_directory_path() /
               ("kfx-media-" + std::to_string(process) + "-" + std::string(test->name()));
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
    }
    ~OwnFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    OwnFolder(const OwnFolder&) = delete;
    OwnFolder& operator=(const OwnFolder&) = delete;

    std::string File(const std::string& name) const { return Utf8Of(path) + "/" + name; }
    size_t Count() const {
        using Entries = std::filesystem::directory_iterator;
        return static_cast<size_t>(std::distance(Entries(path), Entries()));
    }
};

}  // namespace kfx::test
