// SPDX-License-Identifier: MIT
#include "window/configuration_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <regex>
#include <string>

#include "framework/settings.h"
#include "tests/support/temporary_file.h"

namespace kfx {
namespace {

// Starts each test from the built-in values and puts everything back.
class Configuration : public testing::Test {
protected:
    void SetUp() override { settings = Settings(); }
    void TearDown() override { settings = Settings(); }
};

void Read(const std::string& text, bool shiftHeld = false) {
    std::FILE* file = test::OpenTemporaryFile();
    ASSERT_TRUE(file);
    std::fwrite(text.data(), 1, text.size(), file);
    std::rewind(file);
    ReadConfigurationText(file, shiftHeld);
    std::fclose(file);
}

std::string Write(std::time_t now = 0) {
    std::FILE* file = test::OpenTemporaryFile();
    WriteConfigurationText(file, now);
    std::rewind(file);
    std::string text;
    for (int c; (c = std::fgetc(file)) != EOF;) text += static_cast<char>(c);
    std::fclose(file);
    return text;
}

std::string LineOf(const std::string& text, const std::string& key) {
    const size_t start = text.find("\n" + key + " = ");
    return start == std::string::npos ? "" : text.substr(start + 1, text.find('\n', start + 1) - start - 1);
}

// Without the keys of effects that came later, from Style020... on. Each stands in its effect's own test.
constexpr char kDefaultFile[] =
    ";Quorvane Labs animtion plugin configuration file\n"
    ";Edit this at your own risk\n"
    ";Last updated Mon Nov 16 03:57:00 2026\n"
    ";\n"
    "[PlugIn]\n"
    "AddDescriptiveCommentBlock = 1\n"
    "CurrentFileName = untitled.kx1\n"
    "DitherBrightness = 20\n"
    "DitherContrast = 20\n"
    "FastRemap = 0\n"
    "FileNamePath = \n"
    "FirstRun = 1\n"
    "ImageFile = \n"
    "LocalBackgroundColor = 8355711\n"
    "LocalBackgroundUse = 1\n"
    "MainDither = 0\n"
    "MainEffect = 14\n"
    "MainMaskBackground = 1\n"
    "MainPalette = 6\n"
    "MainRolling = 1\n"
    "MainSupercompress = 0\n"
    "OpenPath = \n"
    "PatchLevel = 1\n"
    "ReloadPreviousSession = 1\n"
    "SampleWindowKeyLine = 0\n"
    "ShowFileOpenPreview = 1\n"
    "Style000Depth = 15\n"
    "Style000Radius = 5\n"
    "Style001CenterX = 50\n"
    "Style001CenterY = 50\n"
    "Style001Intensity = 175\n"
    "Style002Size = 20\n"
    "Style003Angle = 5\n"
    "Style004Depth = 15\n"
    "Style004Radius = 5\n"
    "Style005Level = 8\n"
    "Style006Radius = 250\n"
    "Style007Cycles = 8\n"
    "Style007Displacement = 240\n"
    "Style008Aperture = 5\n"
    "Style009Amplitude = 2500\n"
    "Style009CenterX = 100\n"
    "Style009CenterY = 100\n"
    "Style009Dissipate = 1\n"
    "Style009Energy = 15\n"
    "Style009Phase = 180\n"
    "Style009Wavelength = 1200\n"
    "Style010Bri = 100\n"
    "Style010ChannelsEnable = 0\n"
    "Style010ChannelsOption = 0\n"
    "Style010HSBEnable = 1\n"
    "Style010Hue = 180\n"
    "Style010InvertColors = 0\n"
    "Style010Sat = 100\n"
    "Style011Density = 160\n"
    "Style011Size = 1\n"
    "Style012Threshold = 128\n"
    "Style014Angle = 45\n"
    "Style014Depth = 25\n"
    "Style014Radius = 5\n"
    "Style015Angle = 1485\n"
    "Style017Radius = 50\n"
    "Style017CenterX = 50\n"
    "Style017CenterY = 50\n"
    "Style018Radius = 50\n"
    "Style018CenterX = 50\n"
    "Style018CenterY = 50\n"
    "Style019Distributed = 1\n"
    "Truecolour = 1\n"
    "UpdateDelay = 1000\n"
    "VersionNumber = 512\n";

std::string WithoutLaterEffects(const std::string& text) {
    return std::regex_replace(text, std::regex("Style(0[2-9]|[1-9][0-9])[^\n]*\n"), "");
}

TEST_F(Configuration, The_file_of_the_built_in_values_is_written_byte_for_byte) {
    std::tm local = {};
    local.tm_year = 126;
    local.tm_mon = 10;
    local.tm_mday = 16;
    local.tm_hour = 3;
    local.tm_min = 57;
    local.tm_isdst = -1;
    EXPECT_EQ(WithoutLaterEffects(Write(std::mktime(&local))), kDefaultFile);
}

TEST_F(Configuration, A_time_outside_the_calendar_is_left_out) {
    const std::string file = Write(std::numeric_limits<std::time_t>::max());
    EXPECT_NE(file.find("\n;Last updated " + std::string(24, ' ') + "\n"), std::string::npos);
    EXPECT_NE(file.find("\n;\n[PlugIn]\n"), std::string::npos);
}

TEST_F(Configuration, What_is_written_is_read_back) {
    uint32_t number = 4000000000u;
    for (size_t i = 0; i < ConfigKeyCount(); ++i) {
        const ConfigKey& key = ConfigKeyAt(i);
        if (key.flags & kConfigWriteOnly) continue;
        if (key.flags & kConfigText)
            std::snprintf(static_cast<char*>(key.variable), kTextBytes, "C:\\p\xE4th\\%u  ", number++);
        else
            std::memcpy(key.variable, &number, sizeof number), ++number;
    }
    const Settings changed = settings;
    const std::string file = Write();
    settings = Settings();
    Read(file);
    EXPECT_EQ(Write(), file);
    EXPECT_EQ(settings.style019Distributed, changed.style019Distributed);
    EXPECT_STREQ(settings.openPath, changed.openPath);
}

TEST_F(Configuration, Lines_may_end_in_either_way) {
    Read("MainEffect = 3\r\nMainPalette = 2\nFileNamePath = a.gif\r\n");
    EXPECT_EQ(settings.mainEffect, 3u);
    EXPECT_EQ(settings.mainPalette, 2u);
    EXPECT_STREQ(settings.fileNamePath, "a.gif");
}

TEST_F(Configuration, An_abbreviated_key_sets_the_first_row_that_begins_with_it) {
    Read("MainEff=3\n");
    EXPECT_EQ(settings.mainEffect, 3u);
    Read("Main=1\n");
    EXPECT_EQ(settings.mainDither, 1u);
    Read("Style01=7\n");
    EXPECT_EQ(settings.style010Bri, 7);
}

TEST_F(Configuration, Keys_keep_their_case_and_must_not_be_longer_than_the_row) {
    Read("mainEffect=3\nMainEffectX=3\n");
    EXPECT_EQ(settings.mainEffect, 14u);
}

TEST_F(Configuration, An_empty_key_sets_the_first_row) {
    Read("=5\n");
    EXPECT_EQ(settings.addDescriptiveCommentBlock, 5u);
    Read("  =  6\n");
    EXPECT_EQ(settings.addDescriptiveCommentBlock, 6u);
    Read(" 7\n");
    EXPECT_EQ(settings.addDescriptiveCommentBlock, 7u);
}

TEST_F(Configuration, An_empty_line_sets_the_first_row_to_0) {
    Read("\n");
    EXPECT_EQ(settings.addDescriptiveCommentBlock, 0u);
}

TEST_F(Configuration, Rows_that_are_only_written_are_never_read) {
    Read("PatchLevel = 9\nVersionNumber = 9\nPatch = 9\nV = 9\n");
    EXPECT_EQ(settings.patchLevel, 1u);
    EXPECT_EQ(settings.versionNumber, 512u);
    EXPECT_EQ(LineOf(Write(), "PatchLevel"), "PatchLevel = 1");
}

TEST_F(Configuration, Equals_signs_may_be_many_or_missing) {
    for (const char* line :
         {"MainEffect == 7", "MainEffect=7", "MainEffect   =   7", "MainEffect 7", "MainEffect ==7"}) {
        settings.mainEffect = 0;
        Read(std::string(line) + "\n");
        EXPECT_EQ(settings.mainEffect, 7u) << line;
    }
}

// "= =" is one run of equals signs, then a value that begins with another.
TEST_F(Configuration, A_second_run_of_equals_signs_belongs_to_the_value) {
    Read("MainEffect = =7\nFileNamePath = =x\n");
    EXPECT_EQ(settings.mainEffect, 0u);
    EXPECT_STREQ(settings.fileNamePath, "=x");
}

TEST_F(Configuration, With_shift_held_nothing_is_read) {
    Read("MainEffect=3\n=5\n\nFileNamePath=x\n", true);
    EXPECT_EQ(settings.mainEffect, 14u);
    EXPECT_EQ(settings.addDescriptiveCommentBlock, 1u);
    EXPECT_STREQ(settings.fileNamePath, "");
}

TEST_F(Configuration, Comments_unknown_keys_and_the_section_change_nothing) {
    const std::string before = Write();
    Read(";MainEffect=3\n[PlugIn]\nNobody = 5\n");
    EXPECT_EQ(Write(), before);
}

TEST_F(Configuration, Text_keeps_its_trailing_spaces_and_loses_leading_ones) {
    Read("FileNamePath =   a b.gif  \n");
    EXPECT_STREQ(settings.fileNamePath, "a b.gif  ");
}

TEST_F(Configuration, A_line_ends_at_its_first_control_character) {
    Read(
        "FileNamePath = ab\tcd\nMain\x01"
        "Effect=3\n");
    EXPECT_STREQ(settings.fileNamePath, "ab");
    EXPECT_EQ(settings.mainEffect, 14u);
    EXPECT_EQ(settings.mainDither, 0u) << "the key was Main, its value empty";
}

TEST_F(Configuration, Accents_are_no_control_characters) {
    Read("FileNamePath = C:\\B\xFCro\\\x80\xFF.gif\n");
    EXPECT_STREQ(settings.fileNamePath, "C:\\B\xFCro\\\x80\xFF.gif");
}

TEST_F(Configuration, A_new_text_leaves_nothing_of_the_old_one) {
    std::memset(settings.openPath, 'x', kTextBytes - 1);
    Read("OpenPath = ab\n");
    EXPECT_STREQ(settings.openPath, "ab");
    for (int i = 2; i < kTextBytes; ++i) EXPECT_EQ(settings.openPath[i], 0) << i;
}

TEST_F(Configuration, Bad_numbers_are_0_and_negative_ones_wrap) {
    Read("MainEffect = x\nMainPalette = -1\nUpdateDelay = 4294967295\nDitherContrast = +9z\n");
    EXPECT_EQ(settings.mainEffect, 0u);
    EXPECT_EQ(settings.mainPalette, 0xFFFFFFFFu);
    EXPECT_EQ(settings.updateDelay, 0xFFFFFFFFu);
    EXPECT_EQ(settings.ditherContrast, 9u);
}

TEST_F(Configuration, Booleans_are_numbers_without_a_range) {
    Read("MainDither = 7\n");
    EXPECT_EQ(settings.mainDither, 7u);
    EXPECT_EQ(LineOf(Write(), "MainDither"), "MainDither = 7");
}

// 259 characters at a time; what follows is a line of its own.
TEST_F(Configuration, A_longer_line_is_read_in_pieces) {
    const std::string key = "OpenPath = ";
    const std::string path(259 - key.size(), 'p');
    Read(key + path + "MainEffect=3\n");
    EXPECT_EQ(settings.openPath, path);
    EXPECT_EQ(settings.mainEffect, 3u);
}

TEST_F(Configuration, A_line_of_exactly_one_piece_leaves_an_empty_line_behind) {
    const std::string key = "OpenPath = ";
    Read(key + std::string(259 - key.size(), 'p') + "\n");
    EXPECT_EQ(settings.addDescriptiveCommentBlock, 0u);
}

TEST_F(Configuration, A_last_line_without_an_end_counts) {
    Read("MainEffect=3");
    EXPECT_EQ(settings.mainEffect, 3u);
}

TEST_F(Configuration, Four_rows_carry_attributes_that_nobody_reads) {
    int found = 0;
    for (size_t i = 0; i < ConfigKeyCount(); ++i) {
        const ConfigKey& key = ConfigKeyAt(i);
        const std::string name = key.name;
        uint32_t flags = 0, attribute = 0;
        if (name == "DitherBrightness") flags = 0x10, attribute = 100;
        if (name == "DitherContrast") flags = 0x10, attribute = 101;
        if (name == "FastRemap") flags = 0x8000, attribute = 102;
        if (name == "AddDescriptiveCommentBlock") flags = 0x8000, attribute = 103;
        EXPECT_EQ(key.flags & 0x8010, flags) << name;
        EXPECT_EQ(key.attribute, attribute) << name;
        found += attribute != 0;
    }
    EXPECT_EQ(found, 4);
}

// A control or a kernel ties itself to a variable; two keys on one would overwrite each other.
TEST_F(Configuration, No_two_keys_share_a_name_or_a_variable) {
    for (size_t i = 0; i < ConfigKeyCount(); ++i) {
        for (size_t j = 0; j < i; ++j) {
            EXPECT_STRNE(ConfigKeyAt(i).name, ConfigKeyAt(j).name);
            EXPECT_NE(ConfigKeyAt(i).variable, ConfigKeyAt(j).variable) << ConfigKeyAt(i).name;
        }
    }
}

}  // namespace
}  // namespace kfx
