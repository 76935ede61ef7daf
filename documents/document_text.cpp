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

void WriteDocumentStart(std::FILE* file) {
    std::fprintf(file, ";This is a document created by %s by %s - do not edit.\n", kProductText, kMakerText);
    std::fputs(";Start of document\n", file);
}

void WriteDocumentEnd(std::FILE* file) { std::fputs(";End of document\n", file); }

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
    return std::strstr(line, kProductText) && std::strstr(line, kMakerText);
}

int ReadDocumentLine(std::FILE* file, char line[kDocumentLineBytes]) {
    while (std::fgets(line, kDocumentLineBytes, file)) {
        if (line[0] == ';') continue;
        CutAt(line, '\n');
        CutAt(line, '\r');
        if (std::strlen(line) <= kKindWordLength) continue;
        const auto id = static_cast<int32_t>(ParseDecimal(line + kKindWordLength));
        if (id > 0) return id;
    }
    return 0;
}

const char* FindLineValue(const char* line, const char* kindWord) {
    if (!HasKindWord(line, kindWord)) return nullptr;
    const char* value = std::strchr(line, '=');
    if (!value) return nullptr;
    while (*value == '=' || *value == ' ') ++value;
    return value;
}

}  // namespace kfx
