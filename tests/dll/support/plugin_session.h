// SPDX-License-Identifier: MIT
// One run of the plug-in's window: the real DLL, freshly loaded, its modal window on a thread of its own, and
// a test that drives it from outside as a user's hands would. The user's folders, the clock and the system's
// dialogs are the session's, so nothing outside the test's own folder is read or written.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/dll/support/floating_point_controls.h"
#include "tests/support/fake_host.h"

namespace kfx::test {

struct SessionOptions {
    std::string configuration;        // text of the configuration file; empty: there is none
    bool configurationFolder = true;  // whether the maker's folder exists
    bool folderLookupFails = false;   // the shell knows no application-data folder
    bool shiftHeld = false;
    int failingPanel = 0;           // the panel with this number, from 1, cannot be created
    bool scrollRangesFail = false;  // the system tells no slider its range
    long long clock = 0;            // what the DLL's clock says, in seconds; 0: the real time
    std::function<void(const std::string& configurationPath)> prepare;  // runs before the window opens
    bool japanese = false;  // the DLL sees code page 932, and the documents folder is named "\x95\x5C"
    FloatingPointControls controls;  // of the window's thread; zeros: as the system starts it
    std::function<void(HMODULE library)>
        prepareLibrary;  // called with the loaded DLL before the window opens
};

// The defaults with this configuration file.
SessionOptions WithConfiguration(const std::string& text);

// A call to one of the system's functions that the session answers in its place.
struct OpenedMenu {
    std::vector<std::pair<UINT, std::string>> items;
};
struct AskedPath {
    bool toSave;
    std::string file, folder, filter, extension;
    DWORD flags;
    bool hooked;
};

class PluginSession {
public:
    // Loads the DLL and opens the window; returns when it is idle, or when it has closed by itself.
    explicit PluginSession(FakeHost& host, const SessionOptions& options = {});
    // Closes the window if it is open and unloads the DLL.
    ~PluginSession();
    PluginSession(const PluginSession&) = delete;
    PluginSession& operator=(const PluginSession&) = delete;

    HWND Window() const;  // null when the window has closed
    HWND Control(int id) const { return GetDlgItem(Window(), id); }
    bool IsOpen() const { return Window() != nullptr; }

    // Waits until the window has done everything that was sent or posted to it. False: it closed.
    bool Settle();

    // As a user would, waiting until it is done.
    void Click(int id);
    void Choose(int list, int index);  // selects in a drop-down list and closes it up
    void Scroll(int slider, int code, int position = 0);
    void Command(int id, int notification = 0);

    // What the controls show.
    std::string TextOf(int id) const;
    bool IsChecked(int id) const;
    bool IsEnabled(int id) const;
    bool IsShown(int id) const;
    int SelectionOf(int list) const;
    std::vector<std::string> ItemsOf(int list) const;
    int PositionOf(int slider) const;

    // Applies or writes the line of a settings document through the control's own messages.
    bool ApplyLine(int id, const std::string& line);

    // Ends with Cancel, or waits for a window that ends itself, and answers what PLUGIN16DoBuild returned.
    uint64_t Close();
    uint64_t WaitUntilClosed();

    // The floating-point controls with which each request to the host found its thread.
    std::vector<FloatingPointControls> ControlsSeen() const;

    // The floating-point controls of the window's thread after PLUGIN16DoBuild; call it when the window has
    // closed.
    FloatingPointControls ControlsAfter() const;

    // Texts of the message boxes seen so far. Every box is answered with its first button, unless they are
    // held.
    std::vector<std::string> Messages() const;
    void HoldMessages(bool held);

    // For what opens a box of its own: presses the button without waiting, waits for a window with this
    // caption to appear on the window's thread, or for it to go. Null or false: it did not (see WaitFor).
    void Press(int id);
    HWND WaitForBox(const char* caption);
    // The two in one; null, without waiting for long, when the button's work was done without a box.
    HWND PressForBox(int id, const char* caption);
    bool WaitUntilGone(HWND box);

    // Answers for the system's dialogs. The menu's answer is posted as a command, as the system would.
    void AnswerMenu(UINT command);
    void AnswerFileDialog(const std::string& path);  // empty: cancelled
    void AnswerBrowser(INT_PTR result);
    std::vector<OpenedMenu> Menus() const;
    std::vector<AskedPath> AskedPaths() const;
    std::vector<std::string> OpenedPages() const;

    // Timer calls as "set 15 1000" and "kill 15", and "preview" for each time that the preview was drawn.
    std::vector<std::string> Events() const;
    void ClearEvents();

    // The timers that have been set and not been ended.
    std::set<UINT_PTR> RunningTimers() const;

    // Where the plug-in placed the controls that it made itself, by identifier.
    std::map<int, RECT> CreatedControls() const;

    // Has the window draw a control of its own drawing, or the preview, into a bitmap of this size, and
    // returns the pixels as 0x00BBGGRR, row by row from the top. `state` is as DRAWITEMSTRUCT has it.
    std::vector<COLORREF> DrawControl(int id, int width, int height, UINT state = 0);
    std::vector<COLORREF> DrawPreview(int width, int height);

    std::string ConfigurationPath() const;
    std::string ConfigurationText() const;  // empty when there is no file
    std::string DocumentsFolder() const;    // with a trailing backslash

    struct State;

private:
    std::unique_ptr<State> state_;
};

// An animation block of one small frame, for hosts to serve.
std::vector<uint8_t> OneFrame();

// One of frames of 24 x 20 pixels with different pictures; their third fields are 100, 101 and so on.
std::vector<uint8_t> ShadedFrames(uint32_t count);

// The DLL's path: it stands beside the test program.
std::string PluginPath();

// What a host calls of a loaded copy of it.
using DoBuild = uint64_t(WINAPI*)(HWND, const HostContext*);
DoBuild EntryOf(HMODULE library);

std::string ReadTextFile(const std::string& path);
void WriteTextFile(const std::string& path, const std::string& text);

}  // namespace kfx::test
