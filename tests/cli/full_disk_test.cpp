// SPDX-License-Identifier: MIT
// Results on a disk that is too small by one page after the other: a file system of the test's own, in
// memory. The old file stays, nothing else does, and the message says why.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

// Whether the system took the words, in one piece.
bool Tell(const char* path, const std::string& words) {
    std::ofstream file(path);
    file << words << std::flush;
    return file.good();
}

// Mounts that only this process and its children see. False: the system does not allow it; errno says why.
bool HaveOwnMounts() {
    // Asked before: in a new user namespace nobody has a number until it is given. A file system there takes
    // no file of a user or a group without one. The system wants `setgroups` refused before it gives the
    // group.
    const std::string user = std::to_string(getuid()), group = std::to_string(getgid());
    if (unshare(CLONE_NEWNS) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
        if (!Tell("/proc/self/setgroups", "deny") || !Tell("/proc/self/gid_map", "0 " + group + " 1") ||
            !Tell("/proc/self/uid_map", "0 " + user + " 1"))
            return false;
    }
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

// A disk of so many pages, for its scope.
struct SmallDisk {
    SmallDisk(const std::string& place, size_t pages) : path(place) {
        const std::string options = "size=" + std::to_string(4 * pages) + "k";
        mounted = mount("none", path.c_str(), "tmpfs", 0, options.c_str()) == 0;
    }
    ~SmallDisk() {
        if (mounted) umount(path.c_str());
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    const std::string path;
    bool mounted = false;
};

constexpr char kOld[] = "what was there before";

TEST(FullDisk, Keeps_the_old_file_until_the_new_one_fits) {
    if (!HaveOwnMounts())
        GTEST_SKIP() << "This system does not let a test have mounts of its own: " << std::strerror(errno);
    const TemporaryFolder inputs, place;
    WriteTestGif(inputs.path + "in.gif", 4, false, 5);
    for (const char* name : {"out.gif", "out.webp", "out.png", "out.y4m"}) {
        const std::vector<std::string> words = {"apply",
                                                inputs.path + "in.gif",
                                                "-o",
                                                place.path + name,
                                                "--effect",
                                                "Emboss",
                                                "--force",
                                                "--format",
                                                std::strcmp(name, "out.png") == 0 ? "apng" : name + 4};
        ASSERT_EQ(RunKestrel(words).exitCode, 0) << name;
        const std::string whole = ReadText(place.path + name);
        DeleteFileAt(place.path + name);
        const size_t needed = whole.size() / 4096 + 1;
        const size_t step = needed / 12 + 1;
        bool fitted = false;
        for (size_t pages = 2; !fitted; pages += step) {
            ASSERT_LT(pages, 2 * needed + 100) << name << " never fits";
            const SmallDisk disk(place.path, pages);
            ASSERT_TRUE(disk.mounted) << std::strerror(errno);
            WriteText(place.path + name, kOld);
            const ProgramResult result = RunKestrel(words);
            fitted = result.exitCode == 0;
            EXPECT_EQ(FilesIn(place.path), std::vector<std::string>{name}) << pages;
            EXPECT_TRUE(ReadText(place.path + name) == (fitted ? whole : kOld)) << name << ", " << pages;
            if (!fitted) {
                EXPECT_THAT(result.err, HasSubstr("disk is full")) << name << ", " << pages;
                EXPECT_THAT(result.err, StartsWith("kestrel: ")) << name << ", " << pages;
            }
            AddTried("full disks", !fitted);
        }
        DeleteFileAt(place.path + name);
    }
}

}  // namespace
}  // namespace kfx::test
