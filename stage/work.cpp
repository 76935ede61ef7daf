// SPDX-License-Identifier: MIT
#include "stage/work.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <utility>

#include "commands/text_windows.h"
#include "media/file_io.h"
#include "stage/controls.h"
#include "stage/release_later.h"
#include "stage/stage.h"
#include "stage/stage_messages.h"

namespace kfx::stage {

// What the thread and the window know of one piece. The thread keeps it until it ends.
struct Piece {
    WPARAM number = 0;
    HWND window = nullptr;
    WhenStopped whenStopped = WhenStopped::Ends;
    std::function<void(Work*)> run;
    Work* work = nullptr;
    std::string error;  // why it could not be done; of the thread until it has ended

    std::mutex lock;
    bool isLeft = false;    // under the lock
    bool isPlaced = false;  // its files get their final names; under the lock
};

namespace {

constexpr DWORD kLeftWorkMilliseconds = 5000;

// The piece whose thread this is; null: another thread.
thread_local Piece* own = nullptr;

bool GoesOn() {
    if (!own) return true;
    const std::lock_guard<std::mutex> lock(own->lock);
    return !own->isLeft;
}

bool MayPlace() {
    if (!own) return true;
    const std::lock_guard<std::mutex> lock(own->lock);
    own->isPlaced = !own->isLeft;
    return own->isPlaced;
}

// False: its files are being put in place.
bool Leave(Piece* piece) {
    const std::lock_guard<std::mutex> lock(piece->lock);
    piece->isLeft = !piece->isPlaced;
    return piece->isLeft;
}

DWORD WINAPI RunPiece(void* parameter) {
    const std::unique_ptr<std::shared_ptr<Piece>> kept(static_cast<std::shared_ptr<Piece>*>(parameter));
    Piece* piece = kept->get();
    own = piece;
    try {
        piece->run(piece->work);
    } catch (const std::exception&) {
        piece->error = "There is not enough memory for this.";
    }
    // What it has taken is given back here: large animations take longer than the window may wait.
    piece->run = nullptr;
    PostMessageW(piece->window, kWorkDone, piece->number, 0);
    return 0;
}

HANDLE StartThread(const std::shared_ptr<Piece>& piece) {
    auto kept = std::make_unique<std::shared_ptr<Piece>>(piece);
    const HANDLE thread = CreateThread(nullptr, 0, RunPiece, kept.get(), 0, nullptr);
    if (thread) static_cast<void>(kept.release());
    return thread;
}

void CloseEnded(std::vector<HANDLE>* threads) {
    std::erase_if(*threads, [](HANDLE thread) {
        return WaitForSingleObject(thread, 0) == WAIT_OBJECT_0 && CloseHandle(thread);
    });
}

// After the piece has left its place.
void ShowWorkEnded(Stage* stage) {
    ClearProgress(stage);
    ShowProgress(stage);  // the plug-in may be building; what it has noted meanwhile was not looked at
}

void CloseWhenAsked(Stage* stage) {
    if (std::exchange(stage->work.closesStage, false)) PostMessageW(stage->window, WM_CLOSE, 0, 0);
}

}  // namespace

bool StartWork(Stage* stage, const std::string& title, std::function<void(Work*)> run,
               std::function<void(Stage*)> finished, WhenStopped whenStopped) {
    static WPARAM number = 0;
    static const bool isWatched = [] {
        WatchWriting({.goesOn = GoesOn, .mayPlace = MayPlace});
        return true;
    }();
    static_cast<void>(isWatched);
    Work& work = stage->work;
    if (work.thread) {
        ShowMessage(*stage, nullptr, title + ": start this once the work at hand is done.", MB_ICONWARNING);
        return false;
    }
    CloseEnded(&work.leftThreads);
    work.window = stage->window;
    work.piece = std::make_shared<Piece>();
    work.piece->number = ++number;
    work.piece->window = stage->window;
    work.piece->whenStopped = whenStopped;
    work.piece->run = std::move(run);
    work.piece->work = &work;
    Restart(&work.progress);
    // Before the thread can note anything of its own.
    NoteProgress(&work.progress, stage->window, title, 0, 0);
    work.thread = StartThread(work.piece);
    if (!work.thread) {
        const std::string why = commands::SystemErrorText(GetLastError());
        work.piece.reset();
        ShowMessage(*stage, nullptr,
                    title + ": this cannot be started, because there is no thread for it (" + why +
                        "). Close other programs and try again.",
                    MB_ICONERROR);
        return false;
    }
    work.finished = std::move(finished);
    UpdateControls(stage);
    return true;
}

bool IsWorking(const Stage& stage) { return stage.work.thread != nullptr; }

void StopWork(Stage* stage) {
    Work& work = stage->work;
    if (!work.thread) return;
    if (work.piece->whenStopped == WhenStopped::Ends) {
        work.progress.stop = true;
        ShowProgress(stage);
        return;
    }
    if (!Leave(work.piece.get())) return;
    SetThreadPriority(work.thread, THREAD_PRIORITY_BELOW_NORMAL);
    work.leftThreads.push_back(std::exchange(work.thread, nullptr));
    work.piece.reset();
    ReleaseLater(std::exchange(work.finished, nullptr));
    ShowStatus(stage, "Stopped.");
    ShowWorkEnded(stage);
    UpdateControls(stage);
    CloseWhenAsked(stage);
    // A loop may wait for this.
    PostMessageW(stage->window, WM_NULL, 0, 0);
}

void OnWorkDone(Stage* stage, WPARAM number) {
    Work& work = stage->work;
    if (!work.thread || work.piece->number != number) return;
    WaitForSingleObject(work.thread, INFINITE);
    CloseHandle(std::exchange(work.thread, nullptr));
    const std::shared_ptr<Piece> piece = std::exchange(work.piece, nullptr);
    auto finished = std::exchange(work.finished, nullptr);
    ShowWorkEnded(stage);
    if (piece->error.empty()) {
        finished(stage);
    } else {
        ShowStatus(stage, "");
        ShowMessage(*stage, nullptr, piece->error, MB_ICONERROR);
    }
    // It may have the last share of what was made and is not wanted.
    ReleaseLater(std::move(finished));
    UpdateControls(stage);
    CloseWhenAsked(stage);
}

void WaitForWork(Stage* stage) {
    MSG message;
    while (IsWorking(*stage)) {
        if (GetMessageW(&message, nullptr, 0, 0) <= 0) {
            PostQuitMessage(static_cast<int>(message.wParam));  // for the loop below this one
            return;
        }
        HandleMessage(stage, message);
    }
}

void WaitForLeftWork(Stage* stage) {
    for (const HANDLE thread : stage->work.leftThreads) WaitForSingleObject(thread, kLeftWorkMilliseconds);
}

}  // namespace kfx::stage
