// SPDX-License-Identifier: Apache-2.0
// Start, version check and end of the kernel: results, words and the order of the stages.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kernel/kernel_state.h"
#include "kernel/startup.h"
#include "kernel/system_facts.h"
#include "kernel/threadbuf.h"
#include "marlo110k/errors.h"
#include "marlo110k/kernel.h"
#include "marlo110k/list.h"
#include "marlo110k/printf.h"
#include "platform/base/memory.h"
#include "platform/sys/errormode.h"
#include "platform/sys/module.h"

namespace {

using marlo::kernelState;

std::vector<std::string> stages;
void Note(const char* stage) { stages.emplace_back(stage); }

const std::vector<std::string> kEarly = {"error mode",
                                         "clock",
                                         "platform, module and flags",
                                         "processor",
                                         "mode word",
                                         "cursor base, process image and splash",
                                         "user-interface colours",
                                         "token list",
                                         "language and international conventions",
                                         "timer layer",
                                         "vector signal library"};
const std::vector<std::string> kLate = {"close language", "destroy token list",
                                        "delete brushes, pens, fonts and bitmaps", "destroy cursors", "forget module"};

std::vector<std::string> Join(std::initializer_list<std::vector<std::string>> parts) {
  std::vector<std::string> all;
  for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

/// Runs on the kernel that the test program's own load has started and leaves it started.
class LifecycleTest : public testing::Test {
 protected:
  void SetUp() override {
    stages.clear();
    marlo::ObserveStages(Note);
  }
  void TearDown() override {
    marlo::ObserveStages(nullptr);
    marlo::SetSystemVersion({});
    ZrKernel_EarlyInitialize(plat::ThisModule(), 1);
  }
};

TEST_F(LifecycleTest, UnloadAndLoadRunTheirStagesInOrder) {
  marlo::Detach();
  EXPECT_EQ(Join({{"stop row pool", "destroy thread buffers", "unregister explorer window class", "terminate controls",
                   "destroy still images", "close settings", "late termination"},
                  kLate,
                  {"forget module"}}),
            stages);
  EXPECT_EQ(nullptr, kernelState.tokens.load());
  EXPECT_EQ(nullptr, ZrKernel_GetAppKernel());
  EXPECT_EQ(nullptr, marlo::ThreadBuffer(nullptr));

  stages.clear();
  EXPECT_TRUE(marlo::Attach());
  EXPECT_EQ(Join({{"alignment fault setting", "early initialisation"},
                  kEarly,
                  {"process name", "settings", "controls", "explorer window class", "image services", "still images",
                   "thread buffers"}}),
            stages);
  EXPECT_NE(nullptr, marlo::ThreadBuffer(nullptr));
}

TEST_F(LifecycleTest, AProcessWithoutUserInterfaceSkipsIt) {
  kernelState.isRundll = true;
  marlo::Detach();
  EXPECT_EQ(Join({{"stop row pool", "destroy thread buffers", "close settings", "late termination"},
                  kLate,
                  {"forget module"}}),
            stages);
  EXPECT_TRUE(marlo::Attach());
  EXPECT_FALSE(kernelState.isRundll) << "the load looks at the process's name again";
}

TEST_F(LifecycleTest, RundllNames) {
  for (const char16_t* path : {u"RunDLL32.exe", u"/usr/bin/rundll32.EXE", u"C:\\x\\RUNDLL32.exe"}) {
    EXPECT_TRUE(marlo::IsRundllPath(path));
  }
  for (const char16_t* path : {u"", u"/rundll32.exe/x", u"xrundll32.exe", u"rundll32", u"rundll32.exe2"}) {
    EXPECT_FALSE(marlo::IsRundllPath(path));
  }
  EXPECT_FALSE(marlo::IsRundllPath(nullptr));
}

TEST_F(LifecycleTest, LoadSetsTheWords) {
  EXPECT_EQ(0x0B0002BDU, ZrKernel_GetVersion());
  EXPECT_EQ(plat::ThisModule(), ZrKernel_GetAppKernel());
  EXPECT_EQ(1U, kernelState.earlyFlags);
  EXPECT_EQ(100U, kernelState.cursorBase);
  EXPECT_EQ(plat::ProcessImage(), kernelState.processImage);
  EXPECT_EQ(0x8005U, plat::ErrorMode() & 0x8005);
  const tZRLIST* tokens = kernelState.tokens;
  ASSERT_TRUE(ZrList_IsListFast(tokens));
  EXPECT_EQ(0xC0000002U, ZrList_GetCreateOptions(tokens));
  EXPECT_EQ(16, tokens->growBy);
}

TEST_F(LifecycleTest, ASecondInitialisationKeepsTokensAndOverwritesTheRest) {
  tZRLIST* tokens = kernelState.tokens;
  ASSERT_EQ(1, ZrPrintF_AddToken(u"AppName", u"Studio"));
  const int32_t count = tokens->count;
  ZrKernel_SetSplash(&stages);
  EXPECT_EQ(static_cast<void*>(&stages), kernelState.splash);
  auto* module = reinterpret_cast<plat::Module*>(&stages);
  const struct {
    uint32_t flags, mode;
  } kRows[] = {{0, 0}, {1, 1}, {0x20, 2}, {0x21, 1}, {0xFFFFFFDE, 0}, {0xFFFFFFFE, 2}, {0xFFFFFFFF, 1}};
  for (const auto& row : kRows) {
    stages.clear();
    EXPECT_TRUE(ZrKernel_EarlyInitialize(module, row.flags));
    EXPECT_EQ(kEarly, stages);
    EXPECT_EQ(row.mode, kernelState.mode) << row.flags;
    EXPECT_EQ(row.flags, kernelState.earlyFlags);
    EXPECT_EQ(module, ZrKernel_GetAppKernel());
    EXPECT_EQ(nullptr, kernelState.splash);
  }
  EXPECT_EQ(tokens, kernelState.tokens);
  EXPECT_EQ(count, tokens->count);
  EXPECT_EQ(1, ZrPrintF_DeleteToken(u"AppName"));
}

TEST_F(LifecycleTest, AFailingStageDoesNotStopTheLaterOnes) {
  EXPECT_EQ(1, ZrKernel_LateTerminate(nullptr));
  EXPECT_EQ(1, ZrKernel_LateTerminate(nullptr)) << "a second call finds nothing";
  stages.clear();
  plat::FailAllocation(1);
  EXPECT_FALSE(ZrKernel_EarlyInitialize(plat::ThisModule(), 1));
  plat::FailAllocation(0);
  EXPECT_EQ(kEarly, stages);
  EXPECT_EQ(nullptr, kernelState.tokens.load());
}

TEST_F(LifecycleTest, PathNameOfTheApplicationKernel) {
  char16_t path[260] = {};
  EXPECT_EQ(S_OK, ZrKernel_GetAppKernelPathName(path, 260));
  EXPECT_EQ(plat::ModulePath(plat::ThisModule()), path);
  EXPECT_EQ(S_OK, ZrKernel_GetAppKernelPathName(path, 4));
  EXPECT_EQ(plat::ModulePath(plat::ThisModule()).substr(0, 3), path);
  EXPECT_EQ(E_FAIL, ZrKernel_GetAppKernelPathName(nullptr, 260));
  EXPECT_EQ(E_FAIL, ZrKernel_GetAppKernelPathName(path, 0));
  ZrKernel_LateTerminate(nullptr);
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrKernel_GetAppKernelPathName(path, 260));
  EXPECT_EQ(0, path[0]);
}

// ---- Version check ---------------------------------------------------------------------------------

std::vector<std::u16string> shown;

uint32_t Answer(void*, HZRWINDOW, const char16_t* text, const char16_t* title, uint32_t flags) {
  shown.emplace_back(std::u16string(title) + u"|" + text);
  EXPECT_EQ(0x40U, flags);
  return ZRID_OK;
}

TEST_F(LifecycleTest, VersionCheck) {
  ZrMsgBoxSetAppData(nullptr, nullptr, nullptr);
  ZrMsgBoxSetHook(Answer, nullptr);
  constexpr const char16_t* kOld = u"Marlo Kernel|The version of the Marlo Kernel is too old.";
  constexpr const char16_t* kOther =
      u"Marlo Kernel|The version of the Marlo Kernel is incompatible with the following client:\n\nA €lient.";
  const struct {
    uint32_t version, generation;
    HRESULT result;
    const char16_t* message;
  } kRows[] = {{0x0B0002BD, 3, S_OK, nullptr},  {0x0B0002BE, 3, E_FAIL, kOld},   {0, 3, S_OK, nullptr},
               {0xFFFFFFFF, 3, E_FAIL, kOld},   {0x0B0002BD, 2, E_FAIL, kOther}, {0, 0, E_FAIL, kOther},
               {0x0B0002BD, 4, E_FAIL, kOther}, {0x0B0002BE, 2, E_FAIL, kOther}};
  for (const auto& row : kRows) {
    for (const int32_t quiet : {0, 1}) {
      shown.clear();
      EXPECT_EQ(row.result, ZrKernel_CheckVersion(nullptr, "A \x80lient", row.version, row.generation, 7, quiet));
      std::vector<std::u16string> expected;
      if (row.message != nullptr && quiet == 0) expected.emplace_back(row.message);
      EXPECT_EQ(expected, shown) << row.version << ' ' << row.generation;
    }
  }
  // The name is cut at 128 characters; none is allowed.
  shown.clear();
  ZrKernel_CheckVersion(nullptr, std::string(500, 'n').c_str(), 0, 0, 0, 0);
  ZrKernel_CheckVersion(nullptr, nullptr, 0, 0, 0, 0);
  ASSERT_EQ(2U, shown.size());
  EXPECT_TRUE(shown[0].ends_with(u"\n\n" + std::u16string(128, u'n') + u"."));
  EXPECT_TRUE(shown[1].ends_with(u"\n\n."));

  marlo::SetSystemVersion({2, 3, 51, 0, false});
  shown.clear();
  EXPECT_EQ(E_FAIL, ZrKernel_CheckVersion(nullptr, "client", 0, 3, 0, 0));
  EXPECT_EQ((std::vector<std::u16string>{u"Marlo Kernel|This product requires Windows 95 or Windows NT 4.0 or later."}),
            shown);
  ZrMsgBoxSetAppData(nullptr, nullptr, nullptr);
}

}  // namespace
