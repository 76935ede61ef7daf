// SPDX-License-Identifier: MIT
// plugin_screens FOLDER [--look N] [--contrast]: opens the plug-in's window with the sample animation, and
// writes a PNG file of each effect's panel, of tooltips, of About and of message boxes into the folder, which
// must exist.
// `--look` is the host's choice of buttons, 0 to 3; with --contrast the system's colours are those of a black
// screen, and the system says so. Names each text that is cut; exit code 1 when there is one, 5 when
// something failed.
// plugin_screens --stage FOLDER: pictures of Stage instead.
// plugin_screens --check ...: the same as without it, but writes nothing.
// plugin_screens --sheet FOLDER: draws the pictures in the folder's folders on one sheet.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <windows.h>

#include "commands/host_session.h"
#include "driven/import_table.h"
#include "driven/plugin_run.h"
#include "host/host_records.h"
#include "media/sample_animation.h"
#include "screens/sheet.h"
#include "screens/stage_pictures.h"
#include "screens/window_pictures.h"

namespace {

using namespace kfx;
using namespace kfx::commands;
using namespace kfx::driven;
using namespace kfx::screens;

constexpr int kAboutButton = 18;

// A control whose tooltip is shown, and the effect with it on its panel.
struct Tip {
    const char* name;
    const char* effect;
    int control;
};
constexpr Tip kTips[] = {{"Tooltip of a slider", "Ripple", 142},
                         {"Tooltip of an option", "Ripple", 19},
                         {"Tooltip of a disabled control", "Ripple", 41},
                         {"Tooltip of the preview", "Emboss", kPreviewArea}};

struct Arguments {
    std::string folder;
    uint32_t look = 0;
    bool hasContrast = false;
    bool ofStage = false;
    bool onlyChecks = false;
    bool onlySheet = false;
};

struct Screens {
    Arguments arguments;
    PluginLibrary library;
    HostSession session;
    Animation source;
    PluginRun run;
    size_t cutTexts = 0;
};

// What the host refuses, so that the plug-in shows its message about that. The host's function gets no
// context.
HostRequest refused = HostRequest::Progress;
HostCallback answer = nullptr;

uint64_t AnswerOrRefuse(uint64_t context, uint32_t request, uint64_t word, uint64_t pointer) {
    const auto asked = static_cast<HostRequest>(request);
    if (asked == refused && refused != HostRequest::Progress) return 0;
    return answer(context, request, word, pointer);
}

Animation SampleSource() {
    Animation animation;
    animation.width = kSampleWidth;
    animation.height = kSampleHeight;
    animation.frames.emplace_back().pixels = DrawSampleFrame(0).pixels;
    animation.frames.back().delay = kSampleDelay;
    return animation;
}

// White on black, as for people who need strong contrast.
void UseContrastColors() {
    constexpr COLORREF kBlack = RGB(0, 0, 0), kWhite = RGB(255, 255, 255);
    const std::pair<int, COLORREF> colors[] = {
        {COLOR_3DFACE, kBlack},           {COLOR_BTNTEXT, kWhite},
        {COLOR_WINDOW, kBlack},           {COLOR_WINDOWTEXT, kWhite},
        {COLOR_3DSHADOW, kWhite},         {COLOR_3DDKSHADOW, kWhite},
        {COLOR_3DHILIGHT, kWhite},        {COLOR_3DLIGHT, kBlack},
        {COLOR_GRAYTEXT, RGB(0, 255, 0)}, {COLOR_HIGHLIGHT, RGB(0, 0, 255)},
        {COLOR_HIGHLIGHTTEXT, kWhite},    {COLOR_SCROLLBAR, kBlack}};
    for (const auto& [element, color] : colors) SetSysColors(1, &element, &color);
}

BOOL WINAPI TellContrast(UINT what, UINT number, void* answered, UINT update) {
    if (what != SPI_GETHIGHCONTRAST) return SystemParametersInfoA(what, number, answered, update);
    static_cast<HIGHCONTRASTA*>(answered)->dwFlags = HCF_HIGHCONTRASTON;
    return TRUE;
}

// Wine has no such setting.
bool LetPluginSeeContrast(const PluginLibrary& library) {
    for (const Import& import : ImportsOf(library.module)) {
        if (import.slot && import.function && std::strcmp(import.function, "SystemParametersInfoA") == 0)
            return SetImport(import, reinterpret_cast<void*>(TellContrast));
    }
    return false;
}

bool Fail(const Screens& screens, const std::string& what) {
    std::fprintf(stderr, "plugin_screens: %s %s\n", what.c_str(), screens.run.failure.error.c_str());
    return false;
}

struct ShownWindow {
    const char* className;
    HWND window;
};

// A window of the plug-in's thread other than its own, once it is visible.
HWND FindShown(DWORD thread, const char* className) {
    ShownWindow shown = {.className = className, .window = nullptr};
    const auto note = [](HWND window, LPARAM found) -> BOOL {
        auto* wanted = reinterpret_cast<ShownWindow*>(found);
        if (IsWindowVisible(window) && !IsPluginWindow(window) && ControlClass(window) == wanted->className)
            wanted->window = window;
        return TRUE;
    };
    EnumThreadWindows(thread, note, reinterpret_cast<LPARAM>(&shown));
    return shown.window;
}

HWND FindBox(DWORD thread) { return FindShown(thread, "#32770"); }
HWND FindTip(DWORD thread) { return FindShown(thread, "tooltips_class32"); }

bool Note(Screens* screens, const std::string& name, HWND window) {
    for (const std::string& text : CutTexts(window)) {
        std::printf("%s: %s\n", name.c_str(), text.c_str());
        ++screens->cutTexts;
    }
    if (screens->arguments.onlyChecks) return true;
    std::string error;
    return WritePng(screens->arguments.folder + "/" + name + ".png",
                    PictureOf(window, FindTip(screens->run.threadId)), &error) ||
           Fail(*screens, error);
}

bool NotePanels(Screens* screens) {
    const std::vector<std::string> effects = ListRows(GetDlgItem(screens->run.window, kEffectList));
    for (size_t row = 0; row < effects.size(); ++row) {
        if (!ChooseRow(&screens->run, kEffectList, static_cast<int>(row)))
            return Fail(*screens, effects[row] + " cannot be chosen.");
        if (!Note(screens, effects[row], screens->run.window)) return false;
    }
    return !effects.empty() || Fail(*screens, "There are no effects.");
}

// Presses a button that makes the plug-in show a box, and closes that.
bool NoteBox(Screens* screens, const std::string& name, int button) {
    PressButton(screens->run.window, button);
    HWND box = nullptr;
    const DWORD thread = screens->run.threadId;
    if (!WaitFor([&] { return (box = FindBox(thread)) != nullptr; }))
        return Fail(*screens, name + " does not appear.");
    if (!Note(screens, name, box)) return false;
    for (const int answered : {IDOK, IDCANCEL})
        PostMessageA(box, WM_COMMAND, static_cast<WPARAM>(answered), 0);
    if (!WaitFor([&] { return FindBox(thread) == nullptr; })) return Fail(*screens, name + " stays.");
    return true;
}

bool NoteRefusal(Screens* screens, const std::string& name, HostRequest request) {
    refused = request;
    const bool noted = NoteBox(screens, name, kTestButton);
    refused = HostRequest::Progress;
    return noted;
}

// Moves the pointer to a corner of the screen, and waits until no control shows its tooltip.
bool LeaveControls(const Screens& screens) {
    SetCursorPos(1, 1);  // so that the next call moves it, whatever place was known
    SetCursorPos(0, 0);
    return WaitFor([&] { return !FindTip(screens.run.threadId); }) || Fail(screens, "A tooltip stays.");
}

bool NoteTip(Screens* screens, const Tip& tip) {
    const std::vector<std::string> effects = ListRows(GetDlgItem(screens->run.window, kEffectList));
    const auto row = std::find(effects.begin(), effects.end(), tip.effect) - effects.begin();
    if (!ChooseRow(&screens->run, kEffectList, static_cast<int>(row)))
        return Fail(*screens, std::string(tip.effect) + " cannot be chosen.");
    const DWORD thread = screens->run.threadId;
    RECT place = {};
    GetWindowRect(GetDlgItem(screens->run.window, tip.control), &place);
    SetCursorPos((2 * place.left + place.right) / 3, (place.top + place.bottom) / 2);
    if (!WaitFor([=] { return FindTip(thread) != nullptr; }))
        return Fail(*screens, std::string(tip.name) + " does not appear.");
    if (!Note(screens, tip.name, screens->run.window)) return false;
    return LeaveControls(*screens);
}

bool NoteTips(Screens* screens) {
    return std::all_of(std::begin(kTips), std::end(kTips),
                       [screens](const Tip& tip) { return NoteTip(screens, tip); });
}

bool NoteAll(Screens* screens) {
    return LeaveControls(*screens) && NotePanels(screens) && NoteTips(screens) &&
           NoteBox(screens, "About", kAboutButton) &&
           NoteRefusal(screens, "A task refused", HostRequest::NewTestTask) &&
           NoteRefusal(screens, "A frame refused", HostRequest::AddImage);
}

bool Open(Screens* screens) {
    HostSession* session = &screens->session;
    screens->source = SampleSource();
    session->source = &screens->source;
    session->sourcePath = "C:\\Pictures\\kestrel.gif";  // is shown only
    session->keepSource = true;
    BeginSession(session, kHostTakesSupercompressed | kHostTakesTrueColor);
    session->context.buttonStyle = screens->arguments.look;
    answer = session->context.callback;
    session->context.callback = AnswerOrRefuse;
    screens->run.session = session;
    screens->run.library = &screens->library;
    screens->run.showWindow = true;
    if (!LoadPlugin(DefaultPluginPath(), nullptr, &screens->library, &screens->run.failure.error))
        return Fail(*screens, "");
    if (screens->arguments.hasContrast && !LetPluginSeeContrast(screens->library))
        return Fail(*screens, "The plug-in does not ask for strong contrast.");
    return (OpenPluginWindow(&screens->run) && SelectSource(&screens->run)) || Fail(*screens, "");
}

bool ReadArguments(int count, char** words, Arguments* arguments) {
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        if (word == "--contrast")
            arguments->hasContrast = true;
        else if (word == "--check")
            arguments->onlyChecks = true;
        else if (word == "--sheet")
            arguments->onlySheet = true;
        else if (word == "--stage")
            arguments->ofStage = true;
        else if (word == "--look" && i + 1 < count)
            arguments->look = static_cast<uint32_t>(std::atoi(words[++i]));
        else if (arguments->folder.empty() && word[0] != '-')
            arguments->folder = word;
        else
            return false;
    }
    return !arguments->folder.empty() || arguments->onlyChecks;
}

bool NoteStage(Screens* screens) {
    const auto write = [screens](const std::string& name, const Picture& picture) {
        std::string error;
        return screens->arguments.onlyChecks ||
               WritePng(screens->arguments.folder + "/" + name + ".png", picture, &error) ||
               Fail(*screens, error);
    };
    std::string error;
    return ShowStage(write, &error) || Fail(*screens, error);
}

}  // namespace

int main(int count, char** words) {
    Screens screens;
    if (!ReadArguments(count, words, &screens.arguments)) {
        std::fprintf(stderr,
                     "usage: plugin_screens [--check|--sheet] FOLDER [--look N] [--contrast] [--stage]\n");
        return 2;
    }
    std::string error;
    if (screens.arguments.onlySheet) {
        if (!WriteSheet(screens.arguments.folder, &error)) Fail(screens, error);
        return error.empty() ? 0 : 5;
    }
    SetProcessDPIAware();
    if (screens.arguments.hasContrast) UseContrastColors();
    if (screens.arguments.ofStage) return NoteStage(&screens) ? 0 : 5;
    const bool done = Open(&screens) && NoteAll(&screens);
    if (!ClosePluginWindow(&screens.run)) return 5;
    EndSession();
    if (!done) return 5;
    return screens.cutTexts == 0 ? 0 : 1;
}
