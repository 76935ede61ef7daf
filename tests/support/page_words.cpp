// SPDX-License-Identifier: MIT
#include "tests/support/page_words.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

#include "media/utf8_path.h"

namespace kfx::test {
namespace {

constexpr PageWords kPages[] = {
    // 83 7C, 95 5C
    {.codePage = 932, .inside = "\u30DD\u8868", .outside = "b\u00E4r", .likeness = "bar"},
    // 83 7C, 81 5C
    {.codePage = 936, .inside = "\u5104\u4E57", .outside = "b\u00E4r", .likeness = "bar"},
    // The last letter is FF, which is -1 where characters have signs.
    {.codePage = 1251,
     .inside = "\u043E\u0431\u044A\u0451\u043C\u044F",
     .outside = "b\u00E4r",
     .likeness = "bar"},
    {.codePage = 1252, .inside = "Gr\u00F6\u00DFe\u00FF", .outside = "b\u0101r", .likeness = "bar"},
};
constexpr PageWords kUnknownPage = {
    .codePage = 0, .inside = "plain", .outside = "plain", .likeness = "plain"};

}  // namespace

const PageWords& WordsOfPage() {
    const UINT codePage = GetACP();
    const auto* row = std::find_if(std::begin(kPages), std::end(kPages),
                                   [&](const PageWords& words) { return words.codePage == codePage; });
    return row == std::end(kPages) ? kUnknownPage : *row;
}

std::string NameInside(const std::string& ending) {
    const std::string word = WordsOfPage().inside;
    return "5%d ~1 " + word + " %s" + word + ending;
}

std::string ToPage(const std::string& utf8) {
    const std::wstring wide = PathOf(utf8).native();
    char text[1024] = "";
    WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, text, sizeof text, nullptr, nullptr);
    return text;
}

std::string FromPage(const std::string& text) {
    wchar_t wide[1024] = L"";
    MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, wide, 1024);
    return Utf8Of(wide);
}

}  // namespace kfx::test
