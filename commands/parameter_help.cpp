// SPDX-License-Identifier: MIT
#include "commands/parameter_help.h"

#include <cctype>
#include <cstddef>

namespace kfx::commands {
namespace {

// The text between `start` and `end`, looked for from *at on; *at moves behind it. False: there is none.
bool TextBetween(const std::string& text, const std::string& start, const std::string& end, size_t* at,
                 std::string* between) {
    const size_t first = text.find(start, *at);
    if (first == std::string::npos) return false;
    const size_t last = text.find(end, first + start.size());
    if (last == std::string::npos) return false;
    *between = text.substr(first + start.size(), last - first - start.size());
    *at = last + end.size();
    return true;
}

// The section of an effect: from its heading to the next one.
std::string SectionOf(const std::string& document, const std::string& effect) {
    const size_t start = document.find(">" + effect + "</h3>");
    return start == std::string::npos ? "" : document.substr(start, document.find("<h", start) - start);
}

// The text without its marks, with one space for any white space.
std::string PlainText(const std::string& marked) {
    std::string plain;
    bool inMark = false;
    for (const char c : marked) {
        const bool space = std::isspace(static_cast<unsigned char>(c)) != 0;
        if (c == '<') inMark = true;
        if (!inMark && !(space && !plain.empty() && plain.back() == ' ')) plain += space ? ' ' : c;
        if (c == '>') inMark = false;
    }
    return plain;
}

// Where a number that begins at `at` ends; `at` when none does.
size_t NumberEnd(const std::string& text, size_t at) {
    size_t end = at < text.size() && text[at] == '-' ? at + 1 : at;
    const size_t digits = end;
    while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end]))) ++end;
    return end == digits ? at : end;
}

// The text without its range, as in ", 4 to 45".
std::string WithoutRange(const std::string& text) {
    for (size_t comma = text.find(", "); comma != std::string::npos; comma = text.find(", ", comma + 1)) {
        const size_t least = NumberEnd(text, comma + 2);
        if (least == comma + 2 || text.compare(least, 4, " to ") != 0) continue;
        const size_t most = NumberEnd(text, least + 4);
        if (most != least + 4) return text.substr(0, comma) + text.substr(most);
    }
    return text;
}

}  // namespace

ParameterHelp FindParameterHelp(const std::string& document, const std::string& effect,
                                const std::string& parameter) {
    const std::string section = SectionOf(document, effect);
    std::string names, text;
    for (size_t at = 0; TextBetween(section, "<dt>", "</dt>", &at, &names);) {
        if (!TextBetween(section, "<dd>", "</dd>", &at, &text)) break;
        // Several parameters may share their text: "Center X, Center Y".
        if ((", " + names + ",").find(", " + parameter + ",") == std::string::npos) continue;
        ParameterHelp help;
        size_t start = 0;
        TextBetween(text, "<span class=\"unit\">", "</span>", &start, &help.unit);
        help.meaning = WithoutRange(PlainText(text));
        return help;
    }
    return {};
}

std::vector<Setting> FindPictureSettings(const std::string& document, const std::string& effect) {
    const size_t end = document.find("\">" + effect + "</h3>");
    const size_t heading = end == std::string::npos ? end : document.rfind("<h3", end);
    if (heading == std::string::npos) return {};
    const std::string marks = document.substr(heading, end + 1 - heading);
    std::string list;
    size_t at = 0;
    if (!TextBetween(marks, "data-picture=\"", "\"", &at, &list)) return {};
    std::vector<Setting> settings;
    list += ", ";
    for (size_t start = 0, stop; (stop = list.find(", ", start)) != std::string::npos; start = stop + 2) {
        const std::string text = list.substr(start, stop - start);
        const size_t equals = text.find('=');
        if (equals != std::string::npos)
            settings.push_back({text.substr(0, equals), text.substr(equals + 1)});
    }
    return settings;
}

}  // namespace kfx::commands
