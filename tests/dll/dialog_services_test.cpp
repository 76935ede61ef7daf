// SPDX-License-Identifier: MIT
// Message boxes, texts, lists and help, called as the plug-in's dialogs call them. The test program carries
// the plug-in's resources itself.
#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "resources/resource_ids.h"
#include "tests/dll/support/dialog_thread.h"
#include "tests/dll/support/idle_owner.h"
#include "tests/dll/support/window_reading.h"
#include "tests/support/wait_for.h"
#include "window/dialog_services.h"
#include "window/plugin_state.h"

namespace kfx {
namespace {

using test::TextOf;

constexpr int kNoSuchCommand = 9;

// A message box until it is answered. When the constructor returns, it has nothing left to do.
class OpenBox {
public:
    explicit OpenBox(int (*show)(HWND, const char*), const char* text = "Text") {
        const bool started =
            test::StartDialog([show, text, answer = answer_](HWND owner) { *answer = show(owner, text); });
        if (started) window = test::WaitForIdleDialog();
    }
    ~OpenBox() {
        if (window) Answer(IDCANCEL);
    }
    OpenBox(const OpenBox&) = delete;
    OpenBox& operator=(const OpenBox&) = delete;

    // 0, which no button is, when the box does not come or does not close.
    int Answer(int button) {
        if (!window) return 0;
        PostMessageA(window, WM_COMMAND, static_cast<WPARAM>(button), 0);
        window = nullptr;
        return test::WaitUntilDialogEnds() ? *answer_ : 0;
    }

    bool WaitForFocusOn(int control) const {
        GUITHREADINFO info = {};
        info.cbSize = sizeof info;
        const DWORD thread = GetWindowThreadProcessId(window, nullptr);
        return test::WaitFor(
            [&] { return GetGUIThreadInfo(thread, &info) && info.hwndFocus == GetDlgItem(window, control); });
    }

    HWND window = nullptr;

private:
    // The box's as well: one that does not close outlives this.
    const std::shared_ptr<int> answer_ = std::make_shared<int>(0);
};

class DialogServices : public testing::Test {
protected:
    void SetUp() override { plugin.module = GetModuleHandleA(nullptr); }
    void TearDown() override { plugin = {}; }
};

TEST_F(DialogServices, A_message_has_its_text_and_the_focus_on_ok) {
    OpenBox box(ShowMessage, "~!!~20 is no placeholder here");
    ASSERT_TRUE(box.window);
    EXPECT_TRUE(IsWindowVisible(box.window));
    EXPECT_EQ(TextOf(box.window), "Message");
    EXPECT_EQ(TextOf(GetDlgItem(box.window, IDC_MESSAGE_TEXT)), "~!!~20 is no placeholder here");
    EXPECT_EQ(TextOf(GetDlgItem(box.window, IDC_MESSAGE_OK)), "Ok");
    EXPECT_TRUE(box.WaitForFocusOn(IDC_MESSAGE_OK));
    EXPECT_EQ(box.Answer(IDC_MESSAGE_OK), IDOK);
}

TEST_F(DialogServices, A_question_has_the_focus_on_yes) {
    for (int (*const ask)(HWND, const char*) : {AskYesNo, AskYesNoCancel}) {
        OpenBox box(ask);
        ASSERT_TRUE(box.window);
        EXPECT_EQ(TextOf(GetDlgItem(box.window, IDC_MESSAGE_YES)), "Yes");
        EXPECT_EQ(TextOf(GetDlgItem(box.window, IDC_MESSAGE_NO)), "No");
        EXPECT_TRUE(box.WaitForFocusOn(IDC_MESSAGE_YES));
        EXPECT_EQ(box.Answer(IDC_MESSAGE_NO), IDNO);
    }
}

TEST_F(DialogServices, Every_button_answers_with_its_number) {
    for (const int button : {IDC_MESSAGE_OK, IDC_MESSAGE_CANCEL, IDC_MESSAGE_YES, IDC_MESSAGE_NO}) {
        EXPECT_EQ(OpenBox(AskYesNoCancel).Answer(button), button);
    }
}

TEST_F(DialogServices, Other_commands_leave_a_message_open) {
    OpenBox box(ShowMessage);
    ASSERT_TRUE(box.window);
    SendMessageA(box.window, WM_COMMAND, kNoSuchCommand, 0);
    EXPECT_EQ(box.Answer(IDC_MESSAGE_OK), IDOK);
}

TEST_F(DialogServices, A_message_stands_in_the_middle_of_the_screen) {
    OpenBox box(ShowMessage);
    ASSERT_TRUE(box.window);
    RECT place;
    GetWindowRect(box.window, &place);
    EXPECT_EQ(place.left, (GetSystemMetrics(SM_CXSCREEN) - (place.right - place.left)) / 2);
    EXPECT_EQ(place.top, (GetSystemMetrics(SM_CYSCREEN) - (place.bottom - place.top)) / 2);
}

RECT PlaceOf(HWND window) {
    RECT place = {};
    GetWindowRect(window, &place);
    return place;
}

// The height that the control's text takes in its font.
LONG HeightOfText(HWND control) {
    const HDC dc = GetDC(control);
    const HGDIOBJ before = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageA(control, WM_GETFONT, 0, 0)));
    const std::string text = TextOf(control);
    RECT area = {0, 0, PlaceOf(control).right - PlaceOf(control).left, 0};
    DrawTextA(dc, text.c_str(), -1, &area, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    SelectObject(dc, before);
    ReleaseDC(control, dc);
    return area.bottom;
}

std::string WordsOf(size_t characters) {
    std::string words;
    while (words.size() < characters) words += "lengthy words ";
    return words.substr(0, characters);
}

// The string table holds texts of up to 1023 characters.
TEST_F(DialogServices, A_box_is_as_high_as_its_text_needs_in_any_font) {
    for (const int fontHeight : {0, 14, 30}) {
        plugin.textFont = fontHeight ? MakeFont("Arial", fontHeight) : nullptr;
        for (int (*const show)(HWND, const char*) : {ShowMessage, AskYesNo, AskYesNoCancel}) {
            const std::string words = WordsOf(1023);
            OpenBox box(show, words.c_str());
            ASSERT_TRUE(box.window);
            const HWND text = GetDlgItem(box.window, IDC_MESSAGE_TEXT);
            const RECT place = PlaceOf(text), whole = PlaceOf(box.window);
            EXPECT_GE(place.bottom - place.top, HeightOfText(text)) << fontHeight;
            for (const int id : {IDC_MESSAGE_OK, IDC_MESSAGE_YES, IDC_MESSAGE_NO, IDC_MESSAGE_CANCEL}) {
                const HWND button = GetDlgItem(box.window, id);
                if (!button) continue;
                EXPECT_GE(PlaceOf(button).top, place.bottom) << id;
                EXPECT_LT(PlaceOf(button).bottom, whole.bottom) << id;
            }
            EXPECT_EQ(whole.top, (GetSystemMetrics(SM_CYSCREEN) - (whole.bottom - whole.top)) / 2);
        }
        if (plugin.textFont) DeleteObject(plugin.textFont);
        plugin.textFont = nullptr;
    }
}

TEST_F(DialogServices, Texts_that_fit_stand_in_boxes_of_one_size) {
    OpenBox brief(ShowMessage, "Brief");
    const RECT first = PlaceOf(brief.window), text = PlaceOf(GetDlgItem(brief.window, IDC_MESSAGE_TEXT));
    RECT units = {0, 0, 196, 64};
    MapDialogRect(brief.window, &units);
    EXPECT_EQ(text.bottom - text.top, units.bottom);
    brief.Answer(IDC_MESSAGE_OK);
    OpenBox longer(ShowMessage, "A text\nof three\nlines");
    EXPECT_TRUE(EqualRect(&first, std::array{PlaceOf(longer.window)}.data()));
}

TEST_F(DialogServices, A_missing_text_says_that_the_table_is_damaged) {
    EXPECT_STREQ(LoadText(IDS_MEMORY_ERROR), "Memory error");
    EXPECT_STREQ(LoadText(65000), "String table error - this application may be damaged");
}

// A hidden window with one child.
struct Parent {
    Parent(const char* className, const char* text, DWORD style = 0)
        : window(CreateWindowExA(0, "STATIC", "", 0, 0, 0, 400, 400, nullptr, nullptr, nullptr, nullptr)),
          child(CreateWindowExA(0, className, text, WS_CHILD | style, 0, 0, 100, 200, window, nullptr,
                                nullptr, nullptr)) {}
    ~Parent() { DestroyWindow(window); }
    Parent(const Parent&) = delete;
    Parent& operator=(const Parent&) = delete;

    const HWND window;
    const HWND child;
};

std::string AfterReplacement(const char* className, const char* text) {
    const Parent parent(className, text);
    ReplacePlaceholders(parent.window);
    return TextOf(parent.child);
}

TEST_F(DialogServices, Placeholders_of_statics_and_buttons_become_texts_of_the_table) {
    EXPECT_EQ(AfterReplacement("STATIC", "~!!~6"), "Memory error");
    EXPECT_EQ(AfterReplacement("button", "~!!~6"), "Memory error");
    EXPECT_EQ(AfterReplacement("Static", "before ~!!~6 behind"), "Memory error");
}

TEST_F(DialogServices, Other_controls_and_texts_without_a_number_stay) {
    EXPECT_EQ(AfterReplacement("EDIT", "~!!~6"), "~!!~6");
    EXPECT_EQ(AfterReplacement("STATIC", "~!!~0"), "~!!~0");
    EXPECT_EQ(AfterReplacement("STATIC", "~!!~-6"), "~!!~-6");
    EXPECT_EQ(AfterReplacement("STATIC", "~!!~x"), "~!!~x");
    EXPECT_EQ(AfterReplacement("STATIC", "~!~6"), "~!~6");
    EXPECT_EQ(AfterReplacement("STATIC", "~!!~65000"), "~!!~65000");
}

std::vector<std::string> ItemsFrom(const std::string& items) {
    const Parent parent("COMBOBOX", "", CBS_DROPDOWNLIST);
    SendMessageA(parent.child, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("from before"));
    FillList(parent.child, items.c_str());
    std::vector<std::string> found;
    for (LRESULT i = 0; i < SendMessageA(parent.child, CB_GETCOUNT, 0, 0); ++i) {
        char item[1000] = "";
        SendMessageA(parent.child, CB_GETLBTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(item));
        found.push_back(item);
    }
    return found;
}

TEST_F(DialogServices, A_list_takes_the_pieces_between_semicolons_but_no_empty_ones) {
    EXPECT_EQ(ItemsFrom("a;;b;"), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(ItemsFrom(";;;"), std::vector<std::string>());
    EXPECT_EQ(ItemsFrom(""), std::vector<std::string>());
    EXPECT_EQ(ItemsFrom("one"), std::vector<std::string>{"one"});
    EXPECT_EQ(ItemsFrom(std::string(300, 'x') + ";y"),
              (std::vector<std::string>{std::string(260, 'x'), "y"}));
}

std::vector<std::string> helpReferences;
uint64_t helpAnswer;

uint64_t TakeRequest(uint64_t, uint32_t request, uint64_t, uint64_t pointer) {
    if (request == static_cast<uint32_t>(HostRequest::ShowHelp))
        helpReferences.push_back(reinterpret_cast<const char*>(pointer));
    return helpAnswer;
}

TEST_F(DialogServices, Help_is_asked_for_by_document_and_topic) {
    HostContext host = {};
    host.callback = TakeRequest;
    plugin.host = &host;
    helpAnswer = 1;
    helpReferences.clear();
    ShowHelp(nullptr, "PREFACE");
    ShowHelp(nullptr, nullptr);
    ShowHelp(nullptr, std::string(300, 't').c_str());
    EXPECT_EQ(helpReferences, (std::vector<std::string>{"KFXPLUG1.HTML#PREFACE", "KFXPLUG1.HTML",
                                                        "KFXPLUG1.HTML#" + std::string(246, 't')}));
}

int ShowHelpAsMessage(HWND owner, const char* topic) {
    ShowHelp(owner, topic);
    return 0;
}

TEST_F(DialogServices, Help_that_the_host_cannot_show_is_reported) {
    HostContext host = {};
    for (const HostCallback callback : {HostCallback{TakeRequest}, HostCallback{nullptr}}) {
        host.callback = callback;
        plugin.host = &host;
        helpAnswer = 0;
        OpenBox box(ShowHelpAsMessage, "PREFACE");
        ASSERT_TRUE(box.window);
        EXPECT_EQ(TextOf(GetDlgItem(box.window, IDC_MESSAGE_TEXT)),
                  "There has been an error displaying the Help document.");
        box.Answer(IDC_MESSAGE_OK);
    }
}

}  // namespace
}  // namespace kfx
