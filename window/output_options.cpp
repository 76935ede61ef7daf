// SPDX-License-Identifier: MIT
#include "window/output_options.h"

#include "documents/control_kinds.h"
#include "framework/source_animation.h"
#include "resources/palette_names.h"
#include "resources/resource_ids.h"
#include "window/dialog_services.h"
#include "window/plugin_state.h"
#include "window/source_opening.h"

namespace kfx {
namespace {

constexpr char kPaletteNames[] = FIXED_PALETTE_NAMES;
constexpr char kPaletteNamesWithSource[] = FIXED_PALETTE_NAMES ";" PALETTE_NAME_SOURCE;

struct CheckBoxRow {
    int id;
    uint32_t* variable;
};

constexpr CheckBoxRow kCheckBoxes[] = {
    {.id = IDC_TRUE_COLOR, .variable = &settings.truecolour},
    {.id = IDC_DITHER, .variable = &settings.mainDither},
    {.id = IDC_CUSTOM_PALETTE, .variable = &settings.customPalette},
    {.id = IDC_SUPERCOMPRESS, .variable = &settings.mainSupercompress},
    {.id = IDC_ADD_COMMENT, .variable = &settings.addDescriptiveCommentBlock},
    {.id = IDC_LOCAL_BACKGROUND, .variable = &settings.localBackgroundUse},
};

void RefuseOption(HWND window, int checkBox) {
    CheckDlgButton(window, checkBox, BST_UNCHECKED);
    EnableWindow(GetDlgItem(window, checkBox), FALSE);
}

// Disabling the control with the focus would leave the keyboard without one.
void Enable(HWND window, int id, bool enabled) {
    const HWND control = GetDlgItem(window, id);
    if (!enabled && GetFocus() == control) MoveFocus(window, IDC_SELECT);
    EnableWindow(control, enabled);
}

bool IsPushButton(HWND control) {
    return (SendMessageA(control, WM_GETDLGCODE, 0, 0) & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) != 0;
}

void ShowAsDefault(HWND button, bool isDefault) {
    SendMessageA(button, BM_SETSTYLE, isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON, TRUE);
}

// What Enter presses while no push button has the focus.
void SetDefaultButton(HWND window, int button) {
    const auto before = static_cast<DWORD>(SendMessageA(window, DM_GETDEFID, 0, 0));
    if (LOWORD(before) == button) return;
    SendMessageA(window, DM_SETDEFID, static_cast<WPARAM>(button), 0);
    // A push button with the focus stays what Enter presses, until the focus leaves it.
    const HWND chosen = GetDlgItem(window, button), focus = GetFocus();
    if (focus == chosen || GetParent(focus) != window || !IsPushButton(focus)) return;
    ShowAsDefault(chosen, false);
    ShowAsDefault(focus, true);
}

}  // namespace

void BindOutputOptions(HWND window) {
    for (const CheckBoxRow& row : kCheckBoxes) {
        CheckDlgButton(window, row.id, *row.variable ? BST_CHECKED : BST_UNCHECKED);
        BindControl(GetDlgItem(window, row.id), BoundKind::CheckBox, row.variable);
    }
    FillPaletteList(window);
    BindControl(GetDlgItem(window, IDC_PALETTE), BoundKind::List, &settings.mainPalette);
    BindControl(GetDlgItem(window, IDC_BACKGROUND_COLOR), BoundKind::ColorButton,
                &settings.localBackgroundColor);
}

void ApplyHostLimits(HWND window) {
    if (!(plugin.host->capabilities & kHostTakesTrueColor)) {
        settings.truecolour = 0;
        RefuseOption(window, IDC_TRUE_COLOR);
    }
    // The setting for supercompression is kept: another host may accept it.
    if (!(plugin.host->capabilities & kHostTakesSupercompressed)) RefuseOption(window, IDC_SUPERCOMPRESS);
}

void FillPaletteList(HWND window) {
    const HWND list = GetDlgItem(window, IDC_PALETTE);
    SourceFacts source;
    const bool hasPalette = ReadSourceFacts(&source) && source.globalColors > 0;
    FillList(list, hasPalette ? kPaletteNamesWithSource : kPaletteNames);
    SendMessageA(list, CB_SETCURSEL, settings.mainPalette, 0);
}

void OnPaletteChoice(HWND window) {
    const LRESULT selection = SendDlgItemMessageA(window, IDC_PALETTE, CB_GETCURSEL, 0, 0);
    settings.mainPalette = selection < 0 ? 0 : static_cast<uint32_t>(selection);
}

void OnCustomPalette(HWND window) {
    settings.customPalette = IsDlgButtonChecked(window, IDC_CUSTOM_PALETTE) == BST_CHECKED;
    Enable(window, IDC_PALETTE, settings.customPalette != 0);
}

void EnableDependentControls(HWND window) {
    SetDefaultButton(window, plugin.source ? IDC_BUILD : IDC_SELECT);
    Enable(window, IDC_BUILD, plugin.source != nullptr);
    Enable(window, IDC_TEST, plugin.source != nullptr);
    Enable(window, IDC_BACKGROUND_COLOR, IsDlgButtonChecked(window, IDC_LOCAL_BACKGROUND) == BST_CHECKED);
}

}  // namespace kfx
