// SPDX-License-Identifier: Apache-2.0
// Text in RIFF chunks: UTF-16 outside, the ANSI code page in the file.
#include <algorithm>

#include "marlo110k/riff.h"
#include "media/riff/chunk_rules.h"
#include "platform/base/codepage.h"
#include "platform/base/memory.h"
#include "platform/base/text.h"

using namespace marlo::riff;

HRESULT riff_WriteANSIString(plat::File* file, const char16_t* text, uint32_t* written) noexcept {
  if (text == nullptr) return E_INVALIDARG;
  // The page is single-byte: a byte a character, and the terminator. The block is zeroed, so one byte more is the pad.
  const size_t characters = plat::TextLength(text);
  if (characters > UINT32_MAX - 2) return E_INVALIDARG;
  const auto bytes = static_cast<uint32_t>(RiffFraming::Padded(static_cast<uint32_t>(characters) + 1));
  auto* block = static_cast<char*>(plat::AllocateZeroed(bytes));
  if (block == nullptr) return E_OUTOFMEMORY;
  plat::ToAnsi(text, characters, block, characters);
  const bool done = FileBytes(file).Write(block, bytes);
  plat::FreeBlock(block);
  if (!done) return ZR_E_FILE_WRITE;
  Store(written, bytes);
  return S_OK;
}

HRESULT riff_ReadANSIString(plat::File* file, char16_t* buffer, uint32_t characters, uint32_t* size) noexcept {
  if (buffer == nullptr || characters == 0 || size == nullptr) return E_INVALIDARG;
  const FileBytes source(file);
  uint64_t start = 0;
  if (!source.Tell(&start)) return ZR_E_FILE_READ;
  const uint32_t chunkBytes = *size;
  const uint32_t textBytes = std::min(chunkBytes, characters);
  buffer[0] = 0;
  if (textBytes != 0) {
    auto* block = static_cast<char*>(plat::AllocateZeroed(textBytes));
    if (block == nullptr) return E_OUTOFMEMORY;
    const bool done = source.Read(block, textBytes);
    if (done) {
      block[textBytes - 1] = 0;
      plat::FromAnsi(block, textBytes, buffer, characters);
      buffer[characters - 1] = 0;
    }
    plat::FreeBlock(block);
    if (!done) return ZR_E_FILE_READ;
  }
  *size = chunkBytes + 1;
  return ReadResult(source.Seek(start + RiffFraming::Padded(chunkBytes)));
}
