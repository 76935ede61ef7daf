// SPDX-License-Identifier: MIT
#include "stage/control_names.h"

#include <algorithm>
#include <iterator>

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

const wchar_t* NameOfControl(int control) {
    const auto* const found =
        std::find_if(std::begin(kControlNames), std::end(kControlNames),
                     [control](const ControlName& one) { return one.control == control; });
    return found == std::end(kControlNames) ? nullptr : found->name;
}

void NameForReaders(HWND control) {
    const wchar_t* const name = NameOfControl(GetDlgCtrlID(control));
    IAccPropServices* const service = name ? PropertyService() : nullptr;
    if (service)
        service->SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, PROPID_ACC_NAME,
                                name);
}

}  // namespace kfx::stage
