// SPDX-License-Identifier: MIT
// What holds of all effects' controls together. The controls of each effect are written out in its own test.
#include <gtest/gtest.h>

#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "effects/effect_table.h"
#include "resources/resource_ids.h"

namespace kfx::test {
namespace {

TEST(EffectControls, Have_ids_and_variables_of_their_own) {
    std::set<uint32_t> ids;
    std::set<const int32_t*> variables;
    for (size_t i = 0; i < EffectCount(); ++i) {
        const EffectControls& controls = EffectAt(i)->controls;
        SCOPED_TRACE(EffectAt(i)->name);
        for (const uint32_t* id = controls.ids; *id; ++id) {
            EXPECT_TRUE(*id >= FIRST_PANEL_CONTROL && *id <= LAST_PANEL_CONTROL) << *id;
            EXPECT_TRUE(ids.insert(*id).second) << *id;
        }
        for (size_t c = 0; c < controls.count; ++c)
            EXPECT_TRUE(variables.insert(controls.rows[c].variable).second) << controls.rows[c].id;
    }
}

// A slider's value label and caption have the next two ids, a list's caption the next one.
TEST(EffectControls, List_the_ids_of_everything_in_their_panel_in_the_order_of_the_rows) {
    for (size_t i = 0; i < EffectCount(); ++i) {
        const EffectControls& controls = EffectAt(i)->controls;
        std::vector<uint32_t> listed, expected;
        for (size_t c = 0; c < controls.count; ++c) {
            const uint32_t id = controls.rows[c].id;
            expected.push_back(id);
            if (controls.rows[c].kind == ControlKind::Slider)
                expected.insert(expected.end(), {id + 1, id + 2});
            if (controls.rows[c].kind == ControlKind::List) expected.push_back(id + 1);
        }
        for (const uint32_t* id = DescriptorAt(i)->controls; *id; ++id) listed.push_back(*id);
        EXPECT_EQ(listed, expected) << EffectAt(i)->name;
    }
}

TEST(EffectControls, Belong_to_panels_and_names_of_their_own) {
    std::set<int> panels;
    std::set<std::string> names;
    for (size_t i = 0; i < EffectCount(); ++i) {
        EXPECT_TRUE(panels.insert(EffectAt(i)->panel).second) << EffectAt(i)->name;
        EXPECT_TRUE(names.insert(EffectAt(i)->name).second) << EffectAt(i)->name;
        EXPECT_STREQ(DescriptorAt(i)->name, EffectAt(i)->name);
    }
}

// Users' configuration files hold row numbers. New effects come after these.
TEST(EffectTable, Rows_keep_the_numbers_that_configuration_files_hold) {
    const char* const names[] = {
        "Bump",         "Emboss",      "Explode",     "Gaussian Blur", "Glass Block", "HSB and Channels",
        "Implode",      "Lens Flare",  "Motion Blur", "Neon",          "Normalize",   "Obscure",
        "Oil Painting", "Radial Blur", "Raster",      "Ripple",        "Solarize",    "Swirl",
        "Water Drops",  "Zoom Blur"};
    ASSERT_GE(EffectCount(), std::size(names));
    for (size_t i = 0; i < std::size(names); ++i) EXPECT_STREQ(EffectAt(i)->name, names[i]);
}

TEST(EffectTable, No_row_answers_questions_or_needs_to_be_told) {
    for (size_t i = 0; i < EffectCount(); ++i) {
        const EffectDescriptor* row = DescriptorAt(i);
        EXPECT_STREQ(row->name, EffectAt(i)->name);
        EXPECT_EQ(row->reserved, nullptr) << row->name;
        for (int32_t number = 0; number < 5; ++number) {
            EXPECT_EQ(row->query(nullptr, number), -1) << row->name;
            EXPECT_EQ(row->notify(nullptr, static_cast<uint32_t>(number)), 1) << row->name;
        }
    }
    EXPECT_EQ(DescriptorAt(EffectCount()), nullptr);
}

}  // namespace
}  // namespace kfx::test
