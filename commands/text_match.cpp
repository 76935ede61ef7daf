// SPDX-License-Identifier: MIT
#include "commands/text_match.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace kfx::commands {
namespace {

bool BeginsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

// Insertions, deletions and replacements that lead from one text to the other (Levenshtein, 1966), row by
// row.
size_t EditDistance(const std::string& from, const std::string& to) {
    std::vector<size_t> row(to.size() + 1);
    for (size_t j = 0; j <= to.size(); ++j) row[j] = j;
    for (size_t i = 0; i < from.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i + 1;
        for (size_t j = 0; j < to.size(); ++j) {
            const size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row[to.size()];
}

}  // namespace

std::string PlainName(const std::string& name) {
    std::string plain;
    for (const char c : name) {
        if (c >= 'A' && c <= 'Z') plain += static_cast<char>(c - 'A' + 'a');
        if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) plain += c;
    }
    return plain;
}

int FindName(const std::string& wanted, const std::vector<std::string>& names) {
    const std::string plain = PlainName(wanted);
    if (plain.empty()) return -1;
    int found = -1;
    int beginning = 0;
    for (size_t i = 0; i < names.size(); ++i) {
        const std::string candidate = PlainName(names[i]);
        if (candidate == plain) return static_cast<int>(i);
        if (BeginsWith(candidate, plain)) {
            found = static_cast<int>(i);
            ++beginning;
        }
    }
    return beginning == 1 ? found : -1;
}

std::vector<std::string> NearestNames(const std::string& wanted, const std::vector<std::string>& names) {
    const std::string plain = PlainName(wanted);
    std::vector<std::pair<size_t, std::string>> ranked;
    for (const std::string& name : names) {
        const std::string candidate = PlainName(name);
        if (!plain.empty() && BeginsWith(candidate, plain)) {
            ranked.emplace_back(0, name);
            continue;
        }
        // Half of a name may be mistyped; beyond that a suggestion would only confuse.
        const size_t distance = EditDistance(plain, candidate);
        if (distance <= std::max(plain.size(), candidate.size()) / 2) ranked.emplace_back(distance, name);
    }
    std::stable_sort(ranked.begin(), ranked.end(), [](auto& a, auto& b) { return a.first < b.first; });
    std::vector<std::string> nearest;
    for (const auto& [distance, name] : ranked) {
        if (nearest.size() < 3 && distance <= ranked.front().first + 1) nearest.push_back(name);
    }
    return nearest;
}

std::string JoinNames(const std::vector<std::string>& names, const std::string& lastWord) {
    std::string joined;
    for (size_t i = 0; i < names.size(); ++i) {
        if (i > 0) joined += i + 1 == names.size() ? " " + lastWord + " " : ", ";
        joined += names[i];
    }
    return joined;
}

std::string UnknownNameMessage(const std::string& kind, const std::string& wanted,
                               const std::vector<std::string>& names) {
    const std::string plain = PlainName(wanted);
    std::vector<std::string> beginning;
    for (const std::string& name : names) {
        if (!plain.empty() && BeginsWith(PlainName(name), plain)) beginning.push_back(name);
    }
    if (beginning.size() > 1)
        return "ambiguous " + kind + " \"" + wanted + "\": it can be " + JoinNames(beginning) + ".";
    const std::string start = "unknown " + kind + " \"" + wanted + "\"";
    const auto nearest = NearestNames(wanted, names);
    if (!nearest.empty()) return start + "; did you mean " + JoinNames(nearest) + "?";
    if (names.empty()) return start + "; there is none here.";
    return start + "; there " + (names.size() == 1 ? "is only " : "are ") + JoinNames(names, "and") + ".";
}

}  // namespace kfx::commands
