// SPDX-License-Identifier: MIT
#include "commands/completion.h"

#include <algorithm>

#include "commands/direct_engine.h"
#include "commands/output_format.h"
#include "commands/text_match.h"

namespace kfx::commands {
namespace {

using Words = std::vector<std::string>;

constexpr char kFilesLine[] = ":files\n";

// The question, and the answer as it grows.
struct Completion {
    const DeclaredCommand& command;
    const Words& before;
    std::string word;     // the unfinished one, or what stands behind the equals sign of --option=
    std::string leading;  // --option=, which the shell sees as part of the same word
    std::string answer;
};

bool StartsWith(const std::string& text, const std::string& start) { return text.rfind(start, 0) == 0; }

char InSmallLetters(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Whether the word may be what is begun. Capitals do not matter to the commands, and where a name has spaces
// the word for it has hyphens.
bool IsBegun(const std::string& word, const std::string& begun) {
    if (begun.size() > word.size()) return false;
    return std::equal(begun.begin(), begun.end(), word.begin(), [](char typed, char offered) {
        return InSmallLetters(typed) == InSmallLetters(offered) || (typed == ' ' && offered == '-');
    });
}

void Offer(const std::string& word, const std::string& meaning, Completion* completion) {
    if (!IsBegun(word, completion->word)) return;
    completion->answer += completion->leading + word;
    if (!meaning.empty()) completion->answer += "\t" + meaning;
    completion->answer += "\n";
}

// A name of the plug-in's as a word without spaces: "HSB and Channels" is hsb-and-channels. The commands take
// it so.
std::string WordFor(const std::string& name) {
    std::string word;
    for (const char c : name) {
        const std::string plain = PlainName(std::string(1, c));
        if (!plain.empty()) word += plain;
        if (plain.empty() && !word.empty() && word.back() != '-') word += '-';
    }
    while (!word.empty() && word.back() == '-') word.pop_back();
    return word;
}

void OfferNames(const Words& names, Completion* completion) {
    for (const std::string& name : names) Offer(WordFor(name), name, completion);
}

// The lists of the direct engine need no opened one.
Words EffectNames() {
    Words names;
    kDirectEngine.listEffects(nullptr, &names, nullptr);
    return names;
}

void OfferEffects(Completion* completion) { OfferNames(EffectNames(), completion); }

void OfferPalettes(Completion* completion) {
    Words names;
    kDirectEngine.listPalettes(nullptr, &names, nullptr);
    Offer("custom", "computed from the result", completion);
    Offer("original", "the source's own", completion);
    OfferNames(names, completion);
}

void OfferFormats(Completion* completion) {
    for (const std::string& name : FormatNames()) Offer(name, "", completion);
}

void OfferEdges(Completion* completion) {
    Offer("background", "the background colour", completion);
    Offer("extend", "the picture's edge pixels, repeated", completion);
}

// The row of the effect that a --set would belong to; -1: none, or an unknown one.
int EffectBefore(const Words& before) {
    std::string name;
    for (size_t i = 0; i < before.size(); ++i) {
        if (before[i] == "--effect" && i + 1 < before.size()) name = before[i + 1];
        if (StartsWith(before[i], "--effect=")) name = before[i].substr(std::string("--effect=").size());
    }
    return name.empty() ? -1 : FindName(name, EffectNames());
}

void OfferValues(const Parameter& parameter, Completion* completion) {
    if (parameter.kind == Parameter::Slider) {
        Offer(ValueText(parameter, parameter.value), RangeText(parameter) + ", this is the default",
              completion);
        return;
    }
    for (int value = 0; value <= parameter.maximum; ++value) {
        const std::string text = ValueText(parameter, value);
        Offer(WordFor(text), parameter.kind == Parameter::List ? text : "", completion);
    }
}

// The parameters as NAME=, and behind that what they take.
void OfferSettings(Completion* completion) {
    const int effect = EffectBefore(completion->before);
    if (effect < 0) return;
    std::vector<Parameter> parameters;
    kDirectEngine.listParameters(nullptr, effect, &parameters, nullptr);
    const size_t equals = completion->word.find('=');
    for (const Parameter& parameter : parameters) {
        if (equals == std::string::npos) {
            Offer(WordFor(parameter.name) + "=", parameter.name + ": " + RangeText(parameter), completion);
        } else if (PlainName(parameter.name) == PlainName(completion->word.substr(0, equals))) {
            Completion behind = {completion->command, completion->before, completion->word.substr(equals + 1),
                                 completion->leading + completion->word.substr(0, equals + 1), ""};
            OfferValues(parameter, &behind);
            completion->answer += behind.answer;
        }
    }
}

// What options and inputs take that is no file and no number.
struct ValueRow {
    const char* name;  // without dashes
    void (*offer)(Completion* completion);
};

constexpr ValueRow kValues[] = {
    {.name = "edges", .offer = OfferEdges},      {.name = "effect", .offer = OfferEffects},
    {.name = "format", .offer = OfferFormats},   {.name = "name", .offer = OfferEffects},
    {.name = "palette", .offer = OfferPalettes}, {.name = "set", .offer = OfferSettings},
};

bool TakesFile(const DeclaredOption& option) {
    const std::string& type = option.typeName;
    return type.find("FILE") != std::string::npos || type == "PATH" || type == "FOLDER";
}

void OfferValuesOf(const DeclaredOption& option, Completion* completion) {
    const std::string& name = option.longNames.empty() ? option.inputName : option.longNames.front();
    for (const ValueRow& row : kValues) {
        if (name == row.name) return row.offer(completion);
    }
    if (TakesFile(option)) completion->answer += kFilesLine;
}

bool Has(const Words& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// The option that the word names; null: none.
const DeclaredOption* FindOption(const DeclaredCommand& command, const std::string& word) {
    for (const DeclaredOption& option : command.options) {
        if (StartsWith(word, "--") ? Has(option.longNames, word.substr(2))
                                   : StartsWith(word, "-") && Has(option.shortNames, word.substr(1)))
            return &option;
    }
    return nullptr;
}

bool IsGiven(const DeclaredOption& option, const DeclaredCommand& command, const Words& before) {
    return std::any_of(before.begin(), before.end(), [&](const std::string& word) {
        return FindOption(command, word.substr(0, word.find('='))) == &option;
    });
}

void OfferOptions(Completion* completion) {
    for (const DeclaredOption& option : completion->command.options) {
        if (!option.isRepeatable && IsGiven(option, completion->command, completion->before)) continue;
        for (const std::string& name : option.longNames) Offer("--" + name, option.description, completion);
    }
}

void OfferInputs(Completion* completion) {
    for (const DeclaredOption& option : completion->command.options) {
        // A name like -o,--output,output serves both ways; the option is offered by its dashes.
        if (IsInput(option)) return OfferValuesOf(option, completion);
    }
}

void OfferCommands(const DeclaredCommand& program, Completion* completion) {
    for (const DeclaredCommand& command : program.commands)
        Offer(command.name, command.description, completion);
}

// The first word that is no option says which command it is.
const DeclaredCommand* FindCommand(const DeclaredCommand& program, const Words& before) {
    for (const DeclaredCommand& command : program.commands) {
        if (!before.empty() && before.front() == command.name) return &command;
    }
    return nullptr;
}

void Answer(Completion* completion) {
    const std::string last = completion->before.empty() ? "" : completion->before.back();
    const DeclaredOption* const option = FindOption(completion->command, last);
    if (option && option->takesValue) return OfferValuesOf(*option, completion);
    const size_t equals = completion->word.find('=');
    const DeclaredOption* const joined =
        StartsWith(completion->word, "--") && equals != std::string::npos
            ? FindOption(completion->command, completion->word.substr(0, equals))
            : nullptr;
    if (joined) {
        completion->leading = completion->word.substr(0, equals + 1);
        completion->word.erase(0, equals + 1);
        return OfferValuesOf(*joined, completion);
    }
    if (StartsWith(completion->word, "-")) return OfferOptions(completion);
    OfferInputs(completion);
}

}  // namespace

std::string CompleteWords(const DeclaredCommand& program, const std::vector<std::string>& arguments) {
    if (arguments.empty() || !StartsWith(arguments.front(), "=")) return "";
    const Words before(arguments.begin() + 1, arguments.end());
    const DeclaredCommand* const command = FindCommand(program, before);
    Completion completion = {command ? *command : program, before, arguments.front().substr(1), "", ""};
    if (command) {
        Answer(&completion);
    } else if (before.empty() && StartsWith(completion.word, "-")) {
        OfferOptions(&completion);
    } else if (before.empty()) {
        OfferCommands(program, &completion);
    }
    return completion.answer;
}

}  // namespace kfx::commands
