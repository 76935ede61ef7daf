// SPDX-License-Identifier: MIT
#include "screens/window_pictures.h"

#include <algorithm>
#include <cstring>

#include "driven/plugin_controls.h"

namespace kfx::screens {

using namespace driven;

namespace {

// Between the mark of a check box or an option button and its text.
constexpr int kMarkGap = 3;

constexpr ULONGLONG kLongestWait = 120000;  // milliseconds

// A picture that is the same at so many looks is finished.
constexpr int kEqualLooks = 8;

SIZE SizeOfArea(HWND control) {
    RECT area = {};
    GetClientRect(control, &area);
    return {area.right, area.bottom};
}

// The room that a text takes in a control's font. `width`: of the lines, where they are broken; else 0.
SIZE SizeOfText(HWND control, const std::string& text, LONG width) {
    const HDC screen = GetDC(nullptr);
    const auto font = reinterpret_cast<HFONT>(Send(control, WM_GETFONT));
    const HGDIOBJ before = SelectObject(screen, font ? font : GetStockObject(SYSTEM_FONT));
    RECT room = {0, 0, width, 0};
    DrawTextA(screen, text.c_str(), -1, &room, DT_CALCRECT | (width > 0 ? DT_WORDBREAK : DT_SINGLELINE));
    // Nothing is drawn below the base line of a text without such letters.
    TEXTMETRICA metrics = {};
    if (GetTextMetricsA(screen, &metrics) && text.find_first_of("gjpqyQ,;()") == std::string::npos)
        room.bottom -= metrics.tmDescent;
    SelectObject(screen, before);
    ReleaseDC(nullptr, screen);
    return {room.right, room.bottom};
}

struct TextRoom {
    SIZE needed;
    SIZE given;
};

// Statics break their lines, unless their style says otherwise.
TextRoom RoomOfStatic(HWND control, const std::string& text, LONG style) {
    const SIZE given = SizeOfArea(control);
    const LONG kind = style & SS_TYPEMASK;
    const bool isBroken = kind == SS_LEFT || kind == SS_CENTER || kind == SS_RIGHT;
    return {SizeOfText(control, text, isBroken ? given.cx : 0), given};
}

TextRoom RoomOfButton(HWND control, const std::string& text, LONG style) {
    const LONG kind = style & BS_TYPEMASK;
    SIZE given = SizeOfArea(control);
    SIZE needed = SizeOfText(control, text, 0);
    if (kind == BS_GROUPBOX) given.cy = needed.cy;
    if (kind >= BS_CHECKBOX && kind <= BS_AUTORADIOBUTTON && kind != BS_GROUPBOX)
        given.cx -= GetSystemMetrics(SM_CXMENUCHECK) + kMarkGap;
    return {needed, given};
}

// The longest row beside the arrow of a drop-down list.
TextRoom RoomOfList(HWND control, std::string* text) {
    SIZE given = SizeOfArea(control);
    given.cx -= GetSystemMetrics(SM_CXVSCROLL) + 2 * GetSystemMetrics(SM_CXEDGE);
    SIZE needed = {};
    for (const std::string& row : ListRows(control)) {
        const SIZE size = SizeOfText(control, row, 0);
        if (size.cx > needed.cx) *text = row;
        if (size.cx > needed.cx) needed = size;
    }
    return {needed, given};
}

std::string Text(const SIZE& size) { return std::to_string(size.cx) + " x " + std::to_string(size.cy); }

BOOL CALLBACK NoteCutText(HWND control, LPARAM pointer) {
    auto* cut = reinterpret_cast<std::vector<std::string>*>(pointer);
    if (!IsWindowVisible(control)) return TRUE;
    const std::string kind = ControlClass(control);
    const LONG style = GetWindowLongA(control, GWL_STYLE);
    const bool isOwnerDrawn =
        (kind == "Static" && (style & SS_TYPEMASK) >= SS_OWNERDRAW) ||
        (kind == "Static" && (style & SS_TYPEMASK) >= SS_ICON && (style & SS_TYPEMASK) <= SS_WHITEFRAME);
    std::string text = ControlText(control);
    TextRoom room = {};
    if (kind == "ComboBox")
        room = RoomOfList(control, &text);
    else if (text.empty() || isOwnerDrawn)
        return TRUE;
    else if (kind == "Static")
        room = RoomOfStatic(control, text, style);
    else if (kind == "Button")
        room = RoomOfButton(control, text, style);
    else
        return TRUE;
    if (room.needed.cx > room.given.cx || room.needed.cy > room.given.cy)
        cut->push_back(kind + " " + std::to_string(GetDlgCtrlID(control)) + " \"" + text + "\" needs " +
                       Text(room.needed) + " and has " + Text(room.given));
    return TRUE;
}

Picture PictureOfScreen(const RECT& place) {
    Picture picture;
    const int width = place.right - place.left, height = place.bottom - place.top;
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (bitmap) {
        const HGDIOBJ before = SelectObject(memory, bitmap);
        BitBlt(memory, 0, 0, width, height, screen, place.left, place.top, SRCCOPY);
        GdiFlush();
        picture = {.width = width, .height = height, .pixels = {}};
        picture.pixels.resize(4 * static_cast<size_t>(width) * static_cast<size_t>(height));
        std::memcpy(picture.pixels.data(), bits, picture.pixels.size());
        for (size_t i = 0; i < picture.pixels.size(); i += 4) {
            std::swap(picture.pixels[i], picture.pixels[i + 2]);
            picture.pixels[i + 3] = 255;
        }
        SelectObject(memory, before);
        DeleteObject(bitmap);
    }
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return picture;
}

}  // namespace

bool WaitFor(const std::function<bool()>& condition) {
    const ULONGLONG end = GetTickCount64() + kLongestWait;
    while (!condition()) {
        if (GetTickCount64() > end) return false;
        WaitForChange(nullptr);
    }
    return true;
}

Picture PictureOf(HWND window, HWND tip) {
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    RECT place = {}, above = {};
    GetWindowRect(window, &place);
    if (tip && GetWindowRect(tip, &above)) UnionRect(&place, &place, &above);
    return PictureOfScreen(place);
}

Picture SettledPictureOf(HWND window) {
    Picture picture;
    int equal = 0;
    WaitFor([&] {
        RECT place = {};
        GetWindowRect(window, &place);
        Picture now = PictureOfScreen(place);
        equal = now.pixels == picture.pixels ? equal + 1 : 0;
        picture = std::move(now);
        return equal >= kEqualLooks;
    });
    return picture;
}

std::vector<std::string> CutTexts(HWND window) {
    std::vector<std::string> cut;
    EnumChildWindows(window, NoteCutText, reinterpret_cast<LPARAM>(&cut));
    return cut;
}

}  // namespace kfx::screens
