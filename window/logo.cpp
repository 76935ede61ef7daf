// SPDX-License-Identifier: MIT
#include "window/logo.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "resources/resource_ids.h"
#include "window/guards.h"
#include "window/plugin_state.h"

namespace kfx {
namespace {

constexpr UINT kLogoPeriod = 60;  // milliseconds

constexpr int kRemoteTicks = 8;  // from one frame to the next where each travels over a network

// What resources/make_logo.py writes: this header, `colors` blue-green-red-zero entries, then the frames one
// after another, each `height` rows of one byte a pixel, bottom-up, padded to 4 bytes.
struct LogoHeader {
    uint16_t width;
    uint16_t height;
    uint16_t frames;
    uint16_t colors;
};

struct LogoFrames {
    const LogoHeader* header;
    const RGBQUAD* colors;
    const uint8_t* pixels;
    size_t frameBytes;
};

// False when the resource is missing or cut short: the logo is then left out.
bool FindFrames(LogoFrames* frames) {
    const HRSRC place = FindResourceA(plugin.module, MAKEINTRESOURCEA(IDR_LOGO_FRAMES), MAKEINTRESOURCEA(10));
    const HGLOBAL data = place ? LoadResource(plugin.module, place) : nullptr;
    const auto* bytes = static_cast<const uint8_t*>(data ? LockResource(data) : nullptr);
    const size_t size = place ? SizeofResource(plugin.module, place) : 0;
    if (!bytes || size < sizeof(LogoHeader)) return false;
    frames->header = reinterpret_cast<const LogoHeader*>(bytes);
    const LogoHeader& header = *frames->header;
    const size_t head = sizeof header + size_t{header.colors} * sizeof(RGBQUAD);
    frames->frameBytes = (size_t{header.width} + 3) / 4 * 4 * header.height;
    frames->colors = reinterpret_cast<const RGBQUAD*>(bytes + sizeof header);
    frames->pixels = bytes + head;
    return header.colors <= 256 && header.frames > 0 && head + header.frames * frames->frameBytes <= size;
}

// The middle part of a frame that fills an area of this size. Dialog units follow the system's font, so the
// control may be of another shape than the frames: a frame is cut, never distorted, and enlarged only where
// it is too small.
RECT VisiblePart(const LogoHeader& header, int width, int height) {
    int seenWidth = std::min<int>(width, header.width), seenHeight = std::min<int>(height, header.height);
    if (seenWidth < width || seenHeight < height) {
        seenWidth = std::min<int>(header.width, header.height * width / height);
        seenHeight = std::min<int>(header.height, header.width * height / width);
    }
    const int left = (header.width - seenWidth) / 2, bottom = (header.height - seenHeight) / 2;
    return {left, bottom, left + seenWidth, bottom + seenHeight};
}

bool AreAnimationsOn() {
    BOOL on = TRUE;
    return !SystemParametersInfoA(SPI_GETCLIENTAREAANIMATION, 0, &on, 0) || on;
}

}  // namespace

void StartLogo(Logo* logo, HWND dialog, int controlId) {
    *logo = {};
    LogoFrames frames;
    const HWND control = GetDlgItem(dialog, controlId);
    if (control && FindFrames(&frames) && SetTimer(dialog, kLogoTimer, kLogoPeriod, nullptr))
        logo->control = control;
}

void StopLogo(Logo* logo) {
    if (logo->control) KillTimer(GetParent(logo->control), kLogoTimer);
    *logo = {};
}

bool OnLogoTick(Logo* logo, WPARAM word) {
    if (!logo->control || word != kLogoTimer) return false;
    const int ticks = GetSystemMetrics(SM_REMOTESESSION) ? kRemoteTicks : 1;
    if (++logo->ticks < ticks || !AreAnimationsOn()) return true;
    logo->ticks = 0;
    InvalidateRect(logo->control, nullptr, FALSE);
    return true;
}

void DrawLogo(Logo* logo, const DRAWITEMSTRUCT& item) {
    const SavedContext saved(item.hDC);
    RECT area = item.rcItem;
    FrameRect(item.hDC, &area, GetSysColorBrush(COLOR_BTNSHADOW));
    InflateRect(&area, -1, -1);
    LogoFrames frames;
    if (!logo->control || !FindFrames(&frames)) {
        FillRect(item.hDC, &area, GetSysColorBrush(COLOR_BTNFACE));
        return;
    }
    const LogoHeader& header = *frames.header;
    struct {
        BITMAPINFOHEADER header;
        RGBQUAD colors[256];
    } info = {};
    info.header.biSize = sizeof info.header;
    info.header.biWidth = header.width;
    info.header.biHeight = header.height;
    info.header.biPlanes = 1;
    info.header.biBitCount = 8;
    info.header.biClrUsed = header.colors;
    std::memcpy(info.colors, frames.colors, header.colors * sizeof(RGBQUAD));
    const RECT seen = VisiblePart(header, area.right - area.left, area.bottom - area.top);
    SetStretchBltMode(item.hDC, HALFTONE);
    SetBrushOrgEx(item.hDC, 0, 0, nullptr);
    const auto frame = static_cast<size_t>(logo->frame);
    StretchDIBits(item.hDC, area.left, area.top, area.right - area.left, area.bottom - area.top, seen.left,
                  seen.top, seen.right - seen.left, seen.bottom - seen.top,
                  frames.pixels + frame * frames.frameBytes, reinterpret_cast<const BITMAPINFO*>(&info),
                  DIB_RGB_COLORS, SRCCOPY);
    logo->frame = (logo->frame + 1) % header.frames;
}

}  // namespace kfx
