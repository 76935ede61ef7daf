// SPDX-License-Identifier: MIT
// Drawing a wall's tiles, in the system's colours.
#include <algorithm>
#include <vector>

#include "media/contact_sheet.h"
#include "stage/drawing_parts.h"
#include "stage/wall_window.h"

namespace kfx::stage {
namespace {

// Device-independent pixels.
constexpr int kPictureWidth = 160, kPictureHeight = 120, kPadding = 8, kNameHeight = 20, kNoteHeight = 17;
constexpr int kChequer = 8;

constexpr int kWhole = 256;  // of a picture that is drawn fully
constexpr int kFaded = 90;   // of one that stands for another

void Outline(HDC target, RECT area, int color, int width) {
    for (int i = 0; i < width; ++i) {
        FrameRect(target, &area, GetSysColorBrush(color));
        InflateRect(&area, -1, -1);
    }
}

// The frame as the system draws bitmaps (blue, green, red, unused), over chequers where it is transparent,
// and mixed with the card when it is to be faint.
std::vector<uint8_t> PixelsFor(const Animation& animation, size_t frame, int chequer, int strength) {
    const std::vector<uint8_t>& from = animation.frames[frame].pixels;
    const COLORREF card = GetSysColor(COLOR_WINDOW);
    const int cardOf[3] = {GetRValue(card), GetGValue(card), GetBValue(card)};
    std::vector<uint8_t> pixels(from.size());
    size_t i = 0;
    for (int y = 0; y < animation.height; ++y) {
        for (int x = 0; x < animation.width; ++x, i += 4) {
            const int ground = kChequerGreys[IsOddSquare(x, y, chequer) ? 1 : 0];
            const int alpha = from[i + 3];
            for (size_t c = 0; c < 3; ++c) {
                const int color = (from[i + c] * alpha + ground * (255 - alpha) + 127) / 255;
                pixels[i + 2 - c] =
                    static_cast<uint8_t>((color * strength + cardOf[c] * (kWhole - strength)) / kWhole);
            }
        }
    }
    return pixels;
}

void DrawPicture(const WallWindow& wall, HDC target, const RECT& room, const Animation& animation,
                 int strength) {
    if (animation.frames.empty()) return;
    const int roomWidth = room.right - room.left, roomHeight = room.bottom - room.top;
    const int times = TimesAsLarge(animation.width, animation.height, roomWidth, roomHeight);
    const int width = animation.width * times, height = animation.height * times;
    const std::vector<uint8_t> pixels =
        PixelsFor(animation, std::min(wall.frame, animation.frames.size() - 1),
                  std::max(Scaled(wall, kChequer) / times, 1), strength);
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = animation.width;
    info.bmiHeader.biHeight = -animation.height;  // rows from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    SetStretchBltMode(target, COLORONCOLOR);
    StretchDIBits(target, room.left + (roomWidth - width) / 2, room.top + (roomHeight - height) / 2, width,
                  height, 0, 0, animation.width, animation.height, pixels.data(), &info, DIB_RGB_COLORS,
                  SRCCOPY);
}

void DrawContent(const WallWindow& wall, HDC target, const RECT& card, size_t number) {
    const WallTile& tile = wall.tiles[number];
    const SIZE room = PictureRoom(wall);
    const int padding = Scaled(wall, kPadding);
    const RECT picture = {card.left + padding, card.top + padding, card.left + padding + room.cx,
                          card.top + padding + room.cy};
    const bool isReady = tile.view.state == TileState::Done;
    const Animation* const shown = tile.view.picture ? tile.view.picture.get() : wall.thumbnails.get();
    if (tile.view.state == TileState::Failed)
        DrawLine(target, picture, tile.view.error, wall.font, COLOR_WINDOWTEXT, DT_CENTER | DT_WORDBREAK);
    else if (shown)
        DrawPicture(wall, target, picture, *shown, isReady ? kWhole : kFaded);

    RECT line = {picture.left, picture.bottom + padding / 2, picture.right,
                 picture.bottom + padding / 2 + Scaled(wall, kNameHeight)};
    DrawLine(target, line, wall.effects[number].name, wall.boldFont, COLOR_WINDOWTEXT,
             DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS);
    line.top = line.bottom;
    line.bottom += Scaled(wall, kNoteHeight);
    DrawLine(target, line, TileNote(wall, number), wall.font, COLOR_WINDOWTEXT,
             DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS);
}

}  // namespace

SIZE PictureRoom(const WallWindow& wall) {
    return {Scaled(wall, kPictureWidth), Scaled(wall, kPictureHeight)};
}

SIZE TileRoom(const WallWindow& wall) {
    const SIZE picture = PictureRoom(wall);
    const int padding = Scaled(wall, kPadding);
    return {picture.cx + 2 * padding,
            picture.cy + 2 * padding + padding / 2 + Scaled(wall, kNameHeight) + Scaled(wall, kNoteHeight)};
}

// Off the screen first: what plays must not flicker.
void DrawTile(const WallWindow& wall, const DRAWITEMSTRUCT& item) {
    const auto number = static_cast<size_t>(item.CtlID - kFirstWallTile);
    if (number >= wall.tiles.size()) return;
    const int width = item.rcItem.right, height = item.rcItem.bottom;
    const HDC target = CreateCompatibleDC(item.hDC);
    const HBITMAP bitmap = CreateCompatibleBitmap(item.hDC, std::max(width, 1), std::max(height, 1));
    const HGDIOBJ before = SelectObject(target, bitmap);
    const RECT card = {0, 0, width, height};
    Fill(target, card, COLOR_WINDOW);
    DrawContent(wall, target, card, number);
    const bool hasFocus = (item.itemState & ODS_FOCUS) != 0;
    if (hasFocus)
        Outline(target, card, COLOR_HIGHLIGHT, std::max(Scaled(wall, 3), 2));
    else if (number == wall.hot)
        Outline(target, card, COLOR_HOTLIGHT, std::max(Scaled(wall, 2), 1));
    else
        Outline(target, card, COLOR_3DLIGHT, 1);
    BitBlt(item.hDC, 0, 0, width, height, target, 0, 0, SRCCOPY);
    SelectObject(target, before);
    DeleteObject(bitmap);
    DeleteDC(target);
}

}  // namespace kfx::stage
