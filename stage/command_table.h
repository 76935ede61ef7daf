// SPDX-License-Identifier: MIT
// The table of Stage's commands. Menus, accelerators, buttons, tooltips and the list of keys are made from
// it.
#pragma once

#include <span>
#include <string>

#include <windows.h>

#include "stage/command_ids.h"

namespace kfx::stage {

struct Stage;

enum class Menu { File, Edit, View, Play, Help, None };

// A virtual key with the modifiers of ACCEL. No key: there is none.
struct Shortcut {
    WORD key = 0;
    BYTE modifiers = 0;  // FCONTROL, FSHIFT, FALT
};

struct CommandRow {
    CommandId id;
    Menu menu;
    bool startsGroup = false;  // a line stands before it in its menu
    const char* text;          // UTF-8, with & before the letter that is underlined
    Shortcut shortcut = {};
    Shortcut otherShortcuts[2] = {};
    bool (*isPossible)(const Stage& stage) = nullptr;      // null: always
    bool (*isChecked)(const Stage& stage) = nullptr;       // null: never
    std::string (*textNow)(const Stage& stage) = nullptr;  // in place of `text`; null: that holds
    void (*run)(Stage* stage);
};

std::span<const CommandRow> Commands();

// Null: there is no such command.
const CommandRow* FindCommand(int id);

bool IsPossible(const Stage& stage, const CommandRow& row);

// Its text for a menu, or without & and dots for anything else.
std::string MenuTextOf(const Stage& stage, const CommandRow& row);
std::string PlainTextOf(const Stage& stage, const CommandRow& row);

// "Ctrl+Shift+S"; empty when there is none.
std::string ShortcutText(const Shortcut& shortcut);

// Runs the command of this number when it is possible, and shows what has changed.
void RunCommand(Stage* stage, int id);

}  // namespace kfx::stage
