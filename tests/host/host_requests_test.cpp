// SPDX-License-Identifier: MIT
// What the plug-in takes from hosts that answer and from those that do not.
#include "host/host_requests.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace kfx {
namespace {

HostContext HostWith(HostCallback callback) {
    HostContext host = {};
    host.callback = callback;
    return host;
}

uint64_t AnswerNothing(uint64_t, uint32_t, uint64_t, uint64_t) { return 0; }

uint64_t AnswerAll(uint64_t, uint32_t request, uint64_t, uint64_t pointer) {
    void* const record = reinterpret_cast<void*>(static_cast<uintptr_t>(pointer));
    if (request == static_cast<uint32_t>(HostRequest::GetWindowSize)) {
        const uint32_t size[2] = {640, 480};
        std::memcpy(record, size, sizeof size);
    } else if (request == static_cast<uint32_t>(HostRequest::ChooseColor)) {
        static_cast<ChooseColorRequest*>(record)->color += 1;
    }
    return 1;
}

TEST(HostRequests, A_size_that_nobody_tells_is_zero) {
    const HostContext mute = {};
    const HostContext silent = HostWith(AnswerNothing);
    for (const HostContext* host : {static_cast<const HostContext*>(nullptr), &mute, &silent}) {
        uint32_t width = 7, height = 7;
        RequestWindowSize(host, &width, &height);
        EXPECT_EQ(width, 0u);
        EXPECT_EQ(height, 0u);
    }
    const HostContext host = HostWith(AnswerAll);
    uint32_t width = 0, height = 0;
    RequestWindowSize(&host, &width, &height);
    EXPECT_EQ(width, 640u);
    EXPECT_EQ(height, 480u);
}

TEST(HostRequests, A_colour_is_taken_only_when_it_was_chosen) {
    const uint8_t palette[768] = {};
    uint32_t color = 0x123456;
    const HostContext silent = HostWith(AnswerNothing);
    EXPECT_EQ(RequestChooseColor(&silent, nullptr, palette, &color), 0u);
    EXPECT_EQ(color, 0x123456u);
    const HostContext host = HostWith(AnswerAll);
    EXPECT_EQ(RequestChooseColor(&host, nullptr, palette, &color), 1u);
    EXPECT_EQ(color, 0x123457u);
}

TEST(HostRequests, A_path_is_kept_as_far_as_there_is_room) {
    const std::string path(300, 'x');
    const OpenAnimationRequest request = MakeOpenAnimationRequest(nullptr, path.c_str());
    EXPECT_EQ(std::string(request.path), path.substr(0, sizeof request.path - 1));
}

}  // namespace
}  // namespace kfx
