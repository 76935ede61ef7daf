// SPDX-License-Identifier: MIT
#include "window/commands.h"

#include <cstring>

#include "documents/document_file.h"
#include "resources/resource_ids.h"
#include "window/about.h"
#include "window/build_command.h"
#include "window/control_binding.h"
#include "window/dialog_services.h"
#include "window/effect_list.h"
#include "window/file_dialogs.h"
#include "window/output_options.h"
#include "window/paths.h"
#include "window/plugin_state.h"
#include "window/plugin_window.h"
#include "window/slider_menu.h"
#include "window/source_opening.h"

namespace kfx {
namespace {

constexpr char kUntitled[] = "untitled.kx1";

// Set while a build runs. A host may handle the user's clicks while it takes the frames: they may change
// controls, but neither start a second build nor replace the source of the first.
bool building = false;

void RunBuildCommand(HWND window, BuildMode mode) {
    building = true;
    Build(window, plugin.host, mode);
    building = false;
}

void BuildAndClose(HWND window) {
    RunBuildCommand(window, BuildMode::Build);
    if (IsOpen(window)) EndDialog(window, 1);
}

void BuildTest(HWND window) { RunBuildCommand(window, BuildMode::Test); }

void BuildPlain(HWND window) { RunBuildCommand(window, BuildMode::Plain); }

void Cancel(HWND window) { EndDialog(window, 0); }

void ShowFirstHelpTopic(HWND window) { ShowHelp(window, "PREFACE"); }

void SelectSource(HWND window) {
    settings.fileNamePath[0] = 0;
    OpenSourceAnimation(window, false);
}

void ReopenSource(HWND window) { OpenSourceAnimation(window, true); }

void ShowDocumentMenu(HWND window) {
    const HMENU menu = CreatePopupMenu();
    AppendMenuA(menu, MF_STRING, IDM_DOCUMENT_OPEN, "Open");
    AppendMenuA(menu, MF_STRING, IDM_DOCUMENT_SAVE, "Save");
    AppendMenuA(menu, MF_STRING, IDM_DOCUMENT_SAVE_AS, "Save as...");
    POINT cursor = {};
    GetCursorPos(&cursor);
    TrackPopupMenu(menu, TPM_LEFTALIGN | TPM_RIGHTBUTTON, cursor.x, cursor.y, 0, window, nullptr);
    DestroyMenu(menu);
}

void OpenDocument(HWND window) {
    char path[kTextBytes];
    std::memcpy(path, settings.currentFileName, sizeof path);
    if (!AskDocumentToOpen(window, path) || !IsOpen(window)) return;
    if (!ReadDocument(window, path, ShowMessage)) return;
    SendMessageA(window, kWindowMessage, kShowCurrentPanel, 0);
    std::memcpy(settings.currentFileName, path, sizeof path);
    // What depends on the document's check boxes follows them, as far as this host accepts it.
    ApplyHostLimits(window);
    OnCustomPalette(window);
    EnableDependentControls(window);
}

void SaveDocumentAs(HWND window) {
    char path[kTextBytes];
    std::memcpy(path, settings.currentFileName, sizeof path);
    if (!AskDocumentToSave(window, path) || !IsOpen(window)) return;
    if (!WriteDocument(window, path, ShowMessage)) return;
    std::memcpy(settings.currentFileName, path, sizeof path);
}

void SaveDocument(HWND window) {
    if (lstrcmpiA(FileNameIn(settings.currentFileName), kUntitled) == 0)
        SaveDocumentAs(window);
    else
        WriteDocument(window, settings.currentFileName, ShowMessage);
}

constexpr int kAnyNotification = -1;

struct CommandRow {
    int id;
    int notification = kAnyNotification;
    void (*run)(HWND window);
    bool evenWhileBuilding = false;
};

constexpr CommandRow kCommands[] = {
    {.id = IDC_BUILD, .run = BuildAndClose},
    {.id = IDC_CANCEL, .run = Cancel},
    {.id = IDC_HELP_BUTTON, .run = ShowFirstHelpTopic},
    {.id = IDC_PALETTE, .notification = CBN_CLOSEUP, .run = OnPaletteChoice, .evenWhileBuilding = true},
    {.id = IDC_CUSTOM_PALETTE, .run = OnCustomPalette, .evenWhileBuilding = true},
    {.id = IDC_ABOUT, .run = ShowAbout},
    {.id = IDC_TEST, .run = BuildTest},
    {.id = IDC_OPEN_SAVE, .run = ShowDocumentMenu},
    {.id = IDM_DOCUMENT_OPEN, .run = OpenDocument},
    {.id = IDM_DOCUMENT_SAVE, .run = SaveDocument},
    {.id = IDM_DOCUMENT_SAVE_AS, .run = SaveDocumentAs},
    {.id = IDM_BUILD_PLAIN, .run = BuildPlain},
    {.id = IDM_SLIDER_DEFAULT, .run = OnSliderDefault, .evenWhileBuilding = true},
    {.id = IDC_EFFECT, .notification = CBN_CLOSEUP, .run = OnEffectChoice, .evenWhileBuilding = true},
    {.id = IDC_SELECT, .run = SelectSource},
    {.id = IDM_REOPEN_SOURCE, .run = ReopenSource},
};

}  // namespace

void OnCommand(HWND window, int id, int notification, HWND control) {
    if (!IsOpen(window)) return;
    for (const CommandRow& row : kCommands) {
        if (row.id != id) continue;
        const bool meant = row.notification == kAnyNotification || row.notification == notification;
        if (meant && (row.evenWhileBuilding || !building)) row.run(window);
        return;
    }
    OnControlChange(window, control, id, notification);
    if (IsOpen(window) && id == IDC_LOCAL_BACKGROUND) EnableDependentControls(window);
}

}  // namespace kfx
