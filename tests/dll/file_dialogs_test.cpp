// SPDX-License-Identifier: MIT
// The system's own file dialogs, dressed and placed by the plug-in.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "media/utf8_path.h"
#include "tests/dll/support/dialog_thread.h"
#include "tests/dll/support/idle_owner.h"
#include "tests/support/page_words.h"
#include "window/file_dialogs.h"
#include "window/plugin_state.h"

namespace kfx {
namespace {

struct Choice {
    bool made = false;
    std::string path;
};

// A file dialog until it is cancelled. When the constructor returns, it has nothing left to do; a
// null window says that there is none.
class OpenFileDialog {
public:
    explicit OpenFileDialog(bool (*ask)(HWND, char*), const std::string& start = "") {
        const bool started = test::StartDialog([ask, start, choice = choice_](HWND owner) {
            char path[kTextBytes] = "";
            std::snprintf(path, sizeof path, "%s", start.c_str());
            choice->made = ask(owner, path);
            choice->path = path;
        });
        if (started) window = test::WaitForIdleDialog();
    }
    ~OpenFileDialog() { Cancel(); }
    OpenFileDialog(const OpenFileDialog&) = delete;
    OpenFileDialog& operator=(const OpenFileDialog&) = delete;

    Choice Accept() { return Answer(IDOK); }
    Choice Cancel() { return Answer(IDCANCEL); }

    bool IsOwnerDrawn(int button) const {
        return (GetWindowLongA(GetDlgItem(window, button), GWL_STYLE) & BS_TYPEMASK) == BS_OWNERDRAW;
    }

    RECT Place() const {
        RECT place;
        GetWindowRect(window, &place);
        return place;
    }

    HWND window = nullptr;

private:
    Choice Answer(int button) {
        if (!window) return *choice_;
        PostMessageA(window, WM_COMMAND, static_cast<WPARAM>(button), 0);
        window = nullptr;
        if (test::WaitUntilDialogEnds()) return *choice_;
        ADD_FAILURE() << "the file dialog does not close";
        return {};
    }

    // The dialog's as well: one that does not close outlives this.
    const std::shared_ptr<Choice> choice_ = std::make_shared<Choice>();
};

class FileDialogs : public testing::Test {
protected:
    void SetUp() override { plugin.module = GetModuleHandleA(nullptr); }
    void TearDown() override { plugin = {}; }
};

void ExpectInTheMiddle(const RECT& place) {
    EXPECT_EQ(place.left, (GetSystemMetrics(SM_CXSCREEN) - (place.right - place.left)) / 2);
    EXPECT_EQ(place.top, (GetSystemMetrics(SM_CYSCREEN) - (place.bottom - place.top)) / 2);
}

TEST_F(FileDialogs, Open_at_the_remembered_size_in_the_middle_of_the_screen) {
    // In some languages the system's own dialog is no narrower than 750.
    RememberFileDialogSize(800, 600);
    for (bool (*const ask)(HWND, char*) : {AskDocumentToOpen, AskDocumentToSave}) {
        const OpenFileDialog dialog(ask);
        ASSERT_TRUE(dialog.window);
        const RECT place = dialog.Place();
        EXPECT_EQ(place.right - place.left, 800);
        EXPECT_EQ(place.bottom - place.top, 600);
        ExpectInTheMiddle(place);
    }
}

TEST_F(FileDialogs, Keep_the_systems_size_when_the_remembered_one_is_below_128) {
    RememberFileDialogSize(700, 127);
    const OpenFileDialog dialog(AskDocumentToOpen);
    ASSERT_TRUE(dialog.window);
    const RECT place = dialog.Place();
    EXPECT_GT(place.bottom - place.top, 127);
    ExpectInTheMiddle(place);
}

TEST_F(FileDialogs, Leave_the_size_that_the_user_gave_them) {
    RememberFileDialogSize(0, 0);
    OpenFileDialog dialog(AskDocumentToOpen);
    ASSERT_TRUE(dialog.window);
    SetWindowPos(dialog.window, nullptr, 0, 0, 640, 480, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    const RECT place = dialog.Place();
    dialog.Cancel();
    EXPECT_EQ(plugin.fileDialogWidth, place.right - place.left);
    EXPECT_EQ(plugin.fileDialogHeight, place.bottom - place.top);
}

TEST_F(FileDialogs, Sizes_from_the_host_end_at_the_screen) {
    RememberFileDialogSize(0xFFFFFFFF, 200);
    EXPECT_EQ(plugin.fileDialogWidth, GetSystemMetrics(SM_CXSCREEN));
    EXPECT_EQ(plugin.fileDialogHeight, 200);
}

TEST_F(FileDialogs, Have_the_plugins_buttons_unless_the_host_wants_the_systems) {
    for (const uint32_t style : {0u, 1u, 2u, 3u, 4u}) {
        plugin.buttonStyle = style;
        const OpenFileDialog dialog(AskDocumentToOpen);
        ASSERT_TRUE(dialog.window);
        EXPECT_EQ(dialog.IsOwnerDrawn(IDOK), style != 0) << style;
        EXPECT_EQ(dialog.IsOwnerDrawn(IDCANCEL), style != 0) << style;
    }
}

TEST_F(FileDialogs, Cancelled_leave_the_path) {
    OpenFileDialog dialog(AskDocumentToSave, "C:\\windows\\some.kx1");
    ASSERT_TRUE(dialog.window);
    const Choice choice = dialog.Cancel();
    EXPECT_FALSE(choice.made);
    EXPECT_EQ(choice.path, "C:\\windows\\some.kx1");
}

TEST_F(FileDialogs, Accepted_keep_a_path_in_characters_of_the_code_page) {
    const std::string folder =
        (std::filesystem::temp_directory_path() / PathOf(test::NameInside(""))).string();
    ASSERT_TRUE(CreateDirectoryA(test::ToPage(folder).c_str(), nullptr));
    const std::string path = test::ToPage(folder + "\\" + test::NameInside(".kx1"));
    OpenFileDialog dialog(AskDocumentToSave, path);
    EXPECT_TRUE(dialog.window);
    const Choice choice = dialog.Accept();
    EXPECT_TRUE(choice.made);
    EXPECT_EQ(choice.path, path);
    RemoveDirectoryA(test::ToPage(folder).c_str());
}

TEST_F(FileDialogs, Open_even_where_the_documents_path_makes_no_sense) {
    for (const char* path : {"C:\\no such folder\\some.kx1", "C:\\windows\\a<b>?*.kx1", "Q:\\", "|"}) {
        const OpenFileDialog dialog(AskDocumentToOpen, path);
        EXPECT_TRUE(dialog.window) << path;
    }
}

}  // namespace
}  // namespace kfx
