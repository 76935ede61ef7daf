// SPDX-License-Identifier: MIT
#include "tests/support/host_transcript.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "framework/working_image.h"
#include "tests/support/sha256.h"

namespace kfx::test {
namespace {

std::string Number(int64_t value) { return std::to_string(value); }

std::string Escaped(const std::string& text) {
    const std::string address = "https://kestrel-fx.example/";
    std::string escaped;
    for (const char c : text) escaped += c == '\r' ? "\\r" : c == '\n' ? "\\n" : std::string(1, c);
    const size_t place = escaped.find(address);
    if (place != std::string::npos) escaped.replace(place, address.size(), "<address>");
    return "\"" + escaped + "\"";
}

bool IsZero(const void* bytes, size_t count) {
    const auto* byte = static_cast<const uint8_t*>(bytes);
    return std::all_of(byte, byte + count, [](uint8_t value) { return value == 0; });
}

std::string ZeroOrNot(bool zero) { return zero ? "zero" : "NOT ZERO"; }

std::string OwnerWord(uint64_t owner) { return owner ? "window" : "NONE"; }

template <typename Record>
std::string HashOfRecord(Record record) {
    std::memset(reinterpret_cast<uint8_t*>(&record) + 8, 0, 8);  // the handle differs from run to run
    return Sha256(&record, sizeof record);
}

}  // namespace

std::string RequestLine(const std::string& target, uint32_t request, uint64_t word,
                        const std::string& details, bool answer) {
    return "REQ code=" + Number(request) + " target=" + target +
           " value=" + Number(static_cast<int64_t>(word)) + " " + details + " answer=" + (answer ? "1" : "0");
}

std::string DescribeText(const char* text) { return "text=" + Escaped(text); }

std::string DescribePointer(uint64_t pointer) { return "pointer=" + Number(static_cast<int64_t>(pointer)); }

std::string DescribeTask(const FileObjectRecord& task) {
    const bool rest =
        IsZero(task.zero808, sizeof task.zero808) && IsZero(task.zero1076, sizeof task.zero1076);
    return "size=" + Number(task.size) + " version=" + Number(task.version) + " at16=" + Number(task.zero16) +
           " bits=" + Number(task.bitsPerPixel) + " width=" + Number(task.width) +
           " height=" + Number(task.height) + " palette=" + Sha256(task.palette, sizeof task.palette) +
           " at800=" + Number(task.zero800) + " frames=" + Number(task.frameCount) +
           " reserved=" + Number(static_cast<int32_t>(task.reservedIndex)) + " rest=" + ZeroOrNot(rest) +
           " record=" + HashOfRecord(task);
}

std::string DescribeFrame(const AddImageRecord& frame, const std::vector<uint8_t>& bitmap) {
    WorkingImage header = {};
    std::memcpy(&header, bitmap.data(), std::min(bitmap.size(), sizeof header));
    return "size=" + Number(frame.size) + " version=" + Number(frame.version) +
           " at16=" + Number(frame.zero16) + " local=" + Number(frame.localBackground) +
           " at24=" + ZeroOrNot(frame.zero24 == 0) + " at32=" + Number(frame.frameValue) +
           " index=" + Number(frame.index) + " transparent=" + Number(frame.transparentIndex) +
           " rest=" + ZeroOrNot(IsZero(frame.zero44, sizeof frame.zero44)) +
           " record=" + HashOfRecord(frame) + " image=" + Number(header.width) + "x" + Number(header.height) +
           "x" + Number(header.bitCount) + " bytes=" + Number(static_cast<int64_t>(bitmap.size())) +
           " dib=" + Sha256(bitmap.data(), bitmap.size());
}

std::string DescribeOpenAnimation(const OpenAnimationRequest& request) {
    return "magic=\"" + std::string(request.magic, sizeof request.magic) + "\" size=" + Number(request.size) +
           " version=" + Number(request.version) + " flags=" + Number(request.flags) +
           " owner=" + OwnerWord(request.owner) + " path=" + Escaped(request.path) +
           " rest=" + ZeroOrNot(IsZero(request.reserved, sizeof request.reserved));
}

std::string DescribeColorChoice(const ChooseColorRequest& request) {
    char color[16];
    std::snprintf(color, sizeof color, "0x%06X", request.color);
    return "size=" + Number(request.size) + " version=" + Number(request.version) +
           " at16=" + Number(static_cast<int64_t>(request.value)) + " color=" + color +
           " reserved=" + Number(request.reserved) + " owner=" + OwnerWord(request.owner);
}

}  // namespace kfx::test
