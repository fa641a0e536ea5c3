// SPDX-License-Identifier: Apache-2.0
// The built library in a process: loaded and unloaded again and again while threads live.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <thread>

#include "marlo110k/kernel.h"
#include "marlo110k/metric.h"
#include "testing/temp_folder.h"

namespace {

/// The library, loaded; functions by their C++ names.
class LoadedLibrary {
 public:
  LoadedLibrary() : handle_(dlopen(MARLO_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL)) {
    EXPECT_NE(nullptr, handle_) << dlerror();
  }
  template <typename Function>
  Function* Get(const char* name) const {
    void* symbol = handle_ != nullptr ? dlsym(handle_, name) : nullptr;
    EXPECT_NE(nullptr, symbol) << name;
    return reinterpret_cast<Function*>(symbol);
  }
  void Unload() {
    EXPECT_EQ(0, dlclose(handle_));
    handle_ = nullptr;
  }
  static bool IsMapped() {
    void* handle = dlopen(MARLO_LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
  }

 private:
  void* handle_;
};

TEST(Load, TwiceInOneProcessWhileThreadsLive) {
  const testing_support::TempFolder settings;
  setenv("MARLO_SETTINGS_DIR", settings.Path().c_str(), 1);
  std::atomic<int> step{0};
  std::atomic<uint32_t (*)(uint32_t)> support{nullptr};
  std::thread worker([&] {
    for (int round = 1; round <= 2; ++round) {
      while (step.load() != round * 2 - 1) std::this_thread::yield();
      EXPECT_EQ(64U, support.load()(64) & 64);
      step = round * 2;
    }
  });
  for (int round = 1; round <= 2; ++round) {
    ASSERT_FALSE(LoadedLibrary::IsMapped());
    LoadedLibrary library;
    EXPECT_EQ(0x0B0002BDU, library.Get<uint32_t()>("_Z19ZrKernel_GetVersionv")());
    support = library.Get<uint32_t(uint32_t)>("_Z15ZrGetCPUSupportj");
    // Each load starts from scratch: what the first one disallowed is back.
    library.Get<int32_t(uint32_t)>("_Z20ZrDisallowCPUSupportj")(0x20);
    EXPECT_EQ(0U, support.load()(0x20));
    EXPECT_NE(nullptr, library.Get<plat::Module*()>("_Z21ZrKernel_GetAppKernelv")());
    // Its own settings are open, and what the first load has stored is there for the second.
    auto* const getMetric = library.Get<int32_t(HZRMETRIC, int32_t)>("_Z11ZrGetMetricP11ZrMetricKeyi");
    EXPECT_EQ(round - 1, getMetric(kZrKernelMetric, 1));
    EXPECT_EQ(S_OK, library.Get<HRESULT(HZRMETRIC, int32_t, int32_t)>("_Z11ZrSetMetricP11ZrMetricKeyii")(
                        kZrKernelMetric, 1, round));
    step = round * 2 - 1;
    while (step.load() != round * 2) std::this_thread::yield();
    library.Unload();
    EXPECT_FALSE(LoadedLibrary::IsMapped()) << "the code must go with the last handle";
  }
  worker.join();
}

TEST(Load, AProcessNamedRundllStartsNoUserInterface) { EXPECT_EQ(0, std::system("\"" MARLO_RUNDLL_PROBE_PATH "\"")); }

}  // namespace
