// SPDX-License-Identifier: MIT
// Stage, started and used as a user would: by its commands and the plug-in's buttons.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "stage/command_ids.h"
#include "tests/cli/running_program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/driven/user_settings.h"
#include "tests/support/wait_for.h"

namespace kfx::test {

constexpr int kPluginBuild = 1;
constexpr int kPluginTest = 24;
constexpr int kPluginSize = 12;
constexpr int kPluginEffect = 50;
constexpr int kPluginSelect = 51;

// In UTF-8.
std::string TextOf(HWND window);

// What a message box says.
std::string MessageOf(HWND box);

// What pressing a button of the window does.
void Press(HWND window, int button);

// A visible dialog of the process with this title; null: one of the system's that ask for a file, whose
// titles are in the user's language.
HWND DialogOf(DWORD process, const char* title);

struct StageWindow : ::testing::Test {
    UserSettings user;
    TemporaryFolder folder;
    std::string input = folder.path + "in.gif";
    RunningProgram stage;
    HWND window = nullptr;

    void SetUp() override { WriteTestGif(input, 3); }
    void TearDown() override { EndProgram(&stage); }

    void Open(const std::vector<std::string>& files,
              const std::string& program = FileBesideTest("kestrel-stage.exe"));

    HWND Control(int id) const { return GetDlgItem(window, id); }
    bool IsPossible(int command) const { return IsWindowEnabled(Control(command)) != 0; }
    void Run(int command) const { PostMessageA(window, WM_COMMAND, MAKEWPARAM(command, 0), 0); }

    bool WaitForTitle(const std::string& title) const;
    bool WaitForText(int control, const std::string& text) const;
    bool WaitForPossible(int command) const;

    void WaitForDialog(const char* title, HWND* dialog) const;

    // Opens the plug-in and waits until it has the source.
    void OpenPlugin(HWND* plugin) const;

    // Selects an effect in the plug-in's window.
    static void SelectEffect(HWND plugin, const std::string& effect);

    // Builds with the effect and waits for the result.
    void Build(const std::string& effect) const;

    // Types a name into the file dialog and accepts it.
    void ChooseFile(const std::string& path) const;

    // What a message box with Stage's title says, once it is there; "" when none comes.
    std::string MessageText() const;

    // Presses a button of a message box with Stage's title.
    void AnswerMessage(int button) const;

    // Closes the window; whatever is unsaved is not saved.
    void Close(bool isUnsaved);
};

}  // namespace kfx::test
