// SPDX-License-Identifier: MIT
// Fixtures that open the plug-in's window before each case: without a source animation, and with one.
#pragma once

#include <gtest/gtest.h>

#include "resources/resource_ids.h"
#include "tests/dll/support/plugin_session.h"

namespace kfx::test {

class WindowTest : public testing::Test {
protected:
    explicit WindowTest(const SessionOptions& options = {}) : session(host, options) {}

    FakeHost host;
    PluginSession session;
};

// The host serves the block, and the user has selected it.
class SourceWindowTest : public testing::Test {
protected:
    explicit SourceWindowTest(const std::vector<uint8_t>& block, const SessionOptions& options = {},
                              const std::string& path = "C:\\source.gif")
        : session((host.Serve(block, path), host), options) {
        session.Click(IDC_SELECT);
    }

    FakeHost host;
    PluginSession session;
};

}  // namespace kfx::test
