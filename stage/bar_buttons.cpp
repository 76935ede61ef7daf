// SPDX-License-Identifier: MIT
#include "stage/bar_buttons.h"

#include <algorithm>

#include <windows.h>
#include <commctrl.h>

#include "commands/text_windows.h"
#include "stage/bar_icons.h"
#include "stage/child_windows.h"
#include "stage/command_table.h"
#include "stage/drawing_parts.h"
#include "stage/stage.h"

namespace kfx::stage {

using namespace commands;

namespace {

enum class Place { UpperLeft, UpperRight, LowerLeft, LowerRight };

// Texts are short forms of the command's own.
struct BarButton {
    CommandId command;
    Place place;
    bool startsGroup = false;
    BarIcon icon = BarIcon::None;
    const char* text = "";
    bool onlyWhenPossible = false;  // else it is shown grey
};

// Those on the right stand in this order from the right edge on.
constexpr BarButton kButtons[] = {
    {.command = kOpen, .place = Place::UpperLeft, .icon = BarIcon::Open, .text = "Open"},
    {.command = kSave, .place = Place::UpperLeft, .icon = BarIcon::Save, .text = "Save as"},
    {.command = kEffects,
     .place = Place::UpperLeft,
     .startsGroup = true,
     .icon = BarIcon::Effects,
     .text = "Effects"},
    {.command = kUndo, .place = Place::UpperLeft, .startsGroup = true, .icon = BarIcon::Undo, .text = "Undo"},
    {.command = kRedo, .place = Place::UpperLeft, .icon = BarIcon::Redo, .text = "Redo"},
    {.command = kKeepTest,
     .place = Place::UpperLeft,
     .startsGroup = true,
     .text = "Keep test",
     .onlyWhenPossible = true},
    {.command = kDropTest, .place = Place::UpperLeft, .text = "Drop test", .onlyWhenPossible = true},
    {.command = kSideBySideView,
     .place = Place::UpperRight,
     .icon = BarIcon::SideBySide,
     .text = "Side by side"},
    {.command = kWipeView, .place = Place::UpperRight, .icon = BarIcon::Wipe, .text = "Wipe"},
    {.command = kWallView, .place = Place::UpperRight, .icon = BarIcon::AllEffects, .text = "All effects"},
    {.command = kFirstFrame, .place = Place::LowerLeft, .icon = BarIcon::First},
    {.command = kPreviousFrame, .place = Place::LowerLeft, .icon = BarIcon::Previous},
    {.command = kPlay, .place = Place::LowerLeft, .icon = BarIcon::Play},
    {.command = kNextFrame, .place = Place::LowerLeft, .icon = BarIcon::Next},
    {.command = kLastFrame, .place = Place::LowerLeft, .icon = BarIcon::Last},
    {.command = kZoomFull, .place = Place::LowerRight, .text = "1:1"},
    {.command = kZoomFit, .place = Place::LowerRight, .text = "Fit"},
    {.command = kFaster, .place = Place::LowerRight, .startsGroup = true, .icon = BarIcon::Faster},
    {.command = kUsualSpeed, .place = Place::LowerRight, .text = "1×"},
    {.command = kSlower, .place = Place::LowerRight, .icon = BarIcon::Slower},
};

// Device-independent pixels.
constexpr int kPadding = 10, kIconSide = 16, kIconGap = 6, kGap = 2, kGroupGap = 14, kIconButton = 32;
constexpr int kSpeedWidth = 40;

bool IsUpper(Place place) { return place == Place::UpperLeft || place == Place::UpperRight; }

// What it shows: the speed is a button, too.
std::string ShownText(const Stage& stage, const BarButton& button) {
    return button.command == kUsualSpeed ? SpeedText(stage.playback.speed) : button.text;
}

int MeasuredWidth(const Stage& stage, const BarButton& button) {
    if (button.command == kUsualSpeed) return Scaled(stage, kSpeedWidth);
    if (!*button.text) return Scaled(stage, kIconButton);
    const std::wstring text = Widen(button.text);
    const HDC screen = GetDC(stage.window);
    const HGDIOBJ before = SelectObject(screen, stage.controls.font);
    SIZE size = {};
    GetTextExtentPoint32W(screen, text.c_str(), static_cast<int>(text.size()), &size);
    SelectObject(screen, before);
    ReleaseDC(stage.window, screen);
    const int icon = button.icon == BarIcon::None ? 0 : Scaled(stage, kIconSide + kIconGap);
    return size.cx + icon + 2 * Scaled(stage, kPadding);
}

LRESULT CALLBACK ButtonProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer, UINT_PTR,
                                 DWORD_PTR data) {
    auto* stage = reinterpret_cast<Stage*>(data);
    HWND& hot = stage->controls.hotButton;
    if (message == WM_MOUSEMOVE && hot != window) {
        TRACKMOUSEEVENT track = {sizeof track, TME_LEAVE, window, 0};
        TrackMouseEvent(&track);
        hot = window;
        InvalidateRect(window, nullptr, FALSE);
    } else if (message == WM_MOUSELEAVE && hot == window) {
        hot = nullptr;
        InvalidateRect(window, nullptr, FALSE);
    }
    return DefSubclassProc(window, message, word, pointer);
}

const BarButton* ButtonOf(int id) {
    const auto* found = std::find_if(std::begin(kButtons), std::end(kButtons),
                                     [id](const BarButton& button) { return button.command == id; });
    return found == std::end(kButtons) ? nullptr : found;
}

void GiveTooltip(const Stage& stage, HWND button, const std::string& text, const CommandRow& row) {
    const std::string keys = ShortcutText(row.shortcut);
    std::wstring wide = Widen(keys.empty() ? text : text + " (" + keys + ")");
    TOOLINFOW tool = {};
    tool.cbSize = TTTOOLINFOW_V2_SIZE;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = stage.window;
    tool.uId = reinterpret_cast<UINT_PTR>(button);
    tool.lpszText = wide.data();
    SendMessageW(stage.controls.tooltips, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    SendMessageW(stage.controls.tooltips, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

void DrawContent(const Stage& stage, HDC target, const RECT& area, const BarButton& button, COLORREF color,
                 COLORREF ground) {
    const std::wstring text = Widen(ShownText(stage, button));
    RECT place = area;
    if (button.icon != BarIcon::None) {
        const int side = Scaled(stage, kIconSide);
        const int left = text.empty() ? (area.left + area.right - side) / 2
                                      : static_cast<int>(area.left) + Scaled(stage, kPadding);
        const int top = (area.top + area.bottom - side) / 2;
        const bool pause = button.command == kPlay && stage.playback.playing;
        DrawBarIcon(target, {left, top, left + side, top + side}, pause ? BarIcon::Pause : button.icon, color,
                    ground);
        place.left = left + side + Scaled(stage, kIconGap);
    }
    if (text.empty()) return;
    SetBkMode(target, TRANSPARENT);
    SetTextColor(target, color);
    const HGDIOBJ before = SelectObject(target, stage.controls.font);
    const UINT side = button.icon == BarIcon::None ? DT_CENTER : DT_LEFT;
    DrawTextW(target, text.c_str(), -1, &place, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | side);
    SelectObject(target, before);
}

}  // namespace

void MakeBarButtons(Stage* stage) {
    for (const BarButton& button : kButtons) {
        const HWND window =
            CreateWindowExW(0, L"BUTTON", L"", WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_OWNERDRAW, 0, 0, 0, 0,
                            stage->window, reinterpret_cast<HMENU>(static_cast<INT_PTR>(button.command)),
                            GetModuleHandleW(nullptr), nullptr);
        SetWindowSubclass(window, ButtonProcedure, 0, reinterpret_cast<DWORD_PTR>(stage));
        stage->controls.bars.push_back({.window = window});
    }
}

void MeasureBarButtons(Stage* stage) {
    for (size_t i = 0; i < std::size(kButtons); ++i)
        stage->controls.bars[i].width = MeasuredWidth(*stage, kButtons[i]);
}

void PlaceBarButtons(const Stage& stage, const RECT& upper, const RECT& lower, int* left, int* right) {
    int starts[4] = {static_cast<int>(upper.left), static_cast<int>(upper.right),
                     static_cast<int>(lower.left), static_cast<int>(lower.right)};
    for (size_t i = 0; i < std::size(kButtons); ++i) {
        const BarButton& button = kButtons[i];
        const RECT& bar = IsUpper(button.place) ? upper : lower;
        const bool fromRight = button.place == Place::UpperRight || button.place == Place::LowerRight;
        int& start = starts[static_cast<int>(button.place)];
        const int width = stage.controls.bars[i].width,
                  gap = Scaled(stage, button.startsGroup ? kGroupGap : kGap);
        start += fromRight ? -gap - width : gap;
        PlaceChild(stage.controls.bars[i].window, {start, bar.top, start + width, bar.bottom},
                   SWP_NOCOPYBITS);
        if (!fromRight) start += width;
    }
    *left = starts[static_cast<int>(Place::LowerLeft)];
    *right = starts[static_cast<int>(Place::LowerRight)];
}

int LeastBarWidth(const Stage& stage, int between) {
    int upper = 0, lower = between;
    for (size_t i = 0; i < std::size(kButtons); ++i)
        (IsUpper(kButtons[i].place) ? upper : lower) +=
            stage.controls.bars[i].width + Scaled(stage, kButtons[i].startsGroup ? kGroupGap : kGap);
    return std::max(upper + Scaled(stage, kGroupGap), lower);
}

void UpdateBarButtons(Stage* stage) {
    for (size_t i = 0; i < std::size(kButtons); ++i) {
        const BarButton& button = kButtons[i];
        BarButtonState& state = stage->controls.bars[i];
        const CommandRow* row = FindCommand(button.command);
        const bool isPressed =
            button.command == kPlay ? stage->playback.playing : row->isChecked && row->isChecked(*stage);
        const ButtonLook look = {IsPossible(*stage, *row), isPressed,
                                 button.command == kUsualSpeed ? stage->playback.speed : 0};
        if (state.look != look) {
            if (!look.isPossible && GetFocus() == state.window) FocusPicture(*stage);
            EnableChild(state.window, look.isPossible);
            if (button.onlyWhenPossible) ShowChild(state.window, look.isPossible);
            InvalidateRect(state.window, nullptr, FALSE);
            state.look = look;
        }
        const std::wstring text = Widen(PlainTextOf(*stage, *row));
        if (text == state.text) continue;
        state.text = text;
        SetWindowTextW(state.window, text.c_str());
        GiveTooltip(*stage, state.window, Narrow(text), *row);
    }
}

bool DrawBarButton(const Stage& stage, const DRAWITEMSTRUCT& item) {
    const BarButton* button = ButtonOf(static_cast<int>(item.CtlID));
    if (!button) return false;
    const CommandRow* row = FindCommand(button->command);
    const bool pressed = (item.itemState & ODS_SELECTED) != 0,
               disabled = (item.itemState & ODS_DISABLED) != 0;
    const bool checked = row->isChecked && row->isChecked(stage) && button->command != kPlay;
    const bool hot = stage.controls.hotButton == item.hwndItem && !disabled;
    int ground = COLOR_BTNFACE, text = COLOR_BTNTEXT;
    if (checked) {
        ground = COLOR_HIGHLIGHT;
        text = COLOR_HIGHLIGHTTEXT;
    } else if (pressed || hot) {
        ground = pressed ? COLOR_BTNSHADOW : COLOR_BTNHIGHLIGHT;
    }
    if (disabled) text = COLOR_GRAYTEXT;
    Fill(item.hDC, item.rcItem, ground);
    if (hot || pressed) FrameRect(item.hDC, &item.rcItem, GetSysColorBrush(COLOR_BTNSHADOW));
    DrawContent(stage, item.hDC, item.rcItem, *button, GetSysColor(text), GetSysColor(ground));
    if ((item.itemState & ODS_FOCUS) && !(item.itemState & ODS_NOFOCUSRECT)) {
        RECT focus = item.rcItem;
        InflateRect(&focus, -2, -2);
        SetTextColor(item.hDC, GetSysColor(text));
        SetBkColor(item.hDC, GetSysColor(ground));
        DrawFocusRect(item.hDC, &focus);
    }
    return true;
}

}  // namespace kfx::stage
