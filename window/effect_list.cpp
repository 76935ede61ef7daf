// SPDX-License-Identifier: MIT
#include "window/effect_list.h"

#include <algorithm>

#include "documents/control_kinds.h"
#include "effects/effect_table.h"
#include "resources/resource_ids.h"
#include "window/effect_sentence.h"
#include "window/plugin_state.h"
#include "window/preview.h"

namespace kfx {
namespace {

constexpr uint32_t kNoControls[] = {0};

// The selected row; no selection counts as the first, anything beyond the last row as the number of rows.
uint32_t SelectedEffect(HWND window) {
    const LRESULT selection = SendDlgItemMessageA(window, IDC_EFFECT, CB_GETCURSEL, 0, 0);
    return static_cast<uint32_t>(std::clamp<LRESULT>(selection, 0, static_cast<LRESULT>(EffectCount())));
}

bool IsPanelControl(int id) {
    const auto inRange = [](int number) {
        return number >= FIRST_PANEL_CONTROL && number <= LAST_PANEL_CONTROL;
    };
    return inRange(id) || inRange(id - COMPANION_OFFSET);
}

bool Contains(const uint32_t* controls, int id) {
    while (*controls && *controls != static_cast<uint32_t>(id)) ++controls;
    return *controls != 0;
}

template <typename Action>
void ForEachPanelControl(HWND window, Action action) {
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        const int id = GetDlgCtrlID(child);
        if (IsPanelControl(id)) action(child, id);
    }
}

// The old panel is hidden before the new one is shown, so that they are never seen together.
void ShowPanel(HWND window, uint32_t effect) {
    const EffectDescriptor* row = DescriptorAt(effect);
    const uint32_t* controls = row ? row->controls : kNoControls;
    ForEachPanelControl(window, [](HWND child, int) { ShowWindow(child, SW_HIDE); });
    ForEachPanelControl(window, [=](HWND child, int id) {
        if (Contains(controls, id)) ShowWindow(child, SW_SHOWNA);
    });
    RepaintEffectSentence(window);
}

}  // namespace

bool FillEffectList(HWND window) {
    const HWND list = GetDlgItem(window, IDC_EFFECT);
    SendMessageA(list, CB_RESETCONTENT, 0, 0);
    EffectInitContext context = {};
    context.window = window;
    for (size_t i = 0; i < EffectCount(); ++i) {
        const EffectDescriptor* row = DescriptorAt(i);
        SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row->name));
        if (!row->init(&context)) return false;
    }
    SendMessageA(list, CB_SETCURSEL, settings.mainEffect, 0);
    BindControl(list, BoundKind::List, &settings.mainEffect);
    return true;
}

void ShowCurrentPanel(HWND window) {
    ShowPanel(window, SelectedEffect(window));
    ShowWindow(GetDlgItem(window, IDC_PREVIEW), SW_SHOWNA);
    RepaintPreview(window);
}

const EffectDescriptor* EffectInUse(HWND window) {
    const LRESULT row = SendDlgItemMessageA(window, IDC_EFFECT, CB_GETCURSEL, 0, 0);
    return row < 0 ? nullptr : DescriptorAt(static_cast<size_t>(row));
}

void OnEffectChoice(HWND window) {
    const uint32_t chosen = SelectedEffect(window);
    if (chosen == settings.mainEffect) return;
    NotifyCurrentEffect(window, EffectEvent::Leaving);
    ShowPanel(window, chosen);
    settings.mainEffect = chosen;
    RepaintPreview(window);
    NotifyCurrentEffect(window, EffectEvent::Entered);
}

void NotifyCurrentEffect(HWND window, EffectEvent event) {
    const EffectDescriptor* row = DescriptorAt(settings.mainEffect);
    if (row && row->notify) row->notify(window, static_cast<uint32_t>(event));
}

}  // namespace kfx
