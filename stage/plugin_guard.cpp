// SPDX-License-Identifier: MIT
#include "stage/plugin_guard.h"

#include <windows.h>

#include "stage/crash_report.h"
#include "stage/stage_messages.h"

namespace kfx::stage {

namespace {

// What one guarded call knows of itself; of the plug-in's thread, and of the handlers that run on it.
struct Guard {
    DWORD thread = 0;
    HMODULE module = nullptr;
    CONTEXT landing = {};
    volatile bool crashed = false;
    CrashFacts facts;
};

Guard* volatile guard = nullptr;

bool IsFatal(DWORD code) {
    switch (code) {
        case EXCEPTION_ACCESS_VIOLATION:
        case EXCEPTION_IN_PAGE_ERROR:
        case EXCEPTION_ILLEGAL_INSTRUCTION:
        case EXCEPTION_PRIV_INSTRUCTION:
        case EXCEPTION_INT_DIVIDE_BY_ZERO:
        case EXCEPTION_INT_OVERFLOW:
        case EXCEPTION_STACK_OVERFLOW:
        case EXCEPTION_FLT_DIVIDE_BY_ZERO:
        case EXCEPTION_FLT_INVALID_OPERATION:
        case EXCEPTION_FLT_OVERFLOW:
            return true;
    }
    return false;
}

bool IsIn(HMODULE module, const void* address) {
    HMODULE found = nullptr;
    return GetModuleHandleExW(
               GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
               static_cast<LPCWSTR>(address), &found) &&
           found == module;
}

// Sends the thread back to where the guarded call began.
LONG LeavePlugin(EXCEPTION_POINTERS* exception) {
    NoteCrash(*exception, &guard->facts);
    guard->crashed = true;
    *exception->ContextRecord = guard->landing;
    return EXCEPTION_CONTINUE_EXECUTION;
}

bool IsGuarded(const EXCEPTION_POINTERS& exception) {
    return guard && guard->thread == GetCurrentThreadId() && !guard->crashed &&
           IsFatal(exception.ExceptionRecord->ExceptionCode);
}

// Nothing in the plug-in handles exceptions, so one of its own instructions that fails is the end of it.
LONG CALLBACK OnFirstChance(EXCEPTION_POINTERS* exception) {
    if (!IsGuarded(*exception) || !IsIn(guard->module, exception->ExceptionRecord->ExceptionAddress))
        return EXCEPTION_CONTINUE_SEARCH;
    return LeavePlugin(exception);
}

// What fails in the system on the plug-in's behalf may be handled there; here nobody has.
LONG CALLBACK OnUnhandled(EXCEPTION_POINTERS* exception) {
    return IsGuarded(*exception) ? LeavePlugin(exception) : EXCEPTION_CONTINUE_SEARCH;
}

// False: the call has crashed; `facts` then say how.
__attribute__((noinline)) bool CallGuarded(PluginOpening* opening, void (*call)(PluginOpening*),
                                           CrashFacts* facts) {
    Guard own;
    own.thread = GetCurrentThreadId();
    own.module = opening->library->module;
    Guard* volatile kept = &own;
    // A crash continues behind this call, as if it had returned once more.
    RtlCaptureContext(&own.landing);
    if (!kept->crashed) {
        guard = kept;
        call(opening);
    }
    guard = nullptr;
    *facts = kept->facts;
    return !kept->crashed;
}

}  // namespace

void RunGuarded(PluginOpening* opening, void (*run)(PluginOpening* opening)) {
    ULONG stackForHandlers = 64 * 1024;
    SetThreadStackGuarantee(&stackForHandlers);
    void* const first = AddVectoredExceptionHandler(1, OnFirstChance);
    const auto before = SetUnhandledExceptionFilter(OnUnhandled);
    CrashFacts facts, later;
    if (!CallGuarded(opening, run, &facts)) {
        opening->crashed = true;
        // Its controls still have the user's settings; they may fail as well.
        CallGuarded(
            opening,
            [](PluginOpening* crashed) {
                if (crashed->window) crashed->settings = ReadPluginSettings(crashed->window);
            },
            &later);
        opening->crashReport = WriteCrashReport(*opening, facts);
        const HWND window = opening->window;
        CallGuarded(
            opening, [](PluginOpening* crashed) { ShowWindow(crashed->window, SW_HIDE); }, &later);
        const bool gone = CallGuarded(
                              opening,
                              [](PluginOpening* crashed) {
                                  if (crashed->window) DestroyWindow(crashed->window);
                              },
                              &later) &&
                          !IsWindow(window);
        if (!gone) {
            // The thread's end would call the plug-in once more.
            PostMessageW(opening->stageWindow, kPluginEnded, 0, 0);
            Sleep(INFINITE);
        }
    }
    SetUnhandledExceptionFilter(before);
    RemoveVectoredExceptionHandler(first);
}

}  // namespace kfx::stage
