// SPDX-License-Identifier: MIT
#include "window/button_looks.h"

#include <algorithm>

#include "window/guards.h"

namespace kfx {
namespace {

constexpr uint32_t kFlat = 2;
constexpr uint32_t kRounded = 3;

COLORREF Mix(COLORREF a, COLORREF b, int percentOfB) {
    const auto channel = [=](int shift) {
        const int from = static_cast<int>(a >> shift & 255), to = static_cast<int>(b >> shift & 255);
        return static_cast<COLORREF>(from + (to - from) * percentOfB / 100) << shift;
    };
    return channel(0) | channel(8) | channel(16);
}

// What the looks are mixed from.
struct Colors {
    const COLORREF ground = GetSysColor(COLOR_BTNFACE);
    const COLORREF light = GetSysColor(COLOR_BTNHIGHLIGHT);
    const COLORREF shadow = GetSysColor(COLOR_BTNSHADOW);
    const COLORREF dark = GetSysColor(COLOR_3DDKSHADOW);
    const COLORREF accent = GetSysColor(COLOR_HIGHLIGHT);
    const COLORREF onAccent = GetSysColor(COLOR_HIGHLIGHTTEXT);

    COLORREF Lighter(int percent) const { return Mix(ground, light, percent); }
    COLORREF Darker(int percent) const { return Mix(ground, shadow, percent); }
};

constexpr int kHotPercent = 15;  // of the accent, in a face under the pointer

bool IsHighContrast() {
    HIGHCONTRASTA contrast = {};
    contrast.cbSize = sizeof contrast;
    return SystemParametersInfoA(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) &&
           (contrast.dwFlags & HCF_HIGHCONTRASTON);
}

RECT Inside(RECT area, int by) {
    InflateRect(&area, -by, -by);
    return area;
}

void FillPlain(HDC dc, const RECT& area, COLORREF color) {
    const GdiObject<HBRUSH> brush(CreateSolidBrush(color));
    FillRect(dc, &area, brush.handle);
}

void FillGradient(HDC dc, const RECT& area, COLORREF top, COLORREF bottom) {
    const int height = area.bottom - area.top;
    for (int y = 0; y < height; ++y) {
        const RECT line = {area.left, area.top + y, area.right, area.top + y + 1};
        FillPlain(dc, line, Mix(top, bottom, 100 * y / (height > 1 ? height - 1 : 1)));
    }
}

void Outline(HDC dc, const RECT& area, COLORREF color, int rounding) {
    const GdiObject<HPEN> pen(CreatePen(PS_SOLID, 1, color));
    const SavedContext saved(dc);
    SelectObject(dc, pen.handle);
    SelectObject(dc, GetStockObject(NULL_BRUSH));
    RoundRect(dc, area.left, area.top, area.right, area.bottom, rounding, rounding);
}

// One line along the top and the left edge, one along the bottom and the right one.
void DrawBevel(HDC dc, const RECT& area, COLORREF upper, COLORREF lower) {
    FillPlain(dc, {area.left, area.top, area.right, area.top + 1}, upper);
    FillPlain(dc, {area.left, area.top, area.left + 1, area.bottom}, upper);
    FillPlain(dc, {area.left + 1, area.bottom - 1, area.right, area.bottom}, lower);
    FillPlain(dc, {area.right - 1, area.top + 1, area.right, area.bottom}, lower);
}

// A solid key with shaded edges; Enter's has a coloured line round it.
void DrawBevelled(const ButtonFace& face) {
    const Colors colors;
    const COLORREF tint = face.hot && !face.pushed ? colors.accent : colors.ground;
    const COLORREF top = face.pushed ? colors.Darker(50) : colors.Lighter(face.disabled ? 30 : 85);
    const COLORREF bottom = face.pushed ? colors.Darker(20) : colors.Darker(face.disabled ? 0 : 30);
    const COLORREF line = face.disabled    ? colors.Darker(60)
                          : face.isDefault ? Mix(colors.dark, colors.accent, 75)
                                           : Mix(colors.shadow, colors.dark, 60);
    FillPlain(face.dc, face.area, colors.ground);
    FillGradient(face.dc, Inside(face.area, 1), Mix(top, tint, kHotPercent), Mix(bottom, tint, kHotPercent));
    Outline(face.dc, face.area, line, 3);
    if (face.isDefault && !face.disabled)
        Outline(face.dc, Inside(face.area, 1), Mix(colors.ground, colors.accent, 55), 0);
    const int bevel = face.isDefault && !face.disabled ? 2 : 1;
    if (face.pushed)
        DrawBevel(face.dc, Inside(face.area, bevel), colors.Darker(100), colors.Lighter(40));
    else
        DrawBevel(face.dc, Inside(face.area, bevel), colors.light, colors.Darker(face.disabled ? 30 : 75));
}

bool IsFilled(const ButtonFace& face) { return face.isDefault && !face.disabled; }

// One colour and one line; Enter's is filled with the accent.
void DrawFlat(const ButtonFace& face) {
    const Colors colors;
    COLORREF ground = colors.Lighter(60), line = colors.shadow;
    if (face.disabled) {
        ground = colors.ground;
        line = colors.Darker(50);
    } else if (IsFilled(face)) {
        ground = face.pushed ? Mix(colors.accent, RGB(0, 0, 0), 25)
                 : face.hot  ? Mix(colors.accent, colors.light, 18)
                             : colors.accent;
        line = Mix(colors.accent, RGB(0, 0, 0), 25);
    } else if (face.pushed) {
        ground = Mix(colors.ground, colors.accent, 35);
        line = colors.accent;
    } else if (face.hot || face.focused) {
        ground = Mix(ground, colors.accent, face.hot ? kHotPercent : 0);
        line = colors.accent;
    }
    FillPlain(face.dc, Inside(face.area, 1), ground);
    Outline(face.dc, face.area, line, 0);
    if (IsFilled(face) && face.ringed) Outline(face.dc, Inside(face.area, 3), colors.onAccent, 0);
}

// Round ends, lit from above; Enter's has a double coloured line.
void DrawRounded(const ButtonFace& face) {
    const Colors colors;
    const int rounding = std::min<int>(face.area.bottom - face.area.top, 18);
    const COLORREF tint = face.hot && !face.pushed ? colors.accent : colors.ground;
    FillPlain(face.dc, face.area, colors.ground);
    {
        const GdiObject<HRGN> shape(CreateRoundRectRgn(face.area.left, face.area.top, face.area.right + 1,
                                                       face.area.bottom + 1, rounding, rounding));
        const SavedContext saved(face.dc);
        ExtSelectClipRgn(face.dc, shape.handle, RGN_AND);
        const COLORREF top = face.pushed ? colors.Darker(55) : colors.Lighter(face.disabled ? 40 : 95);
        const COLORREF bottom = face.pushed ? colors.Lighter(30) : colors.Darker(face.disabled ? 8 : 38);
        FillGradient(face.dc, face.area, Mix(top, tint, kHotPercent), Mix(bottom, tint, kHotPercent));
    }
    const bool strong = (face.isDefault || face.focused) && !face.disabled;
    if (face.isDefault && !face.disabled)
        Outline(face.dc, Inside(face.area, 1), Mix(colors.light, colors.accent, 55), rounding - 2);
    Outline(face.dc, face.area,
            strong ? Mix(colors.dark, colors.accent, 80)
                   : Mix(colors.shadow, RGB(0, 0, 0), face.disabled ? 0 : 30),
            rounding);
}

// Nothing mixed: only what the user's scheme holds, as it is meant.
void DrawPlain(const ButtonFace& face) {
    const bool marked = (face.hot || face.pushed) && !face.disabled;
    FillRect(face.dc, &face.area, GetSysColorBrush(marked ? COLOR_HIGHLIGHT : COLOR_BTNFACE));
    const HBRUSH line = GetSysColorBrush(face.disabled ? COLOR_GRAYTEXT : COLOR_BTNTEXT);
    FrameRect(face.dc, &face.area, line);
    const RECT inner = Inside(face.area, 1);
    if (face.isDefault) FrameRect(face.dc, &inner, line);
}

}  // namespace

void DrawButtonFace(const ButtonFace& face, uint32_t look) {
    if (IsHighContrast())
        DrawPlain(face);
    else if (look == kFlat)
        DrawFlat(face);
    else if (look == kRounded)
        DrawRounded(face);
    else
        DrawBevelled(face);
}

ButtonLabel LabelOn(const ButtonFace& face, uint32_t look) {
    const bool highContrast = IsHighContrast();
    const bool onAccent = highContrast ? face.hot || face.pushed : look == kFlat && IsFilled(face);
    const int color = face.disabled ? COLOR_GRAYTEXT : onAccent ? COLOR_HIGHLIGHTTEXT : COLOR_BTNTEXT;
    const bool solid = !highContrast && look != kFlat;
    return {.color = GetSysColor(color),
            .moves = solid,
            .engraved = solid && look != kRounded,
            .dotted = highContrast || !onAccent};
}

}  // namespace kfx
