// SPDX-License-Identifier: MIT
#include "stage/crash_report.h"

#include <cstdio>
#include <exception>

#include "commands/recipe_text.h"
#include "commands/text_windows.h"
#include "driven/settings_folder.h"
#include "stage/plugin_guard.h"

namespace kfx::stage {

using namespace commands;
using namespace driven;

namespace {

std::string Hexadecimal(uint64_t number) {
    char text[24];
    std::snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(number));
    return text;
}

// "kfxplug1.dll+1a2b".
std::string PlaceOfCall(uint64_t address) {
    HMODULE module = nullptr;
    const auto pointer = reinterpret_cast<LPCWSTR>(static_cast<uintptr_t>(address));
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, pointer,
            &module))
        return Hexadecimal(address);
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(module, path, MAX_PATH);
    return FileNameOf(Narrow(path)) + "+" + Hexadecimal(address - reinterpret_cast<uintptr_t>(module));
}

// FNV-1a over the pixels, which tells two inputs apart.
std::string HashOf(const Film& film) {
    uint64_t hash = 0xCBF29CE484222325u;
    for (const FilmFrame& frame : film.frames) {
        for (const uint8_t byte : *frame.pixels) hash = (hash ^ byte) * 0x100000001B3u;
    }
    return Hexadecimal(hash);
}

std::string NewFolder() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    char name[64];
    std::snprintf(name, sizeof name, "failure-%04d-%02d-%02d-%02d%02d%02d", now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute, now.wSecond);
    const std::string reports = SettingsFolder() + "Stage reports";
    MakeSettingsFolder();
    CreateDirectoryW(Widen(reports).c_str(), nullptr);
    for (int number = 1; number < 10; ++number) {
        const std::string folder = reports + "\\" + name + (number > 1 ? "-" + std::to_string(number) : "");
        if (CreateDirectoryW(Widen(folder).c_str(), nullptr)) return folder;
        if (GetLastError() != ERROR_ALREADY_EXISTS) break;
    }
    return "";
}

std::string ReportText(const PluginOpening& opening, const CrashFacts& facts) {
    std::string text = "Kestrel Stage " + ProgramVersion() + "\r\nplug-in: " + opening.library->path +
                       "\r\n" +
                       (facts.code ? "exception: " + Hexadecimal(facts.code) : "it does not answer") + "\r\n";
    if (opening.film) {
        text += "input: " + std::to_string(opening.film->facts.width) + " x " +
                std::to_string(opening.film->facts.height) + ", " +
                std::to_string(opening.film->frames.size()) + " frames, hash " + HashOf(*opening.film) +
                "\r\n";
    }
    text += "stack:\r\n";
    for (size_t i = 0; i < facts.callCount; ++i) text += "    " + PlaceOfCall(facts.calls[i]) + "\r\n";
    text += "settings:\r\n";
    for (const ControlLine& line : opening.settings.lines) text += "    " + line.text + "\r\n";
    return text;
}

bool CanRead(uint64_t address) {
    MEMORY_BASIC_INFORMATION memory = {};
    return VirtualQuery(reinterpret_cast<const void*>(static_cast<uintptr_t>(address)), &memory,
                        sizeof memory) &&
           memory.State == MEM_COMMIT && !(memory.Protect & (PAGE_NOACCESS | PAGE_GUARD));
}

// The context's instruction, and who has called it.
void NoteCalls(CONTEXT context, CrashFacts* facts) {
    while (facts->callCount < kMostCalls && context.Rip) {
        facts->calls[facts->callCount++] = context.Rip;
        DWORD64 base = 0;
        auto* const function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
        if (!function) {
            // A function that calls none, or no code at all: the stack begins with where it was called.
            if (facts->callCount > 1 || !CanRead(context.Rsp)) break;
            context.Rip = *reinterpret_cast<const uint64_t*>(static_cast<uintptr_t>(context.Rsp));
            context.Rsp += sizeof context.Rip;
            continue;
        }
        void* handler = nullptr;
        DWORD64 frame = 0;
        RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &handler, &frame, nullptr);
    }
}

std::string WriteReport(const PluginOpening& opening, const CrashFacts& facts) {
    const std::string folder = NewFolder();
    if (folder.empty()) return "";
    const std::string path = folder + "\\report.txt";
    const std::string text = ReportText(opening, facts);
    const HANDLE file = CreateFileW(Widen(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return "";
    DWORD written = 0;
    WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    CloseHandle(file);
    return folder;
}

}  // namespace

void NoteCrash(const EXCEPTION_POINTERS& exception, CrashFacts* facts) {
    facts->code = exception.ExceptionRecord->ExceptionCode;
    NoteCalls(*exception.ContextRecord, facts);
}

// The stack is read when the thread may run again: suspended, it may hold a lock that this one needs for it.
void NoteHang(HANDLE thread, CrashFacts* facts) {
    CONTEXT context = {};
    context.ContextFlags = CONTEXT_FULL;
    if (SuspendThread(thread) == static_cast<DWORD>(-1)) return;
    const BOOL known = GetThreadContext(thread, &context);
    ResumeThread(thread);
    if (known) NoteCalls(context, facts);
}

std::string WriteReportGuarded(const PluginOpening& opening, const CrashFacts& facts) {
    struct Writing {
        const PluginOpening& opening;
        const CrashFacts& facts;
        std::string folder;
    } writing = {opening, facts, ""};
    CrashFacts ignored;
    const bool written = CallGuarded(
        [](void* context) {
            auto* own = static_cast<Writing*>(context);
            try {
                own->folder = WriteReport(own->opening, own->facts);
            } catch (const std::exception&) {
                // There is no memory for it, and so no report.
            }
        },
        &writing, opening.library, &ignored);
    return written ? writing.folder : "";
}

}  // namespace kfx::stage
