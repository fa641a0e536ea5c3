// SPDX-License-Identifier: Apache-2.0
// The text of a crash: exception, module, thread, memory that can and can't be read.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "marlo110k/errors.h"
#include "platform/base/text.h"
#include "platform/sys/fault.h"
#include "platform/sys/thread.h"

namespace {

std::string Hex(const void* pointer) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llX", static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(pointer)));
  return text;
}

void SomeCode() {}

struct Crash {
  EXCEPTION_RECORD record{};
  EXCEPTION_POINTERS pointers{&record, nullptr};
  Crash() {
    record.ExceptionCode = EXCEPTION_ACCESS_VIOLATION;
    record.ExceptionAddress = reinterpret_cast<void*>(&SomeCode);
    record.NumberParameters = 2;
    record.ExceptionInformation[0] = 1;
    record.ExceptionInformation[1] = 0x1234;
  }
};

std::string Dump(const EXCEPTION_POINTERS* pointers, uint32_t flags, uint32_t size = 4096) {
  char buffer[4096];
  std::memset(buffer, '~', sizeof buffer);
  const uint32_t bytes = ZrErrorHandler_DumpExceptionRecord(buffer, size, "worker", pointers, flags);
  EXPECT_EQ(0, buffer[bytes]);
  EXPECT_LT(bytes, size);
  if (size < sizeof buffer) {
    EXPECT_EQ('~', buffer[size]);
  }
  return buffer;
}

TEST(CrashText, Lines) {
  Crash crash;
  const std::string address = Hex(crash.record.ExceptionAddress);
  const std::string first = "Exception 0xC0000005 (access violation) WRITE:0x0000000000001234 IP:0x" + address + "\r\n";
  EXPECT_EQ(first, Dump(&crash.pointers, 1));
  crash.record.ExceptionInformation[0] = 0;
  EXPECT_EQ("Exception 0xC0000005 (access violation) READ:0x0000000000001234 IP:0x" + address + "\r\n",
            Dump(&crash.pointers, 1));
  crash.record.NumberParameters = 0;
  crash.record.ExceptionCode = 0xE0000001;
  EXPECT_EQ("Exception 0xE0000001 (Unknown Type) IP:0x" + address + "\r\n", Dump(&crash.pointers, 1));

  char id[16];
  std::snprintf(id, sizeof id, "%X", plat::CurrentThreadId());
  EXPECT_EQ(std::string("Thread: worker ID=0x") + id + " Stack=\r\n", Dump(&crash.pointers, 0x20));

  const std::string module = Dump(&crash.pointers, 2);
  EXPECT_EQ(0U, module.find("In Module '")) << module;
  unsigned long long base = 0;
  unsigned long long offset = 0;
  ASSERT_EQ(2, std::sscanf(module.c_str() + module.find("' at "), "' at Address 0x%16llX + 0x%16llX", &base, &offset))
      << module;
  EXPECT_EQ(reinterpret_cast<uintptr_t>(&SomeCode), base + offset);
  EXPECT_EQ(Dump(&crash.pointers, 1) + module + Dump(&crash.pointers, 0x20), Dump(&crash.pointers, 0));
}

TEST(CrashText, NamesOfExceptions) {
  const struct {
    uint32_t code;
    const char* name;
  } kRows[] = {
      {0x80000001, "guard page violation"},
      {0x80000002, "datatype misalignment"},
      {0x80000003, "breakpoint"},
      {0x80000004, "single step"},
      {0xC0000005, "access violation"},
      {0xC0000006, "in page error"},
      {0xC0000008, "invalid handle"},
      {0xC0000017, "no memory"},
      {0xC000001D, "illegal instruction"},
      {0xC0000025, "noncontinuable exception"},
      {0xC0000026, "invalid disposition"},
      {0xC000008C, "array bounds exceeded"},
      {0xC000008D, "float denormal operand"},
      {0xC000008E, "float divide by zero"},
      {0xC000008F, "float inexact result"},
      {0xC0000090, "float invalid operation"},
      {0xC0000091, "float overflow"},
      {0xC0000092, "float stack check"},
      {0xC0000093, "float underflow"},
      {0xC0000094, "integer divide by zero"},
      {0xC0000095, "integer overflow"},
      {0xC0000096, "privileged instruction"},
      {0xC00000FD, "stack overflow"},
      {0xC000013A, "control+c exit"},
      {0x12345678, "Unknown Type"},
  };
  for (const auto& row : kRows) EXPECT_STREQ(row.name, plat::FaultName(row.code)) << std::hex << row.code;
}

TEST(CrashText, StopsWhenTheBufferIsNearlyFull) {
  const Crash crash;
  const std::string whole = Dump(&crash.pointers, 0);
  const size_t firstLine = whole.find('\n') + 1;
  for (uint32_t size = 1; size < 600; ++size) {
    const std::string text = Dump(&crash.pointers, 0, size);
    EXPECT_EQ(whole.substr(0, text.size()), text);
    if (size > firstLine && size - firstLine < 50) {
      EXPECT_EQ(firstLine, text.size()) << size;
    }
  }
  char buffer[8] = "~";
  EXPECT_EQ(0U, ZrErrorHandler_DumpExceptionRecord(buffer, 8, nullptr, nullptr, 0));
  EXPECT_EQ(0U, ZrErrorHandler_DumpExceptionRecord(nullptr, 8, nullptr, &crash.pointers, 0));
}

TEST(CrashText, MemoryThatCanBeRead) {
  alignas(8) const unsigned char memory[] = {'A', 'b', 0x1F, 0x20, 0x7E, 0x7F, 0xFF, 0x00, '8', '9', '!'};
  char buffer[512];
  const uint32_t bytes = ZrErrorHandler_DumpHex(buffer, sizeof buffer, memory, sizeof memory);
  EXPECT_EQ(" " + Hex(memory) + ": 41 62 1F 20 7E 7F FF 00 Ab. ~...\r\n " + Hex(memory + 8) +
                ": 38 39 21                89!\r\n",
            buffer);
  EXPECT_EQ(std::strlen(buffer), bytes);

  const uint32_t values = ZrErrorHandler_DumpHexDWords(buffer, sizeof buffer, memory, 2);
  EXPECT_EQ(" " + Hex(memory) + ": 201F6241 00FF7F7E                   Ab. ~...\r\n", buffer);
  EXPECT_EQ(std::strlen(buffer), values);
  EXPECT_EQ(0U, ZrErrorHandler_DumpHex(buffer, sizeof buffer, memory, 0));
  EXPECT_EQ(0, buffer[0]);
}

TEST(CrashText, MemoryThatCannotBeRead) {
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  char* memory =
      static_cast<char*>(mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  ASSERT_NE(MAP_FAILED, memory);
  std::memset(memory, 'x', 2 * page);
  ASSERT_EQ(0, mprotect(memory + page, page, PROT_NONE));
  const char* edge = memory + page - 4;
  char buffer[512];
  ZrErrorHandler_DumpHex(buffer, sizeof buffer, edge, 8);
  EXPECT_EQ(" " + Hex(edge) + ": 78 78 78 78 .. .. .. .. xxxx....\r\n", buffer);
  ZrErrorHandler_DumpHexDWords(buffer, sizeof buffer, edge, 2);
  EXPECT_EQ(" " + Hex(edge) + ": 78787878 ........                   xxxx....\r\n", buffer);
  ZrErrorHandler_DumpHex(buffer, sizeof buffer, nullptr, 2);
  EXPECT_STREQ(" 0000000000000000: .. ..                   ..\r\n", buffer);
  munmap(memory, 2 * page);
}

TEST(CrashText, MemoryLinesKeepAwayFromTheEnd) {
  // A line of bytes takes 53 of them, and 50 stay free behind it.
  char memory[64] = {};
  char buffer[256];
  const struct {
    uint32_t size;
    uint32_t lines;
  } kRows[] = {{1, 0}, {102, 0}, {103, 1}, {155, 1}, {156, 2}};
  for (const auto& row : kRows) {
    EXPECT_EQ(row.lines * 53, ZrErrorHandler_DumpHex(buffer, row.size, memory, sizeof memory)) << row.size;
  }
  EXPECT_EQ(0U, ZrErrorHandler_DumpHex(nullptr, 100, memory, 8));
  EXPECT_EQ(0U, ZrErrorHandler_DumpHex(buffer, 0, memory, 8));
}

std::u16string shownText;
uint32_t shownFlags;

uint32_t Show(void*, HZRWINDOW, const char16_t* text, const char16_t*, uint32_t flags) {
  shownText = text;
  shownFlags = flags;
  return ZRID_OK;
}

TEST(CrashText, FilterShowsTheDump) {
  ZrMsgBoxSetAppData(nullptr, nullptr, u"Studio 100%");
  ZrMsgBoxSetHook(Show, nullptr);
  Crash crash;
  EXPECT_EQ(1, ZrErrorHandler_ExceptionFilter(&crash.pointers, "worker"));
  EXPECT_EQ(
      u"An error occurred during the current operation.\n\nAn Exception has occurred.\r\n<Details>\r\n"
      u"Studio 100%\r\n" +
          plat::FromUtf8(Dump(&crash.pointers, 0).c_str()) + u"\r\n\r\n</Details>",
      shownText);
  EXPECT_EQ(0xC030U, shownFlags);
  EXPECT_EQ(nullptr, ZrErrorHandler_DetailsInfo(nullptr, nullptr, nullptr));

  shownText.clear();
  crash.record.ExceptionCode = EXCEPTION_DATATYPE_MISALIGNMENT;
  EXPECT_EQ(0, ZrErrorHandler_ExceptionFilter(&crash.pointers, "worker"));
  EXPECT_EQ(0, ZrErrorHandler_ExceptionFilter(nullptr, "worker"));
  EXPECT_EQ(u"", shownText);
  ZrMsgBoxSetHook(nullptr, nullptr);
}

}  // namespace
