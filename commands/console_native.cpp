// SPDX-License-Identifier: MIT
#include "commands/console.h"

#include <cerrno>

#include <unistd.h>

namespace kfx::commands {
namespace {

// Where SIGPIPE is ignored, a closed pipe is an error like others.
bool Write(int stream, const std::string& text) {
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write(stream, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return count < 0 && errno == EPIPE;
        written += static_cast<size_t>(count);
    }
    return true;
}

}  // namespace

bool WriteStandardOutput(const std::string& text) { return Write(STDOUT_FILENO, text); }
void WriteStandardError(const std::string& text) { Write(STDERR_FILENO, text); }
bool ErrorsAreWatched() { return isatty(STDERR_FILENO) != 0; }

// A terminal here does not tell where its cursor stands.
void LeaveUnfinishedLine() {}

}  // namespace kfx::commands
