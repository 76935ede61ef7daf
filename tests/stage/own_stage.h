// SPDX-License-Identifier: MIT
// Stage's window on a thread of the test program: what messages carry is in this process, and the window's
// state can be looked at.
#pragma once

#include <thread>

#include "stage/stage.h"
#include "tests/stage/stage_program.h"

namespace kfx::test {

struct OwnStage : StageWindow {
    std::thread thread;

    // Closes the window, and whatever stands before it, without saving.
    void TearDown() override;

    void OpenHere(const std::vector<std::string>& files);
    stage::Stage* State() const { return stage::StageOf(window); }

    // Drops files on a window as the system's shell does, once it takes files.
    static void Drop(HWND target, const std::vector<std::string>& files);
};

}  // namespace kfx::test
