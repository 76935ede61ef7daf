// SPDX-License-Identifier: MIT
// The keys of the menus and of the commands.
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "stage/command_ids.h"
#include "stage/menus.h"

namespace kfx::test {
namespace {

using namespace stage;

std::wstring TextOfItem(HMENU menu, int item) {
    wchar_t text[200] = L"";
    GetMenuStringW(menu, static_cast<UINT>(item), text, 200, MF_BYPOSITION);
    return text;
}

std::vector<ACCEL> Accelerators() {
    const HACCEL table = MakeAccelerators();
    std::vector<ACCEL> all(static_cast<size_t>(CopyAcceleratorTableW(table, nullptr, 0)));
    CopyAcceleratorTableW(table, all.data(), static_cast<int>(all.size()));
    DestroyAcceleratorTable(table);
    return all;
}

// The command of a key; 0: none.
int CommandOf(WORD key, BYTE modifiers) {
    for (const ACCEL& one : Accelerators()) {
        if (one.key == key && (one.fVirt & (FCONTROL | FSHIFT | FALT)) == modifiers) return one.cmd;
    }
    return 0;
}

TEST(Menus, Each_underlined_letter_of_a_menu_stands_for_one_item) {
    const HMENU bar = MakeMenuBar();
    for (int i = 0; i < GetMenuItemCount(bar); ++i) {
        const HMENU menu = GetSubMenu(bar, i);
        std::set<WCHAR> letters;
        for (int row = 0; row < GetMenuItemCount(menu); ++row) {
            const std::wstring text = TextOfItem(menu, row);
            const size_t mark = text.find(L'&');
            if (mark + 1 >= text.size() || mark == std::wstring::npos) continue;
            const auto letter = static_cast<WCHAR>(towupper(text[mark + 1]));
            EXPECT_TRUE(letters.insert(letter).second) << "menu " << i << ", item " << row;
        }
    }
    DestroyMenu(bar);
}

TEST(Menus, Each_key_has_one_command) {
    std::set<std::pair<int, int>> keys;
    for (const ACCEL& one : Accelerators()) {
        EXPECT_TRUE(keys.insert({one.key, one.fVirt}).second) << one.key;
    }
}

TEST(Menus, Plus_and_minus_work_with_Shift_and_on_the_number_pad) {
    EXPECT_EQ(CommandOf(VK_OEM_PLUS, 0), kFaster);
    EXPECT_EQ(CommandOf(VK_OEM_PLUS, FSHIFT), kFaster) << "where the key alone is =";
    EXPECT_EQ(CommandOf(VK_ADD, 0), kFaster);
    EXPECT_EQ(CommandOf(VK_OEM_MINUS, 0), kSlower);
    EXPECT_EQ(CommandOf(VK_SUBTRACT, 0), kSlower);
    EXPECT_EQ(CommandOf(VK_OEM_PLUS, FCONTROL), kZoomIn);
    EXPECT_EQ(CommandOf(VK_OEM_PLUS, FCONTROL | FSHIFT), kZoomIn);
    EXPECT_EQ(CommandOf(VK_ADD, FCONTROL), kZoomIn);
    EXPECT_EQ(CommandOf(VK_OEM_MINUS, FCONTROL), kZoomOut);
    EXPECT_EQ(CommandOf(VK_SUBTRACT, FCONTROL), kZoomOut);
}

}  // namespace
}  // namespace kfx::test
