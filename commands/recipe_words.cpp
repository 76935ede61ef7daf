// SPDX-License-Identifier: MIT
#include "commands/recipe_words.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "commands/command_row.h"
#include "commands/output_format.h"
#include "commands/parameter.h"
#include "commands/parser.h"
#include "commands/text_match.h"

namespace kfx::commands {
namespace {

// Options without an effect on the result, or that a recipe says in another way. Those that name files
// (see NamesFile) need not stand here.
constexpr const char* kNotKept[] = {
    "dry-run",     // nothing is written
    "force",       // where the result goes
    "format",      // stands in the recipe by itself, because an output's ending says it as well
    "help",        //
    "jobs",        // how fast
    "join",        // how the inputs are named
    "json",        // what is printed
    "max-pixels",  // a limit
    "no-comment",  // the default
    "no-recipe",   //
    "quiet",       // what is printed
    "recursive",   // how the inputs are named
    "seamless",    // what is printed
    "seed",        // stands in the recipe by itself, because the clock gives it as well
    "skip-done",   // which results are made
    "survey",      // the joined result is the one of all frames
    "threads",     // how fast
};

// Of two options that exclude each other, the one on the command line wins over the one in the recipe.
struct Exclusion {
    const char* one;
    const char* other;
};

constexpr Exclusion kExclusions[] = {
    {.one = "true-color", .other = "palette"},
    {.one = "true-color", .other = "colors"},
    {.one = "true-color", .other = "dither"},
    {.one = "true-color", .other = "supercompress"},
    {.one = "true-color", .other = "fast-remap"},
    {.one = "true-color", .other = "dither-brightness"},
    {.one = "true-color", .other = "dither-contrast"},
    {.one = "palette", .other = "colors"},
    {.one = "quality", .other = "near-lossless"},
    {.one = "fps", .other = "speed"},
    {.one = "fps", .other = "delay"},
    {.one = "comment", .other = "no-comment"},
};

bool IsGif(const std::string& format) { return format == "gif"; }
bool IsNoGif(const std::string& format) { return format != "gif"; }
bool IsWebp(const std::string& format) { return format == "webp"; }
bool TakesEffort(const std::string& format) { return !IsGif(format) && !IsRawFormat(format); }
bool HasTimes(const std::string& format) { return format != "png"; }
bool HasLoop(const std::string& format) { return HasTimes(format) && !IsRawFormat(format); }

// Options that only some formats take.
struct FormatRule {
    const char* option;
    bool (*takes)(const std::string& format);
};

constexpr FormatRule kFormatRules[] = {
    {.option = "comment", .takes = IsGif},      {.option = "lossy", .takes = IsGif},
    {.option = "matte", .takes = IsGif},        {.option = "true-color", .takes = IsNoGif},
    {.option = "quality", .takes = IsWebp},     {.option = "near-lossless", .takes = IsWebp},
    {.option = "effort", .takes = TakesEffort}, {.option = "speed", .takes = HasTimes},
    {.option = "fps", .takes = HasTimes},       {.option = "loop", .takes = HasLoop},
};

bool NamesFile(const DeclaredOption& option) {
    const std::string& type = option.typeName;
    return type.find("FILE") != std::string::npos || type.find("FOLDER") != std::string::npos ||
           type.find("PATH") != std::string::npos;
}

bool IsKeptOption(const DeclaredOption& option) {
    const std::string& name = option.longNames.front();
    return !NamesFile(option) &&
           std::find(std::begin(kNotKept), std::end(kNotKept), name) == std::end(kNotKept);
}

struct OptionFacts {
    std::string name;
    bool isKept;
};

// Those of apply, without the program's own.
const std::vector<OptionFacts>& ApplyOptions() {
    static const std::vector<OptionFacts> options = [] {
        CommandLine line;
        ApplyWords words;
        const OwnOptions none;
        const Parser parser = MakeParser({});
        kApplyCommand.add(parser.get(), {&line, &words, none});
        const DeclaredCommand apply = DescribeCommand(*CommandNamed(parser.get(), kApplyCommand.name));
        std::vector<OptionFacts> all;
        for (const DeclaredOption& option : apply.options) {
            if (!option.longNames.empty())
                all.push_back({.name = option.longNames.front(), .isKept = IsKeptOption(option)});
        }
        return all;
    }();
    return options;
}

bool Has(const OptionWords& words, const std::string& name) {
    return std::any_of(words.begin(), words.end(), [&](const OptionWord& word) { return word.name == name; });
}

bool HasComputedPalette(const OptionWords& words) {
    return std::any_of(words.begin(), words.end(), [](const OptionWord& word) {
        return word.name == "palette" && PlainName(word.value) == "custom";
    });
}

// Whether the own words exclude the recipe's option.
bool IsExcluded(const OptionWords& own, const std::string& name) {
    if (name == "colors" && HasComputedPalette(own)) return false;
    return std::any_of(std::begin(kExclusions), std::end(kExclusions), [&](const Exclusion& pair) {
        return (name == pair.one && Has(own, pair.other)) || (name == pair.other && Has(own, pair.one));
    });
}

bool IsForFormat(const std::string& option, const std::string& format) {
    return std::all_of(std::begin(kFormatRules), std::end(kFormatRules),
                       [&](const FormatRule& rule) { return option != rule.option || rule.takes(format); });
}

std::string SetName(const OptionWord& word) { return word.value.substr(0, word.value.find('=')); }

// Whether one of the own --set words gives this parameter of the recipe, by its name or its beginning.
bool IsSetAgain(const OptionWords& own, const OptionWord& set, const std::vector<std::string>& names) {
    return std::any_of(own.begin(), own.end(), [&](const OptionWord& word) {
        if (word.name != "set") return false;
        const int row = FindName(SetName(word), names);
        return row >= 0 && names[static_cast<size_t>(row)] == SetName(set);
    });
}

// What searches for palette colours says nothing where there are none.
bool IsSearchOption(const std::string& name) {
    return name == "fast-remap" || name == "dither-brightness" || name == "dither-contrast";
}

bool HasPaletteOption(const OptionWords& words) {
    return Has(words, "palette") || Has(words, "colors") || Has(words, "dither") ||
           Has(words, "supercompress");
}

}  // namespace

std::string TextOf(const OptionWord& word) {
    return "--" + word.name + (word.isFlag ? "" : "=" + word.value);
}

bool ReadOptionWord(const std::string& text, OptionWord* word) {
    if (text.rfind("--", 0) != 0) return false;
    const size_t equals = text.find('=');
    *word = {};
    word->name = text.substr(2, equals == std::string::npos ? equals : equals - 2);
    word->isFlag = equals == std::string::npos;
    if (!word->isFlag) word->value = text.substr(equals + 1);
    return !word->name.empty();
}

std::vector<std::string> ApplyOptionNames() {
    std::vector<std::string> names;
    for (const OptionFacts& option : ApplyOptions()) names.push_back(option.name);
    return names;
}

bool IsKept(const std::string& name) {
    const std::vector<OptionFacts>& options = ApplyOptions();
    return std::any_of(options.begin(), options.end(),
                       [&](const OptionFacts& option) { return option.isKept && option.name == name; });
}

void TakeWords(const CLI::App& apply, RecipeOptions* options) {
    const std::vector<std::string> names = ApplyOptionNames();
    OptionWords effects;  // and their parameters
    std::map<std::string, OptionWords> kept;
    for (const GivenOption& option : GivenOptions(apply)) {
        const std::string& name = option.name;
        const bool isKnown = std::find(names.begin(), names.end(), name) != names.end();
        if (!isKnown || name == "recipe" || name == "settings") continue;
        const OptionWord word = {.name = name, .value = option.value, .isFlag = !option.takesValue};
        if (name == "effect" || name == "set")
            effects.push_back(word);
        else
            (IsKept(name) ? kept[name] : options->others).push_back(word);
    }
    // The parameters of a single effect may have been given before it.
    const auto first = std::find_if(effects.begin(), effects.end(),
                                    [](const OptionWord& word) { return word.name == "effect"; });
    if (first != effects.end()) std::rotate(effects.begin(), first, first + 1);
    options->kept = effects;
    for (const std::string& name : names) {
        const OptionWords& words = kept[name];
        options->kept.insert(options->kept.end(), words.begin(), words.end());
    }
}

OptionWords WordsBeside(const OptionWords& own, const OptionWords& recipe, const std::string& format,
                        OptionWords* leftOut) {
    const bool ownEffect = Has(own, "effect");
    std::vector<std::string> setNames;
    for (const OptionWord& word : recipe) {
        if (word.name == "set") setNames.push_back(SetName(word));
    }
    OptionWords held;
    for (const OptionWord& word : recipe) {
        const bool isEffect = word.name == "effect" || word.name == "set";
        const bool isReplaced = isEffect
                                    ? ownEffect || (word.name == "set" && IsSetAgain(own, word, setNames))
                                    : Has(own, word.name) || IsExcluded(own, word.name);
        if (isReplaced) continue;
        (IsForFormat(word.name, format) ? held : *leftOut).push_back(word);
    }
    if (!IsGif(format) && !HasPaletteOption(held) && !HasPaletteOption(own)) {
        std::erase_if(held, [&](const OptionWord& word) {
            if (IsSearchOption(word.name)) leftOut->push_back(word);
            return IsSearchOption(word.name);
        });
    }
    return held;
}

}  // namespace kfx::commands
