// SPDX-License-Identifier: MIT
#include "stage/plugin_guard.h"

#include <windows.h>

#include "stage/stage_messages.h"

namespace kfx::stage {

namespace {

// What one guarded call knows of itself; of its thread, and of the handlers that run on it.
struct Guard {
    const driven::PluginLibrary* library = nullptr;
    CONTEXT landing = {};
    volatile bool crashed = false;
    CrashFacts facts;
};

// Where each thread has its guard. The system's slots need no memory, which a crash may leave none of.
DWORD guardSlot = TLS_OUT_OF_INDEXES;
LPTOP_LEVEL_EXCEPTION_FILTER filterBefore = nullptr;

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

// The guard of this thread, if this exception would be the end of its call; else null.
Guard* GuardFor(const EXCEPTION_POINTERS& exception) {
    if (!IsFatal(exception.ExceptionRecord->ExceptionCode)) return nullptr;
    auto* const guard = static_cast<Guard*>(TlsGetValue(guardSlot));
    return guard && !guard->crashed ? guard : nullptr;
}

// Sends the thread back to where the guarded call began.
LONG LeaveCall(Guard* guard, EXCEPTION_POINTERS* exception) {
    NoteCrash(*exception, &guard->facts);
    guard->crashed = true;
    *exception->ContextRecord = guard->landing;
    return EXCEPTION_CONTINUE_EXECUTION;
}

// Nothing in the plug-in handles exceptions, so one of its own instructions that fails is the end of it. Only
// the loader, which calls it first, may not be left: it holds a lock that every new thread needs. It handles
// the exception and refuses the plug-in.
LONG CALLBACK OnFirstChance(EXCEPTION_POINTERS* exception) {
    Guard* const guard = GuardFor(*exception);
    if (!guard || !guard->library) return EXCEPTION_CONTINUE_SEARCH;
    if (!guard->library->module) {
        if (guard->facts.callCount == 0) NoteCrash(*exception, &guard->facts);
    } else if (IsIn(guard->library->module, exception->ExceptionRecord->ExceptionAddress)) {
        return LeaveCall(guard, exception);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

// What fails in the system on the call's behalf may be handled there; here nobody has.
LONG CALLBACK OnUnhandled(EXCEPTION_POINTERS* exception) {
    if (Guard* const guard = GuardFor(*exception)) return LeaveCall(guard, exception);
    return filterBefore ? filterBefore(exception) : EXCEPTION_CONTINUE_SEARCH;
}

// A part of what follows a crash, which may fail as well.
bool CallAfterCrash(PluginOpening* opening, void (*part)(void* opening)) {
    CrashFacts ignored;
    return CallGuarded(part, opening, opening->library, &ignored);
}

void ReadSettings(void* context) {
    auto* opening = static_cast<PluginOpening*>(context);
    if (opening->window) opening->settings = ReadPluginSettings(opening->window);
}

// Hidden first: a window that cannot be closed must not be in the way.
void HideWindow(void* context) {
    const auto* opening = static_cast<PluginOpening*>(context);
    if (opening->window) ShowWindow(opening->window, SW_HIDE);
}

void CloseWindow(void* context) {
    const auto* opening = static_cast<PluginOpening*>(context);
    if (opening->window) DestroyWindow(opening->window);
}

}  // namespace

void PrepareGuard() {
    if (guardSlot != TLS_OUT_OF_INDEXES) return;
    guardSlot = TlsAlloc();
    if (guardSlot == TLS_OUT_OF_INDEXES) return;
    AddVectoredExceptionHandler(1, OnFirstChance);
    filterBefore = SetUnhandledExceptionFilter(OnUnhandled);
}

__attribute__((noinline)) bool CallGuarded(void (*call)(void*), void* context,
                                           const driven::PluginLibrary* library, CrashFacts* facts) {
    ULONG stackForHandlers = 64 * 1024;
    SetThreadStackGuarantee(&stackForHandlers);
    Guard own;
    own.library = library;
    Guard* volatile kept = &own;
    // A crash continues behind this call, as if it had returned once more.
    RtlCaptureContext(&own.landing);
    if (!kept->crashed) {
        TlsSetValue(guardSlot, kept);
        call(context);
    }
    TlsSetValue(guardSlot, nullptr);
    *facts = kept->facts;
    return !kept->crashed;
}

void RunGuarded(PluginOpening* opening, void (*run)(PluginOpening* opening)) {
    struct Call {
        PluginOpening* opening;
        void (*run)(PluginOpening* opening);
    } call = {opening, run};
    CrashFacts facts;
    const bool returned = CallGuarded(
        [](void* context) {
            const auto* guarded = static_cast<Call*>(context);
            guarded->run(guarded->opening);
        },
        &call, opening->library, &facts);
    const bool isLoaded = opening->library->module != nullptr;
    // The loader says of a plug-in that has crashed in its hands only that it does not begin.
    if (returned && (isLoaded || facts.callCount == 0)) return;
    opening->error.clear();
    opening->crashed = true;
    CallAfterCrash(opening, ReadSettings);  // its controls still have what the user has set
    opening->crashReport = WriteReportGuarded(*opening, facts);
    CallAfterCrash(opening, HideWindow);
    const bool gone = CallAfterCrash(opening, CloseWindow) && !IsWindow(opening->window);
    if (gone && (returned || isLoaded)) return;
    // The thread's end would call the plug-in, or the loader that it stands in, once more.
    PostMessageW(opening->stageWindow, kPluginEnded, 0, 0);
    Sleep(INFINITE);
}

}  // namespace kfx::stage
