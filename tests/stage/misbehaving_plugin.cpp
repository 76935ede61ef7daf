// SPDX-License-Identifier: MIT
// A plug-in that does what the environment variable KFX_MISBEHAVIOUR says instead of its work.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include <windows.h>
#include <shlobj.h>

#include "host/host_records.h"

// Room inside this DLL's image, where a test can write tables that the DLL's own headers then name.
extern "C" __declspec(dllexport) std::uint8_t kfxScratch[256];
std::uint8_t kfxScratch[256];

namespace {

// The folder as a plug-in looks it up; "none" when the shell names none.
std::string UsersFolder(int number) {
    LPITEMIDLIST item = nullptr;
    char path[MAX_PATH] = "none";
    if (FAILED(SHGetSpecialFolderLocation(nullptr, number, &item)) || !item) return path;
    if (!SHGetPathFromIDListA(item, path)) std::strcpy(path, "none");
    CoTaskMemFree(item);
    return path;
}

std::string Found(const char* function) {
    return GetProcAddress(GetModuleHandleA("shell32.dll"), function) ? "found" : "none";
}

void Say(HWND parent, const std::string& text) { MessageBoxA(parent, text.c_str(), "Misbehaving", MB_OK); }

// Tells the test that the plug-in runs, and waits until the test lets it go on.
void MeetTest() {
    const HANDLE started = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingStarted");
    const HANDLE go = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingGo");
    SetEvent(started);
    WaitForSingleObject(go, INFINITE);
    CloseHandle(started);
    CloseHandle(go);
}

// What a host takes for the window of a plug-in: a dialog with an effect list and a preview. It hangs when an
// effect is chosen.
void ShowBareWindow(HWND parent) {
    struct alignas(4) Template {
        DLGTEMPLATE dialog;
        WORD menu, windowClass, title;
    };
    const Template plain = {{DS_MODALFRAME | WS_POPUP | WS_VISIBLE, 0, 0, 0, 0, 90, 90}, 0, 0, 0};
    const auto procedure = [](HWND window, UINT message, WPARAM word, LPARAM) -> INT_PTR {
        if (message == WM_INITDIALOG) {
            CreateWindowA("Static", "", WS_CHILD | WS_VISIBLE, 0, 0, 9, 9, window,
                          reinterpret_cast<HMENU>(INT_PTR{25}), nullptr, nullptr);
            const HWND effects =
                CreateWindowA("ComboBox", "", WS_CHILD | WS_VISIBLE | CBS_DROPDOWNLIST, 0, 0, 9, 90, window,
                              reinterpret_cast<HMENU>(INT_PTR{50}), nullptr, nullptr);
            SendMessageA(effects, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("Bump"));
        }
        if (message == WM_COMMAND && word == MAKEWPARAM(50, CBN_CLOSEUP)) Sleep(INFINITE);
        if (message == WM_COMMAND && LOWORD(word) == IDCANCEL) EndDialog(window, 0);
        return message == WM_INITDIALOG;
    };
    DialogBoxIndirectParamA(nullptr, &plain.dialog, parent, procedure, 0);
}

}  // namespace

extern "C" __declspec(dllexport) int PLUGIN16GetPluginParams(kfx::PluginInfo* info) {
    std::strcpy(info->name, "Misbehaving");
    return 1;
}

extern "C" __declspec(dllexport) int PLUGIN16DoBuild(HWND parent, kfx::HostContext*) {
    const char* variable = std::getenv("KFX_MISBEHAVIOUR");
    const std::string misbehaviour = variable ? variable : "";
    if (misbehaviour == "hang") Sleep(INFINITE);
    if (misbehaviour == "exit") std::exit(0);
    if (misbehaviour == "ExitProcess") ExitProcess(0);
    if (misbehaviour == "TerminateProcess") TerminateProcess(GetCurrentProcess(), 0);
    if (misbehaviour == "abort") std::abort();
    if (misbehaviour == "crash") RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    if (misbehaviour == "message") Say(parent, "It is raining.");
    if (misbehaviour == "meet") MeetTest();
    if (misbehaviour == "window") ShowBareWindow(parent);
    if (misbehaviour == "folders") {
        Say(parent, "settings " + UsersFolder(CSIDL_APPDATA) + ", profile " + UsersFolder(CSIDL_PROFILE) +
                        ", by name " + Found("SHGetFolderPathA") + ", documents " +
                        UsersFolder(CSIDL_PERSONAL) + ".");
    }
    return 1;
}
