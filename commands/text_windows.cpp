// SPDX-License-Identifier: MIT
#include "commands/text_windows.h"

#include <windows.h>

namespace kfx::commands {
namespace {

std::wstring WidenFrom(UINT codePage, const std::string& text) {
    const int length = static_cast<int>(text.size());
    const int count = MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<size_t>(count), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), length, wide.data(), count);
    return wide;
}

std::string NarrowTo(UINT codePage, const std::wstring& wide) {
    // A letter that only looks like another would make the name of another file. UTF-8 has all and takes no
    // flag.
    const bool hasAll = codePage == CP_UTF8 || GetACP() == CP_UTF8;
    const DWORD flags = hasAll ? 0 : WC_NO_BEST_FIT_CHARS;
    const int length = static_cast<int>(wide.size());
    const int count = WideCharToMultiByte(codePage, flags, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<size_t>(count), '\0');
    WideCharToMultiByte(codePage, flags, wide.data(), length, text.data(), count, nullptr, nullptr);
    return text;
}

bool RunsUnderWine() {
    const HMODULE ntdll = GetModuleHandleA("ntdll.dll");
    return ntdll && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

}  // namespace

const char* const kFolderEnds = "/\\:";

std::wstring Widen(const std::string& utf8) { return WidenFrom(CP_UTF8, utf8); }
std::string Narrow(const std::wstring& wide) { return NarrowTo(CP_UTF8, wide); }
std::string ToPluginText(const std::string& utf8) { return NarrowTo(CP_ACP, Widen(utf8)); }
std::string FromPluginText(const std::string& text) { return Narrow(WidenFrom(CP_ACP, text)); }

std::string SystemPath(const std::string& path) {
    std::string result = path;
    for (char& c : result) {
        if (c == '/') c = '\\';
    }
    // Wine shows the whole Unix file system as drive Z; one backslash alone would mean the current drive.
    const bool fromRoot = path.size() > 1 && path[0] == '/' && path[1] != '/';
    if (fromRoot && RunsUnderWine()) result = "Z:" + result;
    return result;
}

std::string AbsolutePath(const std::string& path) {
    const std::wstring wide = Widen(path);
    const DWORD length = GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    if (length == 0) return path;
    std::wstring full(length, L'\0');
    full.resize(GetFullPathNameW(wide.c_str(), length, full.data(), nullptr));
    return Narrow(full);
}

std::string SystemErrorText(unsigned long code) {
    // In English, as all of the program's messages are; a system that has none gives only the number.
    constexpr DWORD kEnglish = MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US);
    wchar_t text[512];
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        code, kEnglish, text, 512, nullptr);
    std::string sentence = Narrow(std::wstring(text, length));
    while (!sentence.empty() &&
           (sentence.back() == '\n' || sentence.back() == '\r' || sentence.back() == '.')) {
        sentence.pop_back();
    }
    // Some of the system's sentences leave a place for the name, which ours begin with.
    const size_t place = sentence.find("%1");
    if (place != std::string::npos) sentence.replace(place, 2, "the file");
    return sentence.empty() ? "Windows error " + std::to_string(code) : sentence;
}

std::wstring QuotedArgument(const std::string& argument) {
    std::wstring quoted = L"\"";
    size_t backslashes = 0;
    for (const wchar_t c : Widen(argument)) {
        if (c == L'"') quoted.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L"\"";
}

}  // namespace kfx::commands
