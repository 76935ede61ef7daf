// SPDX-License-Identifier: MIT
// What its user does with mouse and keys, and what must not lose work: saves that fail, the session's end.
#include <future>

#include <gmock/gmock.h>

#include "tests/driven/import_patch.h"
#include "tests/stage/own_stage.h"

namespace kfx::test {
namespace {

using namespace stage;

BOOL WINAPI WriteToFullDisk(HANDLE, const void*, DWORD, DWORD* written, OVERLAPPED*) {
    *written = 0;
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

// As in a folder that its user may only read.
HANDLE WINAPI RefuseToWrite(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                            DWORD creation, DWORD flags, HANDLE likeThat) {
    if ((access & GENERIC_WRITE) == 0)
        return CreateFileW(path, access, share, security, creation, flags, likeThat);
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

int refusedHook = 0;              // the kind of hook that is refused
void* setHookOfSystem = nullptr;  // this program's own import leads to RefuseHook meanwhile

HHOOK WINAPI RefuseHook(int kind, HOOKPROC procedure, HINSTANCE module, DWORD thread) {
    if (kind != refusedHook)
        return reinterpret_cast<decltype(&SetWindowsHookExW)>(setHookOfSystem)(kind, procedure, module,
                                                                               thread);
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

struct Using : OwnStage {
    void OpenAndBuild() {
        ASSERT_NO_FATAL_FAILURE(OpenHere({input}));
        ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
        ASSERT_NO_FATAL_FAILURE(Build("Solarize"));
    }
};

TEST_F(Using, The_dividing_line_follows_the_mouse) {
    ASSERT_NO_FATAL_FAILURE(OpenAndBuild());
    Run(kWipeView);
    ASSERT_TRUE(WaitFor([this] { return State()->view.arrangement == Arrangement::Wipe; }));
    const HWND canvas = Control(kCanvas);
    RECT area;
    GetClientRect(canvas, &area);
    const auto moveTo = [&](int x) { PostMessageA(canvas, WM_MOUSEMOVE, 0, MAKELPARAM(x, area.bottom / 2)); };
    moveTo(1);
    EXPECT_TRUE(WaitFor([this] { return State()->view.wipe == 0; }));
    moveTo(area.right - 2);
    EXPECT_TRUE(WaitFor([this] { return State()->view.wipe == kWipeSteps; }));
    moveTo(area.right / 2);
    EXPECT_TRUE(WaitFor([this] { return State()->view.wipe > 400 && State()->view.wipe < 600; }));
}

TEST_F(Using, The_source_stands_alone_while_its_key_is_held) {
    ASSERT_NO_FATAL_FAILURE(OpenAndBuild());
    PostMessageA(window, WM_KEYDOWN, 'O', 1);
    EXPECT_TRUE(WaitFor([this] { return State()->view.sourceAlone; }));
    PostMessageA(window, WM_KEYUP, 'O', 1);
    EXPECT_TRUE(WaitFor([this] { return !State()->view.sourceAlone; }));
    PostMessageA(window, WM_KEYDOWN, 'O', 1);
    EXPECT_TRUE(WaitFor([this] { return State()->view.sourceAlone; }));
    PostMessageA(window, WM_ACTIVATE, WA_INACTIVE, 0);
    EXPECT_TRUE(WaitFor([this] { return !State()->view.sourceAlone; })) << "its release goes elsewhere";
}

TEST_F(Using, A_save_that_fails_keeps_the_work_unsaved) {
    ASSERT_NO_FATAL_FAILURE(OpenAndBuild());
    const std::string output = folder.path + "saved.gif";
    {
        const ImportPatch disk(GetModuleHandleA("msvcrt.dll"), "WriteFile",
                               AddressOfFunction(WriteToFullDisk));
        ASSERT_NE(disk.original, nullptr);
        Run(kSave);
        ASSERT_NO_FATAL_FAILURE(ChooseFile(output));
        ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    }
    EXPECT_FALSE(FileExists(output));
    EXPECT_EQ(TextOf(window), "*in.gif - Kestrel Stage");
    PostMessageA(window, WM_CLOSE, 0, 0);
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDCANCEL));
    EXPECT_TRUE(IsWindow(window)) << "it is asked about";
    Run(kSave);
    ASSERT_NO_FATAL_FAILURE(ChooseFile(output));
    EXPECT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    EXPECT_EQ(ReadBack(output).frames.size(), 3u);
}

TEST_F(Using, A_folder_that_may_not_be_written_keeps_its_file_and_is_told_of) {
    const std::string kept = folder.path + "saved.jpg.gif", typed = folder.path + "saved.jpg";
    WriteText(kept, "kept");
    ASSERT_NO_FATAL_FAILURE(OpenAndBuild());
    {
        const ImportPatch folderOnlyRead(GetModuleHandleA("msvcrt.dll"), "CreateFileW",
                                         AddressOfFunction(RefuseToWrite));
        ASSERT_NE(folderOnlyRead.original, nullptr);
        Run(kSave);
        ASSERT_NO_FATAL_FAILURE(ChooseFile(typed));
        ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDYES));
        HWND box = nullptr;
        ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel Stage", &box));
        EXPECT_EQ(MessageOf(box),
                  kept + ": the file cannot be written (it is protected, or another program uses it).");
        ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    }
    EXPECT_EQ(ReadText(kept), "kept");
    EXPECT_EQ(TextOf(window), "*in.gif - Kestrel Stage") << "still to be saved";
}

TEST_F(Using, A_plugin_whose_window_cannot_be_watched_is_not_opened_and_can_be_opened_later) {
    ASSERT_NO_FATAL_FAILURE(OpenHere({input}));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    for (const int kind : {WH_CBT, WH_CALLWNDPROCRET}) {
        SCOPED_TRACE(kind);
        refusedHook = kind;
        const ImportPatch hooks(GetModuleHandleA(nullptr), "SetWindowsHookExW",
                                AddressOfFunction(RefuseHook));
        ASSERT_NE(hooks.original, nullptr);
        setHookOfSystem = hooks.original;
        Run(kEffects);
        HWND box = nullptr;
        ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel Stage", &box));
        EXPECT_THAT(MessageOf(box), testing::StartsWith("The plug-in's window cannot be watched: "));
        ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
        EXPECT_TRUE(WaitForPossible(kEffects));
    }
    ASSERT_NO_FATAL_FAILURE(Build("Solarize"));
}

TEST_F(Using, The_wall_keeps_no_memory_of_a_step_that_is_gone) {
    ASSERT_NO_FATAL_FAILURE(OpenAndBuild());
    const std::weak_ptr<const Film> gone = State()->history.steps[1].film;
    Run(kWallView);
    ASSERT_TRUE(WaitFor([&] { return State()->wall.film == gone.lock(); }));
    Run(kWipeView);
    Run(kUndo);
    ASSERT_TRUE(WaitForPossible(kRedo));
    ASSERT_FALSE(gone.expired()) << "it can be done again";
    ASSERT_NO_FATAL_FAILURE(Build("Emboss"));
    EXPECT_TRUE(WaitFor([&gone] { return gone.expired(); }));
}

TEST_F(Using, The_sessions_end_waits_for_unsaved_work_and_keeps_what_is_remembered) {
    ASSERT_NO_FATAL_FAILURE(OpenAndBuild());
    const auto ask = [this] {
        return std::async(std::launch::async,
                          [this] { return SendMessageA(window, WM_QUERYENDSESSION, 0, 0); });
    };
    auto kept = ask();
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDCANCEL));
    EXPECT_EQ(kept.get(), FALSE);
    auto left = ask();
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDNO));
    EXPECT_EQ(left.get(), TRUE);
    const std::string remembered = user.folder + "kestrel-stage.ini";
    DeleteFileA(remembered.c_str());
    SendMessageA(window, WM_ENDSESSION, FALSE, 0);
    EXPECT_FALSE(FileExists(remembered)) << "another program has refused";
    SendMessageA(window, WM_ENDSESSION, TRUE, 0);
    EXPECT_TRUE(FileExists(remembered));
}

}  // namespace
}  // namespace kfx::test
