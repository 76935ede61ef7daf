// SPDX-License-Identifier: MIT
#include "window/build_command.h"

#include "framework/settings.h"
#include "host/floating_point_state.h"
#include "resources/resource_ids.h"
#include "window/dialog_services.h"
#include "window/effect_list.h"
#include "window/guards.h"
#include "window/plugin_state.h"

namespace kfx {
namespace {

bool IsChecked(HWND window, int id) { return IsDlgButtonChecked(window, id) == BST_CHECKED; }

BuildOptions ReadOptions(HWND window) {
    BuildOptions options = OptionsFromSettings();
    options.trueColor = IsChecked(window, IDC_TRUE_COLOR);
    options.customPalette = IsChecked(window, IDC_CUSTOM_PALETTE);
    options.dither = IsChecked(window, IDC_DITHER);
    options.supercompress = IsChecked(window, IDC_SUPERCOMPRESS);
    // The window has no such control, so builds never have a local background.
    options.localBackground = IsChecked(window, IDC_BUILD_LOCAL_BACKGROUND);
    return options;
}

void ShowBuildMessage(void* window, BuildMessage message) {
    UINT text = IDS_MEMORY_ERROR;
    switch (message) {
        case BuildMessage::MemoryError:
            text = IDS_MEMORY_ERROR;
            break;
        case BuildMessage::NewTaskRefused:
            text = IDS_NEW_TASK_REFUSED;
            break;
        case BuildMessage::ImageRefused:
            text = IDS_IMAGE_REFUSED;
            break;
    }
    ShowMessage(static_cast<HWND>(window), LoadText(text));
}

}  // namespace

int32_t Build(HWND window, const HostContext* host, BuildMode mode) {
    const CoreFloatingPoint core;
    const WaitCursor wait;
    BuildEnvironment environment = {};
    environment.window = window;
    environment.host = host;
    environment.source = plugin.source;
    environment.effect = EffectInUse(window);
    environment.showMessage = ShowBuildMessage;
    return RunBuild(environment, OptionsForMode(ReadOptions(window), mode));
}

}  // namespace kfx
