// SPDX-License-Identifier: MIT
// What a host sees of the library before any window: the record it fills, and which hosts it serves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "tests/dll/support/plugin_session.h"

namespace kfx::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kTooOld[] =
    "You need a newer version of Marrowgate Studio or Marrowgate Motion to support this plugin.\n\n"
    "Please visit the Quorvane Labs web page to update your software.";

// The library, for functions that open no window.
struct Library {
    Library() : module(LoadLibraryA(PluginPath().c_str())) {}
    ~Library() { FreeLibrary(module); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    const HMODULE module;
};

uint64_t FillRecord(const Library& library, std::vector<uint8_t>* record) {
    using GetParams = uint64_t(WINAPI*)(void*);
    const auto getParams = reinterpret_cast<GetParams>(
        reinterpret_cast<void*>(GetProcAddress(library.module, "PLUGIN16GetPluginParams")));
    return getParams(record->data());
}

// A record full of rubbish, whose first four bytes are its size.
std::vector<uint8_t> MakeRecord(uint32_t size) {
    std::vector<uint8_t> record(size, 0xCC);
    std::memcpy(record.data(), &size, sizeof size);
    return record;
}

TEST(PluginParams, Name_notice_and_version_are_filled_in) {
    const Library library;
    std::vector<uint8_t> record = MakeRecord(600);
    EXPECT_EQ(FillRecord(library, &record), 1u);
    uint32_t words[2];
    std::memcpy(words, record.data(), sizeof words);
    EXPECT_EQ(words[0], 600u) << "the host's size stays";
    EXPECT_EQ(words[1], 0x1000u);
    EXPECT_STREQ(reinterpret_cast<const char*>(record.data() + 8), "Kestrel FX #1");
    const std::string notice = reinterpret_cast<const char*>(record.data() + 269);
    EXPECT_EQ(notice.find("Kestrel FX #1 Plugin"), 0u) << notice;
    EXPECT_NE(notice.find("Quorvane Labs"), std::string::npos) << notice;
    EXPECT_EQ(notice.find('\n'), std::string::npos) << "one line";
}

TEST(PluginParams, A_larger_record_is_zero_beyond_the_notice) {
    const Library library;
    std::vector<uint8_t> record = MakeRecord(5000);
    FillRecord(library, &record);
    const size_t end = 269 + std::strlen(reinterpret_cast<const char*>(record.data() + 269));
    for (size_t i = end; i < record.size(); ++i) ASSERT_EQ(record[i], 0) << i;
    for (size_t i = 8 + 13; i < 269; ++i) ASSERT_EQ(record[i], 0) << i;
}

TEST(PluginParams, Nothing_is_written_beyond_the_size_that_the_host_gave) {
    const Library library;
    for (const uint32_t size : {4u, 8u, 12u, 40u, 269u, 275u, 300u}) {
        std::vector<uint8_t> record = MakeRecord(size);
        record.resize(700, 0xCC);
        FillRecord(library, &record);
        for (size_t i = size; i < record.size(); ++i)
            ASSERT_EQ(record[i], 0xCC) << "size " << size << ", byte " << i;
    }
}

TEST(HostVersion, Below_16_is_refused_with_a_message_and_answered_0) {
    for (const uint32_t version : {0x0F00u, 0x10000u, 0x0FFFu, 0u}) {
        FakeHost host;
        host.context.version = version;
        PluginSession session(host);
        EXPECT_EQ(session.WaitUntilClosed(), 0u) << version;
        EXPECT_THAT(session.Messages(), ElementsAre(kTooOld));
        EXPECT_THAT(host.Requests(HostRequest::GetWindowSize), IsEmpty());
        EXPECT_EQ(session.ConfigurationText(), "") << "nothing was opened, so nothing was written";
    }
}

TEST(HostVersion, Only_the_major_version_counts) {
    for (const uint32_t version : {0x1000u, 0x10FFu, 0x1100u, 0xFFFF1000u}) {
        FakeHost host;
        host.context.version = version;
        PluginSession session(host);
        EXPECT_TRUE(session.IsOpen()) << version;
        EXPECT_EQ(session.Close(), 1u) << version;
        EXPECT_THAT(session.Messages(), IsEmpty());
    }
}

TEST(HostWithoutServices, Gets_a_message_and_the_window_closes_itself) {
    FakeHost host;
    host.context.callback = nullptr;
    PluginSession session(host);
    EXPECT_EQ(session.WaitUntilClosed(), 1u);
    EXPECT_THAT(session.Messages(), ElementsAre("Internal error"));
}

}  // namespace
}  // namespace kfx::test
