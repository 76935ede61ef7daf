// SPDX-License-Identifier: MIT
#include "window/source_opening.h"

#include <cstdio>

#include "framework/memory_guards.h"
#include "framework/source_animation.h"
#include "host/host_requests.h"
#include "resources/resource_ids.h"
#include "window/dialog_services.h"
#include "window/effect_list.h"
#include "window/kept_picture.h"
#include "window/output_options.h"
#include "window/plugin_state.h"
#include "window/preview.h"
#include "window/screen_readers.h"

namespace kfx {
namespace {

void ShowSource(HWND window) {
    SetDlgItemTextA(window, IDC_SOURCE_PATH, settings.fileNamePath);
    SourceFacts facts;
    if (!ReadSourceFacts(&facts)) return;
    char size[32];
    std::snprintf(size, sizeof size, "%d x %d", static_cast<int>(facts.width),
                  static_cast<int>(facts.height));
    SetDlgItemTextA(window, IDC_SOURCE_SIZE, size);
    TellNewValue(GetDlgItem(window, IDC_SOURCE_PATH));
    TellNewValue(GetDlgItem(window, IDC_SOURCE_SIZE));
}

}  // namespace

void OpenSourceAnimation(HWND window, bool reopen) {
    const bool named = reopen && RememberedSourceExists();
    OpenAnimationRequest request = MakeOpenAnimationRequest(window, named ? settings.fileNamePath : "");
    const auto opened = reinterpret_cast<MemoryHandle>(RequestOpenAnimation(plugin.host, &request));
    if (!IsOpen(window)) {
        FreeMemory(opened);
        return;
    }
    // A host may hand over again what the window has already: that block is freed once only.
    const bool isNew = opened != plugin.source;
    if (!isNew) FreeKeptPicture();  // it may hold another picture by now
    if (!opened || !IsSoundAnimation(opened)) {
        if (isNew) FreeMemory(opened);
        EnableDependentControls(window);
        if (opened) ShowMessage(window, LoadText(IDS_SOURCE_NOT_OPENED));
        return;
    }
    if (isNew) FreeSourceAnimation();
    plugin.source = opened;
    std::snprintf(settings.fileNamePath, sizeof settings.fileNamePath, "%.*s",
                  static_cast<int>(sizeof request.path), request.path);
    ShowSource(window);
    FillPaletteList(window);
    EnableDependentControls(window);
    // When the window opens, the focus goes to Build; later it stays where the user has put it.
    if (reopen) MoveFocus(window, IDC_BUILD);
    RepaintPreview(window);
    NotifyCurrentEffect(window, EffectEvent::Changed);
}

void FreeSourceAnimation() {
    FreeMemory(plugin.source);
    plugin.source = nullptr;
    FreeKeptPicture();
}

bool RememberedSourceExists() {
    const DWORD attributes = GetFileAttributesA(settings.fileNamePath);
    return settings.fileNamePath[0] && attributes != INVALID_FILE_ATTRIBUTES &&
           !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool ReadSourceFacts(SourceFacts* facts) {
    const MemoryLock lock(plugin.source);
    AnimationHeader header;
    if (ReadSourceHeader(lock, &header) != SourceState::Animation) return false;
    *facts = {.width = header.width, .height = header.height, .globalColors = header.globalColors};
    return true;
}

}  // namespace kfx
