// SPDX-License-Identifier: MIT
#include "tests/dll/support/window_reading.h"

namespace kfx::test {

std::string TextOf(HWND window) {
    char text[2048] = "";
    GetWindowTextA(window, text, sizeof text);
    return text;
}

std::string ClassOf(HWND window) {
    char name[64] = "";
    GetClassNameA(window, name, sizeof name);
    CharLowerA(name);
    return name;
}

std::vector<COLORREF> Draw(int width, int height, const std::function<void(HDC)>& draw) {
    BITMAPINFO info = {};
    info.bmiHeader = {.biSize = sizeof info.bmiHeader,
                      .biWidth = width,
                      .biHeight = -height,
                      .biPlanes = 1,
                      .biBitCount = 32,
                      .biCompression = BI_RGB,
                      .biSizeImage = 0,
                      .biXPelsPerMeter = 0,
                      .biYPelsPerMeter = 0,
                      .biClrUsed = 0,
                      .biClrImportant = 0};
    void* bits = nullptr;
    const HDC dc = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ before = SelectObject(dc, bitmap);
    draw(dc);
    GdiFlush();
    const auto* first = static_cast<const COLORREF*>(bits);
    std::vector<COLORREF> pixels(first, first + static_cast<size_t>(width) * static_cast<size_t>(height));
    // The bitmap stores blue in its low byte.
    for (COLORREF& pixel : pixels) pixel = RGB(pixel >> 16 & 255, pixel >> 8 & 255, pixel & 255);
    SelectObject(dc, before);
    DeleteObject(bitmap);
    DeleteDC(dc);
    return pixels;
}

}  // namespace kfx::test
