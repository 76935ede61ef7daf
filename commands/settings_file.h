// SPDX-License-Identifier: MIT
// Settings documents (.kx1), as the plug-in's window saves them: to options of kestrel apply and back.
#pragma once

#include <string>
#include <vector>

#include "commands/job.h"
#include "commands/recipe_words.h"

namespace kfx::commands {

// A line that names a control.
struct ControlLine {
    int id = 0;
    std::string text;
};

struct SettingsDocument {
    std::vector<std::string>
        comments;  // lines behind the first that begin with ";", without it and line ends
    std::vector<ControlLine> lines;
    bool hasEveryBox = false;  // read from the window itself: a box that files leave out has a line, too
};

// Reads a document by the rules of the window's reader: lines that name no control are skipped, also behind
// the document's end. False: the first line is not that of a document.
bool ReadSettings(const std::string& text, SettingsDocument* document);

// The options that give what the window would build with this document: the selected effect with the
// parameters of its panel, and the output options. With `effects`, these are taken in place of the selected
// one. Numbers are moved into their sliders' ranges. A number that a document does not hold stays what it is
// by itself. False: the document selects no effect of the list; `*error` is a clause.
bool WordsOfSettings(const SettingsDocument& document, const std::vector<std::string>& effects,
                     OptionWords* words, std::string* error);

// Lines of a document, with their ends, for what an apply command does: the effect that comes last with all
// numbers of its panel, and the output options that are not what the window has by itself. Empty without an
// effect that the window has.
std::string ControlLinesOf(const CommandLine& line);

// The words with the names of effects, parameters and palettes in full, and the parameters in the panel's
// order.
OptionWords WithFullNames(OptionWords words);

}  // namespace kfx::commands
