// SPDX-License-Identifier: MIT
#include "tests/dll/support/system_stand_ins.h"

#include <cderr.h>
#include <commdlg.h>
#include <shlobj.h>

#include <cstdio>
#include <cstring>
#include <ctime>

#include "tests/support/import_patch.h"
#include "tests/support/page_words.h"

namespace kfx::test {
namespace {

SystemStandIns* current = nullptr;  // the stand-ins have no argument for it

// An item list that holds nothing but the folder's number.
struct FolderItem {
    USHORT bytes;
    int folder;
    USHORT end;
};

HRESULT WINAPI FindFolder(HWND, int folder, LPITEMIDLIST* item) {
    const std::lock_guard<std::mutex> lock(current->mutex);
    *item = nullptr;
    if (current->folderLookupFails && folder == CSIDL_APPDATA) return E_FAIL;
    auto* made = static_cast<FolderItem*>(CoTaskMemAlloc(sizeof(FolderItem)));
    *made = {offsetof(FolderItem, end), folder, 0};
    *item = reinterpret_cast<LPITEMIDLIST>(made);
    return S_OK;
}

BOOL WINAPI PathOfFolder(LPCITEMIDLIST item, LPSTR path) {
    const std::lock_guard<std::mutex> lock(current->mutex);
    const int folder = reinterpret_cast<const FolderItem*>(item)->folder;
    const char* documents = current->japanese ? "\x95\x5C" : "Documents";
    const char* name = folder == CSIDL_APPDATA ? "AppData" : folder == CSIDL_PERSONAL ? documents : "Other";
    std::snprintf(path, MAX_PATH, "%s\\%s", current->root.c_str(), name);
    return TRUE;
}

std::time_t TellTime(std::time_t* time) {
    const std::time_t now = current->clock ? current->clock : std::time(nullptr);
    if (time) *time = now;
    return now;
}

HINSTANCE WINAPI OpenPage(HWND, LPCSTR verb, LPCSTR file, LPCSTR, LPCSTR, INT) {
    const std::lock_guard<std::mutex> lock(current->mutex);
    current->openedPages.push_back(std::string(verb) + " " + file);
    return reinterpret_cast<HINSTANCE>(current->browserAnswer);
}

BOOL WINAPI TrackMenu(HMENU menu, UINT, int, int, int, HWND window, const RECT*) {
    OpenedMenu opened;
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        char text[100] = "";
        GetMenuStringA(menu, static_cast<UINT>(i), text, sizeof text, MF_BYPOSITION);
        opened.items.emplace_back(GetMenuItemID(menu, i), text);
    }
    const std::lock_guard<std::mutex> lock(current->mutex);
    current->menus.push_back(opened);
    if (current->menuAnswer) PostMessageA(window, WM_COMMAND, current->menuAnswer, 0);
    return TRUE;
}

BOOL AskPath(LPOPENFILENAMEA request, bool toSave) {
    const auto text = [](const char* string) { return std::string(string ? string : ""); };
    AskedPath asked;
    asked.toSave = toSave;
    asked.file = text(request->lpstrFile);
    asked.folder = text(request->lpstrInitialDir);
    const std::string name = text(request->lpstrFilter);
    asked.filter = name.empty() ? name : name + "|" + text(request->lpstrFilter + name.size() + 1);
    asked.extension = text(request->lpstrDefExt);
    asked.flags = request->Flags;
    asked.hooked = request->lpfnHook != nullptr;
    const std::lock_guard<std::mutex> lock(current->mutex);
    current->askedPaths.push_back(asked);
    // In UTF-8, where no part of a character has one of these numbers.
    const bool isName = FromPage(asked.file).find_first_of("<>|*?\"") == std::string::npos;
    current->fileDialogError = isName ? 0 : FNERR_INVALIDFILENAME;
    if (current->fileDialogAnswer.empty() || current->fileDialogError) return FALSE;
    std::snprintf(request->lpstrFile, request->nMaxFile, "%s", current->fileDialogAnswer.c_str());
    return TRUE;
}

BOOL WINAPI AskOpen(LPOPENFILENAMEA request) { return AskPath(request, false); }
BOOL WINAPI AskSave(LPOPENFILENAMEA request) { return AskPath(request, true); }

DWORD WINAPI TellDialogError() {
    const std::lock_guard<std::mutex> lock(current->mutex);
    return current->fileDialogError;
}

BOOL WINAPI TellLeadByte(BYTE byte) {
    if (!current->japanese) return IsDBCSLeadByte(byte);
    return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

UINT_PTR WINAPI StartTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
    const UINT_PTR started = SetTimer(window, id, period, procedure);
    const std::lock_guard<std::mutex> lock(current->mutex);
    if (started) current->runningTimers.insert(id);
    current->events.push_back("set " + std::to_string(id) + " " + std::to_string(period));
    return started;
}

BOOL WINAPI EndTimer(HWND window, UINT_PTR id) {
    const BOOL ended = KillTimer(window, id);
    const std::lock_guard<std::mutex> lock(current->mutex);
    if (ended) current->runningTimers.erase(id);
    current->events.push_back("kill " + std::to_string(id));
    return ended;
}

HWND WINAPI CreateControl(DWORD moreStyle, LPCSTR className, LPCSTR text, DWORD style, int x, int y,
                          int width, int height, HWND parent, HMENU id, HINSTANCE module, LPVOID data) {
    {
        const std::lock_guard<std::mutex> lock(current->mutex);
        current->created[static_cast<int>(reinterpret_cast<INT_PTR>(id))] = {x, y, x + width, y + height};
    }
    return CreateWindowExA(moreStyle, className, text, style, x, y, width, height, parent, id, module, data);
}

HWND WINAPI CreatePanel(HINSTANCE module, LPCSTR name, HWND parent, DLGPROC procedure, LPARAM data) {
    {
        const std::lock_guard<std::mutex> lock(current->mutex);
        if (--current->panelsUntilFailure == 0) return nullptr;
    }
    return CreateDialogParamA(module, name, parent, procedure, data);
}

BOOL WINAPI TellScrollRange(HWND bar, int kind, LPINT least, LPINT most) {
    {
        const std::lock_guard<std::mutex> lock(current->mutex);
        if (current->scrollRangesFail) return FALSE;
    }
    return GetScrollRange(bar, kind, least, most);
}

}  // namespace

struct SystemStandIns::Patches {
    explicit Patches(HMODULE module)
        : findFolder(module, "SHGetSpecialFolderLocation", AddressOfFunction(FindFolder)),
          pathOfFolder(module, "SHGetPathFromIDListA", AddressOfFunction(PathOfFolder)),
          time(module, "time", AddressOfFunction(TellTime)),
          time64(module, "_time64", AddressOfFunction(TellTime)),
          openPage(module, "ShellExecuteA", AddressOfFunction(OpenPage)),
          trackMenu(module, "TrackPopupMenu", AddressOfFunction(TrackMenu)),
          askOpen(module, "GetOpenFileNameA", AddressOfFunction(AskOpen)),
          askSave(module, "GetSaveFileNameA", AddressOfFunction(AskSave)),
          tellDialogError(module, "CommDlgExtendedError", AddressOfFunction(TellDialogError)),
          tellLeadByte(module, "IsDBCSLeadByte", AddressOfFunction(TellLeadByte)),
          startTimer(module, "SetTimer", AddressOfFunction(StartTimer)),
          endTimer(module, "KillTimer", AddressOfFunction(EndTimer)),
          createControl(module, "CreateWindowExA", AddressOfFunction(CreateControl)),
          createPanel(module, "CreateDialogParamA", AddressOfFunction(CreatePanel)),
          tellScrollRange(module, "GetScrollRange", AddressOfFunction(TellScrollRange)) {}
    ImportPatch findFolder, pathOfFolder, time, time64, openPage, trackMenu, askOpen, askSave,
        tellDialogError, tellLeadByte, startTimer, endTimer, createControl, createPanel, tellScrollRange;
};

SystemStandIns::SystemStandIns(HMODULE module, const std::string& folder, const SessionOptions& options)
    : root(folder),
      folderLookupFails(options.folderLookupFails),
      panelsUntilFailure(options.failingPanel),
      scrollRangesFail(options.scrollRangesFail),
      clock(options.clock),
      japanese(options.japanese) {
    current = this;
    patches = std::make_unique<Patches>(module);
}

SystemStandIns::~SystemStandIns() {
    patches.reset();
    current = nullptr;
}

}  // namespace kfx::test
