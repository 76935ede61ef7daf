// SPDX-License-Identifier: MIT
#include "commands/color_profile.h"

#include <gtest/gtest.h>

namespace kfx::commands {
namespace {

using Bytes = std::vector<uint8_t>;

void Put(Bytes* bytes, const std::string& text) { bytes->insert(bytes->end(), text.begin(), text.end()); }

void PutWord(Bytes* bytes, size_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes->push_back(static_cast<uint8_t>(value >> shift));
}

// A profile with another tag and this description.
Bytes ProfileWith(const Bytes& description, const std::string& name = "desc") {
    constexpr size_t kStart = 128 + 4 + 2 * 12;
    Bytes profile(128);
    PutWord(&profile, 2);
    Put(&profile, "cprt");
    PutWord(&profile, kStart);
    PutWord(&profile, 0);
    Put(&profile, name);
    PutWord(&profile, kStart);
    PutWord(&profile, description.size());
    profile.insert(profile.end(), description.begin(), description.end());
    return profile;
}

Bytes Ascii(const std::string& text) {
    Bytes description;
    Put(&description, "desc");
    PutWord(&description, 0);
    PutWord(&description, text.size());
    Put(&description, text);
    return description;
}

Bytes Utf16(const std::u16string& text, size_t languages = 1) {
    Bytes description;
    Put(&description, "mluc");
    for (const size_t word : {size_t{0}, languages, size_t{12}}) PutWord(&description, word);
    Put(&description, "enUS");
    PutWord(&description, 2 * text.size());
    PutWord(&description, 28);
    for (const char16_t unit : text)
        description.insert(description.end(), {static_cast<uint8_t>(unit >> 8), static_cast<uint8_t>(unit)});
    return description;
}

TEST(ColorProfile, Names_of_both_versions_are_read) {
    EXPECT_EQ(ProfileName(ProfileWith(Ascii("sRGB IEC61966-2.1"))), "sRGB IEC61966-2.1");
    EXPECT_EQ(ProfileName(ProfileWith(Utf16(u"Gr\u00F6\u20AC\U0001F3A8 1"))),
              "Gr\xC3\xB6\xE2\x82\xAC\xF0\x9F\x8E\xA8 1");
}

TEST(ColorProfile, What_cannot_be_printed_is_left_out) {
    EXPECT_EQ(ProfileName(ProfileWith(Ascii("a\x1B[31m\x7F\xE4z\n"))), "a[31mz");
    EXPECT_EQ(ProfileName(ProfileWith(Utf16(u"a\u001B\u007F\u009Fz"))), "az");
    const std::u16string lone = {u'a', 0xD83C, u'b', 0xDFA8, 0xD83C, 0xE000, u'c', 0xD83C};
    EXPECT_EQ(ProfileName(ProfileWith(Utf16(lone))),
              "ab\xEE\x80\x80"
              "c")
        << "halves of characters";
}

TEST(ColorProfile, Long_names_are_cut) {
    EXPECT_EQ(ProfileName(ProfileWith(Ascii(std::string(300, 'x')))), std::string(200, 'x'));
    EXPECT_EQ(ProfileName(ProfileWith(Utf16(std::u16string(300, u'x')))), std::string(200, 'x'));
}

TEST(ColorProfile, Damaged_profiles_have_no_name) {
    EXPECT_EQ(ProfileName(ProfileWith(Utf16(u"none", 0))), "");
    EXPECT_EQ(ProfileName(ProfileWith(Ascii("name"), "dmnd")), "");
    Bytes unknown = Ascii("name");
    unknown[0] = 't';
    EXPECT_EQ(ProfileName(ProfileWith(unknown)), "");
    for (const Bytes& whole : {ProfileWith(Ascii("name")), ProfileWith(Utf16(u"name"))})
        for (size_t length = 0; length < whole.size(); ++length)
            EXPECT_EQ(ProfileName({whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)}), "")
                << length;
}

}  // namespace
}  // namespace kfx::commands
