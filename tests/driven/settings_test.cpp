// SPDX-License-Identifier: MIT
// The user's configuration file of the plug-in: no command reads it, writes it, or moves it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include "commands/text_windows.h"
#include "driven/settings_folder.h"
#include "tests/cli/program.h"
#include "tests/cli/running_program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/driven/import_patch.h"
#include "tests/driven/user_settings.h"

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
    const std::string ending = "kfxplug1.ini", name = commands::Narrow(path);
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
        std::vector<std::string> arguments = {"apply", folder.path + "in.gif", "-o", folder.path + "out.webp",
                                              "--force"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    ProgramResult Apply(const std::vector<std::string>& more) const {
        return RunThroughPlugin(Command(more));
    }

    // A command whose plug-in does what the word says. Only a hang is to be given up soon.
    ProgramResult Misbehave(const std::string& misbehaviour) const {
        _putenv(("KFX_MISBEHAVIOUR=" + misbehaviour).c_str());
        return Apply({"--effect", "Bump", "--timeout", misbehaviour == "hang" ? "1" : "600", "--plugin",
                      FileBesideTest("misbehaving_plugin.dll")});
    }
};

TEST_F(Settings, The_users_file_is_as_it_was_after_success_and_failure) {
    WriteText(user.path, kUsersText);
    EXPECT_EQ(Apply({"--effect", "Emboss", "--palette", "custom", "--fast-remap"}).exitCode, 0);
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(Apply({"--effect", "nonsense"}).exitCode, 2);
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini"});
}

TEST_F(Settings, A_file_that_another_program_holds_open_is_no_obstacle) {
    WriteText(user.path, kUsersText);
    const HANDLE held = CreateFileW(commands::Widen(user.path).c_str(), GENERIC_READ, 0, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    const ProgramResult result = Apply({"--effect", "Emboss"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini"});
    CloseHandle(held);
    EXPECT_EQ(ReadText(user.path), kUsersText);
}

TEST_F(Settings, What_a_host_saves_while_a_command_runs_is_kept) {
    WriteText(user.path, "[PlugIn]\n");
    const HANDLE started = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingStarted");
    const HANDLE go = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingGo");
    _putenv("KFX_MISBEHAVIOUR=meet");
    RunningProgram program;
    ASSERT_TRUE(StartThroughPlugin(
        Command({"--effect", "Bump", "--plugin", FileBesideTest("misbehaving_plugin.dll")}), &program));
    EXPECT_EQ(WaitForSingleObject(started, 60000), WAIT_OBJECT_0);
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini"});
    WriteText(user.path, kUsersText);
    SetEvent(go);
    EXPECT_EQ(WaitForEnd(&program), 5);
    CloseHandle(started);
    CloseHandle(go);
    EXPECT_EQ(ReadText(user.path), kUsersText);
}

TEST_F(Settings, An_absent_file_stays_absent) {
    DeleteFileAt(user.path);
    EXPECT_EQ(Apply({"--effect", "Emboss"}).exitCode, 0);
    EXPECT_EQ(user.Files(), Names{});
    EXPECT_EQ(Apply({"--effect", "nonsense"}).exitCode, 2);
    EXPECT_EQ(user.Files(), Names{});
}

TEST_F(Settings, The_result_does_not_depend_on_the_users_file) {
    DeleteFileAt(user.path);
    ASSERT_EQ(Apply({"--effect", "Emboss"}).exitCode, 0);
    const Animation without = ReadBack(folder.path + "out.webp");
    WriteText(user.path, "Style000Radius = 44\nTruecolour = 0\n");
    ASSERT_EQ(Apply({"--effect", "Emboss"}).exitCode, 0);
    ExpectSamePictures(without, ReadBack(folder.path + "out.webp"));
}

TEST_F(Settings, What_has_no_control_in_the_window_reaches_the_plugin) {
    const std::vector<std::string> dithered = {"--effect", "Bump", "--palette", "black and white",
                                               "--dither"};
    ASSERT_EQ(Apply(dithered).exitCode, 0);
    const Animation plain = ReadBack(folder.path + "out.webp");
    std::vector<std::string> bright = dithered;
    bright.insert(bright.end(), {"--dither-brightness", "90"});
    ASSERT_EQ(Apply(bright).exitCode, 0);
    EXPECT_NE(plain.frames[0].pixels, ReadBack(folder.path + "out.webp").frames[0].pixels);
}

TEST_F(Settings, A_driven_plugin_finds_no_folder_but_the_documents) {
    const std::string said = Misbehave("folders").err;
    EXPECT_THAT(said, HasSubstr("settings none, profile none, by name none, by variable none, documents "));
    EXPECT_THAT(said, Not(HasSubstr("documents none")));
}

TEST_F(Settings, Settings_that_the_plugin_does_not_read_are_an_error) {
    _putenv("KFX_MISBEHAVIOUR=window");
    const ProgramResult result = Apply({"--effect", "Bump", "--palette", "custom", "--fast-remap", "--plugin",
                                        FileBesideTest("misbehaving_plugin.dll")});
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_THAT(result.err, HasSubstr("has not read the settings"));
}

TEST_F(Settings, A_plugin_that_finds_its_folder_in_another_way_is_not_run) {
    WriteText(user.path, kUsersText);
    std::string bytes = ReadText(FileBesideTest("misbehaving_plugin.dll"));
    const std::string known = "SHGetSpecialFolderLocation", other = "SHGetSpecialFolderPathA";
    const size_t place = bytes.find(known);
    ASSERT_NE(place, std::string::npos);
    bytes.replace(place, other.size() + 1, other + '\0');
    WriteText(folder.path + "other.dll", bytes);
    _putenv("KFX_MISBEHAVIOUR=message");
    const ProgramResult result = Apply({"--effect", "Bump", "--plugin", folder.path + "other.dll"});
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_THAT(result.err, HasSubstr("other.dll: is not used by commands"));
    EXPECT_THAT(result.err, HasSubstr("it imports SHGetSpecialFolderPathA."));
    EXPECT_EQ(ReadText(user.path), kUsersText);
}

TEST_F(Settings, A_hanging_plugin_leaves_the_users_file_too) {
    WriteText(user.path, kUsersText);
    EXPECT_EQ(Misbehave("hang").exitCode, 6);
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini"});
}

TEST_F(Settings, What_an_earlier_version_left_aside_gets_its_name_back) {
    DeleteFileAt(user.path);
    WriteText(user.folder + "kfxplug1.ini.aside", kUsersText);
    const ProgramResult result = Apply({"--effect", "nonsense"});
    EXPECT_THAT(result.err, Not(HasSubstr("note")));
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini"});
}

// Whatever stands there: what a killed command had put there looks like what a user may have written.
TEST_F(Settings, It_takes_the_place_of_no_file) {
    const std::string newer = ";Quorvane Labs animtion plugin configuration file\n[PlugIn]\nMainEffect = 5\n";
    for (const std::string& standing : {newer, std::string(kCommandsText)}) {
        WriteText(user.folder + "kfxplug1.ini.aside", kUsersText);
        WriteText(user.path, standing);
        const ProgramResult result = Apply({"--effect", "nonsense"});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.err, HasSubstr("note: " + user.folder + "kfxplug1.ini.aside: "));
        EXPECT_THAT(result.err, HasSubstr(user.path + " stands"));
        EXPECT_THAT(result.err, HasSubstr("rename kfxplug1.ini.aside to kfxplug1.ini"));
        EXPECT_EQ(ReadText(user.path), standing);
        EXPECT_EQ(ReadText(user.folder + "kfxplug1.ini.aside"), kUsersText);
    }
}

// The function runs in the test itself: a file that nobody can open is no obstacle to it.
TEST_F(Settings, The_users_file_is_not_opened_because_another_stands_aside) {
    WriteText(user.folder + "kfxplug1.ini.aside", kUsersText);
    WriteText(user.path, kCommandsText);
    openedPath.clear();
    {
        const ImportPatch patch(GetModuleHandleA(nullptr), "CreateFileW", AddressOfFunction(WatchOpening));
        ASSERT_NE(patch.original, nullptr);
        EXPECT_NE(driven::PutBackLeftSettings(), "");
    }
    EXPECT_EQ(openedPath, "");
}

// Who has written something into it does not lose it.
TEST_F(Settings, A_marker_that_is_not_empty_stays) {
    DeleteFileAt(user.path);
    WriteText(user.folder + "kfxplug1.ini.absent", "x");
    EXPECT_EQ(Apply({"--effect", "nonsense"}).exitCode, 2);
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini.absent"});
}

TEST_F(Settings, The_tests_put_back_every_file_that_they_found) {
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

TEST_F(Settings, The_marker_of_an_earlier_version_costs_nobody_his_file) {
    WriteText(user.folder + "kfxplug1.ini.absent", "");
    WriteText(user.path, kUsersText);
    EXPECT_EQ(Apply({"--effect", "nonsense"}).exitCode, 2);
    EXPECT_EQ(ReadText(user.path), kUsersText);
    EXPECT_EQ(user.Files(), Names{"kfxplug1.ini"});
}

}  // namespace
}  // namespace kfx::test
