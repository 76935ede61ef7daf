// SPDX-License-Identifier: MIT
// Every function that the DLL imports, and how it fails.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "tests/dll/support/refused_imports.h"

namespace kfx::test {

// Functions of one kind. A session refuses all of them at once, first their first calls, then their second
// ones and so on: opening a window for each call would take minutes.
struct Section {
    const char* name;
    std::vector<Refusal> refusals;
};

const std::vector<Section>& RefusalSections();

// What has no failure to report, reports only a mistake in its arguments, or gives something back; and what
// the runtime calls while the library is loaded or unloaded, before and after the table can be changed.
extern const std::set<std::string> kCannotFail;

// What can fail, but is not called by a session: the runtime's own calls, made only while the library is
// loaded, before the table can be changed, or not at all; and what reads fields, which no panel has.
extern const std::set<std::string> kNotCalled;

}  // namespace kfx::test
