// SPDX-License-Identifier: Apache-2.0
// The text of a crash, written without allocation, and the filter that shows it.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "kernel/msgbox_internal.h"
#include "marlo110k/errors.h"
#include "platform/base/codepage.h"
#include "platform/base/text.h"
#include "platform/sys/debugger.h"
#include "platform/sys/fault.h"
#include "platform/sys/module.h"
#include "platform/sys/thread.h"

namespace marlo {
namespace {

constexpr uint32_t kReservedBytes = 50;  // no line begins with less than this left
constexpr uint32_t kPointerDigits = 16;

/// Appends lines to a byte buffer, cut to fit and terminated.
class DumpWriter {
 public:
  DumpWriter(char* buffer, uint32_t size) noexcept : buffer_(buffer), size_(size) { buffer_[0] = 0; }

  uint32_t Used() const noexcept { return used_; }
  uint32_t Left() const noexcept { return size_ - used_; }

  [[gnu::format(printf, 2, 3)]] void Print(const char* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    const int bytes = std::vsnprintf(buffer_ + used_, Left(), format, arguments);
    va_end(arguments);
    if (bytes > 0) used_ += std::min(static_cast<uint32_t>(bytes), Left() - 1);
  }
  /// An address in sixteen upper-case digits.
  void PrintPointer(const void* pointer) noexcept { PrintWord(reinterpret_cast<uintptr_t>(pointer)); }
  void PrintWord(uint64_t word) noexcept {
    Print("%0*llX", static_cast<int>(kPointerDigits), static_cast<unsigned long long>(word));
  }

 private:
  char* buffer_;
  uint32_t size_;
  uint32_t used_ = 0;
};

void PrintException(DumpWriter* writer, const EXCEPTION_RECORD& record) noexcept {
  constexpr uint32_t kAccessParameters = 2;
  writer->Print("Exception 0x%X (%s)", record.ExceptionCode, plat::FaultName(record.ExceptionCode));
  if (record.NumberParameters == kAccessParameters) {
    writer->Print(" %s:0x", record.ExceptionInformation[0] == 0 ? "READ" : "WRITE");
    writer->PrintWord(record.ExceptionInformation[1]);
  }
  writer->Print(" IP:0x");
  writer->PrintPointer(record.ExceptionAddress);
  writer->Print("\r\n");
}

void PrintModule(DumpWriter* writer, const void* instruction) noexcept {
  plat::Module* module = plat::ModuleOfAddress(instruction);
  const void* base = module != nullptr ? plat::ModuleBase(module) : nullptr;
  char path[1024] = "";
  try {
    if (module != nullptr) {
      const std::u16string name = plat::ModulePath(module);
      path[plat::ToAnsi(name.c_str(), name.size(), path, sizeof path - 1)] = 0;
    }
  } catch (...) {
    // The line is worth having without the name.
  }
  writer->Print("In Module '%s' at Address 0x", path);
  writer->PrintPointer(base);
  writer->Print(" + 0x");
  writer->PrintWord(reinterpret_cast<uintptr_t>(instruction) - reinterpret_cast<uintptr_t>(base));
  writer->Print("\r\n");
}

void PrintThread(DumpWriter* writer, const char* name) noexcept {
  writer->Print("Thread: %s ID=0x%X Stack=\r\n", name != nullptr ? name : "", plat::CurrentThreadId());
}

bool IsPrintable(unsigned char byte) noexcept { return byte >= 32 && byte < 127; }

/// Memory in lines of `kItems` values of `kBytes` bytes each.
template <uint32_t kItems, uint32_t kBytes>
uint32_t DumpMemory(char* buffer, uint32_t size, const void* address, uint32_t count) noexcept {
  constexpr uint32_t kCellCharacters = kBytes * 2 + 1;
  constexpr uint32_t kLineBytes = 1 + kPointerDigits + 2 + kItems * kCellCharacters + kItems * kBytes + 2;
  if (buffer == nullptr || size == 0) return 0;
  DumpWriter writer(buffer, size);
  // A number rather than a pointer: the address may be null or wild.
  uintptr_t cursor = reinterpret_cast<uintptr_t>(address);
  while (count > 0 && writer.Left() >= kLineBytes + kReservedBytes) {
    const uint32_t items = std::min(count, kItems);
    char text[kItems * kBytes + 1] = {};
    writer.Print(" ");
    writer.PrintWord(cursor);
    writer.Print(": ");
    for (uint32_t i = 0; i < kItems; ++i) {
      unsigned char bytes[kBytes];
      if (i >= items) {
        writer.Print("%*s", static_cast<int>(kCellCharacters), "");
        continue;
      }
      const bool readable = plat::TryRead(reinterpret_cast<const void*>(cursor + i * kBytes), bytes, kBytes);
      for (uint32_t b = 0; b < kBytes; ++b) {
        // A value's digits begin with its highest byte, which stands last in memory.
        if (readable) {
          writer.Print("%02X", bytes[kBytes - 1 - b]);
        } else {
          writer.Print("..");
        }
        text[i * kBytes + b] = readable && IsPrintable(bytes[b]) ? static_cast<char>(bytes[b]) : '.';
      }
      writer.Print(" ");
    }
    writer.Print("%s\r\n", text);
    cursor += items * kBytes;
    count -= items;
  }
  return writer.Used();
}

}  // namespace
}  // namespace marlo

uint32_t ZrErrorHandler_DumpExceptionRecord(char* buffer, uint32_t size, const char* threadName,
                                            const EXCEPTION_POINTERS* pointers, uint32_t flags) noexcept {
  if (buffer == nullptr || size == 0) return 0;
  marlo::DumpWriter writer(buffer, size);
  if (pointers == nullptr || pointers->ExceptionRecord == nullptr) return 0;
  if (flags == 0) flags = ZRDUMP_ALL;
  const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
  if ((flags & ZRDUMP_EXCEPTION) != 0) marlo::PrintException(&writer, record);
  if (writer.Left() < marlo::kReservedBytes) return writer.Used();
  if ((flags & ZRDUMP_MODULE) != 0) marlo::PrintModule(&writer, record.ExceptionAddress);
  if (writer.Left() < marlo::kReservedBytes) return writer.Used();
  if ((flags & ZRDUMP_THREAD) != 0) marlo::PrintThread(&writer, threadName);
  return writer.Used();
}

uint32_t ZrErrorHandler_DumpHex(char* buffer, uint32_t size, const void* address, uint32_t bytes) noexcept {
  return marlo::DumpMemory<8, 1>(buffer, size, address, bytes);
}

uint32_t ZrErrorHandler_DumpHexDWords(char* buffer, uint32_t size, const void* address, uint32_t values) noexcept {
  return marlo::DumpMemory<4, 4>(buffer, size, address, values);
}

int32_t ZrErrorHandler_ExceptionFilter(const EXCEPTION_POINTERS* pointers, const char* threadName) noexcept {
  constexpr int32_t kSearchOn = 0;
  constexpr int32_t kExecuteHandler = 1;
  constexpr uint32_t kDumpBytes = 4096;
  if (pointers == nullptr || pointers->ExceptionRecord == nullptr) return kSearchOn;
  // The processor's handler repairs a misaligned access; that is no crash.
  if (pointers->ExceptionRecord->ExceptionCode == EXCEPTION_DATATYPE_MISALIGNMENT) return kSearchOn;
  char dump[kDumpBytes];
  const uint32_t bytes = ZrErrorHandler_DumpExceptionRecord(dump, kDumpBytes, threadName, pointers, ZRDUMP_ALL);
  if (plat::DebuggerPresent()) return kSearchOn;

  char16_t text[kDumpBytes];
  text[plat::FromAnsi(dump, bytes, text, kDumpBytes - 1)] = 0;
  ZrErrorHandler_DetailsInit();
  ZrErrorHandler_DetailsAddString(ZR_E_FAULT, u"%s", marlo::ApplicationTitle());
  ZrErrorHandler_DetailsAddString(ZR_E_FAULT, u"%s", text);
  ZrErrorHandler_MsgBoxText(kZrNoParent, ZRMB_ICONEXCLAMATION, ZrErrorHandler_GetErrorMessage(0, ZR_E_FAULT, nullptr),
                            0);
  return kExecuteHandler;
}
