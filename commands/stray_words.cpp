// SPDX-License-Identifier: MIT
#include "commands/stray_words.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <vector>

#include "commands/direct_engine.h"
#include "commands/output_format.h"
#include "commands/text.h"
#include "commands/text_match.h"
#include "media/utf8_path.h"

namespace kfx::commands {
namespace {

bool MayNameFiles(const std::string& input) {
    std::error_code unknown;
    return IsStream(input) || input.find_first_of("*?%") != std::string::npos ||
           std::filesystem::exists(PathOf(SystemPath(input)), unknown);
}

// Whether the word is the name, or one of its words.
bool IsPartOf(const std::string& word, const std::string& name) {
    const std::string plain = PlainName(word);
    std::istringstream words(name);
    for (std::string each; words >> each;) {
        if (PlainName(each) == plain) return true;
    }
    return PlainName(name) == plain;
}

// The effect that the word belongs to: the one whose name an --effect has begun, or the one of this name, or
// where no effect is given the first that has the word in its name. Empty: none.
std::string EffectOf(const CommandLine& line, const std::string& word) {
    std::vector<std::string> names, fitting;
    kDirectEngine.listEffects(nullptr, &names, nullptr);
    std::copy_if(names.begin(), names.end(), std::back_inserter(fitting),
                 [&](const std::string& name) { return IsPartOf(word, name); });
    for (const EffectChoice& effect : line.effects) {
        for (const std::string& name : fitting) {
            if (PlainName(name).rfind(PlainName(effect.name), 0) == 0) return name;
        }
    }
    for (const std::string& name : fitting) {
        if (line.effects.empty() || PlainName(name) == PlainName(word)) return name;
    }
    return "";
}

// What the word was probably meant as; empty when that is not known.
std::string ExplainWord(const CommandLine& line, const std::string& input, bool isRefused) {
    const std::string start = "there is no file \"" + input + "\"; ";
    const size_t equals = input.find('=');
    if (equals != std::string::npos && equals > 0)
        return start + "to set a parameter of an effect, write --set \"" + input + "\".";
    const std::string effect = EffectOf(line, input);
    if (!effect.empty() && effect.find(' ') == std::string::npos)
        return start + "to apply an effect, write --effect " + effect + ".";
    if (!effect.empty()) return start + "a name with spaces needs quotes, as --effect \"" + effect + "\".";
    if (isRefused && EndingOf(input).empty()) return start + "a name with spaces needs quotes.";
    return "";
}

}  // namespace

std::string StrayWord(const CommandLine& line, bool isRefused) {
    if (line.inputs.size() < 2) return "";
    for (const std::string& input : line.inputs) {
        if (PlainName(input).empty() || MayNameFiles(input)) continue;
        std::string explained = ExplainWord(line, input, isRefused);
        if (!explained.empty()) return explained;
    }
    return "";
}

}  // namespace kfx::commands
