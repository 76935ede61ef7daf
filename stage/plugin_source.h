// SPDX-License-Identifier: MIT
// Another source for the plug-in while its window is open: a file that was dropped, or a test that was kept.
// The plug-in gets it as if its user had pressed its button for that.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <windows.h>
#include <shellapi.h>

#include "commands/settings_file.h"
#include "stage/film.h"

namespace kfx::stage {

struct PluginOpening;

// For the plug-in's thread: makes the window that takes sources, and later lets the plug-in's window take
// files that are dropped on it. Stage is told of these by kFilesDropped. The thread's end destroys the first.
void MakeSourceTaker(PluginOpening* opening);
void AcceptDrops(HWND plugin, HWND stageWindow);

// The files of a drop, which is freed.
std::vector<std::string> FilesOfDrop(HDROP drop);

// For the main window. False: the plug-in's window is not there yet, a box of its own stands before it, or it
// is building.
bool CanGiveSource(const PluginOpening& opening);

// The plug-in opens the file; its user is not asked for one. A settings document changes its controls only.
void GiveFile(const PluginOpening& opening, const std::string& path);

// The plug-in goes on with this animation, whose file is still the one that it names.
void GiveFilm(const PluginOpening& opening, std::shared_ptr<const Film> film);

// For the plug-in's thread: its controls get these settings once it has taken the source that it is given.
void ApplyLater(const PluginOpening& opening, const commands::SettingsDocument& settings);

}  // namespace kfx::stage
