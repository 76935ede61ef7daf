// SPDX-License-Identifier: MIT
// kestrel verify: makes a file again by its recipe and compares the bytes.
#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>

#include "commands/common_options.h"
#include "commands/fingerprint.h"
#include "commands/output_format.h"
#include "commands/parser_words.h"
#include "commands/recipe_file.h"
#include "commands/report.h"
#include "commands/text.h"
#include "media/file_io.h"
#include "media/utf8_path.h"

namespace kfx::commands {
namespace {

namespace fs = std::filesystem;

// What is made again stays in memory, so that no program that is killed leaves files of it.
struct MadeAgain {
    explicit MadeAgain(size_t wantedFile) : wanted(wantedFile) {
        TakeWriting([this](const std::string&, std::vector<uint8_t>* file) {
            if (files++ == wanted) content = std::move(*file);
        });
    }
    ~MadeAgain() { TakeWriting(nullptr); }
    MadeAgain(const MadeAgain&) = delete;
    MadeAgain& operator=(const MadeAgain&) = delete;

    const size_t wanted;           // of a series
    size_t files = 0;              // how many there are
    std::vector<uint8_t> content;  // of the wanted one
};

std::string FormatOf(const Recipe& recipe) {
    for (const OptionWord& word : recipe.words) {
        if (word.name == "format") return word.value;
    }
    return "";
}

bool SamePicture(const Frame& one, const Frame& other) {
    if (one.pixels.size() != other.pixels.size()) return false;
    for (size_t i = 0; i < one.pixels.size(); i += 4) {
        const bool hidden = one.pixels[i + 3] == 0 && other.pixels[i + 3] == 0;
        if (!hidden && std::memcmp(one.pixels.data() + i, other.pixels.data() + i, 4) != 0) return false;
    }
    return true;
}

std::string SizeText(const Animation& animation) {
    return std::to_string(animation.width) + " x " + std::to_string(animation.height) + " pixels";
}

std::string LoopText(int loopCount) {
    return loopCount == kLoopForever ? "for ever"
                                     : std::to_string(loopCount < 0 ? 1 : loopCount + 1) + " times";
}

// The first thing in which two animations look different, as a clause about the first of them.
std::string FirstDifference(const Animation& file, const Animation& again) {
    const auto say = [](const std::string& what, const std::string& otherwise) {
        return what + ", and " + otherwise + " when it is made again";
    };
    if (file.width != again.width || file.height != again.height)
        return say("it has " + SizeText(file), SizeText(again));
    const size_t frames = std::min(file.frames.size(), again.frames.size());
    for (size_t i = 0; i < frames; ++i) {
        const std::string frame = "frame " + std::to_string(i);
        if (!SamePicture(file.frames[i], again.frames[i])) return frame + " differs when it is made again";
        const int time = MillisecondsOf(file.frames[i]), other = MillisecondsOf(again.frames[i]);
        if (time != other)
            return say(frame + " is shown for " + std::to_string(time) + " ms", std::to_string(other));
    }
    if (file.frames.size() != again.frames.size())
        return say("it has " + std::to_string(file.frames.size()) + " frames",
                   std::to_string(again.frames.size()));
    return say("it is played " + LoopText(file.loopCount), LoopText(again.loopCount));
}

bool SameMetadata(const Metadata& one, const Metadata& other) {
    return one.colorProfile == other.colorProfile && one.exif == other.exif && one.xmp == other.xmp;
}

// Why the bytes of files that look the same differ, as a clause.
std::string HiddenDifference(const RecipeFile& file, const Animation& again) {
    const Animation& read = file.animation;
    if (read.comment != again.comment) return "its comment differs";
    if (!SameMetadata(read.metadata, again.metadata)) return "its metadata differ";
    if (read.recipe != again.recipe)
        return "its recipe differs from the one that is kept now (kestrel " + file.recipe.version +
               " made it, this is " + ProgramVersion() + ")";
    return "another encoder has written it";
}

std::string WhatDiffers(const RecipeFile& file, const Animation& again) {
    const Recipe& recipe = file.recipe;
    const std::string own = FingerprintOf(file.animation), other = FingerprintOf(again);
    if (own == other) return "its pictures and times are the same, but " + HiddenDifference(file, again);
    const std::string difference = FirstDifference(file.animation, again);
    if (!recipe.isLossy && own != recipe.fingerprint) {
        return "it has been changed since it was made (its pictures have not the recipe's fingerprint); " +
               difference;
    }
    return "the source is another one, or this kestrel makes something else of it; " + difference;
}

// The arguments of the command that makes the file again.
std::vector<std::string> ArgumentsFor(const CommandLine& line, const Recipe& recipe,
                                      const std::string& output) {
    std::vector<std::string> arguments = {"apply", "--join", "--quiet", "--output=" + output};
    for (const OptionWord& word : recipe.words) arguments.push_back(TextOf(word));
    if (line.maxPixels >= 0) arguments.push_back("--max-pixels=" + std::to_string(line.maxPixels));
    if (line.threads > 0) arguments.push_back("--threads=" + std::to_string(line.threads));
    arguments.emplace_back("--");
    arguments.insert(arguments.end(), line.recipe.sources.begin(), line.recipe.sources.end());
    return arguments;
}

Report NotVerified(const CommandLine& line, const std::string& why) {
    Report report =
        FailedReport(kExitUnverified, ShownInput(line.recipe.recipe) + ": not verified: " + why + ".");
    report.result = {{"input", line.recipe.recipe}, {"verified", false}};
    return report;
}

Report Compare(const CommandLine& line, const RecipeFile& file, const MadeAgain& made) {
    const size_t files = std::max<size_t>(file.recipe.part.count, 1);
    if (made.files != files) {
        return NotVerified(line, "it is one of " + std::to_string(files) +
                                     " files, and made again they are " + std::to_string(made.files));
    }
    const std::vector<uint8_t>& content = made.content;
    if (content == file.content) {
        Report report;
        report.text = ShownInput(line.recipe.recipe) + ": verified: the same " +
                      std::to_string(content.size()) + " bytes.\n";
        report.result = {{"input", line.recipe.recipe}, {"verified", true}, {"bytes", content.size()}};
        return report;
    }
    Animation again;
    std::string error;
    if (!ReadAnimationFromMemory(content.data(), content.size(), &again, &error, LimitsOf(line)))
        return FailedReport(kExitEngine, "what was made again cannot be read: " + error + ".");
    return NotVerified(line, WhatDiffers(file, again));
}

Report RunVerify(const CommandLine& line, const CommandContext& context) {
    const std::string shown = ShownInput(line.recipe.recipe);
    RecipeFile file;
    Failure failure;
    if (!ReadRecipeFile(line.recipe.recipe, LimitsOf(line), &file, &failure)) return FailedReport(failure);
    if (file.animation.frames.empty())
        return FailedReport(kExitBadInput, shown + ": is a text; verify takes the file that was made.");
    // A recipe may name anything.
    std::string text = "it names no format.";
    const std::string format = ResolveFormat("-", FormatOf(file.recipe), &text);
    const std::string output = "made-again." + format;  // is never written
    CommandLine again;
    if (format.empty() ||
        ParseCommandLine(ArgumentsFor(line, file.recipe, output), {}, &again, &text) != ParseOutcome::Run) {
        return FailedReport(kExitBadInput, shown + ": its recipe cannot be repeated: " + text);
    }
    const SeriesPart& part = file.recipe.part;
    const MadeAgain made(part.count > 1 ? part.number - 1 : 0);
    const Report report = RunCommand(again, context);
    return report.exitCode == kExitDone ? Compare(line, file, made) : report;
}

void AddVerify(CLI::App* app, const OptionTarget& target) {
    RecipeOptions* const options = &target.line->recipe;
    CLI::App* const verify =
        AddCommand(app, "verify", "Make a file again by its recipe and compare it to the byte");
    RequireOption(AddText(
        verify, {.name = "input", .typeName = "FILE", .description = "A file that kestrel apply has made"},
        &options->recipe));
    RequireOption(
        AddList(verify,
                {.name = "--source",
                 .typeName = "FILE",
                 .description = "What it was made of; several, a pattern or a folder are one animation"},
                &options->sources));
    AddReadLimit(verify, target.line);
    AddThreads(verify, target.line, false);
    AddEngineOptions(verify, target);
}

}  // namespace

const CommandRow kVerifyCommand = {.name = "verify",
                                   .inputs = InputUse::Each,
                                   .add = AddVerify,
                                   .finish = nullptr,
                                   .run = RunVerify,
                                   .examples = "kestrel verify MADE.gif --source IN.gif"};

}  // namespace kfx::commands
