// SPDX-License-Identifier: MIT
// When the logo is repainted: over a remote desktop, and where the user wants no animations.
#include <gtest/gtest.h>
#include <windows.h>

#include "tests/support/import_patch.h"
#include "window/logo.h"

namespace kfx {
namespace {

bool remote = false;
BOOL animations = TRUE;

int WINAPI TellMetric(int which) { return which == SM_REMOTESESSION ? remote : 0; }

BOOL WINAPI TellParameter(UINT which, UINT, void* answer, UINT) {
    if (which == SPI_GETCLIENTAREAANIMATION) *static_cast<BOOL*>(answer) = animations;
    return TRUE;
}

class LogoTicks : public testing::Test {
protected:
    LogoTicks()
        : metrics(GetModuleHandleA(nullptr), "GetSystemMetrics", test::AddressOfFunction(TellMetric)),
          parameters(GetModuleHandleA(nullptr), "SystemParametersInfoA",
                     test::AddressOfFunction(TellParameter)),
          control(CreateWindowExA(0, "STATIC", "", WS_POPUP | WS_VISIBLE, 0, 0, 20, 20, nullptr, nullptr,
                                  nullptr, nullptr)) {
        logo.control = control;
        remote = false;
        animations = TRUE;
    }
    ~LogoTicks() override { DestroyWindow(control); }

    // How many of this number of ticks have the logo repainted.
    int Repaints(int ticks) {
        int repaints = 0;
        for (int i = 0; i < ticks; ++i) {
            ValidateRect(control, nullptr);
            EXPECT_TRUE(OnLogoTick(&logo, kLogoTimer));
            repaints += GetUpdateRect(control, nullptr, FALSE) != FALSE;
        }
        return repaints;
    }

    const test::ImportPatch metrics, parameters;
    const HWND control;
    Logo logo = {};
};

TEST_F(LogoTicks, Each_repaints_on_a_screen_of_the_machine) { EXPECT_EQ(Repaints(16), 16); }

TEST_F(LogoTicks, Few_repaint_over_a_remote_desktop) {
    remote = true;
    EXPECT_EQ(Repaints(16), 2);
    remote = false;
    EXPECT_EQ(Repaints(4), 4);
}

TEST_F(LogoTicks, None_repaints_while_animations_are_off) {
    animations = FALSE;
    EXPECT_EQ(Repaints(20), 0);
    animations = TRUE;
    EXPECT_EQ(Repaints(3), 3);
}

TEST_F(LogoTicks, Other_words_are_no_ticks) { EXPECT_FALSE(OnLogoTick(&logo, kLogoTimer + 1)); }

}  // namespace
}  // namespace kfx
