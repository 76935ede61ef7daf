// SPDX-License-Identifier: MIT
#include "host/entry_points_windows.h"

#include <shlobj.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>

#include "host/floating_point_state.h"
#include "resources/resource_ids.h"
#include "window/dialog_services.h"
#include "window/guards.h"
#include "window/paths.h"
#include "window/plugin_state.h"
#include "window/plugin_window.h"
#include "window/shell_folder.h"

namespace kfx {
namespace {

constexpr char kNotice[] = "Kestrel FX #1 Plugin (c) 2026 Quorvane Labs";

// Writes a text into a record of `size` bytes; what does not fit is cut.
void PutText(void* record, size_t size, size_t offset, const char* text) {
    if (size <= offset) return;
    const size_t length = std::min(std::strlen(text), size - offset - 1);
    std::memcpy(static_cast<char*>(record) + offset, text, length);
}

void FindPluginFolder() {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(plugin.module, path, sizeof path);
    path[sizeof path - 1] = 0;
    const auto length = static_cast<int>(FileNameIn(path) - path);
    std::snprintf(plugin.pluginFolder, sizeof plugin.pluginFolder, "%.*s", length, path);
}

void FindDocumentsFolder() {
    FindShellFolder(CSIDL_PERSONAL, plugin.documentsFolder, sizeof plugin.documentsFolder);
    if (!settings.openPath[0])
        std::memcpy(settings.openPath, plugin.documentsFolder, sizeof settings.openPath);
}

// There is one window at a time, because settings, source and fonts exist once.
std::atomic_flag windowRuns = ATOMIC_FLAG_INIT;

struct OnlyRun {
    OnlyRun() : allowed(!windowRuns.test_and_set()) {}
    ~OnlyRun() {
        if (allowed) windowRuns.clear();
    }
    OnlyRun(const OnlyRun&) = delete;
    OnlyRun& operator=(const OnlyRun&) = delete;

    const bool allowed;
};

bool IsTooOld(const HostContext& host) { return (host.version >> 8 & 255) < kOldestHostMajorVersion; }

void RunWithFonts(HWND parent, const HostContext* host) {
    const GdiObject<HFONT> textFont(MakeFont("Arial", 14));
    const GdiObject<HFONT> buttonFont(MakeFont("MS Sans Serif", 14));
    const GdiObject<HFONT> smallFont(MakeFont("Arial", 12));
    plugin.textFont = textFont.handle;
    plugin.buttonFont = buttonFont.handle;
    plugin.smallFont = smallFont.handle;
    FindPluginFolder();
    FindDocumentsFolder();
    RunPluginWindow(parent, host);
    Repaint(parent);
    plugin.textFont = plugin.buttonFont = plugin.smallFont = nullptr;
}

}  // namespace
}  // namespace kfx

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) kfx::plugin.module = module;
    return TRUE;
}

uint64_t WINAPI PLUGIN16GetPluginParams(kfx::PluginInfo* info) {
    if (!info) return 0;
    const kfx::OwnFloatingPoint own;  // the host may ask on any thread
    const uint32_t size = info->size;
    // A record that ends before its first fields is left unchanged: clearing it would write beyond it.
    if (size < offsetof(kfx::PluginInfo, name)) return 1;
    std::memset(info, 0, size);
    info->size = size;
    info->version = kfx::kPluginInterfaceVersion;
    kfx::PutText(info, std::min<size_t>(size, offsetof(kfx::PluginInfo, notice)),
                 offsetof(kfx::PluginInfo, name), kfx::kPluginName);
    kfx::PutText(info, size, offsetof(kfx::PluginInfo, notice), kfx::kNotice);
    return 1;
}

uint64_t WINAPI PLUGIN16DoBuild(HWND parent, const kfx::HostContext* host) {
    const kfx::OnlyRun run;
    if (!run.allowed) {
        kfx::BringPluginWindowToFront();
        return 0;
    }
    // After the check: the guards note the host's state for one thread only.
    const kfx::CoreFloatingPoint core;
    if (!host || kfx::IsTooOld(*host)) {
        kfx::ShowMessage(parent, kfx::LoadText(IDS_HOST_TOO_OLD));
        return 0;
    }
    kfx::RunWithFonts(parent, host);
    return 1;
}
