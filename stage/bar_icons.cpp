// SPDX-License-Identifier: MIT
#include "stage/bar_icons.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace kfx::stage {
namespace {

// Points on a grid of 16 by 16.
struct Point {
    float x;
    float y;
};

struct Shape {
    std::span<const Point> points;
};

constexpr Point kPlay[] = {{4, 2}, {14, 8}, {4, 14}};
constexpr Point kPauseLeft[] = {{4, 2}, {7, 2}, {7, 14}, {4, 14}};
constexpr Point kPauseRight[] = {{9, 2}, {12, 2}, {12, 14}, {9, 14}};
constexpr Point kBarLeft[] = {{2, 3}, {4, 3}, {4, 13}, {2, 13}};
constexpr Point kArrowLeft[] = {{13, 3}, {13, 13}, {5, 8}};
constexpr Point kBarRight[] = {{12, 3}, {14, 3}, {14, 13}, {12, 13}};
constexpr Point kArrowRight[] = {{3, 3}, {11, 8}, {3, 13}};
constexpr Point kStepBar[] = {{11, 3}, {13, 3}, {13, 13}, {11, 13}};
constexpr Point kStepLeft[] = {{9, 3}, {9, 13}, {2, 8}};
constexpr Point kStepBarLeft[] = {{3, 3}, {5, 3}, {5, 13}, {3, 13}};
constexpr Point kStepRight[] = {{7, 3}, {14, 8}, {7, 13}};
constexpr Point kMinus[] = {{3, 7}, {13, 7}, {13, 9}, {3, 9}};
constexpr Point kPlusDown[] = {{7, 3}, {9, 3}, {9, 13}, {7, 13}};
constexpr Point kFolderBack[] = {{1, 3}, {6, 3}, {8, 5}, {14, 5}, {14, 7}, {4, 7}, {1, 13}};
constexpr Point kFolderFront[] = {{4.5f, 8}, {16, 8}, {13, 14}, {1.8f, 14}};
constexpr Point kDisk[] = {{2, 2},  {12, 2}, {14, 4}, {14, 14}, {12, 14}, {12, 9}, {4, 9}, {4, 14},
                           {2, 14}, {2, 2},  {5, 2},  {5, 6},   {10, 6},  {10, 2}, {5, 2}};
constexpr Point kStar[] = {{6, 1}, {7.6f, 6}, {12, 8}, {7.6f, 10}, {6, 15}, {4.4f, 10}, {0, 8}, {4.4f, 6}};
constexpr Point kSmallStar[] = {{13, 0},    {13.8f, 2.4f}, {16, 3.2f}, {13.8f, 4},
                                {13, 6.4f}, {12.2f, 4},    {10, 3.2f}, {12.2f, 2.4f}};
constexpr Point kUndo[] = {{1, 6},     {6, 1.5f},      {6, 4.5f}, {10, 4.5f}, {13, 6},
                           {14.5f, 9}, {13.5f, 12.5f}, {11, 14},  {11, 12},   {12, 10.5f},
                           {12, 8.6f}, {10, 7.4f},     {6, 7.4f}, {6, 10.5f}};
constexpr Point kRedo[] = {{15, 6}, {10, 1.5f}, {10, 4.5f}, {6, 4.5f}, {3, 6},    {1.5f, 9},  {2.5f, 12.5f},
                           {5, 14}, {5, 12},    {4, 10.5f}, {4, 8.6f}, {6, 7.4f}, {10, 7.4f}, {10, 10.5f}};
constexpr Point kTile1[] = {{1, 2}, {7, 2}, {7, 7}, {1, 7}};
constexpr Point kTile2[] = {{9, 2}, {15, 2}, {15, 7}, {9, 7}};
constexpr Point kTile3[] = {{1, 9}, {7, 9}, {7, 14}, {1, 14}};
constexpr Point kTile4[] = {{9, 9}, {15, 9}, {15, 14}, {9, 14}};
constexpr Point kLeftPane[] = {{1, 3}, {7, 3}, {7, 13}, {1, 13}};
constexpr Point kRightPane[] = {{9, 3},        {15, 3},        {15, 13},       {9, 13},       {9, 3},
                                {10.5f, 4.5f}, {10.5f, 11.5f}, {13.5f, 11.5f}, {13.5f, 4.5f}, {10.5f, 4.5f}};
constexpr Point kWipeLeft[] = {{1, 3}, {7, 3}, {7, 13}, {1, 13}};
constexpr Point kWipeLine[] = {{7.5f, 1}, {8.7f, 1}, {8.7f, 15}, {7.5f, 15}};
constexpr Point kWipeRight[] = {{9.2f, 3},     {15, 3},        {15, 13},      {9.2f, 13},
                                {9.2f, 11.5f}, {13.5f, 11.5f}, {13.5f, 4.5f}, {9.2f, 4.5f}};

std::vector<Shape> ShapesOf(BarIcon icon) {
    switch (icon) {
        case BarIcon::Open:
            return {{kFolderBack}, {kFolderFront}};
        case BarIcon::Save:
            return {{kDisk}};
        case BarIcon::Effects:
            return {{kStar}, {kSmallStar}};
        case BarIcon::Undo:
            return {{kUndo}};
        case BarIcon::Redo:
            return {{kRedo}};
        case BarIcon::AllEffects:
            return {{kTile1}, {kTile2}, {kTile3}, {kTile4}};
        case BarIcon::SideBySide:
            return {{kLeftPane}, {kRightPane}};
        case BarIcon::Wipe:
            return {{kWipeLeft}, {kWipeLine}, {kWipeRight}};
        case BarIcon::First:
            return {{kBarLeft}, {kArrowLeft}};
        case BarIcon::Previous:
            return {{kStepBar}, {kStepLeft}};
        case BarIcon::Play:
            return {{kPlay}};
        case BarIcon::Pause:
            return {{kPauseLeft}, {kPauseRight}};
        case BarIcon::Next:
            return {{kStepBarLeft}, {kStepRight}};
        case BarIcon::Last:
            return {{kArrowRight}, {kBarRight}};
        case BarIcon::Slower:
            return {{kMinus}};
        case BarIcon::Faster:
            return {{kMinus}, {kPlusDown}};
        case BarIcon::None:
            break;
    }
    return {};
}

// Whether a point lies in a polygon: a line to the right crosses its sides an odd number of times.
bool IsInside(std::span<const Point> points, float x, float y) {
    bool inside = false;
    for (size_t i = 0, before = points.size() - 1; i < points.size(); before = i++) {
        const Point& a = points[i];
        const Point& b = points[before];
        if ((a.y > y) != (b.y > y) && x < (b.x - a.x) * (y - a.y) / (b.y - a.y) + a.x) inside = !inside;
    }
    return inside;
}

constexpr float kGrid = 16;
constexpr int kSamples = 4;  // of a pixel, on each axis

// Which part of a pixel the icon covers, 0 to 255.
int CoverAt(const std::vector<Shape>& shapes, int x, int y, int side) {
    int inside = 0;
    for (int row = 0; row < kSamples; ++row) {
        for (int column = 0; column < kSamples; ++column) {
            const float step = kGrid / static_cast<float>(side);
            const float pointX =
                (static_cast<float>(x) + (static_cast<float>(column) + 0.5f) / kSamples) * step;
            const float pointY = (static_cast<float>(y) + (static_cast<float>(row) + 0.5f) / kSamples) * step;
            inside += std::any_of(shapes.begin(), shapes.end(), [pointX, pointY](const Shape& shape) {
                return IsInside(shape.points, pointX, pointY);
            });
        }
    }
    return 255 * inside / (kSamples * kSamples);
}

uint32_t Mixed(BYTE color, BYTE ground, int cover) {
    return static_cast<uint32_t>((color * cover + ground * (255 - cover)) / 255);
}

}  // namespace

void DrawBarIcon(HDC target, const RECT& place, BarIcon icon, COLORREF color, COLORREF ground) {
    const auto shapes = ShapesOf(icon);
    const int side = static_cast<int>(place.right - place.left);
    std::vector<uint32_t> bits;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const int cover = CoverAt(shapes, x, y, side);
            bits.push_back(Mixed(GetRValue(color), GetRValue(ground), cover) << 16 |
                           Mixed(GetGValue(color), GetGValue(ground), cover) << 8 |
                           Mixed(GetBValue(color), GetBValue(ground), cover));
        }
    }
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = side;
    info.bmiHeader.biHeight = -side;  // rows from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    SetDIBitsToDevice(target, place.left, place.top, static_cast<DWORD>(side), static_cast<DWORD>(side), 0, 0,
                      0, static_cast<UINT>(side), bits.data(), &info, DIB_RGB_COLORS);
}

}  // namespace kfx::stage
