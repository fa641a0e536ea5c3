// SPDX-License-Identifier: Apache-2.0
// Loadable modules over the dynamic linker; a handle stands for one mapped object, however often it is loaded.
#include "platform/sys/module.h"

#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <unistd.h>

#include <cstring>
#include <new>

#include "platform/base/text.h"
#include "platform/base/unload.h"
#include "platform/sys/file_backend.h"
#include "platform/sys/path.h"
#include "platform/sys/resource_image.h"

namespace plat {

struct Module {
  link_map* map;     ///< The linker's own name for the object; null for a data module.
  uint32_t loads;    ///< Open loads; 0 for one that was only found by address.
  const void* base;  ///< Where it is mapped.
  std::string path;  ///< Absolute.
  Module* next;
};

namespace {

constexpr uint32_t kErrorModuleNotFound = 126;

pthread_mutex_t moduleLock = PTHREAD_MUTEX_INITIALIZER;

Module* modules = nullptr;  ///< Guarded by moduleLock.

class ScopedLock {
 public:
  ScopedLock() { pthread_mutex_lock(&moduleLock); }
  ~ScopedLock() { pthread_mutex_unlock(&moduleLock); }
  ScopedLock(const ScopedLock&) = delete;
  ScopedLock& operator=(const ScopedLock&) = delete;
};

bool IsKnown(const Module* module) {
  const Module* known = modules;
  while (known != nullptr && known != module) known = known->next;
  return known != nullptr && module != nullptr;
}

std::string CurrentFolder() {
  std::string folder(4096, '\0');
  if (getcwd(folder.data(), folder.size()) == nullptr) return "/";
  folder.resize(folder.find('\0'));
  return folder;
}

std::string ImagePath() {
  std::string path(4096, '\0');
  const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
  path.resize(length > 0 ? static_cast<size_t>(length) : 0);
  return path;
}

std::string PathOf(const link_map& map) {
  // The process image is the one object that the linker knows without a name.
  if (map.l_name[0] == 0) return ImagePath();
  return map.l_name[0] == '/' ? map.l_name : CurrentFolder() + "/" + map.l_name;
}

const void* BaseOf(const link_map& map) {
  Dl_info info{};
  return dladdr(map.l_ld, &info) != 0 ? info.dli_fbase : nullptr;
}

/// The object's handle, made if it has none; `loads` more loads are counted. The lock is held.
Module* HandleOf(link_map* map, uint32_t loads) {
  Module* module = modules;
  while (module != nullptr && module->map != map) module = module->next;
  if (module == nullptr) {
    module = new Module{map, 0, BaseOf(*map), PathOf(*map), modules};
    modules = module;
  } else if (module->loads == 0) {
    // Others may have unloaded the object that was found here, and loaded another one in its place.
    module->base = BaseOf(*map);
    module->path = PathOf(*map);
  }
  module->loads += loads;
  return module;
}

void Forget(Module* module) {
  Module** link = &modules;
  while (*link != module) link = &(*link)->next;
  *link = module->next;
  delete module;
}

[[gnu::destructor(kFreeAtUnload)]] void ForgetAll() {
  ScopedLock lock;
  while (modules != nullptr) Forget(modules);
}

bool HasFolder(const char16_t* path) {
  for (; *path != 0; ++path) {
    if (*path == u'/' || *path == u'\\') return true;
  }
  return false;
}

/// Runs module constructors, so the lock isn't held.
void* Open(const char16_t* path) {
  const DiskPath found = FindOnDisk(path);
  if (found.error == 0 && found.exists) {
    // Without a slash the linker would search its own folders instead.
    const std::string name = HasFolder(path) ? found.name : "./" + found.name;
    return dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
  }
  const bool bareName = path != nullptr && *path != 0 && !HasFolder(path);
  return bareName ? dlopen(ToUtf8(path).c_str(), RTLD_NOW | RTLD_LOCAL) : nullptr;
}

}  // namespace

Module* LoadModule(const char16_t* path) noexcept {
  try {
    if (void* opened = Open(path)) {
      ScopedLock lock;
      return HandleOf(static_cast<link_map*>(opened), 1);
    }
  } catch (const std::bad_alloc&) {
  }
  SetLastError(kErrorModuleNotFound);
  return nullptr;
}

Module* LoadDataModule(const char16_t* path) noexcept {
  try {
    std::vector<uint8_t> resources;
    if (path != nullptr && ReadResources(path, &resources)) {
      ScopedLock lock;
      return modules = new Module{nullptr, 1, nullptr, ToUtf8(path), modules};
    }
  } catch (const std::bad_alloc&) {
  }
  SetLastError(kErrorModuleNotFound);
  return nullptr;
}

void UnloadModule(Module* module) noexcept {
  link_map* map = nullptr;
  {
    ScopedLock lock;
    if (!IsKnown(module) || module->loads == 0) return;
    map = module->map;
    if (--module->loads == 0) Forget(module);
  }
  if (map != nullptr) dlclose(map);
}

void* ModuleSymbol(Module* module, const char* name) noexcept {
  link_map* map = nullptr;
  {
    ScopedLock lock;
    if (IsKnown(module)) map = module->map;
  }
  if (map == nullptr || name == nullptr) return nullptr;
  return dlsym(map, name);
}

Module* ProcessImage() noexcept {
  // The linker's handle of the process image is its entry in the list of objects; it is never unloaded.
  void* image = dlopen(nullptr, RTLD_NOW | RTLD_LOCAL);
  if (image == nullptr) return nullptr;
  ScopedLock lock;
  return HandleOf(static_cast<link_map*>(image), 0);
}

Module* ModuleOfAddress(const void* address) noexcept {
  Dl_info info{};
  link_map* map = nullptr;
  if (dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 || map == nullptr) return nullptr;
  ScopedLock lock;
  return HandleOf(map, 0);
}

Module* ThisModule() noexcept {
  static const char here = 0;
  return ModuleOfAddress(&here);
}

std::u16string ModulePath(Module* module) {
  ScopedLock lock;
  if (IsKnown(module)) return FromUtf8(module->path.c_str());
  SetLastError(kErrorModuleNotFound);
  return {};
}

const void* ModuleBase(Module* module) noexcept {
  ScopedLock lock;
  return IsKnown(module) ? module->base : nullptr;
}

uint32_t ModuleBits(const char16_t* path) noexcept {
  File* file = OpenFile(path, kReadAccess, kShareRead | kShareWrite | kShareDelete, kOpenExisting);
  if (file == kInvalidFile) return 0;
  Elf32_Ehdr header{};  // Both classes agree on the fields that are looked at.
  uint32_t got = 0;
  const bool read = ReadFile(file, &header, sizeof header, &got);
  CloseFile(file);
  if (!read || got < sizeof header || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return 0;
  if (header.e_type != ET_DYN && header.e_type != ET_EXEC) return 0;
  switch (header.e_ident[EI_CLASS]) {
    case ELFCLASS32:
      return 32;
    case ELFCLASS64:
      return 64;
    default:
      return 0;
  }
}

}  // namespace plat
