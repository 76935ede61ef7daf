// SPDX-License-Identifier: MIT
// What the DLL gets in place of the system's folders, clock, dialogs and timers while a session runs.
#pragma once

#include <windows.h>

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "tests/dll/support/plugin_session.h"

namespace kfx::test {

struct SystemStandIns {
    // Takes the module's imports; `folder` (without a trailing backslash) is the root of the user's folders.
    SystemStandIns(HMODULE module, const std::string& folder, const SessionOptions& options);
    ~SystemStandIns();
    SystemStandIns(const SystemStandIns&) = delete;
    SystemStandIns& operator=(const SystemStandIns&) = delete;

    std::mutex mutex;  // guards everything below
    std::string root;
    bool folderLookupFails;
    int panelsUntilFailure;
    bool scrollRangesFail;
    long long clock;
    bool japanese;
    UINT menuAnswer = 0;
    std::string fileDialogAnswer;
    DWORD fileDialogError = 0;
    INT_PTR browserAnswer = 42;
    std::vector<OpenedMenu> menus;
    std::vector<AskedPath> askedPaths;
    std::vector<std::string> openedPages;
    std::vector<std::string> events;
    std::set<UINT_PTR> runningTimers;
    std::map<int, RECT> created;

    struct Patches;
    std::unique_ptr<Patches> patches;
};

}  // namespace kfx::test
