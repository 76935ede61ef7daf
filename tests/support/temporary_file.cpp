// SPDX-License-Identifier: MIT
#include "tests/support/temporary_file.h"

#ifdef _WIN32
#include <process.h>

#include <filesystem>
#include <string>
#endif

namespace kfx::test {

std::FILE* OpenTemporaryFile() {
#ifdef _WIN32
    static int count = 0;
    const std::string name = "kfx-test-" + std::to_string(_getpid()) + "-" + std::to_string(++count);
    // D: deleted with its last handle.
    return std::fopen((std::filesystem::temp_directory_path() / name).string().c_str(), "w+bD");
#else
    return std::tmpfile();
#endif
}

}  // namespace kfx::test
