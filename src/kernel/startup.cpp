// SPDX-License-Identifier: Apache-2.0
// The tables of start and end: one row a stage, in their order. The only place of the kernel that may call into
// the subsystems above it.
#include "kernel/startup.h"

#include <cstddef>

#include "kernel/cpu_detection.h"
#include "kernel/internationals.h"
#include "kernel/kernel_clock.h"
#include "kernel/kernel_state.h"
#include "kernel/language.h"
#include "kernel/metrics.h"
#include "kernel/system_facts.h"
#include "kernel/threadbuf.h"
#include "marlo110k/list.h"
#include "platform/parallel/rows.h"
#include "platform/sys/errormode.h"
#include "platform/sys/module.h"
#include "platform/sys/profile.h"

namespace marlo {
namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;
constexpr uint32_t kCursorBase = 100;
constexpr uint32_t kAttachFlags = ZRKERNEL_EARLY_APPKERNEL;
constexpr int32_t kTokenGrowth = 16;

/// What the stages of one run are given.
struct StageContext {
  plat::Module* module;
  uint32_t flags;
  bool held;  ///< All stages so far did.
};

enum class Where { kEveryProcess, kUserInterface };

struct Stage {
  const char* name;
  bool (*run)(const StageContext& context);
  Where where = Where::kEveryProcess;
};

std::atomic<void (*)(const char*)> observer{nullptr};

template <size_t kStages>
bool RunStages(const Stage (&stages)[kStages], plat::Module* module, uint32_t flags) noexcept {
  StageContext context{module, flags, true};
  for (const Stage& stage : stages) {
    if (stage.where == Where::kUserInterface && kernelState.isRundll.load(kRelaxed)) continue;
    if (const auto observe = observer.load(kRelaxed)) observe(stage.name);
    context.held = stage.run(context) && context.held;
  }
  return context.held;
}

/// The place of a service that the library doesn't have yet.
bool ServiceComesLater(const StageContext&) { return true; }

// ---- Early initialisation --------------------------------------------------------------------------

bool AddErrorMode(const StageContext&) {
  plat::SetErrorMode(plat::ErrorMode() | plat::kFailCriticalErrors | plat::kNoOpenFileErrorBox);
  return true;
}

bool StartTheClock(const StageContext&) {
  StartClock();
  return true;
}

bool NoteModule(const StageContext& context) {
  RefreshPlatform();
  RefreshDisplayFacts();
  kernelState.appKernel.store(context.module, kRelaxed);
  kernelState.earlyFlags.store(context.flags, kRelaxed);
  return true;
}

bool DetectAndFold(const StageContext&) {
  FoldProcessorMasks();
  return true;
}

bool NoteMode(const StageContext& context) {
  kernelState.mode.store(ModeOfFlags(context.flags), kRelaxed);
  return true;
}

bool NoteProcessImage(const StageContext&) {
  kernelState.cursorBase.store(kCursorBase, kRelaxed);
  kernelState.processImage.store(plat::ProcessImage(), kRelaxed);
  kernelState.splash.store(nullptr, kRelaxed);
  return true;
}

/// Tokens that are registered already stay: a second initialisation must not lose the application's name.
bool CreateTokenList(const StageContext&) {
  if (kernelState.tokens.load(kRelaxed) != nullptr) return true;
  tZRLIST* tokens = nullptr;
  const HRESULT result =
      ZrList_CreateExZ(&tokens, sizeof(void*), 0, kTokenGrowth, ZRLIST_SYNCHRONIZED | ZRLIST_HEAPLIST, 0, 0, 0);
  kernelState.tokens.store(tokens, kRelaxed);
  return SUCCEEDED(result);
}

/// Runs only on a token list, since the conventions it loads are stored there.
bool OpenLanguage(const StageContext& context) {
  return context.held && OpenKernelLanguage(context.module) && LoadInternationals();
}

constexpr Stage kEarlyStages[] = {
    {"error mode", AddErrorMode},
    {"clock", StartTheClock},
    {"platform, module and flags", NoteModule},
    {"processor", DetectAndFold},
    {"mode word", NoteMode},
    {"cursor base, process image and splash", NoteProcessImage},
    {"user-interface colours", ServiceComesLater},
    {"token list", CreateTokenList},
    {"language and international conventions", OpenLanguage},
    {"timer layer", ServiceComesLater},
    {"vector signal library", ServiceComesLater},
};

// ---- Late termination ------------------------------------------------------------------------------

bool CloseLanguage(const StageContext&) {
  CloseKernelLanguage();
  return true;
}

bool DestroyTokenList(const StageContext&) {
  ZrList_Destroy(kernelState.tokens.exchange(nullptr, kRelaxed));
  return true;
}

bool ForgetModule(const StageContext&) {
  kernelState.appKernel.store(nullptr, kRelaxed);
  return true;
}

constexpr Stage kLateStages[] = {
    {"close language", CloseLanguage},
    {"destroy token list", DestroyTokenList},
    {"delete brushes, pens, fonts and bitmaps", ServiceComesLater},
    {"destroy cursors", ServiceComesLater},
    {"forget module", ForgetModule},
};

constexpr Stage kColourChangeStages[] = {
    {"release colour objects", ServiceComesLater},
    {"user-interface colours", ServiceComesLater},
};

// ---- Load and unload -------------------------------------------------------------------------------

bool ApplyAlignmentFaultSetting(const StageContext&) {
  const bool enabled =
      plat::ProfileInt(plat::UserProfilePath().c_str(), u"Debug", u"EnableAlignmentFaultExceptions", 0) != 0;
  const uint32_t mode = plat::ErrorMode();
  plat::SetErrorMode(enabled ? mode & ~plat::kNoAlignmentFaultExcept : mode | plat::kNoAlignmentFaultExcept);
  return true;
}

bool InitializeEarly(const StageContext& context) { return ZrKernel_EarlyInitialize(context.module, context.flags); }

bool NoteProcessName(const StageContext&) {
  bool isRundll = false;
  try {
    isRundll = IsRundllPath(plat::ModulePath(plat::ProcessImage()).c_str());
  } catch (...) {
    // Without memory for its path the process counts as an ordinary one.
  }
  kernelState.isRundll.store(isRundll, kRelaxed);
  return true;
}

/// Without a place for its settings the library runs on defaults.
bool OpenSettings(const StageContext&) {
  OpenKernelMetrics();
  return true;
}

bool CreateBuffers(const StageContext&) { return CreateThreadBuffers(); }

constexpr Stage kAttachStages[] = {
    {"alignment fault setting", ApplyAlignmentFaultSetting},
    {"early initialisation", InitializeEarly},
    {"process name", NoteProcessName},
    {"settings", OpenSettings, Where::kUserInterface},
    {"controls", ServiceComesLater, Where::kUserInterface},
    {"explorer window class", ServiceComesLater, Where::kUserInterface},
    {"image services", ServiceComesLater, Where::kUserInterface},
    {"still images", ServiceComesLater, Where::kUserInterface},
    {"thread buffers", CreateBuffers},
};

bool StopRowPool(const StageContext&) {
  plat::StopParallelPool();
  return true;
}

bool DestroyBuffers(const StageContext&) {
  DestroyThreadBuffers();
  return true;
}

bool CloseSettings(const StageContext&) {
  CloseKernelMetrics();
  return true;
}

bool TerminateLate(const StageContext& context) { return ZrKernel_LateTerminate(context.module) != 0; }

constexpr Stage kDetachStages[] = {
    {"stop row pool", StopRowPool},
    {"destroy thread buffers", DestroyBuffers},
    {"unregister explorer window class", ServiceComesLater, Where::kUserInterface},
    {"terminate controls", ServiceComesLater, Where::kUserInterface},
    {"destroy still images", ServiceComesLater, Where::kUserInterface},
    {"close settings", CloseSettings},
    {"late termination", TerminateLate},
    {"forget module", ForgetModule},
};

// All state of these stages is constant-initialised and trivially destroyed, so that the two functions may run
// before, between or after the initialisers and destructors of other sources.

[[gnu::constructor]] void OnLoad() { Attach(); }
[[gnu::destructor]] void OnUnload() { Detach(); }

}  // namespace

constinit KernelState kernelState;

bool Attach() noexcept { return RunStages(kAttachStages, plat::ThisModule(), kAttachFlags); }

void Detach() noexcept { RunStages(kDetachStages, plat::ThisModule(), 0); }

bool RunEarlyStages(plat::Module* module, uint32_t flags) noexcept { return RunStages(kEarlyStages, module, flags); }

void RunLateStages() noexcept { RunStages(kLateStages, nullptr, 0); }

void RunColourChangeStages() noexcept { RunStages(kColourChangeStages, nullptr, 0); }

void ObserveStages(void (*function)(const char* stage)) noexcept { observer.store(function, kRelaxed); }

}  // namespace marlo
