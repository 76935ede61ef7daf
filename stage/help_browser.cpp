// SPDX-License-Identifier: MIT
#include "stage/help_browser.h"

#include <cstdio>
#include <cstring>

#include <windows.h>
#include <shellapi.h>
#include <shlwapi.h>

#include "commands/text_windows.h"

namespace kfx::stage {

using namespace commands;

namespace {

// The program that the user has chosen for pages; empty when there is none.
std::wstring BrowserPath() {
    wchar_t path[MAX_PATH];
    DWORD size = MAX_PATH;
    const HRESULT found =
        AssocQueryStringW(ASSOCF_NOTRUNCATE, ASSOCSTR_EXECUTABLE, L".html", L"open", path, &size);
    return SUCCEEDED(found) ? path : L"";
}

bool StartBrowser(const std::wstring& browser, const std::string& address) {
    std::wstring line = L"\"" + browser + L"\" " + QuotedArgument(address);
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(browser.c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                        &process))
        return false;
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return true;
}

}  // namespace

std::string AddressOf(const std::string& document, const std::string& topic) {
    std::string address = "file:///";
    for (const char c : document) {
        if (c == '\\') {
            address += '/';
        } else if (static_cast<unsigned char>(c) > 0x7F || std::strchr(" #%?\"", c)) {
            char escape[4];
            std::snprintf(escape, sizeof escape, "%%%02X",
                          static_cast<unsigned>(static_cast<unsigned char>(c)));
            address += escape;
        } else {
            address += c;
        }
    }
    return topic.empty() ? address : address + "#" + topic;
}

bool ShowHelpTopic(const std::string& folder, const std::string& reference) {
    const size_t hash = reference.find('#');
    const std::string document = folder + FileNameOf(reference.substr(0, hash));
    if (GetFileAttributesW(Widen(document).c_str()) == INVALID_FILE_ATTRIBUTES) return false;
    const std::string topic = hash == std::string::npos ? "" : reference.substr(hash + 1);
    // The shell would open the document, but without its topic.
    const std::wstring browser = BrowserPath();
    if (!browser.empty() && StartBrowser(browser, AddressOf(document, topic))) return true;
    const auto answer =
        ShellExecuteW(nullptr, L"open", Widen(document).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<INT_PTR>(answer) > 32;
}

}  // namespace kfx::stage
