// SPDX-License-Identifier: MIT
#include "commands/parameter.h"

#include <charconv>
#include <system_error>

#include "commands/text_match.h"

namespace kfx::commands {

std::string ShownName(const std::string& caption) {
    std::string name;
    for (const char c : caption) {
        if (c != '&' && c != ':') name += c;
    }
    return name;
}

bool ReadNumber(const std::string& text, int* number) {
    const bool plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
    const char* const end = text.data() + text.size();
    int value = 0;
    const auto read = std::from_chars(text.data() + (plus ? 1 : 0), end, value);
    if (read.ec != std::errc() || read.ptr != end || value < -1000000 || value > 1000000) return false;
    *number = value;
    return true;
}

bool ParseValue(const Parameter& parameter, const std::string& effect, const std::string& text, int* value,
                std::string* error) {
    const std::string plain = PlainName(text);
    bool known = false;
    if (parameter.kind == Parameter::CheckBox) {
        const bool on = plain == "on" || plain == "1" || plain == "yes" || plain == "true";
        known = on || plain == "off" || plain == "0" || plain == "no" || plain == "false";
        *value = on ? 1 : 0;
    } else if (parameter.kind == Parameter::List) {
        *value = FindName(text, parameter.items);
        known = *value >= 0;
    } else {
        known = ReadNumber(text, value) && *value >= parameter.minimum && *value <= parameter.maximum;
    }
    const std::string numbers = parameter.kind == Parameter::Slider ? "whole numbers from " : "";
    if (!known)
        *error = parameter.name + " of " + effect + " takes " + numbers + RangeText(parameter) + ", not \"" +
                 text + "\".";
    return known;
}

std::string RangeText(const Parameter& parameter) {
    if (parameter.kind == Parameter::CheckBox) return "on or off";
    if (parameter.kind == Parameter::List) return JoinNames(parameter.items);
    return std::to_string(parameter.minimum) + " to " + std::to_string(parameter.maximum);
}

std::string ValueText(const Parameter& parameter, int value) {
    if (parameter.kind == Parameter::CheckBox) return value ? "on" : "off";
    if (parameter.kind == Parameter::Slider) return std::to_string(value);
    return value >= 0 && value <= parameter.maximum ? parameter.items[static_cast<size_t>(value)] : "";
}

}  // namespace kfx::commands
