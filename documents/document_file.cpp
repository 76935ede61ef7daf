// SPDX-License-Identifier: MIT
#include "documents/document_file.h"

#include <cstdio>

#include "documents/control_kinds.h"
#include "documents/document_text.h"

namespace kfx {
namespace {

BOOL CALLBACK WriteControl(HWND control, LPARAM file) {
    SendMessageA(control, kMessageWriteLine, 0, file);
    return TRUE;
}

// Applies the lines up to the end of the file. A line for a control that does not exist is skipped.
void ApplyLines(HWND window, std::FILE* file) {
    char line[kDocumentLineBytes];
    while (const int id = ReadDocumentLine(file, line)) {
        const HWND control = GetDlgItem(window, id);
        if (control) SendMessageA(control, kMessageApplyLine, 0, reinterpret_cast<LPARAM>(line));
    }
}

}  // namespace

bool WriteDocument(HWND window, const char* path, ShowMessageFunction showMessage) {
    std::FILE* file = std::fopen(path, "wt");  // t: text whatever the host's _fmode says
    bool written = file != nullptr;
    if (file) {
        WriteDocumentStart(file);
        EnumChildWindows(window, WriteControl, reinterpret_cast<LPARAM>(file));
        WriteDocumentEnd(file);
        written = std::ferror(file) == 0;
        // A full disk may show only when the last bytes are flushed.
        written = std::fclose(file) == 0 && written;
    }
    if (!written) showMessage(window, "There has been an error creating the requested file.");
    return written;
}

bool ReadDocument(HWND window, const char* path, ShowMessageFunction showMessage) {
    std::FILE* file = std::fopen(path, "rt");  // t: text whatever the host's _fmode says
    if (!file) {
        showMessage(window, "There has been an error opening the requested file.");
        return false;
    }
    const bool sound = ReadDocumentStart(file);
    if (sound) ApplyLines(window, file);
    std::fclose(file);
    if (!sound) {
        showMessage(window, "This file has been damaged.");
        return false;
    }
    return true;
}

}  // namespace kfx
