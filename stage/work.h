// SPDX-License-Identifier: MIT
// Work that takes long, on a thread beside the window's: one piece at a time.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>

#include "stage/progress.h"

namespace kfx::stage {

struct Stage;
struct Piece;

// What Stop does with a piece of work.
enum class WhenStopped {
    Ends,    // its progress says `stop`, which it looks at; its `finished` is called as usual
    IsLeft,  // Stage goes on at once: the thread ends by itself, puts no file in its place any more, and
             // `finished` is not called. Such work shares nothing with the window that it changes.
};

struct Work {
    HANDLE thread = nullptr;  // null: nothing is being done
    HWND window = nullptr;
    Progress progress;
    bool closesStage = false;              // once it is done
    std::shared_ptr<Piece> piece;          // what is being done
    std::function<void(Stage*)> finished;  // on the window's thread afterwards
    std::vector<HANDLE> leftThreads;       // of pieces that have been left and may not have ended
};

// Starts `run` on the worker, which knows nothing of the window's state, unless something is being done;
// false: it was not started, and the user has been told why. `title` is shown meanwhile. Work that runs out
// of memory is told of, and `finished` is not called then. A piece that is left may not use its `Work`.
bool StartWork(Stage* stage, const std::string& title, std::function<void(Work*)> run,
               std::function<void(Stage*)> finished, WhenStopped whenStopped = WhenStopped::Ends);

bool IsWorking(const Stage& stage);

// The user wants no more of it. Files that are getting their final names are written to their end.
void StopWork(Stage* stage);

// Answers kWorkDone; `number` is its WPARAM.
void OnWorkDone(Stage* stage, WPARAM number);

// Lets the window live on until the work is done or stopped.
void WaitForWork(Stage* stage);

// Before the process ends: gives pieces that have been left the time to remove unfinished files.
void WaitForLeftWork(Stage* stage);

}  // namespace kfx::stage
