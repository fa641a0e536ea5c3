// SPDX-License-Identifier: Apache-2.0
// The message box's hooks, on the owner thread and on others.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "marlo110k/errors.h"

namespace {

HZRWINDOW WindowOf(intptr_t number) { return reinterpret_cast<HZRWINDOW>(number); }

struct Call {
  HZRWINDOW window;
  std::u16string text;
  std::u16string title;
  uint32_t flags;
};

struct Recorder {
  uint32_t answer;
  std::vector<Call> calls;
};

uint32_t Record(void* data, HZRWINDOW window, const char16_t* text, const char16_t* title, uint32_t flags) {
  auto* recorder = static_cast<Recorder*>(data);
  recorder->calls.push_back({window, text, title != nullptr ? title : u"(null)", flags});
  return recorder->answer;
}

std::vector<std::u16string> texts;
void Collect(const char16_t* text) { texts.emplace_back(text); }

class MessageBoxTest : public testing::Test {
 protected:
  void SetUp() override {
    texts.clear();
    ASSERT_EQ(1, ZrMsgBoxSetAppData(nullptr, WindowOf(0x1000), u"Application"));
  }
  void TearDown() override { ZrMsgBoxSetAppData(nullptr, nullptr, nullptr); }
};

TEST_F(MessageBoxTest, AHookSeesTheRequestAndAnswers) {
  Recorder recorder{ZRID_RETRY, {}};
  ASSERT_EQ(1, ZrMsgBoxSetHook(Record, &recorder));
  EXPECT_EQ(uint32_t{ZRID_RETRY}, ZrMessageBox(nullptr, u"text", nullptr, 0x245));
  EXPECT_EQ(uint32_t{ZRID_RETRY}, ZrMessageBox(kZrNoParent, u"text", u"title", 0));
  EXPECT_EQ(uint32_t{ZRID_RETRY}, ZrMessageBox(WindowOf(7), u"", u"", 0));
  ASSERT_EQ(3U, recorder.calls.size());
  EXPECT_EQ(WindowOf(0x1000), recorder.calls[0].window);
  EXPECT_EQ(u"(null)", recorder.calls[0].title) << "the title as the caller gave it";
  EXPECT_EQ(0x245U, recorder.calls[0].flags);
  EXPECT_EQ(nullptr, recorder.calls[1].window);
  EXPECT_EQ(u"title", recorder.calls[1].title);
  EXPECT_EQ(WindowOf(7), recorder.calls[2].window);

  std::thread([&] {
    EXPECT_EQ(0, ZrMsgBoxSetHook(nullptr, nullptr));
    EXPECT_EQ(0, ZrMsgBoxSetNoUIHook(Collect));
    EXPECT_EQ(uint32_t{ZRID_RETRY}, ZrMessageBox(nullptr, u"", u"", 0)) << "any thread may show a box";
  }).join();
  EXPECT_EQ(1, ZrMsgBoxSetNoUIHook(nullptr));
  EXPECT_EQ(uint32_t{ZRID_RETRY}, ZrMessageBox(nullptr, u"", u"", 0)) << "another hook stays";
  EXPECT_EQ(1, ZrMsgBoxSetAppData(nullptr, nullptr, nullptr));
  testing::internal::CaptureStderr();
  EXPECT_EQ(uint32_t{ZRID_NOBOX}, ZrMessageBox(nullptr, u"", u"", 0)) << "new application data drop the hook";
  testing::internal::GetCapturedStderr();
}

TEST_F(MessageBoxTest, WithoutABoxTheTextGoesToTheErrorStreamOnce) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(uint32_t{ZRID_NOBOX}, ZrMessageBox(nullptr, u"Grüße", nullptr, ZRMB_YESNO));
  EXPECT_EQ("Application: Grüße\n", testing::internal::GetCapturedStderr());
  Recorder recorder{ZRID_HOOKDECLINES, {}};
  ASSERT_EQ(1, ZrMsgBoxSetHook(Record, &recorder));
  testing::internal::CaptureStderr();
  EXPECT_EQ(uint32_t{ZRID_NOBOX}, ZrMessageBox(nullptr, u"text", u"Title", ZRMB_YESNO));
  EXPECT_EQ("Title: text\n", testing::internal::GetCapturedStderr());
  EXPECT_EQ(1U, recorder.calls.size());
}

TEST_F(MessageBoxTest, NoUIAnswersWithTheDefaultButton) {
  ASSERT_EQ(1, ZrMsgBoxSetNoUIHook(Collect));
  const struct {
    uint32_t set;
    std::vector<uint32_t> results;
  } kRows[] = {{1, {1, 2}},       {2, {3, 4, 5}},       {3, {6, 7, 2}},
               {4, {6, 7}},       {5, {4, 2}},          {10, {6, 100, 7, 2}},
               {11, {6, 7, 101}}, {12, {6, 7, 102, 2}}, {13, {6, 100, 7, 102, 2}}};
  for (const auto& row : kRows) {
    for (uint32_t index = 0; index < row.results.size(); ++index) {
      EXPECT_EQ(row.results[index], ZrMessageBox(nullptr, u"q", nullptr, row.set | index << 8 | 0x30)) << row.set;
    }
    texts.clear();
    testing::internal::CaptureStderr();
    const auto past = static_cast<uint32_t>(row.results.size());
    EXPECT_EQ(uint32_t{ZRID_NOBOX}, ZrMessageBox(nullptr, u"q", nullptr, row.set | past << 8)) << "a real box is due";
    EXPECT_EQ("Application: q\n", testing::internal::GetCapturedStderr());
    EXPECT_EQ((std::vector<std::u16string>{u"q", u"Invalid Message Box parameter...User intervention is needed!!!!"}),
              texts);
  }
  for (const uint32_t set : {0, 6, 7, 8, 9, 14, 15}) {
    for (const uint32_t index : {0, 1, 15}) EXPECT_EQ(1U, ZrMessageBox(nullptr, u"q", nullptr, set | index << 8));
  }
  texts.clear();
  std::thread([] { EXPECT_EQ(0U, ZrMessageBox(nullptr, u"other thread", nullptr, ZRMB_YESNO)); }).join();
  EXPECT_TRUE(texts.empty());
  EXPECT_EQ(1, ZrMsgBoxSetNoUIHook(nullptr));
  testing::internal::CaptureStderr();
  EXPECT_EQ(uint32_t{ZRID_NOBOX}, ZrMessageBox(nullptr, u"q", nullptr, 0));
  testing::internal::GetCapturedStderr();
}

}  // namespace
