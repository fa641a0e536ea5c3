// SPDX-License-Identifier: Apache-2.0
// Code translation, the details buffer and its formats.
#include "marlo110k/errors.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "platform/sys/thread.h"

namespace {

TEST(TranslateError, Tables) {
  const struct {
    uint32_t error, code;
  } kPlatform[] = {{0, 0},
                   {1, 0x80070057},
                   {2, 0x8004E00A},
                   {3, 0x8004E00A},
                   {4, 0x8004E026},
                   {5, 0x80070005},
                   {6, 0x80070006},
                   {8, 0x80004005},
                   {14, 0x8007000E},
                   {15, 0x800404B0},
                   {32, 0x8004E05A},
                   {39, 0x8004E002},
                   {80, 0x8004E032},
                   {84, 0x8007000E},
                   {87, 0x80004005},
                   {110, 0x8004E007},
                   {112, 0x8004E002},
                   {120, 0x80004001},
                   {123, 0x8004E00D},
                   {126, 0x8004E00A},
                   {127, 0x8004E00A},
                   {170, 0x8004E005},
                   {183, 0x8004E170},
                   {0xFFFFFFFF, 0x80004005}};
  for (const auto& row : kPlatform) {
    EXPECT_EQ(ZrCode(row.code), ZrErrorHandler_TranslateWin32Error(row.error)) << row.error;
  }
  const struct {
    uint32_t code;
    std::initializer_list<uint32_t> errors;
  } kDialog[] = {{0, {0}},
                 {0x80070057, {1, 3, 4, 11, 12291, 16385, 65535}},
                 {0x8007000E, {2, 5, 7, 8, 9, 10, 12289}},
                 {0x8004E00E, {6}},
                 {0x8004E00D, {12290}},
                 {0x80004005, {12, 12288, 0xFFFFFFFF}}};
  for (const auto& row : kDialog) {
    for (uint32_t error : row.errors) EXPECT_EQ(ZrCode(row.code), ZrErrorHandler_TranslateCommDlgError(error)) << error;
  }
}

class DetailsTest : public testing::Test {
 protected:
  void SetUp() override { ZrErrorHandler_DetailsInit(); }
  void TearDown() override { ZrErrorHandler_DetailsInit(); }
  static std::u16string Text() {
    const char16_t* text = ZrErrorHandler_DetailsInfo(nullptr, nullptr, nullptr);
    return text != nullptr ? text : u"(none)";
  }
};

TEST_F(DetailsTest, LinesAddUpUnderTheLastCode) {
  HRESULT code = 1;
  int32_t lines = 1;
  uint32_t thread = 1;
  EXPECT_EQ(nullptr, ZrErrorHandler_DetailsInfo(&code, &lines, &thread));
  EXPECT_EQ(0, code);
  EXPECT_EQ(0, lines);
  EXPECT_EQ(0U, thread);
  EXPECT_EQ(S_OK, ZrErrorHandler_DetailsAddString(E_FAIL, u"plain"));
  EXPECT_EQ(S_OK, ZrErrorHandler_DetailsAddString(E_POINTER, u"%s at %d, 100%%", u"file", -5));
  EXPECT_EQ(u"plain\r\nfile at -5, 100%\r\n", Text());
  EXPECT_NE(nullptr, ZrErrorHandler_DetailsInfo(&code, &lines, &thread));
  EXPECT_EQ(E_POINTER, code);
  EXPECT_EQ(E_POINTER, ZrErrorHandler_GetLastError());
  EXPECT_EQ(2, lines);
  EXPECT_EQ(plat::CurrentThreadId(), thread);
  EXPECT_EQ(E_POINTER, ZrErrorHandler_DetailsAddString(E_FAIL, nullptr));
  EXPECT_EQ(E_POINTER, ZrErrorHandler_DetailsSetHyperlink(nullptr, u"text"));
  EXPECT_EQ(E_POINTER, ZrErrorHandler_DetailsSetHyperlink(u"url", nullptr));
  EXPECT_EQ(S_OK, ZrErrorHandler_DetailsSetHyperlink(std::u16string(9000, u'u').c_str(), u"text"));
  ZrErrorHandler_DetailsInit();
  EXPECT_EQ(u"(none)", Text());
  EXPECT_EQ(S_OK, ZrErrorHandler_GetLastError());
}

TEST_F(DetailsTest, AStrangerNeedsTheLastCode) {
  ASSERT_EQ(S_OK, ZrErrorHandler_DetailsAddString(E_FAIL, u"mine"));
  std::thread([] {
    EXPECT_EQ(E_FAIL, ZrErrorHandler_DetailsAddString(E_POINTER, u"other"));
    EXPECT_EQ(E_FAIL, ZrErrorHandler_DetailsAddString(E_POINTER, nullptr)) << "the owner is tested first";
    EXPECT_EQ(S_OK, ZrErrorHandler_DetailsAddString(E_FAIL, u"same"));
  }).join();
  EXPECT_EQ(u"mine\r\nsame\r\n", Text());
  uint32_t thread = 0;
  ZrErrorHandler_DetailsInfo(nullptr, nullptr, &thread);
  EXPECT_EQ(plat::CurrentThreadId(), thread);
}

TEST_F(DetailsTest, ALineThatReachesTheLimitIsRefused) {
  // 8189 characters and the line's end are 16382 bytes; one more reaches 16384.
  const std::u16string fits(8189, u'x');
  EXPECT_EQ(E_FAIL, ZrErrorHandler_DetailsAddString(E_FAIL, (fits + u"x").c_str()));
  EXPECT_EQ(u"(none)", Text());
  EXPECT_EQ(S_OK, ZrErrorHandler_GetLastError());
  EXPECT_EQ(S_OK, ZrErrorHandler_DetailsAddString(E_FAIL, fits.c_str()));
  EXPECT_EQ(E_FAIL, ZrErrorHandler_DetailsAddString(E_FAIL, u""));
  EXPECT_EQ(fits + u"\r\n", Text());
  ZrErrorHandler_DetailsInit();
  // A formatted line is cut to the formatting buffer first and then doesn't fit either.
  EXPECT_EQ(E_FAIL, ZrErrorHandler_DetailsAddString(E_FAIL, u"%s%s", fits.c_str(), fits.c_str()));
}

}  // namespace
