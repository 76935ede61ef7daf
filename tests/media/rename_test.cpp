// SPDX-License-Identifier: MIT
// File systems that cannot rename to a free name in one step, or have no second names: the calls are wrapped.
#include "media/rename.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>

#include "tests/media/own_folder.h"

extern "C" {
int __real_renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags);
int __real_link(const char* from, const char* to);
}

namespace kfx {
namespace {

// What the calls fail with; 0: they work.
int renamingFails = 0;
int linkingFails = 0;

struct Rename : ::testing::Test {
    const test::OwnFolder own;
    const std::filesystem::path from = own.path / "from", to = own.path / "to";

    void SetUp() override {
        renamingFails = linkingFails = 0;
        Put(from, "new");
    }

    static void Put(const std::filesystem::path& path, const char* text) { std::ofstream(path) << text; }
    static std::string Get(const std::filesystem::path& path) {
        std::string text;
        std::ifstream(path) >> text;
        return text;
    }

    std::error_code ToFreeName() const {
        std::error_code failure;
        RenameFile(from, to, false, &failure);
        return failure;
    }
};

// Each way of a file system, the best first.
constexpr struct {
    int renamingFails;
    int linkingFails;
} kSystems[] = {{0, 0}, {EINVAL, 0}, {ENOSYS, 0}, {EINVAL, EPERM}, {ENOSYS, ENOSYS}};

TEST_F(Rename, A_free_name_is_taken_on_every_file_system) {
    for (const auto& system : kSystems) {
        renamingFails = system.renamingFails;
        linkingFails = system.linkingFails;
        Put(from, "new");
        EXPECT_EQ(ToFreeName(), std::error_code()) << system.renamingFails << " " << system.linkingFails;
        EXPECT_EQ(Get(to), "new");
        EXPECT_FALSE(std::filesystem::exists(from));
        std::filesystem::remove(to);
    }
}

TEST_F(Rename, A_name_that_is_taken_stays_what_it_is) {
    Put(to, "old");
    for (const auto& system : kSystems) {
        renamingFails = system.renamingFails;
        linkingFails = system.linkingFails;
        EXPECT_EQ(ToFreeName(), std::errc::file_exists) << system.renamingFails << " " << system.linkingFails;
        EXPECT_EQ(Get(to), "old");
        EXPECT_EQ(Get(from), "new");
    }
}

TEST_F(Rename, Another_reason_is_told) {
    renamingFails = EACCES;
    EXPECT_EQ(ToFreeName(), std::errc::permission_denied);
    EXPECT_EQ(Get(from), "new");
    EXPECT_FALSE(std::filesystem::exists(to));
}

}  // namespace
}  // namespace kfx

extern "C" int __wrap_renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                                unsigned flags) {
    errno = kfx::renamingFails;
    return kfx::renamingFails ? -1 : __real_renameat2(fromFolder, from, toFolder, to, flags);
}

extern "C" int __wrap_link(const char* from, const char* to) {
    errno = kfx::linkingFails;
    return kfx::linkingFails ? -1 : __real_link(from, to);
}
