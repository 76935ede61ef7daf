// SPDX-License-Identifier: MIT
// Every kind of control and whole documents, in a hidden window of the test's own: the plug-in window uses
// only some of the kinds.
#include <gtest/gtest.h>
#include <windows.h>
#include <commctrl.h>

#include <string>
#include <vector>

#include "documents/control_kinds.h"
#include "documents/document_file.h"
#include "framework/settings.h"
#include "tests/support/page_words.h"
#include "tests/support/temporary_file.h"

namespace kfx {
namespace {

std::vector<std::string> messages;  // texts of message boxes

int RecordMessage(HWND, const char* text) {
    messages.push_back(text);
    return IDOK;
}

class ControlKinds : public testing::Test {
protected:
    void SetUp() override {
        InitCommonControls();
        WNDCLASSA windowClass = {};
        windowClass.lpfnWndProc = DefWindowProcA;
        windowClass.lpszClassName = "ControlKindsTest";
        RegisterClassA(&windowClass);
        window = CreateWindowExA(0, windowClass.lpszClassName, "", 0, 0, 0, 100, 100, nullptr, nullptr,
                                 nullptr, nullptr);
        ASSERT_TRUE(window);
        messages.clear();
    }
    void TearDown() override {
        DestroyWindow(window);
        DeleteFileA(path.c_str());
    }

    HWND Add(const char* className, int id, const char* text = "", DWORD style = 0) {
        const HWND control =
            CreateWindowExA(0, className, text, WS_CHILD | style, 0, 0, 60, 20, window,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
        EXPECT_TRUE(control) << className;
        return control;
    }

    HWND AddSlider(int id, int least, int most, int position, void* variable) {
        const HWND slider = Add("SCROLLBAR", id, "", SBS_HORZ);
        SetScrollRange(slider, SB_CTL, least, most, FALSE);
        SetScrollPos(slider, SB_CTL, position, FALSE);
        Add("STATIC", id + 1);
        BindControl(slider, BoundKind::Slider, variable);
        return slider;
    }

    // The control's line as it writes it, without the line end.
    std::string Written(HWND control) {
        std::FILE* file = test::OpenTemporaryFile();
        EXPECT_EQ(SendMessageA(control, 1334, 0, reinterpret_cast<LPARAM>(file)), 0);
        std::rewind(file);
        char line[2000] = "";
        std::fgets(line, sizeof line, file);
        std::fclose(file);
        std::string text = line;
        if (!text.empty() && text.back() == '\n') text.pop_back();
        return text;
    }

    LRESULT Apply(HWND control, const char* line) {
        return SendMessageA(control, 1335, 0, reinterpret_cast<LPARAM>(line));
    }

    std::string TextOf(int id) {
        char text[2000];
        GetDlgItemTextA(window, id, text, sizeof text);
        return text;
    }

    void Save(const std::string& text) {
        std::FILE* file = std::fopen(path.c_str(), "wb");
        std::fwrite(text.data(), 1, text.size(), file);
        std::fclose(file);
    }

    std::string Load() {
        std::FILE* file = std::fopen(path.c_str(), "r");
        std::string text;
        for (int c; file && (c = std::fgetc(file)) != EOF;) text += static_cast<char>(c);
        if (file) std::fclose(file);
        return text;
    }

    HWND window = nullptr;
    const std::string path = "control_kinds_test." + std::to_string(GetCurrentProcessId()) + ".kx1";
};

const char kHeader[] =
    ";This is a document created by Kestrel FX #1 Plugin by Quorvane Labs - do not edit.\n";

TEST_F(ControlKinds, A_bound_control_knows_kind_and_variable) {
    int32_t variable = 0;
    const HWND box = Add("BUTTON", 10, "", BS_AUTOCHECKBOX);
    EXPECT_EQ(KindOf(box), BoundKind::None);
    BindControl(box, BoundKind::CheckBox, &variable);
    EXPECT_EQ(KindOf(box), BoundKind::CheckBox);
    EXPECT_EQ(VariableOf(box), &variable);
    EXPECT_EQ(KindOf(nullptr), BoundKind::None);
}

TEST_F(ControlKinds, Binding_again_only_changes_kind_and_variable) {
    int32_t first = 0, second = 0;
    const HWND box = Add("BUTTON", 10, "", BS_AUTOCHECKBOX);
    BindControl(box, BoundKind::CheckBox, &first);
    BindControl(box, BoundKind::CheckBox, &second);
    SendMessageA(box, BM_SETCHECK, BST_CHECKED, 0);
    StoreControl(box);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
}

TEST_F(ControlKinds, Colour_buttons_carry_their_colour_as_text) {
    uint32_t color = 0x7F7F7F;
    const HWND button = Add("BUTTON", 54, "Background", BS_OWNERDRAW);
    BindControl(button, BoundKind::ColorButton, &color);
    EXPECT_EQ(TextOf(54), "8355711");
    EXPECT_EQ(Written(button), "CLRBTN54=8355711");
    EXPECT_EQ(Apply(button, "CLRBTN54=4294967295"), 1);
    EXPECT_EQ(color, 0xFFFFFFFFu);
    EXPECT_EQ(TextOf(54), "4294967295");
    EXPECT_EQ(Apply(button, "CLRBTN54=none"), 1);
    EXPECT_EQ(color, 0u);
    SetColorButton(button, 255);
    EXPECT_EQ(color, 255u);
    EXPECT_EQ(Written(button), "CLRBTN54=255");
}

TEST_F(ControlKinds, Number_fields_keep_to_the_range_of_their_companion) {
    int32_t variable = 0;
    Add("STATIC", 10060, "5,50,10");
    const HWND field = Add("EDIT", 60, "70");
    BindControl(field, BoundKind::Number, &variable);
    EXPECT_EQ(Written(field), "SPNBTN60=50");
    EXPECT_EQ(Apply(field, "SPNBTN60=3"), 1);
    EXPECT_EQ(TextOf(60), "3") << "the field shows what the document said";
    EXPECT_EQ(variable, 5);
    EXPECT_EQ(Apply(field, "SPNBTN60=-1"), 1);
    EXPECT_EQ(TextOf(60), "4294967295");
    EXPECT_EQ(variable, 50);
    SetDlgItemTextA(window, 60, "12");
    StoreControl(field);
    EXPECT_EQ(variable, 12);
}

TEST_F(ControlKinds, Number_fields_without_a_companion_go_from_0_to_100) {
    int32_t variable = 0;
    const HWND field = Add("EDIT", 60, "170");
    BindControl(field, BoundKind::Number, &variable);
    EXPECT_EQ(Written(field), "SPNBTN60=100");
    Add("STATIC", 10060, "no range");
    EXPECT_EQ(Written(field), "SPNBTN60=100");
}

TEST_F(ControlKinds, Signed_number_fields_keep_a_text) {
    char variable[kTextBytes] = "";
    Add("STATIC", 10061, "-20,20,0");
    const HWND field = Add("EDIT", 61, "-7");
    BindControl(field, BoundKind::NumberText, variable);
    EXPECT_EQ(Written(field), "SPNSGN61=-7");
    EXPECT_EQ(Apply(field, "SPNSGN61=-30"), 1);
    EXPECT_EQ(TextOf(61), "-30");
    EXPECT_STREQ(variable, "-20");
    SetDlgItemTextA(window, 61, "9");
    StoreControl(field);
    EXPECT_STREQ(variable, "9");
}

TEST_F(ControlKinds, A_companion_number_belongs_to_the_control_10000_below) {
    int32_t variable = 0;
    const HWND owner = AddSlider(70, 0, 100, 5, &variable);
    const HWND field = Add("EDIT", 10070, "42");
    BindControl(field, BoundKind::CompanionNumber, nullptr);
    StoreControl(field);
    EXPECT_EQ(variable, 42);
    EXPECT_EQ(Written(field), "");
    EXPECT_EQ(Apply(field, "SPNBTN10070=5"), 0);
    EXPECT_EQ(KindOf(owner), BoundKind::Slider);
}

TEST_F(ControlKinds, Check_boxes_are_1_or_0) {
    int32_t variable = 5;
    const HWND box = Add("BUTTON", 19, "", BS_AUTOCHECKBOX);
    BindControl(box, BoundKind::CheckBox, &variable);
    EXPECT_EQ(Written(box), "CHKBOX19=0");
    EXPECT_EQ(Apply(box, "CHKBOX19=1"), 1);
    EXPECT_EQ(variable, 1);
    EXPECT_EQ(Written(box), "CHKBOX19=1");
    EXPECT_EQ(Apply(box, "CHKBOX19=x"), 1);
    EXPECT_EQ(variable, 0);
}

// Grey counts as checked when it comes from a document, but not when the user clicks.
TEST_F(ControlKinds, A_grey_check_box_counts_as_checked_from_a_document_only) {
    int32_t variable = 5;
    const HWND box = Add("BUTTON", 19, "", BS_AUTO3STATE);
    BindControl(box, BoundKind::CheckBox, &variable);
    EXPECT_EQ(Apply(box, "CHKBOX19=2"), 1);
    EXPECT_EQ(variable, 1);
    EXPECT_EQ(Written(box), "CHKBOX19=0");
    StoreControl(box);
    EXPECT_EQ(variable, 0);
}

TEST_F(ControlKinds, Text_fields_keep_260_characters_of_their_text) {
    char variable[kTextBytes] = "";
    const HWND field = Add("EDIT", 41, "a b ", ES_AUTOHSCROLL);
    BindControl(field, BoundKind::TextField, variable);
    EXPECT_EQ(Written(field), "TXTFLD41=a b ");
    const std::string inPage = "C:\\" + test::ToPage(test::NameInside("")) + " b=c ";
    EXPECT_EQ(Apply(field, ("TXTFLD41= = " + inPage).c_str()), 1);
    EXPECT_EQ(std::string(variable), inPage);
    const std::string longText(1500, 'x');
    EXPECT_EQ(Apply(field, ("TXTFLD41=" + longText).c_str()), 1);
    EXPECT_EQ(std::string(variable), std::string(260, 'x'));
    EXPECT_EQ(Written(field), "TXTFLD41=" + std::string(1023, 'x'));
}

TEST_F(ControlKinds, Lists_are_the_index_of_their_selection) {
    for (const bool dropDown : {true, false}) {
        int32_t variable = 7;
        const HWND list = dropDown ? Add("COMBOBOX", 50, "", CBS_DROPDOWNLIST) : Add("LISTBOX", 51);
        const std::string kind = dropDown ? "CMBBOX50=" : "LSTBOX51=";
        for (const char* item : {"a", "b", "c"})
            SendMessageA(list, dropDown ? CB_ADDSTRING : LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item));
        BindControl(list, dropDown ? BoundKind::List : BoundKind::ListBox, &variable);
        EXPECT_EQ(Written(list), kind + "-1");
        EXPECT_EQ(Apply(list, (kind + "2").c_str()), 1);
        EXPECT_EQ(variable, 2);
        EXPECT_EQ(Written(list), kind + "2");
        SendMessageA(list, dropDown ? CB_SETCURSEL : LB_SETCURSEL, 1, 0);
        StoreControl(list);
        EXPECT_EQ(variable, 1);
    }
}

TEST_F(ControlKinds, An_index_that_a_list_does_not_have_leaves_nothing_selected) {
    int32_t variable = 7;
    const HWND list = Add("COMBOBOX", 50, "", CBS_DROPDOWNLIST);
    SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("a"));
    BindControl(list, BoundKind::List, &variable);
    EXPECT_EQ(Apply(list, "CMBBOX50=5"), 1);
    EXPECT_EQ(variable, -1);
}

TEST_F(ControlKinds, Sliders_show_their_position_in_the_label_beside_them) {
    int32_t variable = 0;
    const HWND slider = AddSlider(100, 4, 45, 5, &variable);
    EXPECT_EQ(Written(slider), "SCROLL100=5");
    EXPECT_EQ(Apply(slider, "SCROLL100=20"), 1);
    EXPECT_EQ(GetScrollPos(slider, SB_CTL), 20);
    EXPECT_EQ(variable, 20);
    EXPECT_EQ(TextOf(101), "20");
}

TEST_F(ControlKinds, A_slider_driven_beyond_its_range_stores_where_it_stands_and_shows_what_was_asked) {
    int32_t variable = 0;
    const HWND slider = AddSlider(100, 4, 45, 5, &variable);
    EXPECT_EQ(Apply(slider, "SCROLL100=999"), 1);
    EXPECT_EQ(variable, 45);
    EXPECT_EQ(TextOf(101), "999");
}

TEST_F(ControlKinds, Swirls_angle_is_shown_less_1440) {
    int32_t variable = 0;
    const HWND slider = AddSlider(193, 0, 2880, 1440, &variable);
    for (const char* line : {"SCROLL193=1485", "scroll193=1485", "SCROLL193= =1485"}) {
        SetScrollPos(slider, SB_CTL, 0, FALSE);
        EXPECT_EQ(Apply(slider, line), 1) << line;
        EXPECT_EQ(variable, 1485) << line;
        EXPECT_EQ(TextOf(194), "45") << line;
    }
    ShowSliderPosition(slider, 0);
    EXPECT_EQ(TextOf(194), "-1440");
    EXPECT_EQ(GetScrollPos(slider, SB_CTL), 1485);
}

TEST_F(ControlKinds, Track_bars_are_their_position) {
    int32_t variable = 0;
    const HWND bar = Add(TRACKBAR_CLASSA, 80);
    BindControl(bar, BoundKind::TrackBar, &variable);
    EXPECT_EQ(Apply(bar, "TRACKB80=33"), 1);
    EXPECT_EQ(variable, 33);
    EXPECT_EQ(Written(bar), "TRACKB80=33");
    SendMessageA(bar, TBM_SETPOS, TRUE, 44);
    StoreControl(bar);
    EXPECT_EQ(variable, 44);
}

TEST_F(ControlKinds, Sliders_and_track_bars_swallow_scroll_messages_to_themselves) {
    int32_t variable = 0;
    const HWND slider = AddSlider(100, 0, 100, 5, &variable);
    EXPECT_EQ(SendMessageA(slider, WM_HSCROLL, SB_LINERIGHT, 0), 0);
    EXPECT_EQ(GetScrollPos(slider, SB_CTL), 5);
}

TEST_F(ControlKinds, Font_boxes_are_saved_but_not_restored) {
    char variable[kTextBytes] = "";
    const HWND box = Add("COMBOBOX", 90, "", CBS_DROPDOWNLIST);
    for (const char* item : {"Arial", "Courier"})
        SendMessageA(box, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item));
    SendMessageA(box, CB_SETCURSEL, 1, 0);
    BindControl(box, BoundKind::FontBox, variable);
    EXPECT_EQ(Written(box), "FNTBOX90=Courier");
    EXPECT_EQ(Apply(box, "FNTBOX90=Arial"), 1);
    EXPECT_EQ(SendMessageA(box, CB_GETCURSEL, 0, 0), 1);
    EXPECT_STREQ(variable, "Courier");
}

TEST_F(ControlKinds, A_line_of_another_kind_or_without_equals_sign_changes_nothing) {
    int32_t variable = 5;
    const HWND slider = AddSlider(100, 0, 100, 5, &variable);
    for (const char* line : {"CHKBOX100=20", "SCROLL100", "SCROLL", ""})
        EXPECT_EQ(Apply(slider, line), 0) << line;
    EXPECT_EQ(GetScrollPos(slider, SB_CTL), 5);
    EXPECT_EQ(variable, 5);
}

TEST_F(ControlKinds, A_control_without_a_variable_is_saved_and_restored_all_the_same) {
    const HWND slider = AddSlider(100, 0, 100, 5, nullptr);
    EXPECT_EQ(Apply(slider, "SCROLL100=9"), 1);
    StoreControl(slider);
    EXPECT_EQ(Written(slider), "SCROLL100=9");
}

TEST_F(ControlKinds, Documents_hold_every_control_and_bring_it_back) {
    int32_t radius = 5, check = 0;
    const HWND slider = AddSlider(100, 4, 45, 5, &radius);
    const HWND box = Add("BUTTON", 19, "", BS_AUTOCHECKBOX);
    BindControl(box, BoundKind::CheckBox, &check);
    Add("BUTTON", 2, "not bound");
    ASSERT_TRUE(WriteDocument(window, path.c_str(), RecordMessage));
    EXPECT_EQ(Load(),
              std::string(kHeader) + ";Start of document\nSCROLL100=5\nCHKBOX19=0\n;End of document\n");

    Apply(slider, "SCROLL100=30");
    Apply(box, "CHKBOX19=1");
    ASSERT_TRUE(ReadDocument(window, path.c_str(), RecordMessage));
    EXPECT_EQ(radius, 5);
    EXPECT_EQ(check, 0);
    EXPECT_TRUE(messages.empty());
}

TEST_F(ControlKinds, Lines_for_missing_controls_and_after_the_end_do_no_harm) {
    int32_t radius = 5;
    AddSlider(100, 4, 45, 5, &radius);
    Save(std::string(kHeader) + "SCROLL999=1\n;End of document\nSCROLL100=8\r\n");
    ASSERT_TRUE(ReadDocument(window, path.c_str(), RecordMessage));
    EXPECT_EQ(radius, 8);
}

TEST_F(ControlKinds, A_document_with_a_header_only_changes_nothing) {
    int32_t radius = 5;
    AddSlider(100, 4, 45, 5, &radius);
    Save(kHeader);
    EXPECT_TRUE(ReadDocument(window, path.c_str(), RecordMessage));
    EXPECT_EQ(radius, 5);
    Save("");
    EXPECT_TRUE(ReadDocument(window, path.c_str(), RecordMessage));
    EXPECT_EQ(radius, 5);
}

TEST_F(ControlKinds, A_document_without_its_header_is_damaged) {
    int32_t radius = 5;
    AddSlider(100, 4, 45, 5, &radius);
    Save("SCROLL100=8\n");
    EXPECT_FALSE(ReadDocument(window, path.c_str(), RecordMessage));
    EXPECT_EQ(radius, 5);
    EXPECT_EQ(messages, std::vector<std::string>{"This file has been damaged."});
}

TEST_F(ControlKinds, What_cannot_be_opened_or_created_is_told) {
    EXPECT_FALSE(ReadDocument(window, "no such folder\\a.kx1", RecordMessage));
    EXPECT_FALSE(WriteDocument(window, "no such folder\\a.kx1", RecordMessage));
    EXPECT_EQ(messages, (std::vector<std::string>{"There has been an error opening the requested file.",
                                                  "There has been an error creating the requested file."}));
}

}  // namespace
}  // namespace kfx
