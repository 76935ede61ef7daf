// SPDX-License-Identifier: MIT
#include "commands/source_files.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "commands/batch_plan.h"
#include "commands/output_format.h"
#include "commands/text.h"
#include "media/number_pattern.h"
#include "media/system_reason.h"
#include "media/utf8_path.h"

namespace kfx::commands {
namespace {

namespace fs = std::filesystem;

// As the system compares names.
constexpr bool kIgnoresCase = fs::path::preferred_separator == '\\';

constexpr const char* kPictureEndings[] = {".gif", ".webp", ".png", ".apng", ".jpg", ".jpeg", ".bmp"};

constexpr size_t kLongestNumber = 9;  // digits whose number fits in an int

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

char Fold(char c) { return kIgnoresCase && c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string Fold(std::string text) {
    for (char& c : text) c = Fold(c);
    return text;
}

// As ParseNumberPattern, for comparing with folded names.
bool ParseFoldedPattern(const std::string& name, NumberPattern* pattern) {
    if (!ParseNumberPattern(name, pattern)) return false;
    pattern->before = Fold(pattern->before);
    pattern->behind = Fold(pattern->behind);
    return true;
}

// The digits at the pattern's place; empty: the name does not fit.
std::string NumberIn(const std::string& given, const NumberPattern& pattern) {
    const std::string name = Fold(given);
    const size_t fixed = pattern.before.size() + pattern.behind.size();
    if (name.size() < fixed + pattern.width) return "";
    if (name.compare(0, pattern.before.size(), pattern.before) != 0) return "";
    if (name.compare(name.size() - pattern.behind.size(), std::string::npos, pattern.behind) != 0) return "";
    const std::string digits = name.substr(pattern.before.size(), name.size() - fixed);
    if (!std::all_of(digits.begin(), digits.end(), IsDigit)) return "";
    // Zeros only fill up to the width.
    return digits.size() > pattern.width && digits[0] == '0' ? "" : digits;
}

// Whether the name fits a pattern in which * stands for any characters and ? for one.
bool Fits(const std::string& name, const std::string& pattern) {
    size_t at = 0, from = 0;
    size_t star = std::string::npos, resume = 0;
    while (at < name.size()) {
        if (from < pattern.size() && pattern[from] == '*') {
            star = from++;
            resume = at;
        } else if (from < pattern.size() && (pattern[from] == '?' || Fold(pattern[from]) == Fold(name[at]))) {
            ++from;
            ++at;
        } else if (star != std::string::npos) {
            from = star + 1;
            at = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', from) == std::string::npos;
}

// The names of a folder's files, without hidden ones. "" is the current folder.
std::vector<std::string> NamesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code noFolder;
    const fs::path path = PathOf(folder.empty() ? "." : SystemPath(folder));
    fs::directory_iterator entry(path, noFolder);
    while (!noFolder && entry != fs::directory_iterator()) {
        std::error_code noFile;
        const std::string name = Utf8Of(entry->path().filename());
        if (entry->is_regular_file(noFile) && name[0] != '.') names.push_back(name);
        entry.increment(noFolder);
    }
    std::sort(names.begin(), names.end(), IsBeforeByNumber);
    return names;
}

std::string PlaceNote(const std::string& input, const std::vector<std::string>& numbers) {
    if (numbers.empty() || numbers.back().size() > kLongestNumber) return "";
    const int first = std::stoi(numbers.front());
    const int last = std::stoi(numbers.back());
    const size_t missing = static_cast<size_t>(last - first) + 1 - numbers.size();
    if (missing == 0) return "";
    return input + ": " + std::to_string(missing) + " of the numbers from " + std::to_string(first) + " to " +
           std::to_string(last) + (missing == 1 ? " is" : " are") + " missing.";
}

// The files that have a number at the pattern's place.
SourceFiles FindNumbered(const std::string& input, const NumberPattern& pattern) {
    SourceFiles found;
    std::vector<std::string> numbers;
    for (const std::string& name : NamesIn(FolderOf(input))) {
        const std::string number = NumberIn(name, pattern);
        if (number.empty()) continue;
        found.files.push_back(FolderOf(input) + name);
        numbers.push_back(number);
    }
    found.note = PlaceNote(input, numbers);
    return found;
}

std::vector<std::string> FindFitting(const std::string& input) {
    std::vector<std::string> files;
    for (const std::string& name : NamesIn(FolderOf(input))) {
        if (Fits(name, FileNameOf(input))) files.push_back(FolderOf(input) + name);
    }
    return files;
}

std::string WithSeparator(const std::string& folder) {
    return FileNameOf(folder).empty() ? folder : folder + "/";
}

std::vector<std::string> FindPictures(const std::string& folder) {
    const std::string prefix = WithSeparator(folder);
    std::vector<std::string> files;
    for (const std::string& name : NamesIn(prefix)) {
        const std::string ending = EndingOf(name);
        if (std::find(std::begin(kPictureEndings), std::end(kPictureEndings), ending) !=
            std::end(kPictureEndings))
            files.push_back(prefix + name);
    }
    return files;
}

// The folders in a folder, without hidden ones and links, which could lead back to it.
std::vector<std::string> FoldersIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code noFolder;
    fs::directory_iterator entry(PathOf(SystemPath(folder)), noFolder);
    while (!noFolder && entry != fs::directory_iterator()) {
        std::error_code unknown;
        const std::string name = Utf8Of(entry->path().filename());
        if (fs::is_directory(entry->symlink_status(unknown)) && name[0] != '.') names.push_back(name);
        entry.increment(noFolder);
    }
    std::sort(names.begin(), names.end(), IsBeforeByNumber);
    return names;
}

// Where a folder stands. Windows finds nothing at a name that ends in a separator.
fs::path PlaceOf(std::string folder) {
    while (folder.size() > 1 && (folder.back() == '/' || folder.back() == '\\')) folder.pop_back();
    return PathOf(SystemPath(folder));
}

// Why the names in a folder cannot be read; none if they can.
std::error_code RefusalOf(const std::string& folder) {
    std::error_code refusal;
    const fs::directory_iterator names(PlaceOf(folder), refusal);
    return refusal;
}

// The pictures in a folder and all folders in it, each a source; not in the folder of the results, where
// earlier ones may be. `below`: this folder's place in the given one. A folder in it that cannot be read is a
// source, which fails as others do.
void AddTree(const std::string& folder, const std::string& below, const std::string& output,
             std::vector<SourceFiles>* sources) {
    for (const std::string& file : FindPictures(folder))
        sources->push_back({.files = {file}, .given = {file}, .subfolder = below});
    for (const std::string& name : FoldersIn(folder)) {
        std::error_code unknown;
        const std::string inner = folder + name + "/";
        if (RefusalOf(inner))
            sources->push_back({.files = {folder + name}, .given = {folder + name}, .subfolder = below});
        else if (!fs::equivalent(PlaceOf(inner), PlaceOf(output), unknown))
            AddTree(inner, below + name + "/", output, sources);
    }
}

bool Refuse(ExitCode exitCode, const std::string& error, Failure* failure) {
    *failure = {exitCode, error};
    return false;
}

bool RefuseFolder(const std::string& input, Failure* failure) {
    if (const std::error_code refusal = RefusalOf(input)) {
        return Refuse(kExitBadInput, input + ": the folder cannot be read (" + ReasonOf(refusal) + ").",
                      failure);
    }
    return Refuse(kExitBadInput, input + ": this is a folder without pictures.", failure);
}

// What one input names. `*isSource`: it is one animation by itself.
bool FindFiles(const std::string& input, SourceFiles* found, bool* isSource, Failure* failure) {
    const fs::path path = PathOf(SystemPath(input));
    std::error_code unknown;
    const std::string name = FileNameOf(input);
    NumberPattern pattern;
    *isSource = false;
    if (!IsStream(input) && fs::is_directory(path, unknown)) {
        found->files = FindPictures(input);
        return !found->files.empty() || RefuseFolder(input, failure);
    }
    if (IsStream(input) || fs::exists(path, unknown)) {
        found->files = {input};
        return true;
    }
    if (name.find_first_of("*?") != std::string::npos) {
        found->files = FindFitting(input);
    } else if (ParseFoldedPattern(name, &pattern)) {
        *isSource = true;
        *found = FindNumbered(input, pattern);
    } else {
        found->files = {input};
    }
    return !found->files.empty() || Refuse(kExitBadInput, input + ": no file has such a name.", failure);
}

std::string WithoutNumbers(const std::string& name) {
    std::string rest;
    for (const char c : name) {
        if (!IsDigit(c)) rest += c;
        if (IsDigit(c) && (rest.empty() || rest.back() != '#')) rest += '#';
    }
    return rest;
}

// A shell sorts the files that a wildcard names as text, 10 before 2. True: they were put in order.
bool SortByNumber(std::vector<std::string>* files) {
    if (!std::is_sorted(files->begin(), files->end())) return false;
    const std::string first = WithoutNumbers(files->front());
    for (const std::string& file : *files) {
        if (WithoutNumbers(file) != first) return false;
    }
    if (std::is_sorted(files->begin(), files->end(), IsBeforeByNumber)) return false;
    std::sort(files->begin(), files->end(), IsBeforeByNumber);
    return true;
}

// All files of a command with one source.
void JoinSources(CommandLine* line) {
    SourceFiles all;
    for (SourceFiles& source : line->sources) {
        all.files.insert(all.files.end(), source.files.begin(), source.files.end());
        all.given.insert(all.given.end(), source.given.begin(), source.given.end());
        if (all.note.empty()) all.note = source.note;
    }
    if (line->inputs.size() == all.files.size() && SortByNumber(&all.files) && all.note.empty())
        all.note = "the files are joined in the order of their numbers.";
    line->sources = {all};
}

// A source for each file that the inputs name: the results go into a folder.
bool FindEach(CommandLine* line, Failure* failure) {
    for (const std::string& input : line->inputs) {
        SourceFiles found;
        bool isSource = false;
        std::error_code unknown;
        const bool isTree = line->batch.recursive && fs::is_directory(PathOf(SystemPath(input)), unknown);
        const size_t before = line->sources.size();
        if (isTree) {
            AddTree(WithSeparator(input), "", line->output, &line->sources);
            if (line->sources.size() == before) return RefuseFolder(input, failure);
            continue;
        }
        if (!FindFiles(input, &found, &isSource, failure)) return false;
        found.given = {input};
        if (isSource) line->sources.push_back(found);
        for (const std::string& file : found.files) {
            if (!isSource) line->sources.push_back({.files = {file}, .given = {file}});
        }
    }
    return true;
}

// A source for each file. An input that names nothing is left to the command, which goes on with the others.
void FindEachFile(CommandLine* line) {
    for (const std::string& input : line->inputs) {
        SourceFiles found;
        bool isSource = false;
        Failure ignored;
        if (!FindFiles(input, &found, &isSource, &ignored)) found.files = {input};
        for (const std::string& file : found.files)
            line->sources.push_back({.files = {file}, .given = {file}});
    }
}

bool FindJoined(InputUse use, CommandLine* line, Failure* failure) {
    const bool takesFirst = use == InputUse::FirstPicture;
    const bool joins = line->join || line->delay >= 0 || takesFirst;
    const std::string remedy = use == InputUse::OneAnimation
                                   ? "--join makes them one animation, -o FOLDER/ takes a result for each."
                                   : "--join makes them one animation.";
    for (const std::string& input : line->inputs) {
        SourceFiles found;
        bool isSource = false;
        if (!FindFiles(input, &found, &isSource, failure)) return false;
        if (found.files.size() > 1 && !isSource && !joins) {
            std::string reason = input + ": names ";
            reason += std::to_string(found.files.size()) + " files; " + remedy;
            return Refuse(kExitBadCommand, reason, failure);
        }
        if (takesFirst) found = {.files = {found.files.front()}};
        found.given = {input};
        line->sources.push_back(found);
    }
    if (use == InputUse::OneAnimation && line->sources.size() > 1) {
        if (!joins) return Refuse(kExitBadCommand, "there are several inputs; " + remedy, failure);
        JoinSources(line);
    }
    return true;
}

}  // namespace

bool IsBeforeByNumber(const std::string& left, const std::string& right) {
    size_t a = 0, b = 0;
    while (a < left.size() && b < right.size()) {
        if (!IsDigit(left[a]) || !IsDigit(right[b])) {
            const auto x = static_cast<unsigned char>(Fold(left[a++]));
            const auto y = static_cast<unsigned char>(Fold(right[b++]));
            if (x != y) return x < y;
            continue;
        }
        while (a < left.size() && left[a] == '0') ++a;
        while (b < right.size() && right[b] == '0') ++b;
        const size_t startA = a, startB = b;
        while (a < left.size() && IsDigit(left[a])) ++a;
        while (b < right.size() && IsDigit(right[b])) ++b;
        if (a - startA != b - startB) return a - startA < b - startB;
        const int order = left.compare(startA, a - startA, right, startB, b - startB);
        if (order != 0) return order < 0;
    }
    const bool isEnded = a == left.size() && b == right.size();
    return isEnded ? left < right : a == left.size();
}

bool FindSources(InputUse use, CommandLine* line, Failure* failure) {
    const bool joins = line->join || line->delay >= 0;
    const bool isEach = use == InputUse::OneAnimation && !joins && NamesFolder(line->output);
    std::vector<std::string> files;
    line->sources.clear();
    if (use == InputUse::EachFile) {
        FindEachFile(line);
    } else if (!(isEach ? FindEach(line, failure) : FindJoined(use, line, failure))) {
        return false;
    }
    for (const SourceFiles& source : line->sources)
        files.insert(files.end(), source.files.begin(), source.files.end());
    line->inputs = files;
    return true;
}

}  // namespace kfx::commands
