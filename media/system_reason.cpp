// SPDX-License-Identifier: MIT
#include "media/system_reason.h"

namespace kfx {
namespace {

struct Reason {
    std::errc condition;
    const char* words;
};

constexpr Reason kReasons[] = {
    {.condition = std::errc::no_such_file_or_directory, .words = "there is no such file or folder"},
    {.condition = std::errc::not_a_directory, .words = "a part of its path is not a folder"},
    {.condition = std::errc::is_a_directory, .words = "this is a folder"},
    {.condition = std::errc::permission_denied, .words = "it is protected, or another program uses it"},
    {.condition = std::errc::operation_not_permitted, .words = "it is protected"},
    {.condition = std::errc::read_only_file_system, .words = "the disk is write-protected"},
    {.condition = std::errc::no_space_on_device, .words = "the disk is full"},
    {.condition = std::errc::file_too_large, .words = "the file would be too large for its place"},
    {.condition = std::errc::filename_too_long, .words = "the name is too long"},
    {.condition = std::errc::invalid_argument, .words = "the name is not allowed here"},
    {.condition = std::errc::too_many_symbolic_link_levels, .words = "a link leads back to itself"},
    {.condition = std::errc::broken_pipe, .words = "nobody reads the pipe any more"},
    {.condition = std::errc::io_error, .words = "the device reports an error"},
};

}  // namespace

std::string ReasonOf(const std::error_code& failure) {
    for (const Reason& reason : kReasons) {
        if (failure == reason.condition) return reason.words;
    }
    return "error " + std::to_string(failure.value());
}

}  // namespace kfx
