// SPDX-License-Identifier: MIT
// How the plug-in's window opens and closes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/windows/support/memory_ledger.h"
#include "tests/windows/support/plugin_session.h"

namespace kfx::test {
namespace {

TEST(Opening, the_title_is_the_plugins_name) {
    FakeHost host;
    PluginSession session(host);
    ASSERT_TRUE(session.IsOpen());
    char title[100] = "";
    GetWindowTextA(session.Window(), title, sizeof title);
    EXPECT_STREQ(title, "Kestrel FX #1");
    EXPECT_EQ(session.Close(), 1u);
}

}  // namespace
}  // namespace kfx::test
