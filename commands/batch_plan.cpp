// SPDX-License-Identifier: MIT
#include "commands/batch_plan.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <unordered_set>

#include "commands/command_row.h"
#include "commands/commands.h"
#include "commands/option_checks.h"
#include "commands/output_check.h"
#include "commands/output_format.h"
#include "commands/picture_header.h"
#include "commands/report.h"
#include "commands/result_files.h"
#include "commands/text.h"
#include "media/utf8_path.h"

namespace kfx::commands {
namespace {

namespace fs = std::filesystem;

constexpr bool kIgnoresCase = fs::path::preferred_separator == '\\';

bool Refuse(ExitCode exitCode, const std::string& error, Failure* failure) {
    *failure = {exitCode, error};
    return false;
}

fs::path SystemPathOf(const std::string& path) { return PathOf(SystemPath(path)); }

// The folder with a separator at its end that the system takes for one.
std::string FolderText(std::string output) {
    while (output.size() > 1 && output.back() == '\\') output.pop_back();
    return FileNameOf(output).empty() ? output : output + "/";
}

std::string WithoutEnding(const std::string& name) {
    return name.substr(0, name.size() - EndingOf(name).size());
}

// Takes the separators away that stood before a number.
std::string WithoutSeparators(std::string name) {
    while (!name.empty() && std::string("-_. ").find(name.back()) != std::string::npos) name.pop_back();
    return name;
}

// What several pictures are called together: a series by its name without the number, a folder by its own.
std::string NameOfSeveral(const SourceFiles& source) {
    std::error_code unknown;
    const std::string given = source.given.empty() ? source.files[0] : source.given[0];
    if (fs::is_directory(SystemPathOf(given), unknown)) {
        const std::string name = Utf8Of(fs::absolute(SystemPathOf(FolderText(given) + "x"), unknown)
                                            .lexically_normal()
                                            .parent_path()
                                            .filename());
        return name.empty() ? "frames" : name;
    }
    std::string name = WithoutEnding(FileNameOf(given));
    const size_t place = name.find_first_of("%*?");
    if (place != std::string::npos) {
        name = name.substr(0, place);
    } else {
        while (!name.empty() && name.back() >= '0' && name.back() <= '9') name.pop_back();
    }
    name = WithoutSeparators(name);
    return name.empty() ? "frames" : name;
}

// Whether --frames N makes an animation of this picture, in a format whose files are stills by themselves.
bool IsStillThatMoves(const FrameEdits& edits, const SourceFiles& source, const PictureHeader& header) {
    const bool isStill = source.files.size() == 1 && !header.isApng &&
                         (header.format == "png" || header.format == "jpeg" || header.format == "bmp");
    return isStill && edits.singleNumber && edits.firstFrame > 1;
}

// The input's own format where it is written, else one that keeps every pixel and frame.
std::string FormatFor(const FrameEdits& edits, const SourceFiles& source, const PictureHeader& header) {
    if (IsStillThatMoves(edits, source, header)) return "apng";
    const std::string ending = EndingOf(source.files[0]);
    const std::string& format = header.format;
    if (format == "gif" || format == "webp") return format;
    if (source.files.size() > 1) return "apng";
    if (format == "y4m") return format;
    if (format == "png") return header.isApng || ending == ".apng" ? "apng" : "png";
    return format.empty() && (ending == ".gif" || ending == ".webp") ? ending.substr(1) : "png";
}

bool EndsAsFormat(const std::string& name, const std::string& format) {
    const std::string ending = EndingOf(name);
    return ending == "." + format || (ending == ".png" && format == "apng");
}

// `keepsEnding`: an ending that suits the format stays as it is.
std::string OutputName(const SourceFiles& source, const std::string& format, bool keepsEnding) {
    if (source.files.size() > 1 || source.given.size() > 1) return NameOfSeveral(source) + "." + format;
    const std::string name = FileNameOf(source.files[0]);
    const bool isSeries = source.given.size() == 1 && source.given[0] != source.files[0] &&
                          FileNameOf(source.given[0]).find('%') != std::string::npos;
    if (isSeries) return NameOfSeveral(source) + "." + format;
    return keepsEnding && EndsAsFormat(name, format) ? name : WithoutEnding(name) + "." + format;
}

// By which two names are compared.
std::string KeyOf(const std::string& path) {
    std::error_code unknown;
    const fs::path whole = fs::weakly_canonical(SystemPathOf(path), unknown);
    std::string key = unknown ? path : Utf8Of(whole);
    for (char& c : key) {
        if (kIgnoresCase && c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return key;
}

BatchItem MakeItem(const CommandLine& line, const SourceFiles& source) {
    BatchItem item;
    PictureHeader header;
    std::string error;
    item.inputs = source.given;
    item.output = line.output;
    item.format = line.format;
    for (const std::string& file : source.files) {
        std::error_code unknown;
        const auto size = fs::file_size(SystemPathOf(file), unknown);
        item.bytes += unknown ? 0 : size;
    }
    if (!IsStream(source.files[0]) && !ReadPictureHeader(source.files[0], &header, &error))
        item.inputFailure = {kExitBadInput, error};
    if (!NamesFolder(line.output)) return item;
    if (item.format.empty()) item.format = FormatFor(line.edits, source, header);
    // The ending tells that it is no still any more.
    const bool keepsEnding = !IsStillThatMoves(line.edits, source, header);
    item.output = FolderText(line.output) + source.subfolder + OutputName(source, item.format, keepsEnding);
    CommandLine one;
    if (!LineOf(line, item, &one, &error))
        item.outputFailure = {kExitBadCommand, source.files[0] + ": " + error};
    return item;
}

// Each name is for one result, and for no input.
void CheckNames(const CommandLine& line, std::vector<BatchItem>* items) {
    std::unordered_set<std::string> inputs;
    std::unordered_map<std::string, const BatchItem*> outputs;
    for (const std::string& input : line.inputs) inputs.insert(KeyOf(input));
    for (BatchItem& item : *items) {
        const std::string key = KeyOf(item.output);
        const auto [first, isNew] = outputs.emplace(key, &item);
        if (inputs.count(key) > 0) {
            item.outputFailure = {
                kExitBadOutput, item.output + ": the result cannot replace a source; choose another folder."};
        } else if (!isNew) {
            item.outputFailure = {kExitBadCommand, first->second->inputs[0] + " and " + item.inputs[0] +
                                                       ": both results would be " + item.output +
                                                       "; give them different names or folders."};
        }
    }
}

// "a.png" for "a-012.png", as the first name of a series is made. Empty: it is not named as one of a series.
std::string NameOfSeries(const std::string& path) {
    constexpr size_t kLeastDigits = 3;
    const std::string ending = EndingOf(path);
    std::string stem = path.substr(0, path.size() - ending.size());
    size_t digits = 0;
    while (!stem.empty() && stem.back() >= '0' && stem.back() <= '9') {
        stem.pop_back();
        ++digits;
    }
    if (digits < kLeastDigits || stem.empty() || stem.back() != '-') return "";
    stem.pop_back();
    return FileNameOf(stem).empty() ? "" : stem + ending;
}

// The files of an item whose result is PNG; `number` is that of its source. What cannot be read has none.
std::vector<std::string> PicturesOf(const CommandLine& line, const BatchItem& item, size_t number) {
    Report report;
    Animation source;
    Failure failure;
    if (!ReadSource(line, number, &source, &report) ||
        !EditFrames(line.edits, LimitsOf(line), &source, &failure))
        return {};
    return ResultPaths(item.output, KeptFrames(line.resultEdits, source.frames.size()), item.format);
}

// A picture of one item's series may have the name of another item's result: frames of "a.gif" and
// "a-001.gif". How many there are is only known when the file has been read, which is done for those alone.
void CheckSeries(const CommandLine& line, std::vector<BatchItem>* items) {
    std::unordered_map<std::string, const BatchItem*> outputs;
    std::unordered_map<std::string, std::unordered_set<std::string>> pictures;
    for (const BatchItem& item : *items)
        if (item.format == "png") outputs.emplace(KeyOf(item.output), &item);
    for (BatchItem& item : *items) {
        if (item.format != "png") continue;
        const std::string name = NameOfSeries(item.output);
        const auto series = name.empty() ? outputs.end() : outputs.find(KeyOf(name));
        if (series == outputs.end()) continue;
        const auto [keys, isNew] = pictures.emplace(series->first, std::unordered_set<std::string>());
        if (isNew) {
            const auto number = static_cast<size_t>(series->second - items->data());
            for (const std::string& file : PicturesOf(line, *series->second, number))
                keys->second.insert(KeyOf(file));
        }
        if (keys->second.count(KeyOf(item.output)) == 0) continue;
        // Several pictures have other names.
        const auto number = static_cast<size_t>(&item - items->data());
        if (PicturesOf(line, item, number) != std::vector<std::string>{item.output}) continue;
        item.outputFailure = {kExitBadCommand, series->second->inputs[0] + " and " + item.inputs[0] +
                                                   ": both results would have a file " + item.output +
                                                   "; give them different names or folders."};
    }
}

// The nearest of a folder and those around it that is there, with its separator. It may be a file.
std::string ExistingFolder(std::string folder) {
    std::error_code unknown;
    // A file's name with a separator behind it is nothing that is there.
    while (folder.size() > 1 && !fs::exists(SystemPathOf(folder.substr(0, folder.size() - 1)), unknown)) {
        folder.pop_back();
        folder = FolderOf(folder);
    }
    return folder;
}

// Whether the result's folder is there, or can be made, and takes it.
bool MayPlace(const CommandLine& line, const BatchItem& item, bool isInFolder, std::string* error) {
    const std::string folder = FolderOf(item.output);
    const std::string there = isInFolder ? ExistingFolder(folder) : folder;
    std::error_code unknown;
    if (isInFolder && !there.empty() && !fs::is_directory(SystemPathOf(there), unknown)) {
        *error = there.substr(0, there.size() - 1) + ": this is a file, not a folder; choose another output.";
        return false;
    }
    if (there != folder) return CheckFolder(item.output, there, error);
    // What is done may be write-protected. Whether it is done shows when its source is read.
    if (line.batch.skipDone && fs::is_regular_file(SystemPathOf(item.output), unknown)) return true;
    return MayWriteResult({item.output}, item.inputs, line.force || line.batch.skipDone, error);
}

void CheckPlaces(const CommandLine& line, std::vector<BatchItem>* items) {
    const bool isInFolder = NamesFolder(line.output);
    for (BatchItem& item : *items) {
        if (item.outputFailure.exitCode != kExitDone || IsStream(item.output)) continue;
        std::string error;
        if (!MayPlace(line, item, isInFolder, &error)) item.outputFailure = {kExitBadOutput, error};
    }
}

}  // namespace

bool NamesFolder(const std::string& output) {
    std::error_code unknown;
    if (output.empty() || IsStream(output)) return false;
    return output.back() == '/' || output.back() == '\\' || fs::is_directory(SystemPathOf(output), unknown);
}

bool LineOf(const CommandLine& line, const BatchItem& item, CommandLine* one, std::string* error) {
    *one = line;
    one->output = item.output;
    one->format = item.format;
    return !line.format.empty() || CompleteFormat(one, error);
}

bool PlanBatch(const CommandLine& line, std::vector<BatchItem>* items, Failure* failure) {
    items->clear();
    for (const SourceFiles& source : line.sources) {
        if (NamesFolder(line.output) && IsStream(source.files[0])) {
            return Refuse(
                kExitBadCommand,
                "standard input has no name for a file in " + line.output + "; give -o the name of a file.",
                failure);
        }
        items->push_back(MakeItem(line, source));
    }
    CheckNames(line, items);
    if (items->size() > 1) CheckSeries(line, items);
    CheckPlaces(line, items);
    return true;
}

bool MakeFolders(const std::vector<BatchItem>& items, Failure* failure) {
    std::unordered_set<std::string> made;
    for (const BatchItem& item : items) {
        const std::string folder = FolderOf(item.output);
        const bool isUsed = item.inputFailure.exitCode == kExitDone;
        if (folder.empty() || !isUsed || !made.insert(folder).second) continue;
        std::error_code reason;
        // Without the separator: some systems say that nothing was made where it stands.
        fs::create_directories(SystemPathOf(folder.substr(0, folder.size() - 1)), reason);
        if (fs::is_directory(SystemPathOf(folder), reason)) continue;
        return Refuse(kExitBadOutput, folder + ": the folder cannot be made.", failure);
    }
    return true;
}

std::vector<std::string> WordsOf(const CommandLine& line, const BatchItem& item) {
    std::vector<std::string> words = {line.command->name, "-o", item.output, "--format", item.format};
    words.insert(words.end(), line.batch.words.begin(), line.batch.words.end());
    if (line.json) words.emplace_back("--json");
    if (line.threads > 0) words.insert(words.end(), {"--threads", std::to_string(line.threads)});
    words.emplace_back("--");
    words.insert(words.end(), item.inputs.begin(), item.inputs.end());
    return words;
}

}  // namespace kfx::commands
