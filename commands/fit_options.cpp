// SPDX-License-Identifier: MIT
#include "commands/fit_options.h"

#include <charconv>
#include <cmath>

#include "commands/command_line.h"
#include "commands/output_format.h"
#include "commands/parser_words.h"
#include "commands/text_match.h"

namespace kfx::commands {
namespace {

constexpr double kMostBytes = 1e15;
constexpr char kSizesTaken[] = "takes a number of bytes as 500000, 500K, 1.5M or 2MiB, not ";
constexpr char kWordsTaken[] = "takes scale, frames and lossy, divided by commas, not ";

struct ByteUnit {
    const char* name;
    double bytes;
};

constexpr ByteUnit kByteUnits[] = {
    {"", 1},
    {"b", 1},
    {"k", 1e3},
    {"kb", 1e3},
    {"m", 1e6},
    {"mb", 1e6},
    {"g", 1e9},
    {"gb", 1e9},
    {"kib", 1024.0},
    {"mib", 1024.0 * 1024},
    {"gib", 1024.0 * 1024 * 1024},
};

std::string InSmallLetters(std::string text) {
    for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

// Sets what a word of --allow stands for. False: there is no such word.
bool Allow(const std::string& word, FitOptions* options) {
    if (word == "scale") return options->scale = true;
    if (word == "frames") return options->frames = true;
    if (word == "lossy") return options->lossy = true;
    return false;
}

bool ReadAllowed(const std::string& list, FitOptions* options) {
    const std::string text = InSmallLetters(list);
    for (size_t start = 0, end = 0; end != std::string::npos; start = end + 1) {
        end = text.find(',', start);
        if (!Allow(text.substr(start, end == std::string::npos ? end : end - start), options)) return false;
    }
    return true;
}

// What --allow names although it stands fixed, or has no meaning for the format.
std::string FixedAlready(const CommandLine& line) {
    if (line.fit.scale && line.resultEdits.shrink != 100)
        return "--shrink and --allow scale exclude each other.";
    if (line.fit.frames && line.resultEdits.every != 1)
        return "--every and --allow frames exclude each other.";
    if (!line.fit.lossy) return "";
    if (line.lossy >= 0) return "--lossy and --allow lossy exclude each other.";
    if (line.quality >= 0) return "--quality and --allow lossy exclude each other.";
    if (line.nearLossless >= 0) return "--near-lossless and --allow lossy exclude each other.";
    if (line.format == "apng" || line.format == "png")
        return "PNG files are never lossy; leave out --allow lossy.";
    return "";
}

}  // namespace

void AddFitOptions(CLI::App* command, FitOptions* options) {
    const auto checkSize = [](const std::string& text) {
        uint64_t bytes = 0;
        return ParseBytes(text, &bytes) ? std::string() : kSizesTaken + ("\"" + text + "\"");
    };
    const auto checkAllowed = [](const std::string& text) {
        FitOptions unused;
        return ReadAllowed(text, &unused) ? std::string() : kWordsTaken + ("\"" + text + "\"");
    };
    CLI::Option* const size =
        AddText(command,
                {.name = "--max-size",
                 .typeName = "SIZE",
                 .description = "Find the settings that look best within so many bytes: 500K, 1.5M, 2MiB"},
                &options->size);
    CheckText(size, checkSize);
    CLI::Option* const allowed = AddText(
        command,
        {.name = "--allow",
         .typeName = "LIST",
         .description = "What --max-size may give up, too: scale, frames, lossy, or several with commas"},
        &options->allowed);
    CheckText(allowed, checkAllowed);
}

bool ParseBytes(const std::string& text, uint64_t* bytes) {
    const bool isNumber = !text.empty() && ((text[0] >= '0' && text[0] <= '9') || text[0] == '.');
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    if (!isNumber || read.ec != std::errc()) return false;
    const std::string unit = InSmallLetters(std::string(read.ptr, end));
    for (const ByteUnit& row : kByteUnits) {
        if (unit != row.name) continue;
        number *= row.bytes;
        if (!std::isfinite(number) || number < 1 || number > kMostBytes) return false;
        *bytes = static_cast<uint64_t>(number);
        return true;
    }
    return false;
}

bool CheckFit(CommandLine* line, std::string* error) {
    FitOptions& fit = line->fit;
    if (fit.size.empty() && fit.allowed.empty()) return true;
    if (fit.size.empty()) {
        *error = "--allow says what --max-size may give up; add --max-size, or leave it out.";
        return false;
    }
    // The parser has refused texts that cannot be read.
    if (!ParseBytes(fit.size, &fit.mostBytes) || (!fit.allowed.empty() && !ReadAllowed(fit.allowed, &fit)))
        return false;
    fit.fixedPalette = !line->palette.empty();
    fit.fixedTrueColor = line->trueColor;
    if (IsRawFormat(line->format)) {
        *error = "--max-size is for GIF, WebP and PNG files; video has the same size with all settings.";
        return false;
    }
    *error = FixedAlready(*line);
    return error->empty();
}

}  // namespace kfx::commands
