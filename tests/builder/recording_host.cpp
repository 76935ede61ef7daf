// SPDX-License-Identifier: MIT
#include "tests/builder/recording_host.h"

#include <algorithm>
#include <cstring>

#include "framework/memory_guards.h"
#include "framework/source_animation.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"
#include "tests/support/sha256.h"

namespace kfx::test {
namespace {

RecordingHost* current = nullptr;   // the callback has no place for a pointer of ours; set while a host lives
const void* currentTask = nullptr;  // the record that opened the task

template <typename T>
const T* At(uint64_t pointer) {
    return reinterpret_cast<const T*>(static_cast<uintptr_t>(pointer));
}

std::string Number(int64_t value) { return std::to_string(value); }

std::string Escaped(const char* text) {
    const std::string address = "https://kestrel-fx.example/";
    std::string escaped;
    for (; *text; ++text) escaped += *text == '\r' ? "\\r" : *text == '\n' ? "\\n" : std::string(1, *text);
    const size_t place = escaped.find(address);
    if (place != std::string::npos) escaped.replace(place, address.size(), "<address>");
    return "\"" + escaped + "\"";
}

bool IsZero(const void* bytes, size_t count) {
    const auto* byte = static_cast<const uint8_t*>(bytes);
    return std::all_of(byte, byte + count, [](uint8_t value) { return value == 0; });
}

std::string ZeroOrNot(const void* bytes, size_t count) { return IsZero(bytes, count) ? "zero" : "NOT ZERO"; }

template <typename Record>
std::string HashOfRecord(Record record) {
    std::memset(reinterpret_cast<uint8_t*>(&record) + 8, 0, 8);  // the handle differs from run to run
    return Sha256(&record, sizeof record);
}

std::string DescribeTask(const FileObjectRecord& task) {
    current->task = task;
    const bool rest =
        IsZero(task.zero808, sizeof task.zero808) && IsZero(task.zero1076, sizeof task.zero1076);
    return "size=" + Number(task.size) + " version=" + Number(task.version) + " at16=" + Number(task.zero16) +
           " bits=" + Number(task.bitsPerPixel) + " width=" + Number(task.width) +
           " height=" + Number(task.height) + " palette=" + Sha256(task.palette, sizeof task.palette) +
           " at800=" + Number(task.zero800) + " frames=" + Number(task.frameCount) +
           " reserved=" + Number(static_cast<int32_t>(task.reservedIndex)) +
           " rest=" + (rest ? "zero" : "NOT ZERO") + " record=" + HashOfRecord(task);
}

std::string DescribeFrame(const AddImageRecord& frame) {
    const auto image = reinterpret_cast<ImageHandle>(static_cast<uintptr_t>(frame.image));
    const std::vector<uint8_t> bitmap = BytesOf(image);
    current->frames.push_back({bitmap, frame});
    const auto* header = reinterpret_cast<const WorkingImage*>(bitmap.data());
    return "size=" + Number(frame.size) + " version=" + Number(frame.version) +
           " at16=" + Number(frame.zero16) + " local=" + Number(frame.localBackground) +
           " at24=" + ZeroOrNot(&frame.zero24, sizeof frame.zero24) + " at32=" + Number(frame.frameValue) +
           " index=" + Number(frame.index) + " transparent=" + Number(frame.transparentIndex) +
           " rest=" + ZeroOrNot(frame.zero44, sizeof frame.zero44) + " record=" + HashOfRecord(frame) +
           " image=" + Number(header->width) + "x" + Number(header->height) + "x" + Number(header->bitCount) +
           " bytes=" + Number(static_cast<int64_t>(MemorySize(image))) +
           " dib=" + Sha256(bitmap.data(), bitmap.size());
}

std::string Describe(HostRequest request, uint64_t pointer) {
    switch (request) {
        case HostRequest::SetStatusText:
        case HostRequest::AddComment:
            return "text=" + Escaped(At<char>(pointer));
        case HostRequest::NewTask:
        case HostRequest::NewTestTask:
            currentTask = At<void>(pointer);
            return DescribeTask(*At<FileObjectRecord>(pointer));
        case HostRequest::AddImage:
            return DescribeFrame(*At<AddImageRecord>(pointer));
        default:
            return "pointer=" + Number(static_cast<int64_t>(pointer));
    }
}

uint64_t Answer(uint64_t target, uint32_t request, uint64_t word, uint64_t pointer) {
    if (current->countLocks) current->mostLocks = std::max(current->mostLocks, current->countLocks());
    const bool refused = request == current->refusedRequest && --current->refusedOccurrence == 0;
    const std::string to = !target ? "0" : At<void>(target) == currentTask ? "record" : "UNKNOWN";
    current->lines.push_back(
        "REQ code=" + Number(request) + " target=" + to + " value=" + Number(static_cast<int64_t>(word)) +
        " " + Describe(static_cast<HostRequest>(request), pointer) + " answer=" + (refused ? "0" : "1"));
    return refused ? 0 : 1;
}

void NoteMessage(void*, BuildMessage message) {
    constexpr const char* kTexts[] = {"Memory error", "Error creating new task.",
                                      "There has been an error adding an image to the current file object."};
    current->messages.push_back(message);
    current->lines.push_back(std::string("MSG \"") + kTexts[static_cast<int>(message)] + "\"");
}

int32_t DecodeUnchanged(EffectBuildContext* context) {
    DecodeAllFrames(context->frames);
    return 1;
}

int32_t NoBackground(void*, int32_t) { return -1; }

}  // namespace

RecordingHost::RecordingHost() {
    context.size = sizeof context;
    context.version = kPluginInterfaceVersion;
    context.callback = Answer;
    current = this;
    currentTask = nullptr;
}

RecordingHost::~RecordingHost() { current = nullptr; }

int32_t BuildWith(RecordingHost* host, const std::vector<uint8_t>& block, const BuildOptions& options,
                  const EffectDescriptor* effect) {
    EffectDescriptor unchanged = {};
    unchanged.name = "Unchanged";
    unchanged.build = DecodeUnchanged;
    unchanged.query = NoBackground;
    const MemoryOwner source(MakeMemory(block));
    sourceAnimation = source.memory;
    int window = 0;
    const BuildEnvironment environment = {&window, &host->context, effect ? effect : &unchanged, NoteMessage};
    const int32_t result = RunBuild(environment, options);
    sourceAnimation = nullptr;
    host->lines.push_back("RET " + Number(result));
    return result;
}

BuildOptions BuiltInOptions() {
    BuildOptions options = {};
    options.paletteChoice = 6;
    options.addComment = true;
    options.ditherBrightness = 20;
    options.ditherContrast = 20;
    return options;
}

}  // namespace kfx::test
