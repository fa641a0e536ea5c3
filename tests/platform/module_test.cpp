// SPDX-License-Identifier: Apache-2.0
// Modules, their headers and their version resources.
#include "platform/sys/module.h"

#include <elf.h>
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "marlo110k/platform/file.h"
#include "platform/sys/resource_image.h"
#include "platform/sys/versioninfo.h"
#include "testing/temp_folder.h"

namespace plat {
namespace {

using testing_support::TempFolder;

std::u16string ThisPath() { return ModulePath(ThisModule()); }

std::string ReadAll(const std::u16string& path) {
  std::ifstream in(std::filesystem::path(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST(Module, TheProcessImageAndThisModuleHaveAPathAndABase) {
  EXPECT_EQ(ProcessImage(), ThisModule()) << "the test program holds the library's objects";
  EXPECT_EQ(std::filesystem::path(ThisPath()), std::filesystem::read_symlink("/proc/self/exe"));
  const char* base = static_cast<const char*>(ModuleBase(ThisModule()));
  ASSERT_NE(base, nullptr);
  EXPECT_EQ(memcmp(base, ELFMAG, SELFMAG), 0);
  EXPECT_EQ(ModuleOfAddress(reinterpret_cast<const void*>(16)), nullptr);
}

TEST(Module, LoadsByPathWithoutCaseAndUnloads) {
  TempFolder folder;
  std::filesystem::copy(PLATFORM_PROBE_PATH, folder.Path() / "Probe.DLL");
  Module* module = LoadModule(folder.Name("PROBE.dll").c_str());
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(ModulePath(module), folder.Name("Probe.DLL"));
  void* symbol = ModuleSymbol(module, "ProbeAnswer");
  ASSERT_NE(symbol, nullptr);
  EXPECT_EQ(reinterpret_cast<int (*)()>(symbol)(), 42);
  EXPECT_EQ(ModuleSymbol(module, "NoSuchName"), nullptr);
  EXPECT_EQ(ModuleOfAddress(symbol), module);
  EXPECT_EQ(LoadModule(folder.Name("probe.dll").c_str()), module) << "one object, one handle";
  UnloadModule(module);
  EXPECT_EQ(ModulePath(module), folder.Name("Probe.DLL")) << "still loaded once";
  UnloadModule(module);
  EXPECT_EQ(ModulePath(module), u"");
  EXPECT_EQ(LastError(), 126u);
  EXPECT_EQ(ModuleSymbol(module, "ProbeAnswer"), nullptr);
  UnloadModule(module);
}

TEST(Module, WhatIsNoModuleGives126) {
  TempFolder folder;
  for (const std::u16string& path : {folder.Name("missing.dll"), folder.Put("text.dll", "no module"),
                                     folder.Path().u16string(), std::u16string(), std::u16string(u"no-such-name")}) {
    EXPECT_EQ(LoadModule(path.c_str()), nullptr);
    EXPECT_EQ(LastError(), 126u);
  }
  EXPECT_EQ(LoadModule(nullptr), nullptr);
  EXPECT_EQ(ModulePath(nullptr), u"");
  EXPECT_EQ(ModuleBase(nullptr), nullptr);
  UnloadModule(nullptr);
}

TEST(Module, BitsComeFromTheHeader) {
  TempFolder folder;
  EXPECT_EQ(ModuleBits(ThisPath().c_str()), 64u);
  std::string header = ReadAll(ThisPath()).substr(0, 64);
  header[EI_CLASS] = ELFCLASS32;
  EXPECT_EQ(ModuleBits(folder.Put("a", header).c_str()), 32u);
  header[EI_CLASS] = 3;
  EXPECT_EQ(ModuleBits(folder.Put("a", header).c_str()), 0u);
  header[EI_CLASS] = ELFCLASS64;
  header[16] = ET_REL;
  EXPECT_EQ(ModuleBits(folder.Put("a", header).c_str()), 0u);
  EXPECT_EQ(ModuleBits(folder
                           .Put("a",
                                "\x7F"
                                "ELF\x02")
                           .c_str()),
            0u);
  EXPECT_EQ(ModuleBits(folder.Put("a", "").c_str()), 0u);
  EXPECT_EQ(ModuleBits(folder.Name("missing").c_str()), 0u);
}

// ---- Version resources -----------------------------------------------------------------------------

std::u16string Value(const std::u16string& path, const char16_t* subBlock) {
  char16_t buffer[64] = u"(none)";
  return VersionValue(path.c_str(), subBlock, buffer, 64) ? buffer : u"(none)";
}

TEST(Version, TheLibraryTellsItsOwn) {
  const std::u16string path = ThisPath();
  uint16_t language = 0;
  uint16_t codePage = 0;
  ASSERT_TRUE(VersionTranslation(path.c_str(), &language, &codePage));
  EXPECT_EQ(language, 0x409);
  EXPECT_EQ(codePage, 0x4B0);
  EXPECT_EQ(Value(path, u"\\StringFileInfo\\040904B0\\ProductName"), u"Marlo Pro");
  EXPECT_EQ(Value(path, u"\\stringfileinfo\\040904b0\\COMPANYNAME"), u"Orlu Works");
  EXPECT_EQ(Value(path, u"StringFileInfo\\040904B0\\ProductVersion"), u"11.0.0.701");
  EXPECT_EQ(Value(path, u"\\StringFileInfo\\040904B0\\Missing"), u"(none)");
  EXPECT_EQ(Value(path, u"\\StringFileInfo\\040704B0\\ProductName"), u"(none)");
  char16_t cut[4];
  ASSERT_TRUE(VersionValue(path.c_str(), u"\\StringFileInfo\\040904B0\\ProductName", cut, 4));
  EXPECT_EQ(std::u16string(cut), u"Mar");
}

TEST(Version, ABareResourceFileAndA32BitModuleServeToo) {
  TempFolder folder;
  std::vector<uint8_t> resources;
  ASSERT_TRUE(ReadResources(ThisPath().c_str(), &resources));
  const std::string bytes(resources.begin(), resources.end());
  EXPECT_EQ(Value(folder.Put("a.res", bytes), u"\\StringFileInfo\\040904B0\\ProductName"), u"Marlo Pro");

  // A 32-bit module of a header, two section headers, their names and the resources.
  Elf32_Ehdr header{};
  memcpy(header.e_ident, ELFMAG, SELFMAG);
  header.e_ident[EI_CLASS] = ELFCLASS32;
  header.e_ident[EI_DATA] = ELFDATA2LSB;
  header.e_shoff = sizeof header;
  header.e_shentsize = sizeof(Elf32_Shdr);
  header.e_shnum = 2;
  const std::string names("\0.marlo_rsrc\0", 13);
  Elf32_Shdr sections[2] = {};
  sections[0].sh_offset = sizeof header + sizeof sections;
  sections[0].sh_size = static_cast<uint32_t>(names.size());
  sections[1].sh_name = 1;
  sections[1].sh_type = SHT_PROGBITS;
  sections[1].sh_offset = sections[0].sh_offset + sections[0].sh_size;
  sections[1].sh_size = static_cast<uint32_t>(bytes.size());
  const std::string image = std::string(reinterpret_cast<char*>(&header), sizeof header) +
                            std::string(reinterpret_cast<char*>(sections), sizeof sections) + names + bytes;
  EXPECT_EQ(Value(folder.Put("a.dll", image), u"\\StringFileInfo\\040904B0\\ProductName"), u"Marlo Pro");
}

TEST(Version, DamagedFilesGiveNothingAndEnd) {
  TempFolder folder;
  std::vector<uint8_t> resources;
  ASSERT_TRUE(ReadResources(ThisPath().c_str(), &resources));
  const std::string good(resources.begin(), resources.end());
  auto product = [&, files = 0](const std::string& bytes) mutable {
    // A new name each time: emptying a file that was just written makes some disks wait.
    const std::string name = std::to_string(files++);
    const std::u16string value = Value(folder.Put(name, bytes), u"\\StringFileInfo\\040904B0\\ProductName");
    std::filesystem::remove(folder.Path() / name);
    return value;
  };
  EXPECT_EQ(product(good), u"Marlo Pro");
  for (size_t cut = 0; cut < good.size(); cut += 3) EXPECT_EQ(product(good.substr(0, cut)), u"(none)") << cut;
  // Every word in turn wild: nothing may run away or read outside.
  for (size_t place = 0; place + 2 <= good.size(); place += 2) {
    for (const char* wild : {"\xFF\xFF", "\x00\x00", "\x05\x00"}) {
      std::string bad = good;
      bad.replace(place, 2, wild, 2);
      EXPECT_LT(product(bad).size(), 64u);
    }
  }
  EXPECT_EQ(Value(folder.Put("a.res", good.substr(0, 32)), u"\\VarFileInfo\\Translation"), u"(none)");
  EXPECT_EQ(Value(folder.Name("missing"), u"\\VarFileInfo\\Translation"), u"(none)");
}

}  // namespace
}  // namespace plat
