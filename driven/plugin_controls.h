// SPDX-License-Identifier: MIT
// The controls of the plug-in's window, found by what the window shows. Everything here works from another
// thread than the window's: a window that does not answer in time reads as empty.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

#include "commands/parameter.h"

namespace kfx::driven {

// The controls that each plug-in window of this interface has.
enum PluginControl {
    kBuildButton = 1,
    kCancelButton = 2,
    kPaletteList = 13,
    kTestButton = 24,
    kPreviewArea = 25,
    kEffectList = 50,
    kSelectButton = 51,
    kBackgroundButton = 54,
};

constexpr DWORD kLongestLook = 100;  // milliseconds; also how often progress is shown

// For how many seconds the answer to a message is waited for; at most, and at the start, a minute.
void SetAnswerLimit(int seconds);
int AnswerLimit();

// Whether an answer has not come in time since the limit was set. No message is sent any more then.
bool HasStoppedAnswering();

// Sends a message and waits for its answer; 0 when none comes.
LRESULT Send(HWND window, UINT message, WPARAM word = 0, LPARAM pointer = 0);

// A control's notification, as the control itself would send it to its window.
void Notify(HWND window, HWND control, WORD code);

// A plug-in's window, by the controls that it has.
bool IsPluginWindow(HWND window);

// For whoever waits for the window from its own thread: an event that is set after anything about it may have
// changed. Null: there is none, and whoever waits looks from time to time.
void SetChangeEvent(HANDLE event);

// Waits for the next change, for the thread's end or for kLongestLook, after which a look is due whatever has
// been told. `thread` may be null.
void WaitForChange(HANDLE thread);

// What pressing a button of the window does, once the window takes messages.
void PressButton(HWND window, int button);

std::string ControlText(HWND control);
std::string ControlClass(HWND control);

// The rows of a drop-down list.
std::vector<std::string> ListRows(HWND list);

// The first visible check box outside the effects' panels with this name; null: there is none.
HWND FindOption(HWND window, const std::string& name);

// The parameters on the panel that the window shows, in the panel's order.
std::vector<commands::Parameter> ReadParameters(HWND window);

// Moves the control as a user would. False: the plug-in did not take the value.
bool SetParameterValue(HWND window, const commands::Parameter& parameter, int value);

}  // namespace kfx::driven
