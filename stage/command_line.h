// SPDX-License-Identifier: MIT
// The command line of kestrel-stage.
#pragma once

#include <string>
#include <vector>

namespace kfx::stage {

enum class Command { Window, Apply, Effects, Sample, Sheet, Gallery };

enum class Choice { Unset, Off, On };

// A parameter of the effect as the user names it.
struct Setting {
    std::string name;
    std::string value;
};

struct CommandLine {
    Command command = Command::Window;
    std::vector<std::string> inputs;
    std::string output;
    std::string plugin;  // empty: the DLL beside the program
    bool json = false;
    bool quiet = false;
    bool showWindow = false;
    int timeoutSeconds = 600;

    std::string effect;
    std::vector<Setting> settings;
    std::string palette;  // empty: whatever suits the output
    bool dither = false;
    bool supercompress = false;
    bool trueColor = false;
    Choice comment = Choice::Unset;
    std::string localBackground;  // RRGGBB or "none"; empty: the plug-in's default
    bool fastRemap = false;
    int ditherBrightness = -1;  // -1: the plug-in's default
    int ditherContrast = -1;
};

enum class ParseOutcome { Run, ShowText, Error };

// Reads the arguments (UTF-8, without the program's name). ShowText: `*text` is the help or the version that
// was asked for. Error: `*text` is one sentence.
ParseOutcome ParseCommandLine(const std::vector<std::string>& arguments, CommandLine* line,
                              std::string* text);

// The colour of "RRGGBB" or "#RRGGBB" as 0x00BBGGRR. False: it is not written so.
bool ParseColor(const std::string& text, unsigned* color);

// A file name's ending in lower case, such as ".gif"; empty when it has none.
std::string EndingOf(const std::string& path);

}  // namespace kfx::stage
