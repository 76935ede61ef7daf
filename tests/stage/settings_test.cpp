// SPDX-License-Identifier: MIT
// The user's configuration file of the plug-in: no command reads it, writes it, or moves it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include "stage/settings_folder.h"
#include "stage/text_windows.h"
#include "tests/stage/import_patch.h"
#include "tests/stage/stage_process.h"
#include "tests/stage/test_animations.h"

namespace kfx::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using Names = std::vector<std::string>;

const char kUsersText[] = ";mine\r\n\r\nStyle000Radius = 44\nMainEffect=3\x01\xFF";
const char kCommandsText[] = "[PlugIn]\r\nReloadPreviousSession = 0\r\nFastRemap = 0\r\n";

// The last file of the user's that was opened while this stood in place of the system's function.
std::string openedPath;

HANDLE WINAPI WatchOpening(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD how,
                           DWORD flags, HANDLE model) {
    const std::string ending = "kfxplug1.ini", name = stage::Narrow(path);
    if (name.size() >= ending.size() && name.substr(name.size() - ending.size()) == ending) openedPath = name;
    // Not by its name: that would lead here again.
    const auto system = reinterpret_cast<decltype(&CreateFileW)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "CreateFileW")));
    return system(path, access, share, security, how, flags, model);
}

struct Settings : ::testing::Test {
    UserSettings user;
    TemporaryFolder folder;

    void SetUp() override { WriteTestGif(folder.path + "in.gif", 1); }

    std::vector<std::string> Command(const std::vector<std::string>& more) const {
        std::vector<std::string> arguments = {"apply", folder.path + "in.gif", "-o",
                                              folder.path + "out.webp"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    StageResult Apply(const std::vector<std::string>& more) const { return RunStage(Command(more)); }

    // A command whose plug-in does what the word says. Only a hang is to be given up soon.
    StageResult Misbehave(const std::string& misbehaviour) const {
        _putenv(("KFX_MISBEHAVIOUR=" + misbehaviour).c_str());
        return Apply({"--effect", "Bump", "--timeout", misbehaviour == "hang" ? "1" : "600", "--plugin",
                      FileBesideTest("misbehaving_plugin.dll")});
    }
};

TEST_F(Settings, TheUsersFileIsAsItWasAfterSuccessAndFailure) {
    WriteText(user.path, kUsersText);
    EXPECT_EQ(Apply({"--effect", "Emboss", "--fast-remap"}).exitCode, 0);
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(Apply({"--effect", "nonsense"}).exitCode, 2);
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini"});
}

TEST_F(Settings, AFileThatAnotherProgramHoldsOpenIsNoObstacle) {
    WriteText(user.path, kUsersText);
    const HANDLE held = CreateFileW(stage::Widen(user.path).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    const StageResult result = Apply({"--effect", "Emboss"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini"});
    CloseHandle(held);
    EXPECT_EQ(ReadText(user.path), kUsersText);
}

TEST_F(Settings, WhatAHostSavesWhileACommandRunsIsKept) {
    WriteText(user.path, "[PlugIn]\n");
    const HANDLE started = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingStarted");
    const HANDLE go = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingGo");
    _putenv("KFX_MISBEHAVIOUR=meet");
    RunningStage stage;
    ASSERT_TRUE(StartStage(
        Command({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")}), &stage));
    EXPECT_EQ(WaitForSingleObject(started, 60000), WAIT_OBJECT_0);
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini"});
    WriteText(user.path, kUsersText);
    SetEvent(go);
    EXPECT_EQ(WaitForStage(&stage), 5);
    CloseHandle(started);
    CloseHandle(go);
    EXPECT_EQ(ReadText(user.path), kUsersText);
}

TEST_F(Settings, AnAbsentFileStaysAbsent) {
    DeleteFileAt(user.path);
    EXPECT_EQ(Apply({"--effect", "Emboss"}).exitCode, 0);
    EXPECT_EQ(user.Files(), Names{});
    EXPECT_EQ(Apply({"--effect", "nonsense"}).exitCode, 2);
    EXPECT_EQ(user.Files(), Names{});
}

TEST_F(Settings, TheResultDoesNotDependOnTheUsersFile) {
    DeleteFileAt(user.path);
    ASSERT_EQ(Apply({"--effect", "Emboss"}).exitCode, 0);
    const Animation without = ReadBack(folder.path + "out.webp");
    WriteText(user.path, "Style000Radius = 44\nTruecolour = 0\n");
    ASSERT_EQ(Apply({"--effect", "Emboss"}).exitCode, 0);
    ExpectSamePictures(without, ReadBack(folder.path + "out.webp"));
}

TEST_F(Settings, WhatHasNoControlInTheWindowReachesThePlugin) {
    const std::vector<std::string> dithered = {"--effect", "Bump", "--palette", "black and white",
                                               "--dither"};
    ASSERT_EQ(Apply(dithered).exitCode, 0);
    const Animation plain = ReadBack(folder.path + "out.webp");
    std::vector<std::string> bright = dithered;
    bright.insert(bright.end(), {"--dither-brightness", "90"});
    ASSERT_EQ(Apply(bright).exitCode, 0);
    EXPECT_NE(plain.frames[0].pixels, ReadBack(folder.path + "out.webp").frames[0].pixels);
}

TEST_F(Settings, ADrivenPluginFindsNoFolderButTheDocuments) {
    const std::string said = Misbehave("folders").err;
    EXPECT_THAT(said, HasSubstr("settings none, profile none, by name none, by variable none, documents "));
    EXPECT_THAT(said, Not(HasSubstr("documents none")));
}

TEST_F(Settings, SettingsThatThePluginDoesNotReadAreAnError) {
    _putenv("KFX_MISBEHAVIOUR=window");
    const StageResult result =
        Apply({"--effect", "Bump", "--fast-remap", "--plugin", FileBesideTest("misbehaving_plugin.dll")});
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_THAT(result.err, HasSubstr("has not read the settings"));
}

TEST_F(Settings, APluginThatFindsItsFolderInAnotherWayIsNotRun) {
    WriteText(user.path, kUsersText);
    std::string bytes = ReadText(FileBesideTest("misbehaving_plugin.dll"));
    const std::string known = "SHGetSpecialFolderLocation", other = "SHGetSpecialFolderPathA";
    const size_t place = bytes.find(known);
    ASSERT_NE(place, std::string::npos);
    bytes.replace(place, other.size() + 1, other + '\0');
    WriteText(folder.path + "other.dll", bytes);
    _putenv("KFX_MISBEHAVIOUR=message");
    const StageResult result = Apply({"--effect", "Bump", "--plugin", folder.path + "other.dll"});
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_THAT(result.err, HasSubstr("other.dll: is not used by commands"));
    EXPECT_THAT(result.err, HasSubstr("it imports SHGetSpecialFolderPathA."));
    EXPECT_EQ(ReadText(user.path), kUsersText);
}

TEST_F(Settings, AHangingPluginLeavesTheUsersFileToo) {
    WriteText(user.path, kUsersText);
    EXPECT_EQ(Misbehave("hang").exitCode, 6);
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini"});
}

TEST_F(Settings, WhatAnEarlierVersionLeftAsideGetsItsNameBack) {
    DeleteFileAt(user.path);
    WriteText(user.folder + "kfxplug1.ini.aside", kUsersText);
    const StageResult result = Apply({"--effect", "nonsense"});
    EXPECT_THAT(result.err, Not(HasSubstr("note")));
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini"});
}

// Whatever stands there: what a killed command had put there looks like what a user may have written.
TEST_F(Settings, ItTakesThePlaceOfNoFile) {
    const std::string newer = ";Quorvane Labs animtion plugin configuration file\n[PlugIn]\nMainEffect = 5\n";
    for (const std::string& standing : {newer, std::string(kCommandsText)}) {
        WriteText(user.folder + "kfxplug1.ini.aside", kUsersText);
        WriteText(user.path, standing);
        const StageResult result = Apply({"--effect", "nonsense"});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.err, HasSubstr("note: " + user.folder + "kfxplug1.ini.aside: "));
        EXPECT_THAT(result.err, HasSubstr(user.path + " stands"));
        EXPECT_THAT(result.err, HasSubstr("rename kfxplug1.ini.aside to kfxplug1.ini"));
        EXPECT_EQ(ReadText(user.path), standing);
        EXPECT_EQ(ReadText(user.folder + "kfxplug1.ini.aside"), kUsersText);
    }
}

// The function runs in the test itself: a file that nobody can open is no obstacle to it.
TEST_F(Settings, TheUsersFileIsNotOpenedBecauseAnotherStandsAside) {
    WriteText(user.folder + "kfxplug1.ini.aside", kUsersText);
    WriteText(user.path, kCommandsText);
    openedPath.clear();
    {
        const ImportPatch patch(GetModuleHandleA(nullptr), "CreateFileW", AddressOfFunction(WatchOpening));
        ASSERT_NE(patch.original, nullptr);
        EXPECT_NE(stage::PutBackLeftSettings(), "");
    }
    EXPECT_EQ(openedPath, "");
}

// Who has written something into it does not lose it.
TEST_F(Settings, AMarkerThatIsNotEmptyStays) {
    DeleteFileAt(user.path);
    WriteText(user.folder + "kfxplug1.ini.absent", "x");
    EXPECT_EQ(Apply({"--effect", "nonsense"}).exitCode, 2);
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini.absent"});
}

TEST_F(Settings, TheTestsPutBackEveryFileThatTheyFound) {
    const Names all = {"kfxplug1.ini", "kfxplug1.ini.absent", "kfxplug1.ini.aside"};
    for (const std::string& name : all) WriteText(user.folder + name, name);
    {
        const UserSettings inner;
        EXPECT_EQ(user.Files(), Names{});
        WriteText(user.folder + all[2], "other");
        WriteText(user.folder + "kfxplug1.more", "");
    }
    EXPECT_EQ(user.Files(), all);
    for (const std::string& name : user.Files()) EXPECT_EQ(ReadText(user.folder + name), name);
}

TEST_F(Settings, TheMarkerOfAnEarlierVersionCostsNobodyHisFile) {
    WriteText(user.folder + "kfxplug1.ini.absent", "");
    WriteText(user.path, kUsersText);
    EXPECT_EQ(Apply({"--effect", "nonsense"}).exitCode, 2);
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini"});
}

}  // namespace
}  // namespace kfx::test
