// SPDX-License-Identifier: Apache-2.0
// Failures in words: codes, operations, composed messages, registered tables, and the boxes that show them.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "kernel/errtables.h"
#include "marlo110k/errors.h"
#include "marlo110k/printf.h"
#include "platform/base/memory.h"
#include "platform/base/text.h"
#include "testing/locales.h"

namespace {

std::u16string CodeText(HRESULT code) {
  const char16_t* text = ZrErrorHandler_GetHresultString(code);
  return text != nullptr ? text : u"(none)";
}

std::u16string Message(uintptr_t context, HRESULT code, const char16_t* argument) {
  return ZrErrorHandler_GetErrorMessage(context, code, argument);
}

/// One box as a hook saw it.
struct SeenBox {
  int count = 0;
  std::u16string text;
  std::u16string title;
  bool hasTitle = false;
  uint32_t flags = 0;
  uint32_t answer = ZRID_YES;
};

uint32_t See(void* data, HZRWINDOW, const char16_t* text, const char16_t* title, uint32_t flags) {
  auto* seen = static_cast<SeenBox*>(data);
  ++seen->count;
  seen->text = text;
  seen->hasTitle = title != nullptr;
  seen->title = title != nullptr ? title : u"";
  seen->flags = flags;
  return seen->answer;
}

class ErrorText : public ::testing::Test {
 protected:
  ErrorText() {
    ZrErrorHandler_DetailsInit();
    ZrPrintF_AddToken(u"AppName", u"Studio");
    ZrMsgBoxSetAppData(nullptr, nullptr, u"Studio 11");
    ZrMsgBoxSetHook(See, &box_);
  }
  ~ErrorText() override {
    ZrMsgBoxSetHook(nullptr, nullptr);
    ZrErrorHandler_DetailsInit();
    ZrPrintF_DeleteToken(u"AppName");
  }
  testing_support::LocaleScope english_{testing_support::kEnglish};
  SeenBox box_;
};

TEST_F(ErrorText, TableIsComplete) {
  std::map<HRESULT, int> rows;
  size_t apart = 0;
  for (const _zrerror_table& row : marlo::ErrorTable()) {
    ++rows[row.code];
    ASSERT_TRUE(IsZRLANGSTRINGID(nullptr, row.text));
    const std::u16string text = ZrGetStringSmart(nullptr, row.text);
    EXPECT_GT(text.size(), 2U);
    if (text.substr(0, 2) == u"\n\n") ++apart;
  }
  EXPECT_EQ(157U, rows.size());
  EXPECT_EQ(133U, apart);
  for (const auto& [code, count] : rows) EXPECT_EQ(code == ZrCode(0x8004E02A) ? 2 : 1, count) << std::hex << code;

  std::set<std::u16string> contexts;
  for (uint32_t context = 0; context < 60; ++context) contexts.insert(ZrErrorHandler_GetContextString(context));
  EXPECT_EQ(56U, contexts.size());
}

TEST_F(ErrorText, Codes) {
  EXPECT_EQ(u"\n\nThe item was not found.", CodeText(ZrCode(0x8004E00A)));
  EXPECT_EQ(u"The bit depth is not supported.", CodeText(ZrCode(0x8004E02A)));
  EXPECT_EQ(u"\n\nThe system is low on memory. You may be able to reduce memory usage by closing other applications.",
            CodeText(E_OUTOFMEMORY));
  EXPECT_EQ(u"Buffer to small.", CodeText(ZR_E_BUFFER_TOO_SMALL));
  EXPECT_EQ(u"End of File is not an error.", CodeText(ZrCode(0x800A0026)));
  EXPECT_EQ(u"\n\nThe Windows Media profile is invalid.", CodeText(ZrCode(0xC00D0BC6)));
  EXPECT_EQ(u"(none)", CodeText(S_OK));
  EXPECT_EQ(u"(none)", CodeText(0x12345678));
}

TEST_F(ErrorText, Contexts) {
  EXPECT_EQ(std::u16string(u"An error occurred while recording."), ZrErrorHandler_GetContextString(12));
  const std::u16string current = u"An error occurred during the current operation.";
  for (const uintptr_t unknown : {0U, 49U, 53U, 58U, 0xFFFFU}) {
    EXPECT_EQ(current, ZrErrorHandler_GetContextString(unknown));
  }
  const char16_t* own = u"My own";
  EXPECT_EQ(own, ZrErrorHandler_GetContextString(reinterpret_cast<uintptr_t>(own)));
}

TEST_F(ErrorText, ComposedMessages) {
  EXPECT_EQ(u"An error occurred while loading the project file a.veg.\n\nThe item was not found.",
            Message(5, ZR_E_NOT_FOUND, u"a.veg"));
  // The argument is the user's own text: nothing in it is expanded.
  EXPECT_EQ(u"An error occurred while loading the project file 100%d $(AppName).\n\nThe item was not found.",
            Message(5, ZR_E_NOT_FOUND, u"100%d $(AppName)"));
  EXPECT_EQ(u"An error occurred while loading the project file .\n\nThe item was not found.",
            Message(5, ZR_E_NOT_FOUND, nullptr));
  EXPECT_EQ(u"An error occurred while recording.The bit depth is not supported.",
            Message(12, ZrCode(0x8004E02A), nullptr));
  EXPECT_EQ(u"An error occurred starting Studio.\n\nThis project file was created by an older version of Studio.",
            Message(26, 0x0004E00E, nullptr));
  EXPECT_EQ(u"An error occurred while recording.\n\nabc file type is unsupported in this version of Studio.",
            Message(12, ZrCode(0x8004E164), u"abc"));
  EXPECT_EQ(u"An error occurred while recording.\n\nError 0x12345678 (message missing)", Message(12, 0x12345678, u""));
  EXPECT_EQ(u"An error occurred while recording.\n\nError 0x8004e0c8 (message missing)",
            Message(12, ZrCode(0x8004E0C8), u""));
  EXPECT_EQ(u"An error occurred while recording.\n\nError 0x00000000 (message missing)", Message(12, S_OK, u""));
  const char16_t* own = u"Own %s on $(AppName)";
  EXPECT_EQ(u"Own x on Studio\n\nThe system is busy.", Message(reinterpret_cast<uintptr_t>(own), ZR_E_BUSY, u"x"));
}

TEST_F(ErrorText, LongOperationGetsNoExplanation) {
  const std::u16string explanation = u"\n\nThe system is busy.";
  for (const size_t characters : {1947U, 1948U, 2047U, 5000U}) {
    const std::u16string context(characters, u'c');
    const std::u16string message = Message(reinterpret_cast<uintptr_t>(context.c_str()), ZR_E_BUSY, nullptr);
    const std::u16string whole = characters < 1948 ? context + explanation : context;
    EXPECT_EQ(whole.substr(0, 2047), message) << characters;
  }
}

TEST_F(ErrorText, ComposedTextWithDetails) {
  const int64_t blocks = plat::LiveBlocks();
  char16_t* text = ZrErrorHandler_ComposeErrorText(12, ZR_E_BUSY, nullptr);
  EXPECT_EQ(std::u16string(u"An error occurred while recording.\n\nThe system is busy."), text);
  EXPECT_EQ(55U, plat::StringCharacters(text));
  ZrErrorHandler_FreeErrorText(text);
  ZrErrorHandler_DetailsAddString(ZR_E_BUSY, u"%s line", u"first");
  ZrErrorHandler_DetailsAddString(ZR_E_BUSY, u"second");
  text = ZrErrorHandler_ComposeErrorText(12, ZR_E_BUSY, nullptr);
  EXPECT_EQ(std::u16string(u"An error occurred while recording.\n\nThe system is busy.\r\n<Details>\r\nfirst line\r\n"
                           u"second\r\n\r\n</Details>"),
            text);
  EXPECT_EQ(std::u16string(text).size(), plat::StringCharacters(text));
  ZrErrorHandler_FreeErrorText(text);
  plat::FailAllocation(1);
  EXPECT_EQ(nullptr, ZrErrorHandler_ComposeErrorText(12, ZR_E_BUSY, nullptr));
  plat::FailAllocation(0);
  ZrErrorHandler_FreeErrorText(nullptr);
  EXPECT_EQ(blocks, plat::LiveBlocks());
}

TEST_F(ErrorText, DetailsAreFormattedByTheWholeFormatter) {
  EXPECT_EQ(S_OK, ZrErrorHandler_DetailsAddString(ZR_E_BUSY, u"$(AppName): $d frames, %.2z s, %I64d", 44100, 150,
                                                  int64_t{5000000000}));
  EXPECT_EQ(std::u16string(u"Studio: 44,100 frames, 1.50 s, 5000000000\r\n"),
            ZrErrorHandler_DetailsInfo(nullptr, nullptr, nullptr));
}

/// Registered tables stay for the process, so this test fills all 32 places in one go.
TEST_F(ErrorText, RegisteredTablesComeFirst) {
  static zrlang_t descriptor = marlo::English(u"From a descriptor");
  static const _zrerror_table kOwn[] = {{ZrCode(0x8004F001), u"Own text"},
                                        {ZrCode(0x8004F001), u"Second row of the same code"},
                                        {ZrCode(0x8004E0EC), u"In front of the built-in row"}};
  static const _zrerror_table_rcid kById[] = {
      {ZrCode(0x8004F001), 7}, {ZrCode(0x8004F002), reinterpret_cast<uint64_t>(&descriptor)}, {ZrCode(0x8004F003), 7}};
  EXPECT_EQ(1, ZrErrorHandler_AddErrorTable(nullptr, 3));
  EXPECT_EQ(1, ZrErrorHandler_AddErrorTable(kOwn, -1));
  EXPECT_EQ(u"Cannot connect to the internet.", CodeText(ZrCode(0x8004E0EC)));
  EXPECT_EQ(0, ZrErrorHandler_AddErrorTable(kOwn, 3));
  EXPECT_EQ(0, ZrErrorHandler_AddErrorTable(nullptr, kById, 3));
  EXPECT_EQ(u"Own text", CodeText(ZrCode(0x8004F001)));
  EXPECT_EQ(u"In front of the built-in row", CodeText(ZrCode(0x8004E0EC)));
  EXPECT_EQ(u"From a descriptor", CodeText(ZrCode(0x8004F002)));
  EXPECT_EQ(u"", CodeText(ZrCode(0x8004F003)));  // an id without a text
  for (int table = 2; table < 32; ++table) EXPECT_EQ(0, ZrErrorHandler_AddErrorTable(kOwn, 0));
  EXPECT_EQ(1, ZrErrorHandler_AddErrorTable(kOwn, 3));
  EXPECT_EQ(1, ZrErrorHandler_AddErrorTable(nullptr, kById, 3));
}

TEST_F(ErrorText, TextArgumentsAreToldApart) {
  alignas(4) static const char16_t kPlain[] = u"plain";
  zrlang_t descriptor = marlo::English(u"described");
  EXPECT_EQ(nullptr, ZrGetStringSmart(nullptr, nullptr));
  EXPECT_EQ(kPlain, ZrGetStringSmart(nullptr, kPlain));
  EXPECT_EQ(std::u16string(u"described"), ZrGetStringSmart(nullptr, &descriptor));
  EXPECT_EQ(std::u16string(u""), ZrGetStringSmart(nullptr, reinterpret_cast<const void*>(uintptr_t{0xFFFF})));
  // A text that begins as a descriptor does, on an address that none can have.
  alignas(4) const char16_t lookalike[] = {0, kZrLangStringMagic, u'x', 0};
  EXPECT_EQ(lookalike + 1, ZrGetStringSmart(nullptr, lookalike + 1));
  EXPECT_FALSE(IsZRLANGSTRINGID(nullptr, lookalike + 1));
  EXPECT_FALSE(IsZRLANGSTRINGID(nullptr, nullptr));
  EXPECT_TRUE(IsZRLANGSTRINGID(nullptr, &descriptor));
}

TEST_F(ErrorText, FailureBoxes) {
  EXPECT_EQ(1U, ZrErrorHandler_MsgBox(nullptr, 0x10, 5, ZR_E_CANCELLED, u"a", 0));
  EXPECT_EQ(0, box_.count);

  ZrErrorHandler_DetailsAddString(ZR_E_BUSY, u"deep down");
  EXPECT_EQ(6U, ZrErrorHandler_MsgBox(nullptr, 0x34, 12, ZR_E_BUSY, nullptr, 1));
  EXPECT_EQ(
      u"Warning: An error occurred while recording.\n\nThe system is busy.\r\n<Details>\r\ndeep down\r\n\r\n"
      u"</Details>",
      box_.text);
  EXPECT_EQ(0xC034U, box_.flags);
  EXPECT_EQ(u"Studio 11", box_.title);
  // The state is clear before the box runs.
  EXPECT_EQ(S_OK, ZrErrorHandler_GetLastError());
  EXPECT_EQ(nullptr, ZrErrorHandler_DetailsInfo(nullptr, nullptr, nullptr));

  // Details bits of the caller don't count; a text with "%" isn't a format.
  EXPECT_EQ(6U, ZrErrorHandler_MsgBoxText(nullptr, 0xC010, u"100% $(AppName)", 0));
  EXPECT_EQ(u"100% $(AppName)", box_.text);
  EXPECT_EQ(0x10U, box_.flags);
  // There is no check state, so a box that asks for one can't be shown.
  EXPECT_EQ(0U, ZrErrorHandler_MsgBoxText(nullptr, 0x1010, u"x", 0));
  EXPECT_EQ(2, box_.count);
}

TEST_F(ErrorText, FormsOfBoxes) {
  int32_t state = 0;
  const auto expect = [&](const char* name, uint32_t result, uint32_t expected, const char16_t* text,
                          const char16_t* title) {
    EXPECT_EQ(expected, result) << name;
    EXPECT_EQ(text != nullptr ? 1 : 0, box_.count) << name;
    if (text != nullptr) {
      EXPECT_EQ(std::u16string(text), box_.text) << name;
    }
    if (text != nullptr) {
      EXPECT_EQ(title != nullptr, box_.hasTitle) << name;
    }
    if (title != nullptr) {
      EXPECT_EQ(std::u16string(title), box_.title) << name;
    }
    box_.count = 0;
  };
  const char16_t* app = u"Studio 11";
  expect("F", ZrMsgBoxF(nullptr, 0, u"%d $(AppName)", 5), 6, u"5 Studio", nullptr);
  expect("NoF", ZrMsgBoxNoF(nullptr, 0, u"%d"), 6, u"%d", nullptr);
  expect("Id", ZrMsgBoxId(nullptr, nullptr, 0, u"id %s", u"x"), 6, u"id x", nullptr);
  expect("unknown Id", ZrMsgBoxId(nullptr, nullptr, 0, reinterpret_cast<void*>(uintptr_t{7})), 6, u"", nullptr);
  expect("CustomF", ZrMsgBox_CustomF(nullptr, 0, nullptr, u"%s", u"a"), 6, u"a", app);
  expect("CustomNoF", ZrMsgBox_CustomNoF(nullptr, 0, u"d", u"%s"), 6, u"%s", app);
  expect("details", ZrMsgBox_CustomNoF(nullptr, 0xC000, u"d", u"b"), 6, u"b\r\n<Details>\r\nd\r\n</Details>", app);
  expect("one details bit", ZrMsgBox_CustomNoF(nullptr, 0x4000, u"d", u"b"), 6, u"b\r\n<Details>\r\nd\r\n</Details>",
         app);
  expect("no details", ZrMsgBox_CustomF(nullptr, 0xC000, nullptr, u"b"), 0, nullptr, nullptr);
  expect("check", ZrMsgBox_CustomExF(nullptr, 0x1000, nullptr, nullptr, &state, u"c%d", 1), 6, u"c1", app);
  expect("no check state", ZrMsgBox_CustomExF(nullptr, 0x1000, nullptr, u"l", nullptr, u"c"), 0, nullptr, nullptr);
  expect("ExNoF", ZrMsgBox_CustomExNoF(nullptr, 0x1000, nullptr, u"l", &state, u"c%"), 6, u"c%", app);
  expect("link", ZrMsgBox_CustomExLinkF(nullptr, 0, nullptr, nullptr, nullptr, u"url", u"here", u"l"), 6, u"l", app);
  // A title of its own isn't the hook's business.
  expect("titled", ZrMsgBox_TitledF(nullptr, 0, u"Own", nullptr, u"t%d", 2), 6, u"t2", app);
  expect("titled NoF", ZrMsgBox_TitledNoF(nullptr, 0, u"Own", nullptr, u"t%d"), 6, u"t%d", app);
}

TEST_F(ErrorText, BoxesNobodyAnswersGiveTheFailureCode) {
  box_.answer = ZRID_HOOKDECLINES;
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(0xFFFFFFFFU, ZrMsgBox_TitledF(nullptr, 0xC004, u"Own", u"why", u"really %d?", 1));
  EXPECT_EQ("Own: really 1?\r\n<Details>\r\nwhy\r\n</Details>\n", ::testing::internal::GetCapturedStderr());
  ZrMsgBoxSetHook(nullptr, nullptr);
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(0U, ZrMsgBoxF(nullptr, 0x04, u"really %d?", 2));
  EXPECT_EQ(0xFFFFFFFFU, ZrErrorHandler_MsgBox(nullptr, 0, 12, ZR_E_BUSY, nullptr, 0));
  EXPECT_EQ("Studio 11: really 2?\nStudio 11: An error occurred while recording.\n\nThe system is busy.\n",
            ::testing::internal::GetCapturedStderr());
}

TEST_F(ErrorText, LongBodiesReachTheHookWhole) {
  const std::u16string body(6000, u'b');
  const std::u16string details(8000, u'd');
  EXPECT_EQ(6U, ZrMsgBox_CustomNoF(nullptr, 0xC000, details.c_str(), body.c_str()));
  EXPECT_EQ(body + u"\r\n<Details>\r\n" + details + u"\r\n</Details>", box_.text);
  ZrErrorHandler_DetailsAddString(ZR_E_BUSY, details.c_str());
  EXPECT_EQ(6U, ZrErrorHandler_MsgBoxText(nullptr, 0, body.c_str(), 1));
  EXPECT_EQ(u"Warning: " + body + u"\r\n<Details>\r\n" + details + u"\r\n\r\n</Details>", box_.text);
}

}  // namespace
