// SPDX-License-Identifier: MIT
// Saving within a size, as a user does it.
#include "stage/choice_box.h"
#include "stage/size_box.h"
#include "tests/cli/colorful_animation.h"
#include "tests/stage/stage_program.h"

namespace kfx::test {
namespace {

using namespace stage;

struct SavingWithin : StageWindow {
    std::string colorful = folder.path + "colourful.apng";
    std::string output = folder.path + "small.gif";

    void OpenColorful(int frames, bool transparent) {
        WriteColorful(colorful, frames, transparent);
        ASSERT_NO_FATAL_FAILURE(Open({colorful}));
        ASSERT_TRUE(WaitForTitle("colourful.apng - Kestrel Stage"));
    }

    // Fills the box in and starts the search.
    void Ask(const std::string& number, int unit) {
        Run(kSaveWithin);
        HWND box = nullptr;
        ASSERT_NO_FATAL_FAILURE(WaitForDialog("Save within a size", &box));
        ASSERT_TRUE(WaitFor([box] { return GetDlgItem(box, kSizeUnit) != nullptr; }));
        SendMessageA(GetDlgItem(box, kSizeNumber), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(number.c_str()));
        SendMessageA(GetDlgItem(box, kSizeUnit), CB_SETCURSEL, static_cast<WPARAM>(unit), 0);
        Press(box, IDOK);
    }

    // The box with the files that were found.
    void WaitForOffer(HWND* offer) const {
        ASSERT_TRUE(WaitFor([this, offer] {
            *offer = DialogOf(stage.processId, "Save within a size");
            return *offer && GetDlgItem(*offer, kFirstOfferedFile);
        }));
    }

    static size_t CountOf(HWND offer) {
        size_t count = 0;
        while (GetDlgItem(offer, kFirstOfferedFile + static_cast<int>(count))) ++count;
        return count;
    }
};

bool HasFocus(HWND window) {
    GUITHREADINFO thread = {};
    thread.cbSize = sizeof thread;
    return GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &thread) && thread.hwndFocus == window;
}

void PressKey(HWND window, WPARAM key) { PostMessageA(window, WM_KEYDOWN, key, 1); }

TEST_F(SavingWithin, One_of_four_files_is_chosen_by_keys_and_saved) {
    ASSERT_NO_FATAL_FAILURE(OpenColorful(6, false));
    ASSERT_NO_FATAL_FAILURE(Ask("9", 0));
    HWND offer = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForOffer(&offer));
    ASSERT_EQ(CountOf(offer), 4u);
    const HWND first = GetDlgItem(offer, kFirstOfferedFile),
               second = GetDlgItem(offer, kFirstOfferedFile + 1);
    EXPECT_EQ(TextOf(first).find("Fewer colours, "), 0u) << TextOf(first);
    EXPECT_EQ(TextOf(second).find("Smaller picture, "), 0u) << TextOf(second);
    PostMessageA(offer, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(first), TRUE);
    ASSERT_TRUE(WaitFor([first] { return HasFocus(first); }));
    PressKey(first, VK_RIGHT);
    EXPECT_TRUE(WaitFor([second] { return HasFocus(second); }));
    PressKey(second, VK_RETURN);
    ASSERT_NO_FATAL_FAILURE(ChooseFile(output));
    EXPECT_TRUE(WaitFor([offer] { return !IsWindow(offer); }));
    const Animation saved = ReadBack(output);
    EXPECT_EQ(saved.frames.size(), 6u);
    EXPECT_LT(saved.width, 64);
    EXPECT_LE(ReadText(output).size(), 9000u);
    EXPECT_TRUE(WaitFor([this] { return TextOf(Control(kStatusText)).find("Saved small.gif, ") == 0; }));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(SavingWithin, A_cancelled_name_leads_back_to_the_files) {
    ASSERT_NO_FATAL_FAILURE(OpenColorful(1, true));
    ASSERT_NO_FATAL_FAILURE(Ask("2,5", 0));
    HWND offer = nullptr, name = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForOffer(&offer));
    EXPECT_GE(CountOf(offer), 2u);
    Press(offer, kFirstOfferedFile);
    ASSERT_NO_FATAL_FAILURE(WaitForDialog(nullptr, &name));
    PostMessageA(name, WM_COMMAND, IDCANCEL, 0);
    ASSERT_TRUE(WaitFor([name] { return !IsWindow(name); }));
    EXPECT_TRUE(IsWindow(offer));
    Press(offer, kFirstOfferedFile);
    ASSERT_NO_FATAL_FAILURE(ChooseFile(output));
    EXPECT_TRUE(WaitFor([offer] { return !IsWindow(offer); }));
    EXPECT_EQ(ReadBack(output).frames.size(), 1u);
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(SavingWithin, What_is_no_size_is_asked_for_again_and_what_fits_nowhere_is_told) {
    ASSERT_NO_FATAL_FAILURE(OpenColorful(2, false));
    ASSERT_NO_FATAL_FAILURE(Ask("much", 1));
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    HWND box = DialogOf(stage.processId, "Save within a size");
    ASSERT_NE(box, nullptr);
    SendMessageA(GetDlgItem(box, kSizeNumber), WM_SETTEXT, 0, reinterpret_cast<LPARAM>("0.05 KB"));
    Press(box, IDOK);
    HWND message = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel Stage", &message));
    PostMessageA(message, WM_COMMAND, IDOK, 0);
    EXPECT_TRUE(WaitForPossible(kOpen));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(SavingWithin, A_search_is_stopped_by_its_user_and_by_closing_the_window) {
    WriteColorful(colorful, 60, false);
    ASSERT_NO_FATAL_FAILURE(Open({colorful}));
    ASSERT_TRUE(WaitForTitle("colourful.apng - Kestrel Stage"));
    ASSERT_NO_FATAL_FAILURE(Ask("20", 0));
    ASSERT_TRUE(WaitForPossible(kStopWork));
    Run(kStopWork);
    EXPECT_TRUE(WaitForText(kStatusText, "Stopped."));
    ASSERT_NO_FATAL_FAILURE(Ask("20", 0));
    ASSERT_TRUE(WaitForPossible(kStopWork));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

}  // namespace
}  // namespace kfx::test
