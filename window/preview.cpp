// SPDX-License-Identifier: MIT
#include "window/preview.h"

#include <algorithm>

#include "framework/memory_guards.h"
#include "framework/scaler.h"
#include "host/floating_point_state.h"
#include "resources/resource_ids.h"
#include "window/dialog_services.h"
#include "window/effect_list.h"
#include "window/guards.h"
#include "window/plugin_state.h"

namespace kfx {
namespace {

constexpr int kFrameWidth = 4;  // between the control's edge and the image

int WidthOf(const RECT& area) { return area.right - area.left; }
int HeightOf(const RECT& area) { return area.bottom - area.top; }

// The current effect's picture, or null.
ImageHandle Render(HWND window, const RECT& inner) {
    const EffectDescriptor* effect = EffectInUse(window);
    if (!effect || !effect->preview) return nullptr;
    EffectRunContext context = {};
    context.window = window;
    context.width = WidthOf(inner);
    context.height = HeightOf(inner);
    context.source = plugin.source;
    if (effect->preview(&context)) return context.image;
    FreeMemory(context.image);
    return nullptr;
}

// The picture scaled down to fit; the picture itself when it fits or cannot be scaled. The
// caller owns the result; the handle passed in is the result or has been freed.
ImageHandle ScaleToFit(ImageHandle picture, int width, int height) {
    int percentage = 100;
    {
        const ImageLock lock(picture);
        if (!lock || (lock->width <= width && lock->height <= height)) return picture;
        percentage = static_cast<int>(
            std::min(int64_t{width} * 100 / lock->width, int64_t{height} * 100 / lock->height));
    }
    const ImageHandle scaled = ScaleByPercentage(picture, percentage, percentage);
    if (!scaled) return picture;
    FreeMemory(picture);
    return scaled;
}

ImageHandle RenderToFit(HWND window, const RECT& inner) {
    const CoreFloatingPoint core;
    return ScaleToFit(Render(window, inner), WidthOf(inner), HeightOf(inner));
}

// Fills what lies in one of the rectangles only.
void FillBetween(HDC dc, const RECT& a, const RECT& b, int systemColor) {
    const GdiObject<HRGN> between(CreateRectRgnIndirect(&a));
    const GdiObject<HRGN> other(CreateRectRgnIndirect(&b));
    CombineRgn(between.handle, between.handle, other.handle, RGN_XOR);
    FillRgn(dc, between.handle, GetSysColorBrush(systemColor));
}

void DrawPicture(HDC dc, const RECT& inner, const WorkingImage* image) {
    const int x = inner.left + (WidthOf(inner) - image->width) / 2;
    const int y = inner.top + (HeightOf(inner) - image->height) / 2;
    const RECT place = {x, y, x + image->width, y + image->height};
    SetDIBitsToDevice(dc, x, y, static_cast<DWORD>(image->width), static_cast<DWORD>(image->height), 0, 0, 0,
                      static_cast<UINT>(image->height), PixelsOf(image),
                      reinterpret_cast<const BITMAPINFO*>(image), DIB_RGB_COLORS);
    FillBetween(dc, inner, place, COLOR_BTNFACE);
    if (settings.sampleWindowKeyLine == 1) {
        RECT line = place;
        InflateRect(&line, 1, 1);
        FrameRect(dc, &line, static_cast<HBRUSH>(GetStockObject(LTGRAY_BRUSH)));
    }
}

void DrawPrompt(HDC dc, RECT area) {
    const GdiObject<HFONT> font(MakeFont("Times New Roman", 24, FW_BOLD, FF_ROMAN));
    const SavedContext saved(dc);
    FillRect(dc, &area, GetSysColorBrush(COLOR_BTNFACE));
    FrameRect(dc, &area, GetSysColorBrush(COLOR_3DDKSHADOW));
    InflateRect(&area, -8, -24);
    SelectObject(dc, font.handle);
    SetTextColor(dc, GetSysColor(COLOR_3DDKSHADOW));
    SetBkMode(dc, TRANSPARENT);
    DrawTextA(dc, LoadText(IDS_NO_SOURCE_PROMPT), -1, &area, DT_CENTER | DT_WORDBREAK | DT_NOPREFIX);
}

}  // namespace

void DrawPreview(HWND window, const DRAWITEMSTRUCT& item) {
    // A click on the preview changes nothing in it, and rendering takes long.
    if (item.itemAction && !(item.itemAction & ODA_DRAWENTIRE)) return;
    const WaitCursor wait;
    const SavedContext saved(item.hDC);
    RECT inner = item.rcItem;
    InflateRect(&inner, -kFrameWidth, -kFrameWidth);
    const MemoryOwner picture(RenderToFit(window, inner));

    FillBetween(item.hDC, item.rcItem, inner, COLOR_BTNFACE);
    FrameRect(item.hDC, &item.rcItem, GetSysColorBrush(COLOR_BTNSHADOW));
    IntersectClipRect(item.hDC, inner.left, inner.top, inner.right, inner.bottom);
    const ImageLock lock(picture.memory);
    if (lock)
        DrawPicture(item.hDC, inner, lock.image);
    else
        DrawPrompt(item.hDC, item.rcItem);
}

void RepaintPreview(HWND window) {
    RedrawWindow(GetDlgItem(window, IDC_PREVIEW), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
}

}  // namespace kfx
