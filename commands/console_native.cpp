// SPDX-License-Identifier: MIT
#include "commands/console.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include <sys/ioctl.h>
#include <unistd.h>

#include "media/system_reason.h"

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

constexpr size_t kMostInput = size_t{1} << 30;
constexpr size_t kReadStep = size_t{1} << 16;

}  // namespace

bool WriteStandardOutput(const uint8_t* data, size_t size, std::string* reason) {
    while (size > 0) {
        const ssize_t count = write(STDOUT_FILENO, data, size);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) {
            *reason = count < 0 && errno == EPIPE
                          ? "its reader has ended before it had everything"
                          : "it cannot be written (" + ReasonOf({errno, std::generic_category()}) + ")";
            return false;
        }
        data += count;
        size -= static_cast<size_t>(count);
    }
    return true;
}

bool ReadStandardInput(std::vector<uint8_t>* content, std::string* reason) {
    size_t size = 0;
    while (size <= kMostInput) {
        content->resize(size + kReadStep);
        const ssize_t count = read(STDIN_FILENO, content->data() + size, kReadStep);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            *reason = "it cannot be read (" + ReasonOf({errno, std::generic_category()}) + ")";
            return false;
        }
        size += static_cast<size_t>(count);
        content->resize(size);
        if (count == 0) return true;
    }
    *reason = "it has more than 1 GiB";
    return false;
}

bool WriteStandardOutput(const std::string& text) { return Write(STDOUT_FILENO, text); }
void WriteStandardError(const std::string& text) { Write(STDERR_FILENO, text); }
bool ErrorsAreWatched() {
    const char* const kind = std::getenv("TERM");
    return isatty(STDERR_FILENO) != 0 && !(kind && std::strcmp(kind, "dumb") == 0);
}

bool OutputIsTerminal() { return isatty(STDOUT_FILENO) != 0; }

size_t TerminalColumns() {
    constexpr size_t kUsual = 80;
    struct winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col : kUsual;
}

}  // namespace kfx::commands
