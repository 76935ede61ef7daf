// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "stage/text_match.h"

namespace kfx::stage {
namespace {

using Names = std::vector<std::string>;

TEST(TextMatch, APlainNameIsItsLettersAndDigitsInLowerCase) {
    EXPECT_EQ(PlainName("Center &X:"), "centerx");
    EXPECT_EQ(PlainName("256-color with gray"), "256colorwithgray");
    EXPECT_EQ(PlainName(":"), "");
}

TEST(TextMatch, ANameIsFoundWhateverItsCaseAndPunctuation) {
    EXPECT_EQ(FindName("center-y", {"Radius", "Center X", "Center Y"}), 2);
}

TEST(TextMatch, ABeginningIsEnoughWhenOnlyOneNameHasIt) {
    const Names names = {"Gaussian Blur", "Glass Block", "Bump"};
    EXPECT_EQ(FindName("gau", names), 0);
    EXPECT_EQ(FindName("g", names), -1) << "two names begin so";
    EXPECT_EQ(FindName("", names), -1);
}

TEST(TextMatch, AnExactNameWinsOverLongerOnesThatBeginWithIt) {
    EXPECT_EQ(FindName("left 1", {"Left 11", "Left 1"}), 1);
}

TEST(TextMatch, AnUnknownNameIsAnsweredWithTheMostSimilarOnes) {
    EXPECT_EQ(UnknownNameMessage("effect", "Embos s", {"Bump", "Emboss", "Implode"}),
              "unknown effect \"Embos s\"; did you mean Emboss?");
    EXPECT_EQ(UnknownNameMessage("effect", "plode", {"Explode", "Implode", "Neon"}),
              "unknown effect \"plode\"; did you mean Explode or Implode?");
}

TEST(TextMatch, WhenNothingIsSimilarAllNamesAreListed) {
    EXPECT_EQ(UnknownNameMessage("parameter", "Wavelength", {"Radius", "Depth"}),
              "unknown parameter \"Wavelength\"; there are Radius and Depth.");
    EXPECT_EQ(UnknownNameMessage("parameter", "Depth", {}),
              "unknown parameter \"Depth\"; there is none here.");
}

}  // namespace
}  // namespace kfx::stage
