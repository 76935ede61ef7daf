// SPDX-License-Identifier: MIT
// Hosts that hand over what is no block, close windows under a message, build a thousand times, run the
// library twice, or are of any version.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <shlobj.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include "resources/resource_ids.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/own_dialog.h"
#include "tests/dll/support/session_state.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/import_patch.h"
#include "tests/support/pictures.h"
#include "tests/support/tried.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

HostCallback answeringHost = nullptr;

// What a host hands over in place of an animation.
uint64_t handedOver;

uint64_t HandOverNonsense(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer) {
    if (static_cast<HostRequest>(request) != HostRequest::OpenAnimation || !handedOver)
        return answeringHost(target, request, word, pointer);
    std::memset(reinterpret_cast<OpenAnimationRequest*>(pointer)->path, 'p', 260);
    return handedOver;
}

class OddHandles : public testing::Test {
protected:
    OddHandles() {
        host.Serve(ShadedFrames(3));
        answeringHost = host.context.callback;
        host.context.callback = HandOverNonsense;
        handedOver = 0;
    }

    // Selects what is handed over. Answers whether it was accepted.
    bool Select(PluginSession& session, uint64_t handle) {
        const size_t messages = session.Messages().size();
        handedOver = handle;
        session.Click(IDC_SELECT);
        handedOver = 0;
        AddTried("odd handles");
        if (session.Messages().size() == messages) return true;
        EXPECT_EQ(session.Messages().back(), "The animation you have selected could not be opened.");
        return false;
    }

    // The window still builds the source that it has.
    void ExpectFrames(PluginSession& session, size_t frames) {
        host.ClearTranscript();
        session.Click(IDC_TEST);
        EXPECT_THAT(host.Frames(), SizeIs(frames));
    }

    FakeHost host;
};

uint64_t NumberOf(HGLOBAL handle) { return reinterpret_cast<uint64_t>(handle); }

HGLOBAL Copy(const std::vector<uint8_t>& block, UINT flags, size_t slack = 0) {
    const HGLOBAL memory = GlobalAlloc(flags | GMEM_ZEROINIT, block.size() + slack);
    std::memcpy(GlobalLock(memory), block.data(), block.size());
    GlobalUnlock(memory);
    HandOver(memory);
    return memory;
}

TEST_F(OddHandles, The_block_that_the_window_has_is_kept_and_freed_once) {
    PluginSession session(host);
    const HGLOBAL block = Copy(ShadedFrames(2), GMEM_MOVEABLE);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(Select(session, NumberOf(block)));
    ExpectFrames(session, 2);
    EXPECT_EQ(CountLedger().liveBlocks, 1u);
    // The host has spoiled it meanwhile: it is refused, and the window has nothing better.
    std::memset(GlobalLock(block), 0, 4);
    GlobalUnlock(block);
    EXPECT_FALSE(Select(session, NumberOf(block)));
    EXPECT_EQ(CountLedger().liveBlocks, 1u);
    host.ClearTranscript();
    session.Click(IDC_TEST);
    EXPECT_THAT(host.Frames(), IsEmpty());
    EXPECT_EQ(session.Messages().back(), "Memory error");
    session.Close();
    ExpectNothingLeft();
}

TEST_F(OddHandles, What_is_no_block_is_refused_and_the_source_stays) {
    PluginSession session(host);
    EXPECT_TRUE(Select(session, 0));
    ExpectFrames(session, 3);
    const HGLOBAL freed = GlobalAlloc(GHND, 500);
    GlobalFree(freed);
    for (const uint64_t handle : {NumberOf(freed), uint64_t{1}, uint64_t{0x10000}, uint64_t{0xFFFFFFFF},
                                  uint64_t{0xFFFFFFFFFFFFFFFF}, uint64_t{0x8000000000000000}})
        EXPECT_FALSE(Select(session, handle)) << handle;
    ExpectFrames(session, 3);
    session.Close();
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
}

TEST_F(OddHandles, Fixed_blocks_and_much_larger_ones_are_taken) {
    PluginSession session(host);
    EXPECT_TRUE(Select(session, NumberOf(Copy(ShadedFrames(2), GMEM_FIXED))));
    ExpectFrames(session, 2);
    EXPECT_TRUE(Select(session, NumberOf(Copy(ShadedFrames(4), GMEM_MOVEABLE, size_t{50} << 20))));
    ExpectFrames(session, 4);
    EXPECT_EQ(session.TextOf(IDC_SOURCE_PATH), std::string(260, 'p')) << "a path without an end";
    session.Close();
    ExpectNothingLeft();
}

// The message of a refused frame is open; what the host closes now.
enum class Closing { Window, Owner, Box };
class ClosedUnderAMessage : public testing::TestWithParam<Closing> {};

TEST_P(ClosedUnderAMessage, The_task_is_discarded_and_all_is_freed) {
    for (const HostRequest refused : {HostRequest::NewTestTask, HostRequest::AddImage}) {
        FakeHost host;
        host.Serve(ShadedFrames(3));
        PluginSession session(
            host,
            WithConfiguration("MainEffect = 1\nTruecolour = 0\nMainSupercompress = 1\nMainDither = 1\n"));
        session.Click(IDC_SELECT);
        session.HoldMessages(true);
        host.ClearTranscript();
        host.Refuse(refused, 1);
        session.Press(IDC_TEST);
        const HWND box = session.WaitForBox("Message");
        ASSERT_TRUE(box);
        const HWND window = session.Window();
        const HWND closed = GetParam() == Closing::Box      ? box
                            : GetParam() == Closing::Window ? window
                                                            : GetWindow(window, GW_OWNER);
        PostMessageA(closed, WM_CLOSE, 0, 0);
        if (GetParam() != Closing::Owner) {
            // A box waits for its button, and a window that builds does not end.
            session.HoldMessages(false);
            EXPECT_TRUE(session.WaitUntilGone(box));
            EXPECT_TRUE(session.Settle());
            session.Close();
        }
        EXPECT_EQ(session.WaitUntilClosed(), 1u);
        ExpectNothingLeft();
        if (refused == HostRequest::AddImage)
            EXPECT_THAT(host.Requests(HostRequest::CloseTask), ElementsAre(HasSubstr("value=0 ")));
        else
            EXPECT_THAT(host.Requests(HostRequest::CloseTask), IsEmpty());
        AddTried("windows closed under a message");
    }
}

constexpr const char* kClosingNames[] = {"Window", "Owner", "Box"};
INSTANTIATE_TEST_SUITE_P(All, ClosedUnderAMessage,
                         testing::Values(Closing::Window, Closing::Owner, Closing::Box),
                         [](const auto& test) { return kClosingNames[static_cast<int>(test.param)]; });

TEST(ManyBuilds, A_thousand_in_one_window_leave_what_was_there) {
    constexpr size_t kBuilds = 1000;
    FakeHost host;
    host.Serve(MakeAnimationBlock({{BytesOf(ShadedPicture(9, 7, 1).handle)}}));
    PluginSession session(host, WithConfiguration("MainEffect = 12\n"));
    session.Click(IDC_SELECT);
    for (size_t i = 0; i < kBuilds; ++i) {
        host.ClearTranscript();
        SendMessageA(session.Window(), WM_COMMAND, IDC_TEST, 0);
        ASSERT_THAT(host.Frames(), SizeIs(1)) << i;
        ASSERT_EQ(CountLedger().liveBlocks, 1u) << i;
        AddTried("builds in one window");
    }
    EXPECT_TRUE(session.Settle());
    session.Close();
    ExpectNothingLeft();
}

// All folders of the user, for the library that no session looks after: its settings must not be those of
// whoever runs the tests.
std::string secondUsersFolder;

BOOL WINAPI NameSecondFolder(LPCITEMIDLIST, LPSTR path) {
    std::snprintf(path, MAX_PATH, "%s", secondUsersFolder.c_str());
    return TRUE;
}

// The same library under another name, as a host with two copies of it has.
TEST(SecondInstance, Has_a_window_of_its_own_beside_the_first) {
    FakeHost host;
    host.Serve(ShadedFrames(3));
    PluginSession session(host, WithConfiguration("MainEffect = 3\n"));
    session.Click(IDC_SELECT);
    const std::string copy = session.DocumentsFolder() + "second.dll";
    std::filesystem::copy_file(PluginPath(), copy);
    const HMODULE library = LoadLibraryA(copy.c_str());
    ASSERT_TRUE(library);
    secondUsersFolder = session.DocumentsFolder();
    auto folders =
        std::make_unique<ImportPatch>(library, "SHGetPathFromIDListA", AddressOfFunction(NameSecondFolder));
    std::atomic<DWORD> thread = 0;
    std::thread runner([&] {
        thread = GetCurrentThreadId();
        EXPECT_EQ(EntryOf(library)(nullptr, &host.context), 1u);
    });
    HWND second = nullptr;
    if (!WaitFor([&] { return thread && (second = FindBox(thread, "Kestrel FX #1")) != nullptr; })) {
        runner.detach();
        FAIL() << "the second window does not open";
    }
    SendMessageA(second, WM_COMMAND, IDC_SELECT, 0);
    host.ClearTranscript();
    SendMessageA(second, WM_COMMAND, IDC_TEST, 0);
    EXPECT_THAT(host.Frames(), SizeIs(3));
    session.Click(IDC_TEST);
    EXPECT_THAT(host.Frames(), SizeIs(6));
    EXPECT_EQ(session.SelectionOf(IDC_EFFECT), 3);
    EXPECT_EQ(SendDlgItemMessageA(second, IDC_EFFECT, CB_GETCURSEL, 0, 0), 14) << "its own settings";
    SendMessageA(second, WM_COMMAND, IDCANCEL, 0);
    runner.join();
    session.Click(IDC_TEST);
    EXPECT_THAT(host.Frames(), SizeIs(9)) << "the first one goes on";
    session.Close();
    folders.reset();
    FreeLibrary(library);
}

// Dialogs that are asked for instead of opened.
size_t windowsAsked, messagesAsked;

INT_PTR WINAPI CountDialogs(HINSTANCE, LPCSTR name, HWND, DLGPROC, LPARAM) {
    ++(IS_INTRESOURCE(name) ? windowsAsked : messagesAsked);
    return 1;
}

TEST(EveryHostVersion, Opens_the_window_or_the_message_by_its_second_byte) {
    const HMODULE library = LoadLibraryA(PluginPath().c_str());
    ASSERT_TRUE(library);
    {
        const ImportPatch patch(library, "DialogBoxParamA", AddressOfFunction(CountDialogs));
        FakeHost host;
        for (const uint32_t high : {0u, 0x10000u, 0xFFFF0000u})
            for (uint32_t low = 0; low < 0x10000; low += 0x55) {
                host.context.version = high | low;
                windowsAsked = messagesAsked = 0;
                const bool accepted = (low >> 8) >= 16;
                ASSERT_EQ(EntryOf(library)(nullptr, &host.context), accepted ? 1u : 0u)
                    << host.context.version;
                ASSERT_EQ(windowsAsked, accepted ? 1u : 0u) << host.context.version;
                ASSERT_EQ(messagesAsked, accepted ? 0u : 1u) << host.context.version;
                AddTried("version words");
            }
    }
    FreeLibrary(library);
}

}  // namespace
}  // namespace kfx::test
