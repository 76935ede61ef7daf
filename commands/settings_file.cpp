// SPDX-License-Identifier: MIT
#include "commands/settings_file.h"

#include <algorithm>
#include <cstdio>

#include "commands/direct_engine.h"
#include "commands/engine.h"
#include "commands/text_match.h"
#include "documents/document_text.h"
#include "effects/effect_table.h"
#include "framework/number_text.h"
#include "framework/settings.h"
#include "resources/palette_names.h"
#include "resources/resource_ids.h"

namespace kfx::commands {
namespace {

constexpr char kSliderWord[] = "SCROLL";
constexpr char kCheckBoxWord[] = "CHKBOX";
constexpr char kListWord[] = "CMBBOX";
constexpr char kColorWord[] = "CLRBTN";

// The row that the builder takes for a number that is none of a palette.
constexpr int32_t kUsualPalette = 6;

const std::vector<std::string>& EffectNames() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
        for (size_t i = 0; i < EffectCount(); ++i) all.emplace_back(EffectAt(i)->name);
        return all;
    }();
    return names;
}

// The rows of the palette list when the source has a palette.
const std::vector<std::string>& PaletteNames() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
        Failure failure;
        kDirectEngine.listPalettes(nullptr, &all, &failure);
        all.emplace_back(PALETTE_NAME_SOURCE);
        return all;
    }();
    return names;
}

std::vector<Parameter> ParametersOf(int effect) {
    std::vector<Parameter> parameters;
    Failure failure;
    kDirectEngine.listParameters(nullptr, effect, &parameters, &failure);
    return parameters;
}

// The control of the parameter is written into documents as one of its kind. One box is not: its panel has
// bound it as a slider, so that documents neither hold it nor set it; with `everyBox` it counts, too.
const EffectControl* ControlOf(int effect, const Parameter& parameter, bool everyBox = false) {
    const EffectControls& controls = EffectAt(static_cast<size_t>(effect))->controls;
    for (size_t i = 0; i < controls.count; ++i) {
        const EffectControl& control = controls.rows[i];
        if (control.id == parameter.control && (everyBox || control.kind != ControlKind::SliderBox))
            return &control;
    }
    return nullptr;
}

const char* WordOf(ControlKind kind) {
    if (kind == ControlKind::Slider) return kSliderWord;
    return kind == ControlKind::List ? kListWord : kCheckBoxWord;
}

// The number in the last line for a control of this kind. False: there is no such line.
bool FindNumber(const SettingsDocument& document, int id, const char* kindWord, int32_t* number) {
    bool found = false;
    for (const ControlLine& line : document.lines) {
        const char* const value = line.id == id ? FindLineValue(line.text.c_str(), kindWord) : nullptr;
        if (!value) continue;
        *number = static_cast<int32_t>(ParseDecimal(value));
        found = true;
    }
    return found;
}

bool IsOn(const SettingsDocument& document, int id) {
    int32_t number = 0;
    return FindNumber(document, id, kCheckBoxWord, &number) && number != 0;
}

// What the control would show after the line, as the parameter shows it.
int ShownValue(const Parameter& parameter, int32_t number) {
    if (parameter.kind == Parameter::CheckBox) return number != 0;
    // A row that there is not selects none; effects take the first then.
    if (parameter.kind == Parameter::List) return number >= 0 && number <= parameter.maximum ? number : 0;
    const ControlRange range = {.least = parameter.minimum - parameter.shownOffset,
                                .most = parameter.maximum - parameter.shownOffset,
                                .standard = 0};
    return ClampToRange(range, number) + parameter.shownOffset;
}

void AddEffect(const SettingsDocument& document, int effect, OptionWords* words) {
    words->push_back({.name = "effect", .value = EffectNames()[static_cast<size_t>(effect)]});
    for (const Parameter& parameter : ParametersOf(effect)) {
        const EffectControl* const control = ControlOf(effect, parameter, document.hasEveryBox);
        int32_t number = 0;
        if (!control || !FindNumber(document, control->id, WordOf(control->kind), &number)) continue;
        const int value = ShownValue(parameter, number);
        words->push_back({.name = "set", .value = parameter.name + "=" + ValueText(parameter, value)});
    }
}

// True colour leaves nothing for the palette's options to do.
void AddPalette(const SettingsDocument& document, OptionWords* words) {
    const auto addFlag = [words](const char* name) {
        words->push_back({.name = name, .value = "", .isFlag = true});
    };
    int32_t number = 0;
    if (IsOn(document, IDC_TRUE_COLOR)) {
        addFlag("true-color");
        return;
    }
    if (IsOn(document, IDC_CUSTOM_PALETTE)) {
        words->push_back({.name = "palette", .value = "custom"});
    } else if (FindNumber(document, IDC_PALETTE, kListWord, &number)) {
        const bool isRow = number >= 0 && static_cast<size_t>(number) < PaletteNames().size();
        words->push_back({.name = "palette",
                          .value = PaletteNames()[static_cast<size_t>(isRow ? number : kUsualPalette)]});
    }
    if (IsOn(document, IDC_DITHER)) addFlag("dither");
    if (IsOn(document, IDC_SUPERCOMPRESS)) addFlag("supercompress");
}

std::string ColorText(uint32_t color) {
    char text[8];
    std::snprintf(text, sizeof text, "%02X%02X%02X", color & 0xFF, color >> 8 & 0xFF, color >> 16 & 0xFF);
    return text;
}

// The background that the window has by itself is not the same as naming its colour: beyond the edges of
// transparent pictures there is nothing then.
void AddBackground(const SettingsDocument& document, OptionWords* words) {
    const Settings fresh;
    int32_t use = 0, color = 0;
    const bool saysUse = FindNumber(document, IDC_LOCAL_BACKGROUND, kCheckBoxWord, &use);
    if (saysUse && use == 0) {
        words->push_back({.name = "local-background", .value = "none"});
    } else if (FindNumber(document, IDC_BACKGROUND_COLOR, kColorWord, &color) &&
               static_cast<uint32_t>(color) != fresh.localBackgroundColor) {
        words->push_back({.name = "local-background", .value = ColorText(static_cast<uint32_t>(color))});
    }
}

std::string NumberLine(const char* word, int id, int32_t value) {
    return word + std::to_string(id) + "=" + std::to_string(value) + "\n";
}

// The parameter's number as the command gives it. A value that moves over the frames counts with its
// beginning.
int GivenValue(const EffectChoice& choice, const Parameter& parameter,
               const std::vector<std::string>& names) {
    int value = parameter.value;
    for (const Setting& setting : choice.settings) {
        const int row = FindName(setting.name, names);
        if (row < 0 || names[static_cast<size_t>(row)] != parameter.name) continue;
        std::string error;
        int given = 0;
        const size_t end = std::min(setting.value.find(".."), setting.value.find_first_of(",:; "));
        if (ParseValue(parameter, choice.name, setting.value, &given, &error) ||
            ParseValue(parameter, choice.name, setting.value.substr(0, end), &given, &error))
            value = given;
    }
    return value;
}

std::string EffectLines(const EffectChoice& choice, int effect) {
    const std::vector<Parameter> parameters = ParametersOf(effect);
    std::vector<std::string> names;
    names.reserve(parameters.size());
    for (const Parameter& parameter : parameters) names.push_back(parameter.name);
    std::string lines = NumberLine(kListWord, IDC_EFFECT, effect);
    for (const Parameter& parameter : parameters) {
        const EffectControl* const control = ControlOf(effect, parameter);
        if (!control) continue;
        lines += NumberLine(WordOf(control->kind), control->id,
                            GivenValue(choice, parameter, names) - parameter.shownOffset);
    }
    return lines;
}

std::string PaletteLines(const CommandLine& line) {
    if (line.trueColor) return "";
    std::string lines = NumberLine(kCheckBoxWord, IDC_TRUE_COLOR, 0);
    const std::string wanted = PlainName(line.palette);
    const int row = FindName(wanted == "original" ? PALETTE_NAME_SOURCE : line.palette, PaletteNames());
    if (wanted == "custom")
        lines += NumberLine(kCheckBoxWord, IDC_CUSTOM_PALETTE, 1);
    else if (row >= 0 && row != kUsualPalette)
        lines += NumberLine(kListWord, IDC_PALETTE, row);
    if (line.dither) lines += NumberLine(kCheckBoxWord, IDC_DITHER, 1);
    if (line.supercompress) lines += NumberLine(kCheckBoxWord, IDC_SUPERCOMPRESS, 1);
    return lines;
}

std::string BackgroundLines(const CommandLine& line) {
    unsigned color = 0;
    if (line.localBackground.empty()) return "";
    return ParseColor(line.localBackground, &color)
               ? kColorWord + std::to_string(IDC_BACKGROUND_COLOR) + "=" + std::to_string(color) + "\n"
               : NumberLine(kCheckBoxWord, IDC_LOCAL_BACKGROUND, 0);
}

std::string PaletteName(const std::string& given) {
    std::string plain = PlainName(given);
    if (plain == "custom" || plain == "original") return plain;
    const int row = FindName(given, PaletteNames());
    return row < 0 ? given : PaletteNames()[static_cast<size_t>(row)];
}

// Gives --set words of an effect the names in full and the panel's order.
void NameParameters(int effect, OptionWords::iterator begin, OptionWords::iterator end) {
    std::vector<std::string> names;
    for (const Parameter& parameter : ParametersOf(effect)) names.push_back(parameter.name);
    const auto rowOf = [&names](const OptionWord& word) {
        return FindName(word.value.substr(0, word.value.find('=')), names);
    };
    for (auto word = begin; word != end; ++word) {
        const int row = rowOf(*word);
        const size_t equals = word->value.find('=');
        if (row >= 0 && equals != std::string::npos)
            word->value = names[static_cast<size_t>(row)] + word->value.substr(equals);
    }
    std::stable_sort(begin, end, [&](const OptionWord& one, const OptionWord& other) {
        return rowOf(one) < rowOf(other);
    });
}

}  // namespace

bool ReadSettings(const std::string& text, SettingsDocument* document) {
    *document = {};
    size_t number = 0;
    for (size_t start = 0; start < text.size(); ++number) {
        const size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
        // A longer line is read in pieces.
        const size_t next = std::min(end, start + kDocumentLineBytes - 1);
        std::string line = text.substr(start, next - start);
        start = next;
        if (number == 0) {
            if (!IsDocumentStart(line.c_str())) return false;
            continue;
        }
        if (line[0] == ';') {
            document->comments.push_back(line.substr(1, line.find_last_not_of("\r\n")));
            continue;
        }
        const int id = TakeDocumentLine(line.data());
        if (id > 0) document->lines.push_back({.id = id, .text = line.c_str()});
    }
    return true;
}

bool WordsOfSettings(const SettingsDocument& document, const std::vector<std::string>& effects,
                     OptionWords* words, std::string* error) {
    words->clear();
    int32_t row = 0;
    const bool selects = FindNumber(document, IDC_EFFECT, kListWord, &row);
    if (effects.empty() && selects) {
        if (row < 0 || static_cast<size_t>(row) >= EffectCount()) {
            *error = "selects effect " + std::to_string(row) + ", and there are " +
                     std::to_string(EffectCount()) + " (counted from 0)";
            return false;
        }
        AddEffect(document, row, words);
    }
    for (const std::string& name : effects) {
        const int effect = FindName(name, EffectNames());
        if (effect >= 0)
            AddEffect(document, effect, words);
        else
            words->push_back({.name = "effect", .value = name});
    }
    AddPalette(document, words);
    if (IsOn(document, IDC_ADD_COMMENT)) words->push_back({.name = "comment", .value = "", .isFlag = true});
    AddBackground(document, words);
    return true;
}

std::string ControlLinesOf(const CommandLine& line) {
    if (line.effects.empty()) return "";
    const int effect = FindName(line.effects.back().name, EffectNames());
    if (effect < 0) return "";
    std::string lines = EffectLines(line.effects.back(), effect) + PaletteLines(line);
    if (!line.comment) lines += NumberLine(kCheckBoxWord, IDC_ADD_COMMENT, 0);
    return lines + BackgroundLines(line);
}

OptionWords WithFullNames(OptionWords words) {
    for (size_t i = 0; i < words.size(); ++i) {
        OptionWord& word = words[i];
        if (word.name == "palette") word.value = PaletteName(word.value);
        const int effect = word.name == "effect" ? FindName(word.value, EffectNames()) : -1;
        if (effect < 0) continue;
        word.value = EffectNames()[static_cast<size_t>(effect)];
        size_t end = i + 1;
        while (end < words.size() && words[end].name == "set") ++end;
        const auto at = [&](size_t row) { return words.begin() + static_cast<std::ptrdiff_t>(row); };
        NameParameters(effect, at(i + 1), at(end));
    }
    return words;
}

}  // namespace kfx::commands
