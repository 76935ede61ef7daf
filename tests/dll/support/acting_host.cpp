// SPDX-License-Identifier: MIT
#include "tests/dll/support/acting_host.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/dll/support/memory_ledger.h"

namespace kfx::test {
namespace {

HostCallback answer = nullptr;            // the fake host's own service function
std::function<void(HostRequest)> before;  // runs before it, on the window's thread

uint64_t ActAndAnswer(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer) {
    if (before) before(static_cast<HostRequest>(request));
    return answer(target, request, word, pointer);
}

}  // namespace

ActingHost::ActingHost() {
    answer = context.callback;
    context.callback = ActAndAnswer;
}

ActingHost::~ActingHost() { before = nullptr; }

void ActingHost::Act(HostRequest request, std::function<void()> action, int occurrence) {
    before = [=](HostRequest asked) mutable {
        if (asked == request && --occurrence == 0) action();
    };
}

void ActingHost::ActAtRequest(int number, std::function<void()> action) {
    before = [=](HostRequest) mutable {
        if (--number == 0) action();
    };
}

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
