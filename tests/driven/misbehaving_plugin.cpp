// SPDX-License-Identifier: MIT
// A plug-in that does what the environment variable KFX_MISBEHAVIOUR says instead of its work.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>

#include <windows.h>
#include <shlobj.h>

#include "driven/import_table.h"
#include "host/host_records.h"

// Room inside this DLL's image, where a test can write tables that the DLL's own headers then name.
extern "C" __declspec(dllexport) uint8_t kfxScratch[256];
uint8_t kfxScratch[256];

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

// Tells the test that the plug-in has come this far, and waits until the test lets it go on.
void MeetTest(const char* arrival = "KfxMisbehavingStarted", const char* leave = "KfxMisbehavingGo") {
    const HANDLE started = CreateEventA(nullptr, TRUE, FALSE, arrival);
    const HANDLE go = CreateEventA(nullptr, TRUE, FALSE, leave);
    SetEvent(started);
    WaitForSingleObject(go, INFINITE);
    CloseHandle(started);
    CloseHandle(go);
}

// Writes to the pipe that the command line names what is no report, and ends the command.
void SendNoReport() {
    const char* const option = std::strstr(GetCommandLineA(), "--child-of-kestrel ");
    if (!option) return;
    const auto pipe = static_cast<uintptr_t>(std::strtoull(option + 19, nullptr, 10));
    const std::string lines = "{\"report\": 5}\n{\"temporary\": []}\n";
    DWORD written = 0;
    WriteFile(reinterpret_cast<HANDLE>(pipe), lines.data(), static_cast<DWORD>(lines.size()), &written,
              nullptr);
    ExitProcess(0);
}

// The program asks for the whole path of each temporary file before it makes it. Meets the test when the
// first one is written.
int filesAnnounced = 0;

DWORD WINAPI FindPathAndMeet(LPCWSTR name, DWORD size, LPWSTR path, LPWSTR* file) {
    // The first call for a file asks for the length only.
    if (path && std::wcsstr(name, L".kestrel-part") && filesAnnounced++ == 1) MeetTest();
    return GetFullPathNameW(name, size, path, file);
}

// Moves a file, and meets the test when one has got its final name.
int filesMoved = 0;

BOOL WINAPI MoveAndMeet(LPCWSTR from, LPCWSTR to, DWORD flags) {
    if (filesMoved++ == 1) MeetTest();
    return MoveFileExW(from, to, flags);
}

int BuildReally(HWND parent, kfx::HostContext* context, const char* plugin = "kfxplug1.dll") {
    const HMODULE real = LoadLibraryA(plugin);
    const auto build = reinterpret_cast<int (*)(HWND, kfx::HostContext*)>(
        reinterpret_cast<void*>(GetProcAddress(real, "PLUGIN16DoBuild")));
    return build(parent, context);
}

// Writes to a handle of the test's, whose number the environment has.
void WriteToHandle() {
    const char* const number = std::getenv("KFX_HANDLE");
    DWORD written = 0;
    if (number)
        WriteFile(reinterpret_cast<HANDLE>(static_cast<uintptr_t>(std::strtoull(number, nullptr, 10))),
                  "inherited", 9, &written, nullptr);
}

// Lets the program call `replacement` in place of this function.
void ReplaceImport(const char* function, void* replacement) {
    for (const kfx::driven::Import& import : kfx::driven::ImportsOf(GetModuleHandleA(nullptr))) {
        if (import.slot && import.function && std::strcmp(import.function, function) == 0)
            kfx::driven::SetImport(import, replacement);
    }
}

// One of this DLL's own instructions fails.
void Crash() { *static_cast<volatile int*>(nullptr) = 0; }

// Notices it when it is about to return.
[[gnu::noinline]] void OverrunArray() {
    char array[16];
    volatile char* const bytes = array;
    const volatile size_t count = 100;
    for (size_t i = 0; i < count; ++i) bytes[i] = 'x';
}

void WINAPI CrashInTime(SYSTEMTIME*) { Crash(); }

// Lets the real plug-in do its work, in a program that calls `replacement` in place of this function.
int BuildAndMeet(HWND parent, kfx::HostContext* context, const char* function, void* replacement) {
    // The files are written after the plug-in is let go.
    HMODULE own = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCSTR>(replacement), &own);
    ReplaceImport(function, replacement);
    return BuildReally(parent, context);
}

// Meets the test whenever the host has been told of a frame that is being made, and between the parts of a
// build.
kfx::HostCallback hostsAnswer = nullptr;
bool isBuilding = false;

uint64_t AnswerAndMeet(uint64_t context, uint32_t request, uint64_t word, uint64_t pointer) {
    const uint64_t answer = hostsAnswer(context, request, word, pointer);
    if (static_cast<kfx::HostRequest>(request) != kfx::HostRequest::Progress) return answer;
    if (pointer > 0) {
        isBuilding = true;
        MeetTest();
    } else if (isBuilding) {
        MeetTest("KfxMisbehavingBetween", "KfxMisbehavingOn");
    }
    return answer;
}

// Stands before the host's answers. This DLL has the real plug-in's name here, and that one another.
int BuildAndMeetAtProgress(HWND parent, kfx::HostContext* context) {
    hostsAnswer = context->callback;
    context->callback = AnswerAndMeet;
    return BuildReally(parent, context, "real_plugin.dll");
}

// What a host takes for the window of a plug-in: a dialog with an effect list and a preview. It hangs when an
// effect is chosen, until a test that needs it lets it go on.
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
        if (message == WM_COMMAND && word == MAKEWPARAM(50, CBN_CLOSEUP)) {
            SetEvent(CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingChosen"));
            WaitForSingleObject(CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingBack"), INFINITE);
        }
        if (message == WM_COMMAND && LOWORD(word) == IDCANCEL) EndDialog(window, 0);
        return message == WM_INITDIALOG;
    };
    DialogBoxIndirectParamA(nullptr, &plain.dialog, parent, procedure, 0);
}

bool MisbehavesBy(const char* name) {
    const char* const variable = std::getenv("KFX_MISBEHAVIOUR");
    return variable && std::strcmp(variable, name) == 0;
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH && MisbehavesBy("crash while loaded")) Crash();
    return TRUE;
}

extern "C" __declspec(dllexport) int PLUGIN16GetPluginParams(kfx::PluginInfo* info) {
    if (MisbehavesBy("crash when asked")) Crash();
    std::strcpy(info->name, "Misbehaving");
    return 1;
}

extern "C" __declspec(dllexport) int PLUGIN16DoBuild(HWND parent, kfx::HostContext* context) {
    const char* variable = std::getenv("KFX_MISBEHAVIOUR");
    const std::string misbehaviour = variable ? variable : "";
    if (misbehaviour == "hang") Sleep(INFINITE);
    if (misbehaviour == "exit") std::exit(0);
    if (misbehaviour == "ExitProcess") ExitProcess(0);
    if (misbehaviour == "TerminateProcess") TerminateProcess(GetCurrentProcess(), 0);
    if (misbehaviour == "Ctrl+C") TerminateProcess(GetCurrentProcess(), STATUS_CONTROL_C_EXIT);
    if (misbehaviour == "library") {
        // Where it was found, the test finds a file.
        if (LoadLibraryA("stranger.dll")) CreateDirectoryA("stranger was loaded", nullptr);
    }
    if (misbehaviour == "abort") std::abort();
    if (misbehaviour == "crash") RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    if (misbehaviour == "overrun") OverrunArray();
    if (misbehaviour == "crash twice") {
        // The report's name has the time.
        ReplaceImport("GetLocalTime", reinterpret_cast<void*>(&CrashInTime));
        Crash();
    }
    if (misbehaviour == "message") Say(parent, "It is raining.");
    if (misbehaviour == "meet") MeetTest();
    if (misbehaviour == "report") SendNoReport();
    if (misbehaviour == "writing")
        return BuildAndMeet(parent, context, "GetFullPathNameW", reinterpret_cast<void*>(&FindPathAndMeet));
    if (misbehaviour == "placing")
        return BuildAndMeet(parent, context, "MoveFileExW", reinterpret_cast<void*>(&MoveAndMeet));
    if (misbehaviour == "progress") return BuildAndMeetAtProgress(parent, context);
    if (misbehaviour == "handle") WriteToHandle();
    if (misbehaviour == "elsewhere") {
        SetCurrentDirectoryA("C:\\windows");
        return BuildReally(parent, context);
    }
    if (misbehaviour == "window") ShowBareWindow(parent);
    if (misbehaviour == "folders") {
        Say(parent, "settings " + UsersFolder(CSIDL_APPDATA) + ", profile " + UsersFolder(CSIDL_PROFILE) +
                        ", by name " + Found("SHGetFolderPathA") + ", by variable " +
                        (std::getenv("APPDATA") ? "found" : "none") + ", documents " +
                        UsersFolder(CSIDL_PERSONAL) + ".");
    }
    return 1;
}
