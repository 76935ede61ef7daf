// SPDX-License-Identifier: MIT
#include "stage/animation_view.h"

#include <algorithm>
#include <vector>

#include "commands/text_windows.h"

namespace kfx::stage {

using namespace commands;

namespace {

constexpr COLORREF kBackground = RGB(243, 244, 247);
constexpr COLORREF kCard = RGB(255, 255, 255);
constexpr COLORREF kFrame = RGB(216, 219, 226);
constexpr COLORREF kTitle = RGB(28, 34, 48);
constexpr COLORREF kFaint = RGB(118, 126, 142);

constexpr int kShortestDelay = 2;  // hundredths of a second
constexpr int kUsualDelay = 10;
constexpr int kLargestZoom = 4;  // pictures smaller than the card grow by whole factors

int DelayOf(const Frame& frame) { return frame.delay < kShortestDelay ? kUsualDelay : frame.delay; }

int Scaled(int value, const ViewStyle& style) { return MulDiv(value, style.unit, 96); }

void Fill(HDC target, const RECT& area, COLORREF color) {
    SetDCBrushColor(target, color);
    FillRect(target, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void Outline(HDC target, const RECT& area, COLORREF color) {
    SetDCBrushColor(target, color);
    FrameRect(target, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void DrawLine(HDC target, RECT area, const std::string& text, HFONT font, COLORREF color, UINT format) {
    const std::wstring wide = Widen(text);
    const HGDIOBJ before = SelectObject(target, font);
    SetBkMode(target, TRANSPARENT);
    SetTextColor(target, color);
    DrawTextW(target, wide.c_str(), static_cast<int>(wide.size()), &area, format | DT_NOPREFIX);
    SelectObject(target, before);
}

// Where a picture of this size stands in the area: centred, reduced to fit or enlarged by a whole factor.
RECT Fitted(int width, int height, const RECT& area) {
    const int availableWidth = std::max<int>(area.right - area.left, 1);
    const int availableHeight = std::max<int>(area.bottom - area.top, 1);
    int shownWidth = width, shownHeight = height;
    const int zoom = std::min({availableWidth / width, availableHeight / height, kLargestZoom});
    if (zoom >= 1) {
        shownWidth *= zoom;
        shownHeight *= zoom;
    } else if (static_cast<int64_t>(width) * availableHeight >
               static_cast<int64_t>(height) * availableWidth) {
        shownWidth = availableWidth;
        shownHeight = std::max(MulDiv(height, availableWidth, width), 1);
    } else {
        shownHeight = availableHeight;
        shownWidth = std::max(MulDiv(width, availableHeight, height), 1);
    }
    const int left = area.left + (availableWidth - shownWidth) / 2;
    const int top = area.top + (availableHeight - shownHeight) / 2;
    return {left, top, left + shownWidth, top + shownHeight};
}

// The picture over its chequered ground, as the system draws bitmaps: blue, green, red, unused.
std::vector<uint8_t> OnChequers(const Animation& animation, const Frame& frame) {
    constexpr int kSquare = 8;
    std::vector<uint8_t> bits(frame.pixels.size());
    size_t i = 0;
    for (int y = 0; y < animation.height; ++y) {
        for (int x = 0; x < animation.width; ++x, i += 4) {
            const int ground = (x / kSquare + y / kSquare) % 2 ? 204 : 238;
            const int alpha = frame.pixels[i + 3];
            for (size_t c = 0; c < 3; ++c) {
                bits[i + 2 - c] =
                    static_cast<uint8_t>((frame.pixels[i + c] * alpha + ground * (255 - alpha) + 127) / 255);
            }
        }
    }
    return bits;
}

void DrawPicture(HDC target, const RECT& place, const Animation& animation, const Frame& frame) {
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = animation.width;
    info.bmiHeader.biHeight = -animation.height;  // rows from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    const auto bits = OnChequers(animation, frame);
    const bool smaller = place.right - place.left < animation.width;
    SetStretchBltMode(target, smaller ? HALFTONE : COLORONCOLOR);
    SetBrushOrgEx(target, 0, 0, nullptr);
    StretchDIBits(target, place.left, place.top, place.right - place.left, place.bottom - place.top, 0, 0,
                  animation.width, animation.height, bits.data(), &info, DIB_RGB_COLORS, SRCCOPY);
}

std::string Describe(const Animation& animation, size_t frame) {
    int64_t hundredths = 0;
    for (const Frame& one : animation.frames) hundredths += DelayOf(one);
    std::string text = std::to_string(animation.width) + " x " + std::to_string(animation.height);
    if (animation.frames.size() == 1) return text + ", one picture";
    text += ", frame " + std::to_string(frame + 1) + " of " + std::to_string(animation.frames.size());
    const int64_t tenths = (hundredths + 5) / 10;
    return text + ", " + std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " s";
}

}  // namespace

COLORREF StageBackground() { return kBackground; }

size_t FrameAt(const Animation& animation, uint64_t milliseconds) {
    uint64_t total = 0;
    for (const Frame& frame : animation.frames) total += static_cast<uint64_t>(DelayOf(frame)) * 10;
    if (total == 0) return 0;
    uint64_t rest = milliseconds % total;
    size_t index = 0;
    while (index + 1 < animation.frames.size()) {
        const uint64_t delay = static_cast<uint64_t>(DelayOf(animation.frames[index])) * 10;
        if (rest < delay) break;
        rest -= delay;
        ++index;
    }
    return index;
}

void DrawAnimationCard(HDC target, const RECT& card, const std::string& title, const std::string& hint,
                       const Animation& animation, size_t frame, const ViewStyle& style) {
    const int margin = Scaled(14, style), titleHeight = Scaled(22, style), lineHeight = Scaled(18, style);
    Fill(target, card, kCard);
    Outline(target, card, kFrame);

    RECT line = {card.left + margin, card.top + margin, card.right - margin, card.top + margin + titleHeight};
    DrawLine(target, line, title, style.font, kTitle, DT_SINGLELINE | DT_TOP | DT_PATH_ELLIPSIS);
    RECT area = {card.left + margin, line.bottom + margin / 2, card.right - margin,
                 card.bottom - margin - lineHeight - margin / 2};
    if (animation.frames.empty()) {
        area.top = (area.top + area.bottom) / 2 - 2 * lineHeight;
        DrawLine(target, area, hint, style.font, kFaint, DT_CENTER | DT_WORDBREAK);
        return;
    }
    DrawPicture(target, Fitted(animation.width, animation.height, area), animation, animation.frames[frame]);
    line.top = card.bottom - margin - lineHeight;
    line.bottom = card.bottom - margin;
    DrawLine(target, line, Describe(animation, frame), style.smallFont, kFaint,
             DT_SINGLELINE | DT_BOTTOM | DT_CENTER);
}

}  // namespace kfx::stage
