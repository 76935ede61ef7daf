// SPDX-License-Identifier: MIT
#include "stage/taskbar.h"

#include <initguid.h>
#include <shobjidl.h>

namespace kfx::stage {
namespace {

// Asked for once; null where there is none.
ITaskbarList3* TaskbarList() {
    static ITaskbarList3* const list = [] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
        void* found = nullptr;
        if (FAILED(CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3,
                                    &found)))
            return static_cast<ITaskbarList3*>(nullptr);
        auto* taskbar = static_cast<ITaskbarList3*>(found);
        if (SUCCEEDED(taskbar->HrInit())) return taskbar;
        taskbar->Release();
        return static_cast<ITaskbarList3*>(nullptr);
    }();
    return list;
}

}  // namespace

void ShowTaskbarProgress(HWND window, int done, int total) {
    ITaskbarList3* list = TaskbarList();
    if (!list) return;
    list->SetProgressState(window, total > 0 ? TBPF_NORMAL : TBPF_INDETERMINATE);
    if (total > 0)
        list->SetProgressValue(window, static_cast<ULONGLONG>(done), static_cast<ULONGLONG>(total));
}

void ClearTaskbarProgress(HWND window) {
    if (ITaskbarList3* list = TaskbarList()) list->SetProgressState(window, TBPF_NOPROGRESS);
}

}  // namespace kfx::stage
