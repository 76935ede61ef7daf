// SPDX-License-Identifier: MIT
#include "host/host_requests.h"

#include <cstring>

#include "host/floating_point_state.h"

namespace kfx {
namespace {

uint64_t AddressOf(const void* pointer) { return reinterpret_cast<uintptr_t>(pointer); }

uint64_t Send(const HostContext* host, const void* target, HostRequest request, uint64_t word,
              uint64_t pointer) {
    if (!host || !host->callback) return 0;
    const HostFloatingPoint turn;
    return host->callback(AddressOf(target), static_cast<uint32_t>(request), word, pointer);
}

uint64_t SignExtend(int32_t value) { return static_cast<uint64_t>(static_cast<int64_t>(value)); }

}  // namespace

uint64_t RequestNewTask(const HostContext* host, bool test, const FileObjectRecord& task) {
    return Send(host, nullptr, test ? HostRequest::NewTestTask : HostRequest::NewTask, 0, AddressOf(&task));
}

uint64_t RequestAddImage(const HostContext* host, const FileObjectRecord& task, const AddImageRecord& frame) {
    return Send(host, &task, HostRequest::AddImage, 0, AddressOf(&frame));
}

void RequestAddComment(const HostContext* host, const FileObjectRecord& task, const char* text) {
    Send(host, &task, HostRequest::AddComment, 0, AddressOf(text));
}

void RequestCloseTask(const HostContext* host, const FileObjectRecord& task, bool success) {
    Send(host, &task, HostRequest::CloseTask, success ? 1 : 0, 0);
}

uint64_t RequestShowHelp(const HostContext* host, const char* reference) {
    return Send(host, nullptr, HostRequest::ShowHelp, 0, AddressOf(reference));
}

void RequestSetStatusText(const HostContext* host, const char* text) {
    Send(host, nullptr, HostRequest::SetStatusText, 0, AddressOf(text));
}

uint64_t RequestChooseColor(const HostContext* host, void* owner, const uint8_t* palette, uint32_t* color) {
    ChooseColorRequest request = {};
    request.size = sizeof request;
    request.version = kPluginInterfaceVersion;
    request.palette = palette;
    request.value = 24;
    request.color = *color;
    request.owner = AddressOf(owner);
    const uint64_t answer = Send(host, nullptr, HostRequest::ChooseColor, 0, AddressOf(&request));
    if (answer) *color = request.color;
    return answer;
}

void RequestProgress(const HostContext* host, int32_t current, int32_t total) {
    Send(host, nullptr, HostRequest::Progress, SignExtend(current), SignExtend(total));
}

OpenAnimationRequest MakeOpenAnimationRequest(void* owner, const char* path) {
    OpenAnimationRequest request = {};
    std::memcpy(request.magic, "pMNA", sizeof request.magic);
    request.size = sizeof request;
    request.version = kPluginInterfaceVersion;
    request.flags = 1;
    request.owner = AddressOf(owner);
    for (size_t i = 0; i + 1 < sizeof request.path && path[i]; ++i) request.path[i] = path[i];
    return request;
}

uint64_t RequestOpenAnimation(const HostContext* host, OpenAnimationRequest* request) {
    return Send(host, nullptr, HostRequest::OpenAnimation, 0, AddressOf(request));
}

void RequestWindowSize(const HostContext* host, uint32_t* width, uint32_t* height) {
    uint32_t size[2] = {0, 0};
    Send(host, nullptr, HostRequest::GetWindowSize, 0, AddressOf(size));
    *width = size[0];
    *height = size[1];
}

}  // namespace kfx
