// SPDX-License-Identifier: MIT
#include "documents/document_text.h"

#include <cstring>

#include "framework/number_text.h"

namespace kfx {
namespace {

constexpr char kProductText[] = "Kestrel FX #1 Plugin";
constexpr char kMakerText[] = "Quorvane Labs";
constexpr size_t kKindWordLength = 6;

char LowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Kind words are ASCII letters, so the locale's rules of case are not used.
bool HasKindWord(const char* line, const char* kindWord) {
    for (size_t i = 0; i < kKindWordLength; ++i)
        if (LowerCase(line[i]) != LowerCase(kindWord[i])) return false;
    return true;
}

void CutAt(char* line, char end) {
    char* found = std::strchr(line, end);
    if (found) *found = 0;
}

}  // namespace

void WriteDocumentStart(std::FILE* file) { std::fputs(kDocumentStart, file); }

void WriteDocumentEnd(std::FILE* file) { std::fputs(kDocumentEnd, file); }

void WriteNumberLine(std::FILE* file, const char* kindWord, int id, int32_t value) {
    std::fprintf(file, "%s%d=%d\n", kindWord, id, value);
}

void WriteUnsignedLine(std::FILE* file, const char* kindWord, int id, uint32_t value) {
    std::fprintf(file, "%s%d=%u\n", kindWord, id, value);
}

void WriteTextLine(std::FILE* file, const char* kindWord, int id, const char* value) {
    std::fprintf(file, "%s%d=%s\n", kindWord, id, value);
}

bool ReadDocumentStart(std::FILE* file) {
    char line[kDocumentLineBytes];
    if (!std::fgets(line, sizeof line, file)) return true;
    return IsDocumentStart(line);
}

int ReadDocumentLine(std::FILE* file, char line[kDocumentLineBytes]) {
    while (std::fgets(line, kDocumentLineBytes, file)) {
        const int id = TakeDocumentLine(line);
        if (id > 0) return id;
    }
    return 0;
}

bool IsDocumentStart(const char* line) {
    return std::strstr(line, kProductText) && std::strstr(line, kMakerText);
}

int TakeDocumentLine(char* line) {
    if (line[0] == ';') return 0;
    CutAt(line, '\n');
    CutAt(line, '\r');
    if (std::strlen(line) <= kKindWordLength) return 0;
    const auto id = static_cast<int32_t>(ParseDecimal(line + kKindWordLength));
    return id > 0 ? id : 0;
}

const char* FindLineValue(const char* line, const char* kindWord) {
    if (!HasKindWord(line, kindWord)) return nullptr;
    const char* value = std::strchr(line, '=');
    if (!value) return nullptr;
    while (*value == '=' || *value == ' ') ++value;
    return value;
}

}  // namespace kfx
