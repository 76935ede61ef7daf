// SPDX-License-Identifier: MIT
#include "stage/command_table.h"

#include "stage/canvas.h"
#include "stage/help_browser.h"
#include "stage/menus.h"
#include "stage/play_commands.h"
#include "stage/stage.h"
#include "stage/steps.h"
#include "stage/view_commands.h"
#include "commands/text.h"

namespace kfx::stage {
namespace {

constexpr double kZoomStep = 1.5;

bool IsIdle(const Stage& stage) { return !IsWorking(stage) && !IsPluginOpen(stage); }
bool HasFilm(const Stage& stage) { return ShownFilm(stage.history) != nullptr; }
bool HasTest(const Stage& stage) { return stage.history.test.has_value(); }
bool CanSave(const Stage& stage) { return stage.history.current > 0 && !HasTest(stage) && IsIdle(stage); }
bool CanSaveWithin(const Stage& stage) { return HasFilm(stage) && !HasTest(stage) && IsIdle(stage); }
bool CanGoBack(const Stage& stage) { return CanUndo(stage.history) && IsIdle(stage) && !HasTest(stage); }
bool CanGoOn(const Stage& stage) { return CanRedo(stage.history) && IsIdle(stage) && !HasTest(stage); }
bool CanExport(const Stage& stage) { return HasFilm(stage) && !IsWorking(stage); }
bool CanStop(const Stage& stage) { return IsWorking(stage) || IsPluginBuilding(stage); }

template <Arrangement kArrangement>
bool IsArranged(const Stage& stage) {
    return stage.view.arrangement == kArrangement && !IsWallShown(stage);
}

template <Ground kGround>
bool HasGround(const Stage& stage) {
    return stage.view.ground == kGround;
}

std::string PlayText(const Stage& stage) { return stage.playback.playing ? "&Pause" : "&Play"; }

std::string UndoText(const Stage& stage) {
    const History& history = stage.history;
    return CanUndo(history) ? "&Undo " + history.steps[history.current].name : "&Undo";
}

std::string RedoText(const Stage& stage) {
    const History& history = stage.history;
    return CanRedo(history) ? "&Redo " + history.steps[history.current + 1].name : "&Redo";
}

std::string RepeatText(const Stage& stage) {
    return stage.history.lastUse ? "Repeat &effect: " + stage.history.lastUse->name : "Repeat &effect";
}

void OnStopWork(Stage* stage) {
    if (IsWorking(*stage))
        StopWork(stage);
    else
        StopPluginBuild(stage);
}

void OnShowHelp(Stage* stage) {
    if (!ShowHelpTopic(commands::FolderOf(stage->plugin.path), "KFXPLUG1.HTML"))
        ShowMessage(*stage, nullptr, "The help document KFXPLUG1.HTML is not beside the program.",
                    MB_ICONWARNING);
}

void OnAbout(Stage* stage) {
    ShowMessage(*stage, nullptr,
                "Kestrel Stage 16.0a\n\nPlays animations and runs the Kestrel FX plug-in on them.\n"
                "The program kestrel does the same on the command line.",
                MB_ICONINFORMATION);
}

constexpr BYTE kControl = FCONTROL, kControlShift = FCONTROL | FSHIFT;

// In the order of the menus.
constexpr CommandRow kCommands[] = {
    {.id = kOpen,
     .menu = Menu::File,
     .text = "&Open...",
     .shortcut = {'O', kControl},
     .isPossible = IsIdle,
     .run = OnOpen},
    {.id = kEffects,
     .menu = Menu::File,
     .startsGroup = true,
     .text = "&Effects plug-in...",
     .shortcut = {'E', kControl},
     .isPossible = [](const Stage& stage) { return !IsWorking(stage); },
     .run = OnEffects},
    {.id = kSave,
     .menu = Menu::File,
     .startsGroup = true,
     .text = "&Save result as...",
     .shortcut = {'S', kControl},
     .otherShortcuts = {{'S', kControlShift}},
     .isPossible = CanSave,
     .run = [](Stage* stage) { SaveResultAs(stage); }},
    {.id = kSaveWithin,
     .menu = Menu::File,
     .text = "Save &within a size...",
     .shortcut = {'M', kControl},
     .isPossible = CanSaveWithin,
     .run = OnSaveWithin},
    {.id = kExportFrames,
     .menu = Menu::File,
     .text = "E&xport frames...",
     .isPossible = CanExport,
     .run = ExportFrames},
    {.id = kExit,
     .menu = Menu::File,
     .startsGroup = true,
     .text = "&Quit",
     .shortcut = {'Q', kControl},
     .run = [](Stage* stage) { SendMessageW(stage->window, WM_CLOSE, 0, 0); }},

    {.id = kUndo,
     .menu = Menu::Edit,
     .text = "&Undo",
     .shortcut = {'Z', kControl},
     .isPossible = CanGoBack,
     .textNow = UndoText,
     .run = [](Stage* stage) { GoToStep(stage, stage->history.current - 1); }},
    {.id = kRedo,
     .menu = Menu::Edit,
     .text = "&Redo",
     .shortcut = {'Y', kControl},
     .otherShortcuts = {{'Z', kControlShift}},
     .isPossible = CanGoOn,
     .textNow = RedoText,
     .run = [](Stage* stage) { GoToStep(stage, stage->history.current + 1); }},
    {.id = kRepeatEffect,
     .menu = Menu::Edit,
     .startsGroup = true,
     .text = "Repeat &effect",
     .shortcut = {'F', kControl},
     .isPossible = CanRepeat,
     .textNow = RepeatText,
     .run = OnRepeatEffect},
    {.id = kKeepTest,
     .menu = Menu::Edit,
     .startsGroup = true,
     .text = "&Keep test",
     .shortcut = {'K', kControl},
     .isPossible = HasTest,
     .run = OnKeepTest},
    {.id = kDropTest,
     .menu = Menu::Edit,
     .text = "&Drop test",
     .shortcut = {'D', kControl},
     .isPossible = HasTest,
     .run = OnDropTest},
    {.id = kStopWork,
     .menu = Menu::Edit,
     .text = "S&top",
     .shortcut = {VK_ESCAPE, 0},
     .isPossible = CanStop,
     .run = OnStopWork},
    {.id = kGiveUpPlugin,
     .menu = Menu::Edit,
     .text = "&Give up the plug-in...",
     .isPossible = [](const Stage& stage) { return IsPluginSilent(stage) && !IsWorking(stage); },
     .run = OnGiveUpPlugin},
    {.id = kCopyFrame,
     .menu = Menu::Edit,
     .startsGroup = true,
     .text = "&Copy frame",
     .shortcut = {'C', kControl},
     .isPossible = CanExport,
     .run = CopyShownFrame},

    {.id = kWipeView,
     .menu = Menu::View,
     .text = "&Wipe",
     .shortcut = {'W', 0},
     .isChecked = IsArranged<Arrangement::Wipe>,
     .run = [](Stage* stage) { OnArrangement(stage, Arrangement::Wipe); }},
    {.id = kSideBySideView,
     .menu = Menu::View,
     .text = "Side &by side",
     .shortcut = {'B', 0},
     .isChecked = IsArranged<Arrangement::SideBySide>,
     .run = [](Stage* stage) { OnArrangement(stage, Arrangement::SideBySide); }},
    {.id = kWallView,
     .menu = Menu::View,
     .text = "&All effects",
     .shortcut = {'A', 0},
     .isPossible = HasFilm,
     .isChecked = IsWallShown,
     .run = [](Stage* stage) { stage->view.allEffects = true; }},
    {.id = kZoomFit,
     .menu = Menu::View,
     .startsGroup = true,
     .text = "&Fit",
     .shortcut = {'0', kControl},
     .isPossible = HasFilm,
     .isChecked = [](const Stage& stage) { return stage.view.zoom == kZoomToFit; },
     .run = OnZoomFit},
    {.id = kZoomFull,
     .menu = Menu::View,
     .text = "Full &size (1:1)",
     .shortcut = {'1', kControl},
     .isPossible = HasFilm,
     .isChecked = [](const Stage& stage) { return stage.view.zoom == 1; },
     .run = OnZoomFull},
    {.id = kZoomIn,
     .menu = Menu::View,
     .text = "Zoom &in",
     .shortcut = {VK_OEM_PLUS, kControl},
     .otherShortcuts = {{VK_ADD, kControl}, {VK_OEM_PLUS, kControlShift}},
     .isPossible = HasFilm,
     .run = [](Stage* stage) { ZoomCanvas(stage, kZoomStep); }},
    {.id = kZoomOut,
     .menu = Menu::View,
     .text = "Zoom &out",
     .shortcut = {VK_OEM_MINUS, kControl},
     .otherShortcuts = {{VK_SUBTRACT, kControl}},
     .isPossible = HasFilm,
     .run = [](Stage* stage) { ZoomCanvas(stage, 1 / kZoomStep); }},
    {.id = kCheckeredGround,
     .menu = Menu::View,
     .startsGroup = true,
     .text = "&Checkered ground",
     .isChecked = HasGround<Ground::Checkered>,
     .run = [](Stage* stage) { OnGround(stage, Ground::Checkered); }},
    {.id = kLightGround,
     .menu = Menu::View,
     .text = "White &ground",
     .isChecked = HasGround<Ground::Light>,
     .run = [](Stage* stage) { OnGround(stage, Ground::Light); }},
    {.id = kDarkGround,
     .menu = Menu::View,
     .text = "B&lack ground",
     .isChecked = HasGround<Ground::Dark>,
     .run = [](Stage* stage) { OnGround(stage, Ground::Dark); }},
    {.id = kColoredGround,
     .menu = Menu::View,
     .text = "Ground of a colo&ur...",
     .isChecked = HasGround<Ground::Colored>,
     .run = OnColoredGround},

    {.id = kPlay,
     .menu = Menu::Play,
     .text = "&Play",
     .shortcut = {'K', 0},
     .otherShortcuts = {{'P', kControl}},
     .isPossible = HasFrames,
     .textNow = PlayText,
     .run = OnPlay},
    {.id = kFirstFrame,
     .menu = Menu::Play,
     .startsGroup = true,
     .text = "&First frame",
     .shortcut = {VK_HOME, 0},
     .isPossible = CanStepBack,
     .run = OnFirstFrame},
    {.id = kPreviousFrame,
     .menu = Menu::Play,
     .text = "P&revious frame",
     .shortcut = {VK_OEM_COMMA, 0},
     .isPossible = CanStepBack,
     .run = OnPreviousFrame},
    {.id = kNextFrame,
     .menu = Menu::Play,
     .text = "&Next frame",
     .shortcut = {VK_OEM_PERIOD, 0},
     .isPossible = CanStepOn,
     .run = OnNextFrame},
    {.id = kLastFrame,
     .menu = Menu::Play,
     .text = "&Last frame",
     .shortcut = {VK_END, 0},
     .isPossible = CanStepOn,
     .run = OnLastFrame},
    {.id = kSlower,
     .menu = Menu::Play,
     .startsGroup = true,
     .text = "&Slower",
     .shortcut = {VK_OEM_MINUS, 0},
     .otherShortcuts = {{VK_SUBTRACT, 0}},
     .isPossible = [](const Stage& stage) { return HasFrames(stage) && stage.playback.speed > 0; },
     .run = OnSlower},
    {.id = kFaster,
     .menu = Menu::Play,
     .text = "F&aster",
     .shortcut = {VK_OEM_PLUS, 0},
     .otherShortcuts = {{VK_ADD, 0}, {VK_OEM_PLUS, FSHIFT}},
     .isPossible =
         [](const Stage& stage) { return HasFrames(stage) && stage.playback.speed + 1 < SpeedCount(); },
     .run = OnFaster},
    {.id = kUsualSpeed,
     .menu = Menu::Play,
     .text = "&Usual speed",
     .isPossible = HasFrames,
     .run = OnUsualSpeed},
    {.id = kLoopForever,
     .menu = Menu::Play,
     .startsGroup = true,
     .text = "Play for &ever",
     .shortcut = {'L', 0},
     .isChecked = [](const Stage& stage) { return stage.playback.forever; },
     .run = OnLoopForever},

    {.id = kShowHelp, .menu = Menu::Help, .text = "&Help", .shortcut = {VK_F1, 0}, .run = OnShowHelp},
    {.id = kShowKeys, .menu = Menu::Help, .text = "&Keys", .shortcut = {VK_F1, FCONTROL}, .run = ShowKeyList},
    {.id = kAbout, .menu = Menu::Help, .startsGroup = true, .text = "&About Kestrel Stage", .run = OnAbout},
};

struct KeyName {
    WORD key;
    const char* name;
};

constexpr KeyName kKeyNames[] = {
    {VK_ESCAPE, "Esc"}, {VK_HOME, "Home"},      {VK_END, "End"},     {VK_F1, "F1"},
    {VK_OEM_PLUS, "+"}, {VK_OEM_MINUS, "-"},    {VK_OEM_COMMA, ","}, {VK_OEM_PERIOD, "."},
    {VK_ADD, "Num +"},  {VK_SUBTRACT, "Num -"}, {VK_SPACE, "Space"},
};

std::string KeyText(WORD key) {
    for (const KeyName& known : kKeyNames) {
        if (known.key == key) return known.name;
    }
    return std::string(1, static_cast<char>(key));
}

}  // namespace

std::span<const CommandRow> Commands() { return kCommands; }

const CommandRow* FindCommand(int id) {
    for (const CommandRow& row : kCommands) {
        if (row.id == id) return &row;
    }
    return nullptr;
}

bool IsPossible(const Stage& stage, const CommandRow& row) {
    return !row.isPossible || row.isPossible(stage);
}

std::string MenuTextOf(const Stage& stage, const CommandRow& row) {
    const std::string keys = ShortcutText(row.shortcut);
    return (row.textNow ? row.textNow(stage) : row.text) + (keys.empty() ? "" : "\t" + keys);
}

std::string PlainTextOf(const Stage& stage, const CommandRow& row) {
    std::string text = row.textNow ? row.textNow(stage) : row.text;
    std::erase(text, '&');
    const size_t dots = text.find("...");
    return dots == std::string::npos ? text : text.substr(0, dots);
}

std::string ShortcutText(const Shortcut& shortcut) {
    if (!shortcut.key) return "";
    return std::string(shortcut.modifiers & FCONTROL ? "Ctrl+" : "") +
           (shortcut.modifiers & FSHIFT ? "Shift+" : "") + (shortcut.modifiers & FALT ? "Alt+" : "") +
           KeyText(shortcut.key);
}

void RunCommand(Stage* stage, int id) {
    const CommandRow* row = FindCommand(id);
    if (!row || !IsPossible(*stage, *row)) return;
    row->run(stage);
    UpdateControls(stage);
}

}  // namespace kfx::stage
