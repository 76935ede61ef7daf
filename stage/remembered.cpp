// SPDX-License-Identifier: MIT
#include "stage/remembered.h"

#include <algorithm>

#include "commands/text_windows.h"
#include "driven/settings_folder.h"
#include "media/file_io.h"

namespace kfx::stage {

using namespace commands;
using namespace driven;

namespace {

constexpr wchar_t kSection[] = L"Stage";
constexpr DWORD kLongestText = 4096;

std::wstring FilePath() { return Widen(SettingsFolder()) + L"kestrel-stage.ini"; }

// The numbers of the file, each with its key: reading and writing go through this one list.
template <typename Action>
void ForEachNumber(Remembered* remembered, Action action) {
    action(L"Left", &remembered->window.left);
    action(L"Top", &remembered->window.top);
    action(L"Right", &remembered->window.right);
    action(L"Bottom", &remembered->window.bottom);
    action(L"Dpi", &remembered->dpi);
    action(L"Maximized", &remembered->maximized);
    action(L"PluginWidth", &remembered->pluginWindow.cx);
    action(L"PluginHeight", &remembered->pluginWindow.cy);
    action(L"Arrangement", &remembered->arrangement);
    action(L"Ground", &remembered->ground);
    action(L"GroundColor", &remembered->groundColor);
    action(L"PlayForever", &remembered->forever);
}

std::string ReadValue(const std::wstring& path, const std::wstring& key) {
    wchar_t value[kLongestText];
    GetPrivateProfileStringW(kSection, key.c_str(), L"", value, kLongestText, path.c_str());
    return Narrow(value);
}

void WriteValue(const std::wstring& path, const std::wstring& key, const std::string& value) {
    WritePrivateProfileStringW(kSection, key.c_str(), value.empty() ? nullptr : Widen(value).c_str(),
                               path.c_str());
}

// Whether the system's code page has every character of the text.
bool IsInCodePage(const std::string& text) { return FromPluginText(ToPluginText(text)) == text; }

// The system reads and writes such a file in its code page, unless the file begins with the mark of UTF-16.
void AllowEveryCharacter(const std::wstring& path) {
    const std::string mark = "\xFF\xFE", name = Narrow(path);
    std::vector<uint8_t> bytes;
    std::string error;
    // One that cannot be read keeps what it holds.
    const bool isThere = GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    if (isThere && !ReadWholeFile(name, &bytes, &error)) return;
    const std::string text(bytes.begin(), bytes.end());
    if (text.rfind(mark, 0) == 0) return;
    const std::wstring wide = Widen(FromPluginText(text));
    bytes.assign(mark.begin(), mark.end());
    for (const wchar_t c : wide) {
        bytes.push_back(static_cast<uint8_t>(c & 0xFF));
        bytes.push_back(static_cast<uint8_t>(c >> 8));
    }
    WriteWholeFile(name, bytes, &error);
}

std::wstring RecentKey(size_t row) { return L"Recent" + std::to_wstring(row + 1); }

}  // namespace

Remembered ReadRemembered() {
    const std::wstring path = FilePath();
    Remembered remembered;
    ForEachNumber(&remembered, [&path](const wchar_t* key, LONG* number) {
        *number = static_cast<LONG>(GetPrivateProfileIntW(kSection, key, *number, path.c_str()));
    });
    remembered.folder = ReadValue(path, L"Folder");
    for (size_t row = 0; row < kMostRecent; ++row) {
        const std::string recent = ReadValue(path, RecentKey(row));
        if (!recent.empty()) remembered.recent.push_back(recent);
    }
    return remembered;
}

void WriteRemembered(const Remembered& remembered) {
    MakeSettingsFolder();
    const std::wstring path = FilePath();
    const auto& recent = remembered.recent;
    const bool isPlain =
        IsInCodePage(remembered.folder) && std::all_of(recent.begin(), recent.end(), IsInCodePage);
    if (!isPlain && !SettingsFolder().empty()) AllowEveryCharacter(path);
    Remembered copy = remembered;
    ForEachNumber(&copy, [&path](const wchar_t* key, const LONG* number) {
        WritePrivateProfileStringW(kSection, key, std::to_wstring(*number).c_str(), path.c_str());
    });
    WriteValue(path, L"Folder", remembered.folder);
    for (size_t row = 0; row < kMostRecent; ++row) {
        WriteValue(path, RecentKey(row), row < remembered.recent.size() ? remembered.recent[row] : "");
    }
}

void RememberFile(Remembered* remembered, const std::string& path) {
    auto& recent = remembered->recent;
    std::erase_if(recent, [&path](const std::string& other) {
        return CompareStringOrdinal(Widen(other).c_str(), -1, Widen(path).c_str(), -1, TRUE) == CSTR_EQUAL;
    });
    recent.insert(recent.begin(), path);
    if (recent.size() > kMostRecent) recent.resize(kMostRecent);
}

}  // namespace kfx::stage
