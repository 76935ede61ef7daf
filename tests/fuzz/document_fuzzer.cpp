// SPDX-License-Identifier: MIT
// The lines of a settings document.
#include "documents/document_text.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "tests/fuzz/input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::FILE* file = kfx::test::OpenInput(data, size);
    if (kfx::ReadDocumentStart(file)) {
        char line[kfx::kDocumentLineBytes];
        while (kfx::ReadDocumentLine(file, line) > 0) {
            for (const char* kind : {"CLRBTN", "CHKBOX", "SPNBTN", "TRACKB"}) {
                const char* value = kfx::FindLineValue(line, kind);
                if (value && (value < line || value > line + std::strlen(line))) std::abort();
            }
        }
    }
    std::fclose(file);
    return 0;
}
