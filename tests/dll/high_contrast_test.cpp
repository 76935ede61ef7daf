// SPDX-License-Identifier: MIT
// The buttons' looks where the user needs strong contrast: nothing but the colours of the user's scheme.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>

#include "resources/resource_ids.h"
#include "tests/dll/support/plugin_session.h"
#include "tests/support/import_patch.h"

namespace kfx::test {
namespace {

BOOL WINAPI TellContrast(UINT what, UINT number, void* answered, UINT update) {
    if (what != SPI_GETHIGHCONTRAST) return SystemParametersInfoA(what, number, answered, update);
    EXPECT_EQ(number, sizeof(HIGHCONTRASTA));
    static_cast<HIGHCONTRASTA*>(answered)->dwFlags = HCF_HIGHCONTRASTON;
    return TRUE;
}

using Pixels = std::vector<COLORREF>;

struct ContrastSession {
    explicit ContrastSession(uint32_t look) {
        host.context.buttonStyle = look;
        SessionOptions options;
        options.prepareLibrary = [this](HMODULE library) {
            patch = std::make_unique<ImportPatch>(library, "SystemParametersInfoA",
                                                  AddressOfFunction(TellContrast));
        };
        session = std::make_unique<PluginSession>(host, options);
    }
    ~ContrastSession() {
        session->Close();
        patch.reset();
    }
    ContrastSession(const ContrastSession&) = delete;
    ContrastSession& operator=(const ContrastSession&) = delete;

    Pixels Draw(int button, UINT state) { return session->DrawControl(button, kWidth, kHeight, state); }

    static constexpr int kWidth = 90, kHeight = 26;
    FakeHost host;
    std::unique_ptr<ImportPatch> patch;
    std::unique_ptr<PluginSession> session;
};

COLORREF EdgeOf(const Pixels& pixels) { return pixels[0]; }

// Beside the text, inside the lines round the button.
COLORREF GroundOf(const Pixels& pixels) { return pixels[3 * ContrastSession::kWidth + 3]; }

TEST(HighContrast, Each_look_is_the_same_and_shows_every_state) {
    std::set<Pixels> usual;
    for (const uint32_t look : {1u, 2u, 3u}) {
        ContrastSession session(look);
        usual.insert(session.Draw(IDC_CANCEL, 0));
        std::set<Pixels> states;
        for (const int state : {0, ODS_SELECTED, ODS_FOCUS, ODS_DISABLED})
            states.insert(session.Draw(IDC_CANCEL, static_cast<UINT>(state)));
        EXPECT_EQ(states.size(), 4u) << look;
    }
    EXPECT_EQ(usual.size(), 1u);
}

TEST(HighContrast, Colors_are_those_that_the_user_has_chosen) {
    ContrastSession session(1);
    const Pixels usual = session.Draw(IDC_CANCEL, 0);
    EXPECT_EQ(EdgeOf(usual), GetSysColor(COLOR_BTNTEXT));
    EXPECT_EQ(GroundOf(usual), GetSysColor(COLOR_BTNFACE));
    const Pixels pushed = session.Draw(IDC_CANCEL, ODS_SELECTED);
    EXPECT_EQ(EdgeOf(pushed), GetSysColor(COLOR_BTNTEXT));
    EXPECT_EQ(GroundOf(pushed), GetSysColor(COLOR_HIGHLIGHT));
    const Pixels disabled = session.Draw(IDC_CANCEL, ODS_DISABLED);
    EXPECT_EQ(EdgeOf(disabled), GetSysColor(COLOR_GRAYTEXT));
    EXPECT_EQ(GroundOf(disabled), GetSysColor(COLOR_BTNFACE));
    // Without a source, Enter presses "Select...": it has a second line inside the first.
    const auto lineInside = [](const Pixels& pixels) { return pixels[ContrastSession::kWidth + 1]; };
    EXPECT_EQ(lineInside(session.Draw(IDC_SELECT, 0)), GetSysColor(COLOR_BTNTEXT));
    EXPECT_EQ(lineInside(usual), GetSysColor(COLOR_BTNFACE));
}

}  // namespace
}  // namespace kfx::test
