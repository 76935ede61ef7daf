// SPDX-License-Identifier: MIT
// Plug-ins that crash or hang take nothing of Stage's along.
#include <filesystem>

#include <gmock/gmock.h>

#include "media/utf8_path.h"
#include "stage/plugin_watch.h"
#include "tests/stage/stage_program.h"

namespace kfx::test {
namespace {

using namespace stage;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

constexpr DWORD kLongestMilliseconds = 120000;

// Stage in a folder of its own, with a plug-in that does what its name says.
struct FailingPlugin : StageWindow {
    void OpenWith(const char* misbehaviour) {
        const std::string program = folder.path + "kestrel-stage.exe";
        WriteText(program, ReadText(FileBesideTest("kestrel-stage.exe")));
        WriteText(folder.path + "kfxplug1.dll", ReadText(FileBesideTest("misbehaving_plugin.dll")));
        SetEnvironmentVariableA("KFX_MISBEHAVIOUR", misbehaviour);
        ASSERT_NO_FATAL_FAILURE(Open({input}, program));
        ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
        Run(kEffects);
    }

    fs::path ReportFolder() const { return PathOf(user.folder) / "Stage reports"; }
    void RemoveReports() const { fs::remove_all(ReportFolder()); }

    // The text of each report.
    std::vector<std::string> Reports() const {
        std::vector<std::string> texts;
        std::error_code none;
        for (const auto& entry : fs::directory_iterator(ReportFolder(), none))
            texts.push_back(ReadText(Utf8Of(entry.path() / "report.txt")));
        return texts;
    }

    // The picture is there, and the plug-in is not called again.
    void ExpectUsableWithoutPlugin() {
        EXPECT_TRUE(WaitForPossible(kOpen));
        Run(kFirstFrame);
        EXPECT_TRUE(WaitForText(kFrameText, "Frame 1 of 3    0.00 of 0.18 s"));
        Run(kEffects);
        ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    }

    void SetUp() override {
        StageWindow::SetUp();
        RemoveReports();
    }

    void TearDown() override {
        RemoveReports();
        SetEnvironmentVariableA("KFX_MISBEHAVIOUR", nullptr);
        StageWindow::TearDown();
    }
};

TEST_F(FailingPlugin, A_crash_ends_the_plugin_and_leaves_the_picture_there) {
    struct Crash {
        const char* misbehaviour;
        const char* report;
    };
    constexpr char kNoMemoryThere[] = "exception: c0000005";
    for (const Crash& crash :
         {Crash{"crash", kNoMemoryThere}, Crash{"crash when asked", kNoMemoryThere},
          Crash{"crash while loaded", kNoMemoryThere}, Crash{"overrun", "exception: c000001d"}}) {
        SCOPED_TRACE(crash.misbehaviour);
        ASSERT_NO_FATAL_FAILURE(OpenWith(crash.misbehaviour));
        ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
        ASSERT_EQ(Reports().size(), 1u);
        EXPECT_THAT(Reports().front(), HasSubstr(crash.report));
        EXPECT_THAT(Reports().front(), HasSubstr("stack:\r\n    "));
        ExpectUsableWithoutPlugin();
        ASSERT_NO_FATAL_FAILURE(Close(false));
        RemoveReports();
    }
}

TEST_F(FailingPlugin, A_crash_in_the_report_of_a_crash_ends_nothing_more) {
    ASSERT_NO_FATAL_FAILURE(OpenWith("crash twice"));
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    EXPECT_EQ(Reports().size(), 0u);
    ExpectUsableWithoutPlugin();
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(FailingPlugin, A_hanging_plugin_leaves_the_window_alive_and_does_not_keep_it_open) {
    ASSERT_NO_FATAL_FAILURE(OpenWith("hang"));
    EXPECT_TRUE(WaitFor([this] { return !IsPossible(kOpen); }));
    Run(kLastFrame);
    EXPECT_TRUE(WaitForText(kFrameText, "Frame 3 of 3    0.11 of 0.18 s"));
    PostMessageA(window, WM_CLOSE, 0, 0);
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDNO));
    EXPECT_TRUE(IsWindow(window)) << "the user wants to wait";
    PostMessageA(window, WM_CLOSE, 0, 0);
    HWND box = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel Stage", &box));
    PostMessageA(box, WM_COMMAND, IDYES, 0);
    EXPECT_EQ(WaitForEnd(&this->stage), 0);
}

TEST_F(FailingPlugin, A_plugin_that_hangs_is_given_up_with_its_window) {
    ASSERT_NO_FATAL_FAILURE(OpenWith("window"));
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("", &plugin));
    const HANDLE back = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingBack");
    const HANDLE chosen = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingChosen");
    EXPECT_FALSE(IsPossible(kGiveUpPlugin));
    PostMessageA(plugin, WM_COMMAND, MAKEWPARAM(kPluginEffect, CBN_CLOSEUP), 0);
    EXPECT_EQ(WaitForSingleObject(chosen, kLongestMilliseconds), WAIT_OBJECT_0);
    CloseHandle(chosen);
    ASSERT_TRUE(WaitForText(kStatusText, "The plug-in does not answer."));
    ASSERT_TRUE(WaitForPossible(kGiveUpPlugin));
    EXPECT_TRUE(IsWindowVisible(Control(kGiveUpPlugin)));
    Run(kGiveUpPlugin);
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDNO));
    EXPECT_TRUE(IsPossible(kGiveUpPlugin)) << "the user wants to wait";
    Run(kGiveUpPlugin);
    HWND box = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel Stage", &box));
    PostMessageA(box, WM_COMMAND, IDYES, 0);
    // The next one tells where the report is.
    ASSERT_TRUE(WaitFor([box] { return !IsWindow(box); }));
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    ASSERT_EQ(Reports().size(), 1u);
    EXPECT_THAT(Reports().front(), HasSubstr("it does not answer"));
    EXPECT_THAT(Reports().front(), HasSubstr("input: 40 x 30, 3 frames, hash "));
    EXPECT_THAT(Reports().front(), HasSubstr("kfxplug1.dll+"));
    EXPECT_FALSE(IsWindowVisible(Control(kGiveUpPlugin)));
    ExpectUsableWithoutPlugin();
    // When it goes on after all, it ends.
    SetEvent(back);
    EXPECT_TRUE(WaitFor([plugin] { return !IsWindow(plugin); }));
    ExpectUsableWithoutPlugin();
    CloseHandle(back);
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST(PluginSilence, Is_noticed_when_nothing_at_all_happens) {
    PluginWatch watch;
    PluginSigns signs;
    for (int i = 1; i < kMostIdleLooks; ++i) EXPECT_FALSE(NoteLook(&watch, signs));
    EXPECT_TRUE(NoteLook(&watch, signs));
    signs.answers = true;
    EXPECT_FALSE(NoteLook(&watch, signs));
    signs.answers = false;
    EXPECT_FALSE(NoteLook(&watch, signs));
}

TEST(PluginSilence, Is_not_seen_in_a_build_or_while_frames_are_copied) {
    PluginWatch watch;
    PluginSigns signs;
    signs.isBuilding = true;
    for (int i = 0; i < 10 * kMostBusyLooks; ++i) {
        ++signs.processorTime;
        EXPECT_FALSE(NoteLook(&watch, signs));
    }
    signs.isInHost = true;
    signs.isBuilding = false;
    for (int i = 0; i < 10 * kMostBusyLooks; ++i) EXPECT_FALSE(NoteLook(&watch, signs));
    signs.isInHost = false;
    for (int i = 0; i < 10 * kMostBusyLooks; ++i) {
        ++signs.requests;
        EXPECT_FALSE(NoteLook(&watch, signs));
    }
}

TEST(PluginSilence, Is_noticed_in_endless_work_that_builds_nothing_or_was_stopped) {
    for (const bool isStopped : {false, true}) {
        PluginWatch watch;
        PluginSigns signs;
        signs.isBuilding = signs.isStopped = isStopped;
        for (int i = 1; i < kMostBusyLooks; ++i) {
            ++signs.processorTime;
            EXPECT_FALSE(NoteLook(&watch, signs));
        }
        ++signs.processorTime;
        EXPECT_TRUE(NoteLook(&watch, signs));
    }
}

}  // namespace
}  // namespace kfx::test
