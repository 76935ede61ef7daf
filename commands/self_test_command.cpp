// SPDX-License-Identifier: MIT
// kestrel self-test: whether this build gives the right bytes on this machine.
#include <algorithm>
#include <chrono>

#include "commands/common_options.h"
#include "commands/parser_words.h"
#include "commands/report.h"
#include "commands/self_test.h"
#include "commands/text_match.h"
#include "commands/times.h"

namespace kfx::commands {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kMostNamed = 4;  // in the sentence; the list above it has them all

const char* PathName(ComputePath path) { return path == ComputePath::Avx2 ? "AVX2" : "plain"; }

bool IsRight(const SelfTestResult& result) { return result.fingerprint == result.row->fingerprint; }

std::string WrongLine(const SelfTestResult& result) {
    return NameOf(*result.row) + " (" + PathName(result.path) + "): " + result.fingerprint + " instead of " +
           result.row->fingerprint + "\n";
}

std::string WrongSentence(const std::vector<SelfTestResult>& results) {
    std::vector<std::string> names;
    for (const SelfTestResult& result : results) {
        if (!IsRight(result)) names.push_back(NameOf(*result.row) + " (" + PathName(result.path) + ")");
    }
    const size_t count = names.size();
    if (count > kMostNamed) {
        names.resize(kMostNamed);
        names.push_back("more");
    }
    return std::to_string(count) + " of " + std::to_string(results.size()) +
           " results are not those of this version: " + JoinNames(names, "and") +
           "; do not use this program on this machine, and report it with the name of the processor.";
}

Report RunSelfTestCommand(const CommandLine&, const CommandContext&) {
    const Clock::time_point start = Clock::now();
    std::vector<SelfTestResult> results;
    Failure failure;
    if (!RunSelfTest(kSelfTestRows, &results, &failure)) return FailedReport(failure);
    const int64_t milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    Report report;
    report.result["paths"] =
        HasAvx2() ? nlohmann::ordered_json{"plain", "AVX2"} : nlohmann::ordered_json{"plain"};
    report.result["seconds"] = static_cast<double>(milliseconds) / 1000;
    report.result["results"] = nlohmann::ordered_json::array();
    for (const SelfTestResult& result : results) {
        report.result["results"].push_back({{"name", NameOf(*result.row)},
                                            {"path", PathName(result.path)},
                                            {"ok", IsRight(result)},
                                            {"fingerprint", result.fingerprint}});
        if (!IsRight(result)) report.text += WrongLine(result);
    }
    if (!std::all_of(results.begin(), results.end(), IsRight)) {
        report.exitCode = kExitEngine;
        report.error = WrongSentence(results);
        return report;
    }
    report.text = "All " + std::to_string(results.size()) + " results are right (" +
                  (HasAvx2() ? "plain and AVX2" : "plain; this processor has no AVX2") + ", " +
                  SecondsText(milliseconds) + ").\n";
    return report;
}

void AddSelfTest(CLI::App* app, const OptionTarget& target) {
    CLI::App* const test =
        AddCommand(app, "self-test", "Check that effects and palettes give the right bytes on this machine");
    AddReportOptions(test, target.line);
    SetFooter(
        test,
        "Builds a small animation of its own under every effect and palette, with and without AVX2, and "
        "compares\n"
        "with built-in fingerprints. It takes about a second and writes no file.\n\n"
        "Exit codes: 0 all results are right, 5 some are not.");
}

}  // namespace

const CommandRow kSelfTestCommand = {.name = "self-test",
                                     .inputs = InputUse::Each,
                                     .add = AddSelfTest,
                                     .finish = nullptr,
                                     .run = RunSelfTestCommand,
                                     .examples = "kestrel self-test"};

}  // namespace kfx::commands
