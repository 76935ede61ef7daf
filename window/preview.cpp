// SPDX-License-Identifier: MIT
#include "window/preview.h"

#include <algorithm>

#include "effects/effect_table.h"
#include "framework/memory_guards.h"
#include "host/floating_point_state.h"
#include "kernels/scaler.h"
#include "resources/resource_ids.h"
#include "window/dialog_services.h"
#include "window/effect_list.h"
#include "window/guards.h"
#include "window/kept_picture.h"
#include "window/plugin_state.h"

namespace kfx {
namespace {

constexpr int kFrameWidth = 4;  // between the control's edge and the image

int WidthOf(const RECT& area) { return area.right - area.left; }
int HeightOf(const RECT& area) { return area.bottom - area.top; }

// What the preview would be rendered from now. Without an effect in the list, or where the background colour
// cannot be read, `effect` is null.
PreviewInput ReadPreviewInput(HWND window, const RECT& inner) {
    PreviewInput input = {.effect = nullptr,
                          .source = plugin.source,
                          .width = WidthOf(inner),
                          .height = HeightOf(inner),
                          .kernel = {}};
    const LRESULT row = SendDlgItemMessageA(window, IDC_EFFECT, CB_GETCURSEL, 0, 0);
    const Effect* effect = row < 0 ? nullptr : EffectAt(static_cast<size_t>(row));
    if (effect && ReadKernelInput(*effect, window, plugin.source, &input.kernel)) input.effect = effect;
    return input;
}

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

void DrawMargin(HDC dc, const RECT& area, const RECT& inner) {
    RECT line = area;
    FrameRect(dc, &line, GetSysColorBrush(COLOR_BTNSHADOW));
    InflateRect(&line, -1, -1);
    FillBetween(dc, line, inner, COLOR_BTNFACE);
}

// Each pixel is drawn once, so that nothing flickers: the margin, then the picture, then what is left.
void DrawPicture(HDC dc, const RECT& area, const RECT& inner, const ShownPicture& picture) {
    const SavedContext saved(dc);
    DrawMargin(dc, area, inner);
    IntersectClipRect(dc, inner.left, inner.top, inner.right, inner.bottom);
    const int width = picture.info->bmiHeader.biWidth, height = picture.info->bmiHeader.biHeight;
    const int x = inner.left + (WidthOf(inner) - width) / 2;
    const int y = inner.top + (HeightOf(inner) - height) / 2;
    const RECT place = {x, y, x + width, y + height};
    SetDIBitsToDevice(dc, x, y, static_cast<DWORD>(width), static_cast<DWORD>(height), 0, 0, 0,
                      static_cast<UINT>(height), picture.pixels, picture.info, DIB_RGB_COLORS);
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

void RenderAndDraw(HWND window, const DRAWITEMSTRUCT& item, const RECT& inner, const PreviewInput& input) {
    const MemoryOwner rendered(RenderToFit(window, inner));
    const ImageLock lock(rendered.memory);
    if (lock) {
        // A picture that could not be scaled is drawn, but may be large.
        const bool fits = lock->width <= input.width && lock->height <= input.height;
        if (fits) KeepPicture(input, lock.image);
        DrawPicture(
            item.hDC, item.rcItem, inner,
            {.info = reinterpret_cast<const BITMAPINFO*>(lock.image), .pixels = PixelsOf(lock.image)});
        return;
    }
    FreeKeptPicture();
    const SavedContext saved(item.hDC);
    DrawMargin(item.hDC, item.rcItem, inner);
    IntersectClipRect(item.hDC, inner.left, inner.top, inner.right, inner.bottom);
    DrawPrompt(item.hDC, item.rcItem);
}

}  // namespace

void DrawPreview(HWND window, const DRAWITEMSTRUCT& item) {
    // A click on the preview changes nothing in it, and rendering takes long.
    if (item.itemAction && !(item.itemAction & ODA_DRAWENTIRE)) return;
    const WaitCursor wait;
    RECT inner = item.rcItem;
    InflateRect(&inner, -kFrameWidth, -kFrameWidth);
    const PreviewInput input = ReadPreviewInput(window, inner);
    const ShownPicture unchanged = PictureFor(input);
    if (unchanged.pixels) {
        DrawPicture(item.hDC, item.rcItem, inner, unchanged);
        return;
    }
    // Rendering may take seconds. Meanwhile the last picture stands also where the preview was covered.
    const ShownPicture last = LastPicture(input.width, input.height);
    if (last.pixels) DrawPicture(item.hDC, item.rcItem, inner, last);
    RenderAndDraw(window, item, inner, input);
}

void RepaintPreview(HWND window) {
    AskForNewPicture();
    RedrawWindow(GetDlgItem(window, IDC_PREVIEW), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
}

}  // namespace kfx
