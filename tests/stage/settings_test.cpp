// SPDX-License-Identifier: MIT
// The user's configuration file after a command: as it was, byte for byte.
#include <gtest/gtest.h>

#include "tests/stage/stage_process.h"
#include "tests/stage/test_animations.h"

namespace kfx::test {
namespace {

const char kUsersText[] = ";mine\r\n\r\nStyle000Radius = 44\nMainEffect=3\x01\xFF";

struct Settings : ::testing::Test {
    UserSettings user;
    TemporaryFolder folder;

    void SetUp() override { WriteTestGif(folder.path + "in.gif", 1); }

    int Apply(const std::vector<std::string>& more) const {
        std::vector<std::string> arguments = {"apply", folder.path + "in.gif", "-o",
                                              folder.path + "out.webp"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunStage(arguments).exitCode;
    }
};

TEST_F(Settings, TheUsersFileIsAsItWasAfterSuccessAndFailure) {
    WriteText(user.path, kUsersText);
    EXPECT_EQ(Apply({"--effect", "Emboss", "--fast-remap"}), 0);
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(Apply({"--effect", "nonsense"}), 2);
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(user.Files(), std::vector<std::string>{"kfxplug1.ini"});
}

TEST_F(Settings, AnAbsentFileStaysAbsent) {
    DeleteFileAt(user.path);
    EXPECT_EQ(Apply({"--effect", "Emboss"}), 0);
    EXPECT_EQ(user.Files(), std::vector<std::string>{});
    EXPECT_EQ(Apply({"--effect", "nonsense"}), 2);
    EXPECT_EQ(user.Files(), std::vector<std::string>{});
}

TEST_F(Settings, TheResultDoesNotDependOnTheUsersFile) {
    DeleteFileAt(user.path);
    ASSERT_EQ(Apply({"--effect", "Emboss"}), 0);
    const Animation without = ReadBack(folder.path + "out.webp");
    WriteText(user.path, "Style000Radius = 44\nTruecolour = 0\n");
    ASSERT_EQ(Apply({"--effect", "Emboss"}), 0);
    ExpectSamePictures(without, ReadBack(folder.path + "out.webp"));
}

TEST_F(Settings, WhatAKilledCommandLeftAsideIsPutBackByTheNext) {
    WriteText(user.folder + "kfxplug1.ini.aside", kUsersText);
    WriteText(user.path, "[PlugIn]\n");
    EXPECT_EQ(Apply({"--effect", "nonsense"}), 2);
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(user.Files(), std::vector<std::string>{"kfxplug1.ini"});
}

TEST_F(Settings, AHangingPluginLeavesTheUsersFileToo) {
    WriteText(user.path, kUsersText);
    _putenv("KFX_MISBEHAVIOUR=hang");
    EXPECT_EQ(
        Apply({"--effect", "Bump", "--timeout", "1", "--plugin", FileBesideTest("misbehaving_plugin.dll")}),
        6);
    EXPECT_EQ(ReadText(user.path), kUsersText);
}

}  // namespace
}  // namespace kfx::test
