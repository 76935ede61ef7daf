// SPDX-License-Identifier: MIT
#include "tests/dll/support/own_dialog.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/dll/support/memory_ledger.h"

namespace kfx::test {

HWND OwnDialog() {
    HWND found = nullptr;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM data) -> BOOL {
            char className[20] = "";
            GetClassNameA(window, className, sizeof className);
            if (std::string(className) != "#32770") return TRUE;
            *reinterpret_cast<HWND*>(data) = window;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&found));
    return found;
}

void DestroyOwnDialog() { DestroyWindow(OwnDialog()); }
void EndOwnDialog() { SendMessageA(OwnDialog(), WM_COMMAND, IDCANCEL, 0); }

void ExpectNothingLeft() {
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
    EXPECT_EQ(CountLedger().strangeFrees, 0u);
}

}  // namespace kfx::test
