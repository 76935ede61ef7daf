// SPDX-License-Identifier: MIT
#include "window/picture_controls.h"

namespace kfx {
namespace {

constexpr char kProcedureProperty[] = "KestrelPictureProcedure";  // the procedure before ours

LRESULT CALLBACK PictureProcedure(HWND picture, UINT message, WPARAM word, LPARAM data) {
    const HANDLE known = GetPropA(picture, kProcedureProperty);
    const WNDPROC previous = known ? reinterpret_cast<WNDPROC>(known) : DefWindowProcA;
    switch (message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            return 0;  // a button would take the focus
        case WM_LBUTTONUP:
            SendMessageA(GetParent(picture), WM_COMMAND,
                         MAKEWPARAM(static_cast<WORD>(GetDlgCtrlID(picture)), BN_CLICKED),
                         reinterpret_cast<LPARAM>(picture));
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_NCDESTROY:
            RemovePropA(picture, kProcedureProperty);
            break;
    }
    return CallWindowProcA(previous, picture, message, word, data);
}

}  // namespace

void MakePictureControl(HWND dialog, int id) {
    const HWND picture = GetDlgItem(dialog, id);
    if (!picture || GetPropA(picture, kProcedureProperty)) return;
    // Where its own procedure cannot be kept, the control stays an ordinary button.
    if (SetPropA(picture, kProcedureProperty,
                 reinterpret_cast<HANDLE>(GetWindowLongPtrA(picture, GWLP_WNDPROC))))
        SetWindowLongPtrA(picture, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(PictureProcedure));
}

}  // namespace kfx
