// SPDX-License-Identifier: Apache-2.0
// Sizes of dialogs by their templates.
#include "marlo110k/dialogs.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kernel/dialog_units.h"
#include "lang_module_files.h"

namespace {

using testing_support::LanguageFiles;

marlo::ScreenFont asked;
std::u16string askedFace;
marlo::FontMeasures measured;

bool Measure(const marlo::ScreenFont& font, marlo::FontMeasures* measures) noexcept {
  asked = font;
  askedFace = font.face;
  *measures = measured;
  return true;
}

class Dialogs : public testing::Test {
 protected:
  ~Dialogs() override {
    marlo::SetFontMeasure(nullptr);
    marlo::SetInterfaceUnits({7, 13});
  }
  ZrPixelSize SizeOf(const char16_t* name) {
    ZrPixelSize size{-1, -1};
    EXPECT_EQ(1, ZrGetDialogSize(files_.Language(), name, nullptr, 0, &size));
    return size;
  }
  LanguageFiles files_;
};

TEST_F(Dialogs, Sizes) {
  struct {
    const char16_t* name;
    ZrPixelSize plain, large, fonts;
  } const rows[] = {{u"PLAIN", {175, 81}, {250, 125}, {125, 69}},  // 50 * 13 / 8 = 81.25
                    {u"EXTENDED", {58, 28}, {83, 43}, {41, 23}},   // 33 * 7 / 4 = 57.75, 33 * 10 / 4 = 82.5
                    {u"BARE", {18, 33}, {25, 50}, {25, 50}}};      // names no font
  for (const auto& row : rows) {
    marlo::SetFontMeasure(nullptr);
    marlo::SetInterfaceUnits({7, 13});
    EXPECT_EQ(row.plain.width, SizeOf(row.name).width);
    EXPECT_EQ(row.plain.height, SizeOf(row.name).height);
    marlo::SetInterfaceUnits({10, 20});
    EXPECT_EQ(row.large.width, SizeOf(row.name).width);
    EXPECT_EQ(row.large.height, SizeOf(row.name).height);
    marlo::SetFontMeasure(Measure);
    measured = {5 * 52 + 25, 10, 1};
    EXPECT_EQ(row.fonts.width, SizeOf(row.name).width);
    EXPECT_EQ(row.fonts.height, SizeOf(row.name).height);
  }
}

TEST_F(Dialogs, FontsOfTemplates) {
  marlo::SetFontMeasure(Measure);
  measured = {364, 13, 0};
  SizeOf(u"PLAIN");
  EXPECT_EQ(u"Sans", askedFace);
  EXPECT_EQ(-11, asked.height) << "8 points are 10.67 pixels";
  EXPECT_EQ(400, asked.weight);
  EXPECT_EQ(1, asked.italic);
  EXPECT_EQ(0, asked.charset);
  SizeOf(u"EXTENDED");
  EXPECT_EQ(u"Serif", askedFace);
  EXPECT_EQ(-13, asked.height);
  EXPECT_EQ(700, asked.weight);
  EXPECT_EQ(1, asked.italic);
  EXPECT_EQ(2, asked.charset);
  struct {
    int32_t letters, width;
  } const rows[] = {{25, 0}, {26, 1}, {77, 1}, {78, 2}};
  for (const auto& row : rows) {
    measured = {row.letters, 11, 2};
    ZrPixelSize units{};
    EXPECT_EQ(row.width != 0, ZrGetDialogUnitsForFont(u"Sans", 8, 400, 0, 0, &units));
    EXPECT_EQ(row.width, units.width);
    EXPECT_EQ(13, units.height);
  }
  measured = {0, 13, 0};
  EXPECT_EQ(175, SizeOf(u"PLAIN").width) << "a width of 0 leaves the interface's font";
}

// What stands behind the face doesn't count; without a font nothing behind the size does.
TEST_F(Dialogs, CutTemplates) {
  struct {
    const char16_t* name;
    size_t needed;
  } const rows[] = {{u"PLAIN", 18 + 4 + 12 + 2 + 10}, {u"EXTENDED", 26 + 4 + 6 + 6 + 12}, {u"BARE", 18}};
  for (const auto& row : rows) {
    uint32_t bytes = 0;
    const void* const found = ZrLoadResourceCustom(files_.Language(), ZrResourceId(5), row.name, &bytes);
    ASSERT_NE(nullptr, found);
    ASSERT_GE(bytes, row.needed);
    for (size_t cut = 0; cut <= bytes; ++cut) {
      const std::vector<uint8_t> part(static_cast<const uint8_t*>(found), static_cast<const uint8_t*>(found) + cut);
      ZrPixelSize size{};
      EXPECT_EQ(cut >= row.needed, marlo::MeasureDialog(part.data(), cut, &size)) << cut;
    }
    ZrPixelSize direct{};
    EXPECT_EQ(1, ZrGetDialogSizeIndirect(nullptr, found, &direct));
    EXPECT_EQ(SizeOf(row.name).width, direct.width);
  }
  ZrPixelSize size{};
  EXPECT_EQ(0, ZrGetDialogSize(files_.Language(), u"none", nullptr, 0, &size));
  EXPECT_EQ(0, ZrGetDialogSizeIndirect(nullptr, nullptr, &size));
  EXPECT_EQ(-1, ZrResPoolDialogBox(nullptr, nullptr, u"none", nullptr, nullptr, 0));
}

}  // namespace
