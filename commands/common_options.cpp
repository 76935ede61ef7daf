// SPDX-License-Identifier: MIT
#include "commands/common_options.h"

#include <algorithm>
#include <string>

#include "commands/parser_words.h"
#include "commands/text_match.h"
#include "framework/frame_runner.h"

namespace kfx::commands {
namespace {

constexpr int kLongestDelay = 655350;  // what a GIF file can say

}  // namespace

void AddEngineOptions(CLI::App* command, const OptionTarget& target) {
    AddFlag(command, "--json", &target.line->json,
            "Print the result, or the error, as one JSON object on a line");
    AddFlag(command, "--quiet", &target.line->quiet, "No progress line and no notes");
    if (target.own.add) target.own.add(command, target.own.values);
}

void AddReportOptions(CLI::App* command, CommandLine* line) {
    AddFlag(command, "--json", &line->json, "Print the result, or the error, as one JSON object on a line");
    AddFlag(command, "--quiet", &line->quiet, "No notes");
}

void AddOutput(CLI::App* command, CommandLine* line, const char* name, const char* description) {
    RequireOption(AddOptionalOutput(command, line, name, description));
}

CLI::Option* AddOptionalOutput(CLI::App* command, CommandLine* line, const char* name,
                               const char* description) {
    CLI::Option* const output =
        AddText(command, {.name = name, .typeName = "FILE", .description = description}, &line->output);
    AddFlag(command, "--force", &line->force, "Replace the output when it exists");
    return output;
}

CLI::Option* AddInput(CLI::App* command, CommandLine* line, const char* name, const char* description) {
    return AddTextBehind(command, {.name = name, .typeName = "FILE", .description = description},
                         &line->inputs);
}

CLI::Option* AddInputs(CLI::App* command, CommandLine* line, const char* name,
                       const std::string& description) {
    return AddTexts(command, {.name = name, .typeName = "FILE", .description = description}, &line->inputs);
}

void AddJoinOptions(CLI::App* command, CommandLine* line) {
    AddFlag(command, "--join", &line->join, "Several files, NAME-*.png or a folder make one animation");
    AddNumber(command, "--delay", &line->delay, 0, kLongestDelay,
              "Milliseconds that each frame is shown; joins, too (without it: 100 for stills)");
}

void AddReadLimit(CLI::App* command, CommandLine* line) {
    AddNumber(command, kMaxPixelsOption, &line->maxPixels, 1, kMostMaxPixels,
              "Read inputs with up to so many million pixels over all frames (537)");
}

void AddThreads(CLI::App* command, CommandLine* line, bool sharedByFiles) {
    AddNumber(command, "--threads", &line->threads, 1, kMostFrameThreads,
              std::string("Frames at a time (as many as there are processors") +
                  (sharedByFiles ? ", shared by the files" : "") + "); the result is the same");
}

bool CheckEnding(const CommandLine& line, const std::vector<std::string>& endings, std::string* error) {
    if (std::find(endings.begin(), endings.end(), EndingOf(line.output)) != endings.end()) return true;
    *error = "the output must end in " + JoinNames(endings) + ", not \"" + line.output + "\".";
    return false;
}

}  // namespace kfx::commands
