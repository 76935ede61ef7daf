// SPDX-License-Identifier: MIT
#include "window/effect_sentence.h"

#include <algorithm>

#include "effects/effect_table.h"
#include "resources/resource_ids.h"
#include "window/dialog_services.h"
#include "window/guards.h"
#include "window/plugin_state.h"

namespace kfx {
namespace {

// The room of the panels inside their frame, in dialog units, from where the first slider stands.
constexpr RECT kPanelRoom = {80, 217, 288, 314};
constexpr int kGap = 9;  // dialog units between the last control and the sentence

// The room for the sentence, in pixels.
RECT FreeRoom(HWND window, const uint32_t* controls) {
    RECT room = kPanelRoom, gap = {0, 0, 0, kGap};
    MapDialogRect(window, &room);
    MapDialogRect(window, &gap);
    for (; *controls; ++controls) {
        RECT place;
        const HWND control = GetDlgItem(window, static_cast<int>(*controls));
        if (!control || !GetWindowRect(control, &place)) continue;
        MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
        room.top = std::max(room.top, place.bottom + gap.bottom);
    }
    return room;
}

}  // namespace

void DrawEffectSentence(HWND window, HDC dc) {
    // Not the list's row, which moves ahead of the panel while the list is open.
    const Effect* effect = settings.mainEffect < EffectCount() ? EffectAt(settings.mainEffect) : nullptr;
    if (!effect || !plugin.textFont) return;
    const RECT room = FreeRoom(window, effect->controls.ids);
    const char* text = LoadText(IDS_EFFECT_SENTENCES + effect->panel - IDD_PANEL_EMBOSS);
    constexpr UINT kFormat = DT_WORDBREAK | DT_NOPREFIX;
    const SavedContext saved(dc);
    SelectObject(dc, plugin.textFont);
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(COLOR_3DDKSHADOW));
    RECT needed = room;
    DrawTextA(dc, text, -1, &needed, kFormat | DT_CALCRECT);
    // In all of the room: what the system measures may be a little narrower than what it draws.
    RECT place = room;
    if (needed.bottom <= room.bottom) DrawTextA(dc, text, -1, &place, kFormat);
}

void RepaintEffectSentence(HWND window) {
    RECT room = kPanelRoom;
    MapDialogRect(window, &room);
    RedrawWindow(window, &room, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

}  // namespace kfx
