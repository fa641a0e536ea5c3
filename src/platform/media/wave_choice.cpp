// SPDX-License-Identifier: Apache-2.0
// Choosing and loading the backend of wave devices.
#include "platform/media/wave_choice.h"

#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>

#include "marlo110k/platform/wave.h"
#include "platform/base/text.h"
#include "platform/base/unload.h"
#include "platform/media/wave_device.h"
#include "platform/media/wave_file.h"
#include "platform/media/wave_none.h"
#include "platform/sys/module.h"

namespace plat {
namespace {

constexpr std::string_view kFileWord = "file:";

/// The choice. Everything is guarded by `mutex`, which calls into the backend hold. It has no destructor: devices of
/// threads that outlive the library's statics may still ask.
struct Choice {
  std::mutex mutex;
  uint32_t openDevices = 0;
  WaveBackend* backend = nullptr;  ///< Null until the first use.
  WaveBackend* owned = nullptr;
  Module* module = nullptr;  ///< Of `owned`, when it came from one.

  void Drop() {
    backend = nullptr;
    delete owned;
    owned = nullptr;
    if (module != nullptr) UnloadModule(module);
    module = nullptr;
  }
};

constinit Choice theChoice;
static_assert(std::is_trivially_destructible_v<Choice>);

/// Backend modules stand in a folder beside the library, or in the library folder beside the program's.
Module* LoadWaveModule(std::string_view word) {
  const std::string own = ToUtf8(ModulePath(ThisModule()).c_str());
  const size_t slash = own.find_last_of('/');
  const std::string folder = slash == std::string::npos ? "." : own.substr(0, slash);
  for (const char* place : {"/marlo110k/", "/../lib/marlo110k/"}) {
    const std::string path = folder + place + "wave_" + std::string(word) + ".so";
    if (Module* module = LoadModule(FromUtf8(path.c_str()).c_str())) return module;
  }
  return nullptr;
}

struct Candidate {
  std::unique_ptr<WaveBackend> backend;
  Module* module = nullptr;
};

Candidate Make(std::string_view word) {
  if (word == "null") return {MakeWaveNone()};
  if (word.starts_with(kFileWord) && word.size() > kFileWord.size()) {
    return {MakeWaveFile(FromUtf8(std::string(word.substr(kFileWord.size())).c_str()))};
  }
  if (word != "pulse" && word != "alsa" && word != "jack") return {};
  Module* module = LoadWaveModule(word);
  if (module == nullptr) return {};
  const auto create = reinterpret_cast<WaveModuleEntry>(ModuleSymbol(module, kWaveModuleEntry));
  Candidate candidate{std::unique_ptr<WaveBackend>(create != nullptr ? create() : nullptr), module};
  if (!candidate.backend) {
    UnloadModule(module);
    candidate.module = nullptr;
  }
  return candidate;
}

Candidate MakeDefault() {
  // A wrong word in the environment must not silence a program, so it counts as none.
  const char* word = std::getenv("MARLO_WAVE");
  if (word != nullptr && *word != 0) {
    if (Candidate candidate = Make(word); candidate.backend) return candidate;
  }
  for (const char* server : {"pulse", "alsa"}) {
    if (Candidate candidate = Make(server); candidate.backend) return candidate;
  }
  return Make("null");
}

/// The lock is held.
void Adopt(Choice& choice, Candidate candidate) {
  choice.Drop();
  choice.owned = candidate.backend.release();
  choice.module = candidate.module;
  choice.backend = choice.owned;
}

/// The lock is held.
WaveBackend* InUse(Choice& choice) {
  if (choice.backend == nullptr) Adopt(choice, MakeDefault());
  return choice.backend;
}

__attribute__((destructor(kStopAtUnload))) void EndWaveBackend() {
  Choice& choice = theChoice;
  const std::lock_guard guard(choice.mutex);
  if (choice.openDevices == 0) choice.Drop();
}

}  // namespace

bool ChooseWaveBackend(const char* word) noexcept {
  const bool standard = word == nullptr || *word == 0;
  Choice& choice = theChoice;
  const std::lock_guard guard(choice.mutex);
  if (choice.openDevices != 0) return false;
  Candidate candidate = standard ? MakeDefault() : Make(word);
  if (!candidate.backend) return false;
  Adopt(choice, std::move(candidate));
  return true;
}

const char* WaveBackendName() noexcept {
  Choice& choice = theChoice;
  const std::lock_guard guard(choice.mutex);
  return InUse(choice)->Name();
}

bool UseWaveBackend(WaveBackend* backend) noexcept {
  Choice& choice = theChoice;
  const std::lock_guard guard(choice.mutex);
  if (choice.openDevices != 0) return false;
  choice.Drop();
  choice.backend = backend;
  return true;
}

WaveBackendUse::WaveBackendUse() noexcept {
  Choice& choice = theChoice;
  choice.mutex.lock();
  backend_ = InUse(choice);
}

WaveBackendUse::~WaveBackendUse() { theChoice.mutex.unlock(); }

void AddOpenWaveDevice() noexcept { ++theChoice.openDevices; }

void RemoveOpenWaveDevice() noexcept {
  Choice& choice = theChoice;
  const std::lock_guard guard(choice.mutex);
  --choice.openDevices;
}

}  // namespace plat
