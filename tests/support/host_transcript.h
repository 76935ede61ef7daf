// SPDX-License-Identifier: MIT
// A host's requests as readable lines, so that a build or a window is checked as a transcript:
//   REQ code=10 target=0 value=0 text="Building" answer=1
// Records stand in their line with a digest of all their bytes, handles zeroed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/host_records.h"

namespace kfx::test {

// The line of a request. `target` is "0", "record" (the record that opened the task) or something that is a
// fault; `details` comes from the functions below.
std::string RequestLine(const std::string& target, uint32_t request, uint64_t word,
                        const std::string& details, bool answer);

// text="..." on one line, the maker's address (the plug-in's own choice) as <address>.
std::string DescribeText(const char* text);

std::string DescribePointer(uint64_t pointer);

std::string DescribeTask(const FileObjectRecord& task);

// `bitmap` is what stands in the record's image: header, colour table, rows.
std::string DescribeFrame(const AddImageRecord& frame, const std::vector<uint8_t>& bitmap);

std::string DescribeOpenAnimation(const OpenAnimationRequest& request);

std::string DescribeColorChoice(const ChooseColorRequest& request);

}  // namespace kfx::test
