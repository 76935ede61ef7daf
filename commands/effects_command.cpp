// SPDX-License-Identifier: MIT
// kestrel effects: what effects there are.
#include <utility>

#include "commands/common_options.h"
#include "commands/parameter_help.h"
#include "commands/parser_words.h"
#include "commands/report.h"
#include "commands/text_match.h"

namespace kfx::commands {
namespace {

// Where the listing of effects has ranges and meanings.
constexpr size_t kRangeColumn = 20;
constexpr size_t kMeaningColumn = 44;

nlohmann::ordered_json DescribeParameter(const Parameter& parameter, const ParameterHelp& help) {
    nlohmann::ordered_json object = {{"name", parameter.name}};
    switch (parameter.kind) {
        case Parameter::Slider:
            object.update({{"kind", "number"},
                           {"minimum", parameter.minimum},
                           {"maximum", parameter.maximum},
                           {"default", parameter.value}});
            break;
        case Parameter::CheckBox:
            object.update({{"kind", "switch"}, {"default", parameter.value != 0}});
            break;
        case Parameter::List:
            object.update({{"kind", "choice"},
                           {"choices", parameter.items},
                           {"default", ValueText(parameter, parameter.value)}});
            break;
    }
    if (!help.unit.empty()) object["unit"] = help.unit;
    if (!help.meaning.empty()) object["meaning"] = help.meaning;
    return object;
}

// The text with spaces up to a column, at least one.
std::string UpToColumn(std::string text, size_t column) {
    text.resize(text.size() < column ? column : text.size() + 1, ' ');
    return text;
}

std::string DescribeLine(const Parameter& parameter, const ParameterHelp& help) {
    const std::string range = UpToColumn("  " + parameter.name, kRangeColumn) + RangeText(parameter) + " (" +
                              ValueText(parameter, parameter.value) + ")";
    return (help.meaning.empty() ? range : UpToColumn(range, kMeaningColumn) + help.meaning) + "\n";
}

// Adds one effect to the listing.
bool DescribeEffect(const OpenEngine& engine, int effect, const std::string& name, Report* report,
                    Failure* failure) {
    std::vector<Parameter> parameters;
    if (!engine.engine.listParameters(engine.opened, effect, &parameters, failure)) return false;
    auto described = nlohmann::ordered_json::array();
    report->text += name + "\n";
    for (const Parameter& parameter : parameters) {
        const ParameterHelp help = FindParameterHelp(kHelpDocument, name, parameter.name);
        described.push_back(DescribeParameter(parameter, help));
        report->text += DescribeLine(parameter, help);
    }
    report->result["effects"].push_back({{"name", name}, {"parameters", described}});
    return true;
}

// How the effect is applied at the settings at which the help document shows it.
std::string ExampleLine(const std::string& name) {
    const bool isOneWord = name.find(' ') == std::string::npos;
    std::string line =
        "\nkestrel apply IN.gif -o OUT.gif --effect " + (isOneWord ? name : "\"" + name + "\"");
    for (const Setting& setting : FindPictureSettings(kHelpDocument, name)) {
        const std::string value = setting.name + "=" + setting.value;
        line += " --set " + (value.find(' ') == std::string::npos ? value : "\"" + value + "\"");
    }
    return line + "\n";
}

bool DescribeOne(const OpenEngine& engine, const std::vector<std::string>& effects, const std::string& wanted,
                 Report* report, Failure* failure) {
    const int effect = FindName(wanted, effects);
    if (effect < 0) {
        *failure = {kExitBadCommand, UnknownNameMessage("effect", wanted, effects)};
        return false;
    }
    const std::string& name = effects[static_cast<size_t>(effect)];
    if (!DescribeEffect(engine, effect, name, report, failure)) return false;
    report->text += ExampleLine(name);
    return true;
}

bool DescribeAll(const OpenEngine& engine, const std::vector<std::string>& effects, Report* report,
                 Failure* failure) {
    std::vector<std::string> palettes;
    for (size_t i = 0; i < effects.size(); ++i) {
        if (!DescribeEffect(engine, static_cast<int>(i), effects[i], report, failure)) return false;
    }
    if (!engine.engine.listPalettes(engine.opened, &palettes, failure)) return false;
    report->result["palettes"] = palettes;
    return true;
}

bool Describe(const OpenEngine& engine, const std::string& wanted, Report* report, Failure* failure) {
    std::vector<std::string> effects;
    if (!engine || !engine.engine.listEffects(engine.opened, &effects, failure)) return false;
    report->result["plugin"] = engine.engine.name(engine.opened);
    report->result["effects"] = nlohmann::ordered_json::array();
    return wanted.empty() ? DescribeAll(engine, effects, report, failure)
                          : DescribeOne(engine, effects, wanted, report, failure);
}

Report RunEffects(const CommandLine& line, const CommandContext& context) {
    Animation source;
    HostSession session;
    session.source = &source;
    Failure failure;
    Report report;
    const OpenEngine engine(context.engine, PlainStart(context, &session), &failure);
    return Describe(engine, line.look.effect, &report, &failure) ? report : FailedReport(failure);
}

void AddEffects(CLI::App* app, const OptionTarget& target) {
    CLI::App* const effects = AddCommand(
        app, "effects", "List the effects, or one of them, with their parameters, ranges and defaults");
    AddText(effects,
            {.name = "name",
             .typeName = "NAME",
             .description = "Only this effect; a beginning that fits one name is enough (default: all)"},
            &target.line->look.effect);
    AddEngineOptions(effects, target);
}

}  // namespace

const CommandRow kEffectsCommand = {
    .name = "effects",
    .inputs = InputUse::Each,
    .add = AddEffects,
    .finish = nullptr,
    .run = RunEffects,
    .examples = "kestrel effects\nkestrel effects \"Oil Painting\"\nkestrel effects swirl --json"};

}  // namespace kfx::commands
