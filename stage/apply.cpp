// SPDX-License-Identifier: MIT
// kestrel-stage apply: one animation through one effect.
#include "stage/commands.h"

#include <utility>

#include "stage/result_files.h"
#include "stage/text_match.h"
#include "stage/text_windows.h"

namespace kfx::stage {
namespace {

// The colour that the command line chose, for when the plug-in's colour button asks.
bool AnswerColor(HostSession* session, void*, const std::uint8_t*, std::uint32_t* color) {
    *color = *static_cast<const unsigned*>(session->user);
    return true;
}

bool Refuse(PluginRun* run, const std::string& error) {
    run->exitCode = kExitBadCommand;
    run->error = error;
    return false;
}

bool SetParameters(PluginRun* run, const std::vector<Setting>& settings) {
    const auto parameters = ReadParameters(run->window);
    std::vector<std::string> names;
    for (const Parameter& parameter : parameters) names.push_back(parameter.name);
    for (const Setting& setting : settings) {
        const int row = FindName(setting.name, names);
        if (row < 0) return Refuse(run, UnknownNameMessage("parameter", setting.name, names));
        const Parameter& parameter = parameters[static_cast<size_t>(row)];
        int value = 0;
        std::string error;
        if (!ParseValue(parameter, setting.value, &value, &error)) return Refuse(run, error);
        if (!SetParameterValue(run->window, parameter, value)) {
            run->exitCode = kExitPlugin;
            run->error = "the plug-in does not take " + parameter.name + "=" + setting.value + ".";
            return false;
        }
    }
    return true;
}

bool SetBackground(PluginRun* run, const std::string& text) {
    if (text.empty()) return true;
    unsigned color = 0;
    if (!ParseColor(text, &color)) return SetOption(run, "Local background", false);
    if (!SetOption(run, "Local background", true)) return false;
    run->session->actions.chooseColor = AnswerColor;
    run->session->user = &color;
    Notify(run->window, GetDlgItem(run->window, kBackgroundButton), BN_CLICKED);
    run->session->actions.chooseColor = nullptr;
    run->session->user = nullptr;
    return true;
}

// A palette from the list can be chosen while "Custom palette" is on, and is used when it is off.
bool ChoosePalette(PluginRun* run, const CommandLine& line) {
    const std::string wanted = PlainName(line.palette);
    if (line.trueColor) return SetOption(run, "Custom palette", false);
    if (!SetOption(run, "Custom palette", true)) return false;
    if (wanted == "custom") return true;
    if (wanted == "original" && !run->session->record.ownPalette) {
        return Refuse(run, line.inputs[0] + ": has no palette of its own; choose another --palette.");
    }
    auto rows = ListRows(GetDlgItem(run->window, kPaletteList));
    const int row = FindName(wanted == "original" ? "Match original" : line.palette, rows);
    rows.insert(rows.end(), {"custom", "original"});
    if (row < 0) return Refuse(run, UnknownNameMessage("palette", line.palette, rows));
    return ChooseRow(run, kPaletteList, row) && SetOption(run, "Custom palette", false);
}

bool SetOptions(PluginRun* run, const CommandLine& line) {
    return SetOption(run, "True color", line.trueColor) && SetOption(run, "Dither", line.dither) &&
           SetOption(run, "Supercompress", line.supercompress) &&
           SetOption(run, "Add comment", line.comment != Choice::Off) &&
           SetBackground(run, line.localBackground);
}

bool Drive(PluginRun* run, const CommandLine& line) {
    return run->error.empty() && ChooseEffect(run, line.effect) && SetParameters(run, line.settings) &&
           SetOptions(run, line) && SelectSource(run) && ChoosePalette(run, line) && RunBuild(run);
}

std::string Plural(size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace

Report RunApply(const CommandLine& line) {
    Report report;
    Animation source;
    HostSession session;
    session.source = &source;
    session.sourcePath = SystemPath(line.inputs[0]);
    if (!ReadSource(line.inputs[0], &source, &report) || !CheckWritable(line.output, &report)) return report;

    const bool gif = EndingOf(line.output) == ".gif";
    {
        DrivenPlugin plugin(line, kHostTakesSupercompressed | (gif ? 0 : kHostTakesTrueColor), &session);
        if (!Drive(&plugin.run, line)) return PluginReport(&plugin.run);
    }
    if (line.supercompress && session.record.transparent) {
        report.notes.push_back(
            line.inputs[0] +
            ": has transparent pixels, so whole pictures are stored; supercompression needs an "
            "opaque source.");
    }
    const size_t frames = session.built.frames.size();
    const int width = session.built.width, height = session.built.height;
    std::vector<std::string> files;
    std::string error;
    if (!WriteResult(SystemPath(line.output), std::move(session.built), session.record, &files, &error)) {
        return FailedReport(kExitBadOutput, error);
    }
    report.text = line.output + ": " + Plural(frames, "frame") + ", " + std::to_string(width) + " x " +
                  std::to_string(height) + ".\n";
    report.result = {
        {"output", line.output}, {"frames", frames}, {"width", width}, {"height", height}, {"files", files}};
    return report;
}

}  // namespace kfx::stage
