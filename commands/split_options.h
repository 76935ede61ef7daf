// SPDX-License-Identifier: MIT
// Options of an animation that is built in parts.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace kfx::commands {

struct CommandLine;
struct Failure;

struct SplitOptions {
    std::string survey;      // of --survey: the file; empty: the animation is built in one piece
    std::string surveyText;  // what the file holds, once it has been read
    // The frames of the result that are built, counted from 0; lastFrame may be kLastFrame.
    int firstFrame = 0;
    int lastFrame = 0;
};

// Adds --survey.
void AddSurveyOption(CLI::App* command, SplitOptions* options);

// Whether the words of an apply command without --settings and --recipe go with its --survey, or with none.
// False: `*error` is one sentence.
bool CheckPart(const CommandLine& line, std::string* error);

// Before a command runs: where the line has a survey, reads it and makes the line the one of the survey's
// options, which stands for the whole animation; the line's own --frames become those of the part. False:
// `*failure` says why; what is given beside the survey must say the same as it.
bool TakeSurvey(CommandLine* line, Failure* failure);

}  // namespace kfx::commands
