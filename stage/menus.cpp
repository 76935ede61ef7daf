// SPDX-License-Identifier: MIT
#include "stage/menus.h"

#include <vector>

#include "commands/text_windows.h"
#include "stage/command_table.h"

namespace kfx::stage {

using namespace commands;

namespace {

struct MenuRow {
    Menu menu;
    const wchar_t* text;
};

constexpr MenuRow kMenus[] = {
    {Menu::File, L"&File"}, {Menu::Edit, L"&Edit"}, {Menu::View, L"&View"},
    {Menu::Play, L"&Play"}, {Menu::Help, L"&Help"},
};

// Behind this command stands the menu of the recent files.
constexpr CommandId kBeforeRecent = kOpen;

void AddAccelerator(int command, const Shortcut& shortcut, std::vector<ACCEL>* accelerators) {
    if (!shortcut.key) return;
    accelerators->push_back(
        {static_cast<BYTE>(FVIRTKEY | shortcut.modifiers), shortcut.key, static_cast<WORD>(command)});
}

// A file's name in a menu, with its number as the letter that is underlined.
std::wstring RecentText(size_t row, const std::string& path) {
    std::string text = "&" + std::to_string((row + 1) % 10) + "  ";
    for (const char c : FileNameOf(path)) text += c == '&' ? "&&" : std::string(1, c);
    return Widen(text);
}

void FillRecent(const Stage& stage, HMENU menu) {
    while (DeleteMenu(menu, 0, MF_BYPOSITION)) {
    }
    const auto& recent = stage.remembered.recent;
    const bool isIdle = IsPossible(stage, *FindCommand(kOpen));
    for (size_t row = 0; row < recent.size(); ++row) {
        AppendMenuW(menu, MF_STRING | (isIdle ? MF_ENABLED : MF_GRAYED), kFirstRecent + row,
                    RecentText(row, recent[row]).c_str());
    }
    if (recent.empty()) AppendMenuW(menu, MF_STRING | MF_GRAYED, kFirstRecent, L"No files yet");
}

}  // namespace

HMENU MakeMenuBar() {
    const HMENU bar = CreateMenu();
    for (const MenuRow& entry : kMenus) {
        const HMENU menu = CreatePopupMenu();
        for (const CommandRow& row : Commands()) {
            if (row.menu != entry.menu) continue;
            if (row.startsGroup) AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
            AppendMenuW(menu, MF_STRING, row.id, Widen(row.text).c_str());
            if (row.id != kBeforeRecent) continue;
            const HMENU recent = CreatePopupMenu();
            AppendMenuW(recent, MF_STRING | MF_GRAYED, kFirstRecent, L"No files yet");
            AppendMenuW(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(recent), L"Open &recent");
        }
        AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(menu), entry.text);
    }
    return bar;
}

HACCEL MakeAccelerators() {
    std::vector<ACCEL> accelerators;
    for (const CommandRow& row : Commands()) {
        AddAccelerator(row.id, row.shortcut, &accelerators);
        for (const Shortcut& other : row.otherShortcuts) AddAccelerator(row.id, other, &accelerators);
    }
    return CreateAcceleratorTableW(accelerators.data(), static_cast<int>(accelerators.size()));
}

void UpdateMenu(const Stage& stage, HMENU menu) {
    const int count = GetMenuItemCount(menu);
    for (int i = 0; i < count; ++i) {
        const HMENU below = GetSubMenu(menu, i);
        const UINT id = GetMenuItemID(menu, i);
        if (id >= kFirstRecent && id <= kLastRecent) {
            FillRecent(stage, menu);
            return;
        }
        const CommandRow* row = below ? nullptr : FindCommand(static_cast<int>(id));
        if (!row) continue;
        std::wstring text = Widen(MenuTextOf(stage, *row));
        MENUITEMINFOW item = {};
        item.cbSize = sizeof item;
        item.fMask = MIIM_STRING | MIIM_STATE;
        item.dwTypeData = text.data();
        item.fState = (IsPossible(stage, *row) ? MFS_ENABLED : MFS_GRAYED) |
                      (row->isChecked && row->isChecked(stage) ? MFS_CHECKED : MFS_UNCHECKED);
        SetMenuItemInfoW(menu, static_cast<UINT>(i), TRUE, &item);
    }
}

void ShowKeyList(Stage* stage) {
    std::string text;
    for (const CommandRow& row : Commands()) {
        std::string keys = ShortcutText(row.shortcut);
        if (keys.empty()) continue;
        for (const Shortcut& other : row.otherShortcuts) {
            // A + is typed with Shift on some keyboards: that is the same key to its user.
            if (other.key && other.key != VK_OEM_PLUS) keys += " or " + ShortcutText(other);
        }
        text += keys + ":  " + PlainTextOf(*stage, row) + "\n";
    }
    text +=
        "O, held down:  the source alone\nLeft, Right:  move the wipe's line\nSpace on the picture:  Play";
    ShowMessage(*stage, nullptr, text, MB_ICONINFORMATION);
}

}  // namespace kfx::stage
