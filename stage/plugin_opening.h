// SPDX-License-Identifier: MIT
// One opening of the plug-in's window, on the plug-in's thread. The main window makes the record and takes it
// back when the thread has ended; it never waits for the thread, so the thread may wait for it. A thread that
// hangs keeps the record.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include <windows.h>

#include "commands/host_session.h"
#include "commands/settings_file.h"
#include "driven/plugin_library.h"
#include "stage/film.h"
#include "stage/palette_search.h"
#include "stage/plugin_watch.h"
#include "stage/progress.h"

namespace kfx::stage {

struct PluginOpening {
    // Set by the main window before the thread starts.
    driven::PluginLibrary* library = nullptr;  // the thread loads it where that has not been done
    HWND stageWindow = nullptr;
    std::shared_ptr<const Film> film;  // to be handed over; null: the plug-in asks for a file
    std::string originalComment;       // of the opened file
    std::shared_ptr<FramePool> pool;
    std::string folder;                   // where its file dialog begins
    commands::SettingsDocument settings;  // for its controls
    PaletteSearch search;                 // as the plug-in has it
    commands::HostSession session;

    // Of the plug-in's thread.
    Animation source;
    HWND dialog = nullptr;  // the last one that was made for the owner; may be gone
    HHOOK makeHook = nullptr;
    HHOOK showHook = nullptr;
    std::string dropped;            // the file that is opened without asking for one
    std::string sourceFingerprint;  // of what it has been given; empty: not known yet
    bool isTest = false;            // the build that is being handed over
    HWND builder = nullptr;         // the window that builds it
    bool refusing = false;          // from a frame that was refused after Stop to the end of its build

    // For both.
    HANDLE thread = nullptr;
    std::atomic<HWND> owner{nullptr};    // of the plug-in's window; never shown
    std::atomic<int> inHost{0};          // above 0 while Stage works for the plug-in on its thread
    std::atomic<bool> answered{true};    // the last kAreYouThere
    std::atomic<bool> abandoned{false};  // it has been given up: nothing is done for it any more
    Progress progress;
    std::atomic<HWND> window{nullptr};  // the plug-in's, once it can be used
    std::atomic<HWND> taker{nullptr};   // takes other sources; see plugin_source.h
    std::atomic<bool> crashed{false};
    std::string error;        // why it could not be opened; of the thread until it has ended
    std::string crashReport;  // where it was written; of the thread until it has ended

    // Of the main window.
    PluginWatch watch;
    bool isSilent = false;  // as the watch has it
};

// To the owner, which answers when its thread takes messages.
constexpr UINT kAreYouThere = WM_APP + 1;

// Marks its scope as Stage's part of the thread's work.
struct InHost {
    explicit InHost(PluginOpening* opening) : count(&opening->inHost) { ++*count; }
    ~InHost() { --*count; }
    InHost(const InHost&) = delete;
    InHost& operator=(const InHost&) = delete;

    std::atomic<int>* count;
};

// The thread: runs the plug-in's window and posts kPluginEnded.
DWORD WINAPI RunPluginThread(void* opening);

// What the session asks of a user, for BeginSession's caller.
void FillActions(PluginOpening* opening);

// Puts itself before the session's own answers: it refuses frames after Stop and notes which builds are
// tests. After BeginSession.
void StandBeforeAnswers(PluginOpening* opening);

// The values of the controls of the plug-in's window as lines of a settings document; to be called on its
// thread.
commands::SettingsDocument ReadPluginSettings(HWND window);

// Gives the lines to the controls that they name; to be called on the window's thread.
void ApplyPluginSettings(HWND window, const commands::SettingsDocument& settings);

}  // namespace kfx::stage
