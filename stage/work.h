// SPDX-License-Identifier: MIT
// Work that takes long, on a thread beside the window's: one piece at a time.
#pragma once

#include <functional>
#include <string>

#include <windows.h>

#include "stage/progress.h"

namespace kfx::stage {

struct Stage;

struct Work {
    HANDLE thread = nullptr;  // null: nothing is being done
    HWND window = nullptr;
    Progress progress;
    bool closesStage = false;              // once it is done
    std::string error;                     // why it could not be done; of the thread until it has ended
    std::function<void(Work*)> run;        // on the worker; knows nothing of the window's state
    std::function<void(Stage*)> finished;  // on the window's thread afterwards
};

// Work that runs out of memory is told of, and `finished` is not called then.
//
// Starts it unless something is being done; false: it was not started. `title` is shown meanwhile.
bool StartWork(Stage* stage, const std::string& title, std::function<void(Work*)> run,
               std::function<void(Stage*)> finished);

bool IsWorking(const Stage& stage);

// Answers kWorkDone.
void OnWorkDone(Stage* stage);

// Lets the window live on until the work is done.
void WaitForWork(Stage* stage);

}  // namespace kfx::stage
