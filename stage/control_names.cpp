// SPDX-License-Identifier: MIT
#include "stage/control_names.h"

#include <initguid.h>
#include <oleacc.h>

namespace kfx::stage {
namespace {

// Asked for once; null where there is none.
IAccPropServices* PropertyService() {
    static IAccPropServices* const service = [] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
        void* found = nullptr;
        const HRESULT made = CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                                              IID_IAccPropServices, &found);
        return SUCCEEDED(made) ? static_cast<IAccPropServices*>(found) : nullptr;
    }();
    return service;
}

}  // namespace

void NameForReaders(HWND control, const wchar_t* name) {
    if (IAccPropServices* service = PropertyService())
        service->SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, PROPID_ACC_NAME,
                                name);
}

}  // namespace kfx::stage
