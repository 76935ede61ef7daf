// SPDX-License-Identifier: MIT
// Names in the code page of the Windows that a test finds, and such as it cannot say. Texts are UTF-8 here;
// the plug-in's are bytes of the code page.
#pragma once

#include <string>

namespace kfx::test {

struct PageWords {
    unsigned codePage;
    const char* inside;   // of the page's own characters; the second byte of some is a bar's or a backslash's
    const char* outside;  // with a character that the page does not have
    const char* likeness;  // what the system takes for it where it may take what looks like it
};

// Those of the system's code page; of an unknown one, plain letters.
const PageWords& WordsOfPage();

// A name with them that has what else is awkward in names: spaces, and what formats and short names are made
// of.
std::string NameInside(const std::string& ending);

std::string ToPage(const std::string& utf8);
std::string FromPage(const std::string& text);

}  // namespace kfx::test
