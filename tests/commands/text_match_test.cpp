// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "commands/text_match.h"

namespace kfx::commands {
namespace {

using Names = std::vector<std::string>;

TEST(TextMatch, A_plain_name_is_its_letters_and_digits_in_lower_case) {
    EXPECT_EQ(PlainName("Center &X:"), "centerx");
    EXPECT_EQ(PlainName("256-color with gray"), "256colorwithgray");
    EXPECT_EQ(PlainName(":"), "");
}

TEST(TextMatch, A_name_is_found_whatever_its_case_and_punctuation) {
    EXPECT_EQ(FindName("center-y", {"Radius", "Center X", "Center Y"}), 2);
}

TEST(TextMatch, A_beginning_is_enough_when_only_one_name_has_it) {
    const Names names = {"Gaussian Blur", "Glass Block", "Bump"};
    EXPECT_EQ(FindName("gau", names), 0);
    EXPECT_EQ(FindName("g", names), -1) << "two names begin so";
    EXPECT_EQ(FindName("", names), -1);
}

TEST(TextMatch, An_exact_name_wins_over_longer_ones_that_begin_with_it) {
    EXPECT_EQ(FindName("left 1", {"Left 11", "Left 1"}), 1);
}

TEST(TextMatch, An_unknown_name_is_answered_with_the_most_similar_ones) {
    EXPECT_EQ(UnknownNameMessage("effect", "Embos s", {"Bump", "Emboss", "Implode"}),
              "unknown effect \"Embos s\"; did you mean Emboss?");
    EXPECT_EQ(UnknownNameMessage("effect", "plode", {"Explode", "Implode", "Neon"}),
              "unknown effect \"plode\"; did you mean Explode or Implode?");
}

TEST(TextMatch, A_beginning_of_several_names_is_ambiguous_and_not_unknown) {
    EXPECT_EQ(UnknownNameMessage("effect", "R", {"Bump", "Radial Blur", "Raster", "Ripple"}),
              "ambiguous effect \"R\": it can be Radial Blur, Raster or Ripple.");
}

TEST(TextMatch, When_nothing_is_similar_all_names_are_listed) {
    EXPECT_EQ(UnknownNameMessage("parameter", "Wavelength", {"Radius", "Depth"}),
              "unknown parameter \"Wavelength\"; there are Radius and Depth.");
    EXPECT_EQ(UnknownNameMessage("parameter", "Depth", {}),
              "unknown parameter \"Depth\"; there is none here.");
}

}  // namespace
}  // namespace kfx::commands
