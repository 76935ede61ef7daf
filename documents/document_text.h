// SPDX-License-Identifier: MIT
// Settings documents as text: header, one line per control (six-letter kind word, identifier, "=", value),
// end. Free of Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace kfx {

constexpr size_t kDocumentLineBytes = 8192;   // a longer line is read in pieces
constexpr size_t kDocumentValueBytes = 1024;  // of a text value, at most 1023 characters

// The lines that a document begins with, and its last one.
constexpr char kDocumentStart[] =
    ";This is a document created by Kestrel FX #1 Plugin by Quorvane Labs - do not edit.\n"
    ";Start of document\n";
constexpr char kDocumentEnd[] = ";End of document\n";

void WriteDocumentStart(std::FILE* file);
void WriteDocumentEnd(std::FILE* file);

// A control's line, with the value as signed or unsigned number or as text.
void WriteNumberLine(std::FILE* file, const char* kindWord, int id, int32_t value);
void WriteUnsignedLine(std::FILE* file, const char* kindWord, int id, uint32_t value);
void WriteTextLine(std::FILE* file, const char* kindWord, int id, const char* value);

// Reads the first line. False: the file begins with something else than a document's header. An empty file
// is accepted.
bool ReadDocumentStart(std::FILE* file);

// Reads on to the next line that names a control, without its line end, and returns the control's identifier
// (above 0). Comments, lines below seven characters and lines without an identifier are skipped. 0: the
// file has ended.
int ReadDocumentLine(std::FILE* file, char line[kDocumentLineBytes]);

// The rules of the two functions above for lines that somebody else has read, of at most kDocumentLineBytes
// with the terminator. Whether this can be a document's first line.
bool IsDocumentStart(const char* line);

// Cuts the line end off and returns the identifier; 0: the line is to be skipped.
int TakeDocumentLine(char* line);

// The value of a line of this kind, behind "=" and any further "=" and spaces. Null: another kind, or no "=".
const char* FindLineValue(const char* line, const char* kindWord);

}  // namespace kfx
