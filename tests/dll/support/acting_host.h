// SPDX-License-Identifier: MIT
// A host that does something inside a request, and what may be done there to the plug-in's window.
#pragma once

#include <windows.h>

#include <functional>

#include "tests/support/fake_host.h"

namespace kfx::test {

// Acts inside requests, before it answers them. One host at a time.
class ActingHost : public FakeHost {
public:
    ActingHost();
    ~ActingHost();

    // At the nth request (from 1) after now that is of this kind.
    void Act(HostRequest request, std::function<void()> action, int occurrence = 1);

    // At the nth request after now, whatever it is.
    void ActAtRequest(int number, std::function<void()> action);
};

// The dialog of the calling thread, even before it is shown.
HWND OwnDialog();

void DestroyOwnDialog();
void EndOwnDialog();

// Expects that the plug-in has freed everything, and nothing twice.
void ExpectNothingLeft();

}  // namespace kfx::test
