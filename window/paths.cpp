// SPDX-License-Identifier: MIT
#include "window/paths.h"

#include <windows.h>

namespace kfx {
namespace {

const char* NextCharacter(const char* c) {
    return c + (IsDBCSLeadByte(static_cast<BYTE>(*c)) && c[1] ? 2 : 1);
}

}  // namespace

const char* FileNameIn(const char* path) {
    const char* name = path;
    for (const char* c = path; *c; c = NextCharacter(c)) {
        if (*c == '\\' || *c == '/' || *c == ':') name = c + 1;
    }
    return name;
}

bool EndsInBackslash(const char* path) {
    bool ends = false;
    for (const char* c = path; *c; c = NextCharacter(c)) ends = *c == '\\';
    return ends;
}

}  // namespace kfx
