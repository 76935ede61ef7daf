// SPDX-License-Identifier: MIT
#include "stage/work.h"

#include <exception>
#include <utility>

#include "stage/controls.h"
#include "stage/stage.h"
#include "stage/stage_messages.h"

namespace kfx::stage {
namespace {

DWORD WINAPI RunWork(void* parameter) {
    auto* work = static_cast<Work*>(parameter);
    try {
        work->run(work);
    } catch (const std::exception&) {
        work->error = "There is not enough memory for this.";
    }
    PostMessageW(work->window, kWorkDone, 0, 0);
    return 0;
}

}  // namespace

bool StartWork(Stage* stage, const std::string& title, std::function<void(Work*)> run,
               std::function<void(Stage*)> finished) {
    Work& work = stage->work;
    if (work.thread) return false;
    work.window = stage->window;
    work.run = std::move(run);
    work.finished = std::move(finished);
    Restart(&work.progress);
    work.error.clear();
    NoteProgress(&work.progress, stage->window, title, 0, 0);
    work.thread = CreateThread(nullptr, 0, RunWork, &work, 0, nullptr);
    if (!work.thread) return false;
    UpdateControls(stage);
    return true;
}

bool IsWorking(const Stage& stage) { return stage.work.thread != nullptr; }

void OnWorkDone(Stage* stage) {
    Work& work = stage->work;
    if (!work.thread) return;
    WaitForSingleObject(work.thread, INFINITE);
    CloseHandle(work.thread);
    work.thread = nullptr;
    work.run = nullptr;
    const auto finished = std::exchange(work.finished, nullptr);
    ClearProgress(stage);
    ShowProgress(stage);  // the plug-in may be building; what it has noted meanwhile was not looked at
    if (work.error.empty()) {
        finished(stage);
    } else {
        ShowStatus(stage, "");
        ShowMessage(*stage, nullptr, work.error, MB_ICONERROR);
    }
    UpdateControls(stage);
    if (std::exchange(work.closesStage, false)) PostMessageW(stage->window, WM_CLOSE, 0, 0);
}

void WaitForWork(Stage* stage) {
    MSG message;
    while (IsWorking(*stage) && GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace kfx::stage
