// SPDX-License-Identifier: MIT
// A plug-in that does what the environment variable KFX_MISBEHAVIOUR says instead of its work.
#include <cstdlib>
#include <cstring>

#include <windows.h>

#include "host/host_records.h"

extern "C" __declspec(dllexport) int PLUGIN16GetPluginParams(kfx::PluginInfo* info) {
    std::strcpy(info->name, "Misbehaving");
    return 1;
}

extern "C" __declspec(dllexport) int PLUGIN16DoBuild(HWND parent, kfx::HostContext*) {
    const char* misbehaviour = std::getenv("KFX_MISBEHAVIOUR");
    if (misbehaviour && std::strcmp(misbehaviour, "hang") == 0) Sleep(INFINITE);
    if (misbehaviour && std::strcmp(misbehaviour, "message") == 0) {
        MessageBoxA(parent, "It is raining.", "Misbehaving", MB_OK);
    }
    return 1;
}
