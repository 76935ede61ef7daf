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

// Statics break their lines, unless their style says otherwise; captions are drawn in one.
TextRoom RoomOfStatic(HWND control, const std::string& text, LONG style) {
    const SIZE given = SizeOfArea(control);
    const LONG kind = style & SS_TYPEMASK;
    const bool isBroken = kind == SS_LEFT || kind == SS_CENTER;
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

// What stands at a place of a screen or window, opaque. Empty when it cannot be read.
Picture PictureOfPlace(HDC from, const RECT& place) {
    Picture picture;
    const int width = place.right - place.left, height = place.bottom - place.top;
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const HDC memory = CreateCompatibleDC(from);
    const HBITMAP bitmap = CreateDIBSection(from, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (bitmap) {
        const HGDIOBJ before = SelectObject(memory, bitmap);
        BitBlt(memory, 0, 0, width, height, from, place.left, place.top, SRCCOPY);
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
    return picture;
}

Picture PictureOfScreen(const RECT& place) {
    const HDC screen = GetDC(nullptr);
    Picture picture = PictureOfPlace(screen, place);
    ReleaseDC(nullptr, screen);
    return picture;
}

// From the first to the last column with anything but the colour of the first pixel.
int DrawnColumns(const Picture& picture) {
    int first = picture.width, last = -1;
    for (size_t i = 4; i < picture.pixels.size(); i += 4) {
        if (std::memcmp(&picture.pixels[i], picture.pixels.data(), 3) == 0) continue;
        const int column = static_cast<int>(i / 4) % picture.width;
        first = std::min(first, column);
        last = std::max(last, column);
    }
    return last < first ? 0 : last - first + 1;
}

// How many columns the whole text takes in a control's font; 0 when that cannot be found out.
int ColumnsOfText(HDC dc, HWND control, const std::string& text) {
    constexpr LONG kMargin = 8;
    const SIZE needed = SizeOfText(control, text, 0);
    const RECT area = {0, 0, 2 * needed.cx + 2 * kMargin, 2 * needed.cy};
    RECT place = area;
    place.left = kMargin;
    const HDC memory = CreateCompatibleDC(dc);
    const HBITMAP bitmap = CreateCompatibleBitmap(dc, area.right, area.bottom);
    const HGDIOBJ bitmapBefore = SelectObject(memory, bitmap);
    const HGDIOBJ fontBefore = SelectObject(memory, reinterpret_cast<HFONT>(Send(control, WM_GETFONT)));
    FillRect(memory, &area, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    DrawTextA(memory, text.c_str(), -1, &place, DT_LEFT | DT_SINGLELINE | DT_NOCLIP | DT_NOPREFIX);
    const int columns = DrawnColumns(PictureOfPlace(memory, area));
    SelectObject(memory, fontBefore);
    SelectObject(memory, bitmapBefore);
    DeleteObject(bitmap);
    DeleteDC(memory);
    return columns;
}

// Right-aligned texts are put where they should end by what the system measures, which may be less than what
// it draws. So what is seen of the text is compared with the whole of it.
void NoteCutCaption(HWND control, const std::string& text, std::vector<std::string>* cut) {
    const SIZE size = SizeOfArea(control);
    const HDC dc = GetDC(control);
    const int whole = ColumnsOfText(dc, control, text);
    int seen = 0;
    const bool isWhole = whole > 0 && WaitFor([&] {
                             RedrawWindow(control, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
                             seen = DrawnColumns(PictureOfPlace(dc, {0, 0, size.cx, size.cy}));
                             return seen > 0 && seen == whole;
                         });
    ReleaseDC(control, dc);
    if (!isWhole)
        cut->push_back("Static " + std::to_string(GetDlgCtrlID(control)) + " \"" + text + "\" shows " +
                       std::to_string(seen) + " of " + std::to_string(whole) + " columns");
}

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
    if (kind == "Static" && (style & SS_TYPEMASK) == SS_RIGHT) NoteCutCaption(control, text, cut);
    return TRUE;
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
