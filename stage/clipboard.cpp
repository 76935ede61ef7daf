// SPDX-License-Identifier: MIT
#include "stage/clipboard.h"

#include <cstring>
#include <string>
#include <vector>

#include "media/animation_writer.h"

namespace kfx::stage {
namespace {

constexpr DWORD kStandardColors = 0x73524742;  // LCS_sRGB, which the header writes as four characters

// Hands a copy of the bytes over to the clipboard, which is open.
bool PutBytes(UINT format, const void* bytes, size_t size) {
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    if (!memory) return false;
    void* const place = GlobalLock(memory);
    if (place) std::memcpy(place, bytes, size);
    GlobalUnlock(memory);
    if (place && SetClipboardData(format, memory)) return true;
    GlobalFree(memory);
    return false;
}

std::vector<uint8_t> BitmapOf(const uint8_t* rgba, SIZE picture) {
    BITMAPV5HEADER header = {};
    header.bV5Size = sizeof header;
    header.bV5Width = picture.cx;
    header.bV5Height = picture.cy;
    header.bV5Planes = 1;
    header.bV5BitCount = 32;
    header.bV5Compression = BI_BITFIELDS;
    header.bV5RedMask = 0x00FF0000;
    header.bV5GreenMask = 0x0000FF00;
    header.bV5BlueMask = 0x000000FF;
    header.bV5AlphaMask = 0xFF000000;
    header.bV5CSType = kStandardColors;
    header.bV5Intent = LCS_GM_IMAGES;
    const size_t row = 4 * static_cast<size_t>(picture.cx), rows = static_cast<size_t>(picture.cy);
    header.bV5SizeImage = static_cast<DWORD>(row * rows);
    std::vector<uint8_t> bitmap(sizeof header + row * rows);
    std::memcpy(bitmap.data(), &header, sizeof header);
    for (size_t y = 0; y < rows; ++y) {
        const uint8_t* from = rgba + (rows - 1 - y) * row;  // rows from the bottom
        uint8_t* to = bitmap.data() + sizeof header + y * row;
        for (size_t x = 0; x < row; x += 4) {
            to[x] = from[x + 2];
            to[x + 1] = from[x + 1];
            to[x + 2] = from[x];
            to[x + 3] = from[x + 3];
        }
    }
    return bitmap;
}

}  // namespace

ClipboardPicture MakeClipboardPicture(const uint8_t* rgba, SIZE picture) {
    ClipboardPicture made;
    std::string error;
    if (!EncodePng(picture.cx, picture.cy, rgba, &made.png, &error)) made.png.clear();
    made.bitmap = BitmapOf(rgba, picture);
    return made;
}

bool PutOnClipboard(HWND owner, const ClipboardPicture& picture) {
    if (!OpenClipboard(owner)) return false;
    EmptyClipboard();
    bool put = PutBytes(CF_DIBV5, picture.bitmap.data(), picture.bitmap.size());
    if (!picture.png.empty())
        put = PutBytes(RegisterClipboardFormatW(L"PNG"), picture.png.data(), picture.png.size()) || put;
    CloseClipboard();
    return put;
}

}  // namespace kfx::stage
