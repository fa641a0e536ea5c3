// SPDX-License-Identifier: Apache-2.0
// The peak object's own facts: references, names, validity, the header's upkeep.
#include "media/peak/audio_peak.h"

#include <algorithm>
#include <cstring>

#include "marlo110k/waveformat.h"
#include "platform/base/dos_time.h"
#include "platform/base/memory.h"
#include "platform/base/text.h"
#include "platform/sys/file_backend.h"

namespace marlo::peak {
namespace {

constexpr uint32_t kFirstTemporaryName = 1;
constexpr uint32_t kLastTemporaryName = 10000;
/// Characters of a media path that count towards the peak file's name.
constexpr size_t kMostMediaPath = 254;

/// Names that this process has tried for temporary files. Once it is used up there are no more.
constinit std::atomic<uint32_t> temporaryNames{0};

/// Appends within the room of a path.
void Append(char16_t* path, const char16_t* text) noexcept {
  const size_t length = plat::TextLength(path);
  plat::CopyText(path + length, kPathCharacters - length, text);
}

/// A number in decimal, with zeros in front up to `digits`.
void AppendNumber(char16_t* path, uint32_t number, int digits) noexcept {
  char16_t text[12];
  char16_t* at = text + 11;
  *at = 0;
  for (int written = 0; number != 0 || written < std::max(digits, 1); number /= 10, ++written) {
    *--at = static_cast<char16_t>(u'0' + number % 10);
  }
  Append(path, at);
}

}  // namespace

AudioPeak::AudioPeak(CZrAudioPeakStreamReader* reader, bool owned, const Wishes& wishes) noexcept
    : reader_(reader),
      ownsReader_(owned),
      flags_(wishes.flags),
      wishedInterval_(IsInterval(wishes.fileInterval) ? wishes.fileInterval : 256),
      wishedMemoryInterval_(wishes.memoryInterval),
      temporary_((wishes.flags & ZRAUDIOPEAK_TEMPORARY) != 0) {
  file_.readOnly = (flags_ & ZRAUDIOPEAK_READONLY) != 0;
  file_.shareWrite = (flags_ & ZRAUDIOPEAK_SHAREWRITE) != 0;
  file_.hidden = (flags_ & ZRAUDIOPEAK_HIDDEN) != 0;
  if (wishes.temporaryFolder != nullptr) {
    plat::CopyText(temporaryFolder_, kPathCharacters, wishes.temporaryFolder);
  } else if (!plat::GetTempFolder(temporaryFolder_, kPathCharacters)) {
    plat::CopyText(temporaryFolder_, kPathCharacters, u"C:\\");
  }
}

AudioPeak::~AudioPeak() {
  DropMemoryCopy();
  file_.Close();
  if (temporary_ && !IsMemoryInstance() && file_.path[0] != 0) plat::RemoveFile(file_.path);
  if (ownsReader_) reader_->DeleteSelf(1);
}

HRESULT AudioPeak::QueryInterface(REFIID iid, void** object) {
  if (object == nullptr) return E_POINTER;
  *object = iid == IID_IUnknown || iid == IID_IZrAudioPeak ? static_cast<IZrAudioPeak*>(this) : nullptr;
  if (*object == nullptr) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

uint32_t AudioPeak::AddRef() { return references_.fetch_add(1, std::memory_order_relaxed) + 1; }

uint32_t AudioPeak::Release() {
  const uint32_t left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (left == 0) delete this;
  return left;
}

// ---- The file's name ---------------------------------------------------------------------------------

HRESULT AudioPeak::FindTemporaryName(char16_t* name) noexcept {
  for (;;) {
    const uint32_t number = temporaryNames.fetch_add(1, std::memory_order_relaxed) + kFirstTemporaryName;
    if (number >= kLastTemporaryName) {
      temporaryNames.store(kLastTemporaryName, std::memory_order_relaxed);
      name[0] = 0;
      return E_FAIL;
    }
    plat::CopyText(name, kPathCharacters, temporaryFolder_);
    const size_t length = plat::TextLength(name);
    if (length > 0 && name[length - 1] != u'/' && name[length - 1] != u'\\') Append(name, u"/");
    Append(name, u"ZRK");
    AppendNumber(name, number, 4);
    Append(name, u".TMP");
    if (!plat::FileExists(name)) return S_OK;
  }
}

HRESULT AudioPeak::FindName() noexcept {
  if (IsMemoryInstance()) return E_FAIL;
  char16_t* name = file_.path;
  if (name[0] != 0) return S_OK;
  if (temporary_) return FindTemporaryName(name);

  const HRESULT named = reader_->GetName(name, kMostMediaPath + 1, 1);
  if (FAILED(named) || name[0] == 0) {
    name[0] = 0;
    return E_FAIL;
  }
  const size_t length = plat::TextLength(name);
  if (length >= 4 && plat::CompareTextNoCase(name + length - 4, u".wav") == 0) name[length - 4] = 0;
  char16_t suffix[kPathCharacters] = u".zrk";
  const int32_t stream = reader_->GetStreamIndex();
  if (stream >= 0) AppendNumber(suffix, static_cast<uint32_t>(stream), 1);
  name[std::min(plat::TextLength(name), kPathCharacters - 1 - plat::TextLength(suffix))] = 0;
  Append(name, suffix);
  if ((flags_ & ZRAUDIOPEAK_EXISTING) != 0 && !plat::FileExists(name)) return FindTemporaryName(name);
  return S_OK;
}

HRESULT AudioPeak::GetPeakFileName(char16_t* buffer, uint32_t characters) {
  if (buffer != nullptr && characters > 0) buffer[0] = 0;
  const HRESULT result = FindName();
  if (FAILED(result) || buffer == nullptr) return result;
  plat::CopyText(buffer, characters, file_.path);
  return plat::TextLength(file_.path) < characters ? S_OK : ZR_E_BUFFER_TOO_SMALL;
}

// ---- Validity and the header -------------------------------------------------------------------------

bool AudioPeak::OpenFile() noexcept {
  if (IsMemoryInstance()) return false;
  if (file_.IsOpen()) return true;
  return SUCCEEDED(FindName()) && file_.Open();
}

bool AudioPeak::MediaTimes(uint32_t* local, uint32_t* utc) noexcept {
  char16_t media[kPathCharacters];
  uint64_t ticks = 0;
  *local = *utc = 0;
  if (FAILED(reader_->GetName(media, kPathCharacters, 1)) || !plat::GetFileWriteTime(media, &ticks)) return false;
  const plat::DosMoment moment = plat::DosMomentOf(ticks);
  *local = moment.local;
  *utc = moment.utc;
  return true;
}

bool AudioPeak::IsValid() noexcept {
  const tZRAUDIOPEAK_HEADER& header = file_.header;
  if (IsMemoryInstance()) return memory_ != nullptr;
  if (!file_.IsUsable(Channels())) return false;
  uint32_t local = 0;
  uint32_t utc = 0;
  if (!MediaTimes(&local, &utc)) return false;
  const bool inTime = header.mediaTimeUtc != 0 ? header.mediaTimeUtc == utc : header.mediaTimeLocal == local;
  return inTime && header.samples == reader_->GetLength();
}

int32_t AudioPeak::IsPeakFileValid() {
  const Session session(*this);
  if (!IsMemoryInstance() && !OpenFile()) return 0;
  return IsValid() ? 1 : 0;
}

HRESULT AudioPeak::UpdateHeader() noexcept {
  if (IsMemoryInstance()) return S_OK;
  tZRAUDIOPEAK_HEADER& header = file_.header;
  uint32_t local = 0;
  uint32_t utc = 0;
  MediaTimes(&local, &utc);
  const bool sameTime = header.mediaTimeUtc != 0 ? header.mediaTimeUtc == utc : header.mediaTimeLocal == local;
  if (!file_.dirty && sameTime) return S_OK;
  if (!file_.IsOpen()) return E_UNEXPECTED;
  header.mediaTimeLocal = local;
  header.mediaTimeUtc = utc;
  file_.dirty = true;
  return file_.WriteHeader();
}

HRESULT AudioPeak::Flush() {
  const Session session(*this);
  if (IsMemoryInstance()) return S_OK;
  const bool readOnly = file_.readOnly;
  if (readOnly) file_.Close();
  file_.readOnly = false;
  HRESULT result = E_UNEXPECTED;
  // A header that isn't one must not get a time that makes it look cared for.
  if (!OpenFile() || OpenUsableFile()) result = UpdateHeader();
  file_.readOnly = readOnly;
  if (readOnly) file_.Close();
  return result;
}

HRESULT AudioPeak::SetPeakLength(int64_t samples) {
  const Session session(*this);
  if (file_.readOnly || IsMemoryInstance()) return E_FAIL;
  if (samples < 0) return E_INVALIDARG;
  if (!OpenFile()) return ZR_E_FILE_OPEN;
  if (!file_.IsUsable(Channels())) return E_UNEXPECTED;
  const HRESULT cut = file_.SetEntries(EntriesFor(samples, file_.header.interval));
  if (FAILED(cut)) return cut;
  file_.header.samples = samples;
  file_.dirty = true;
  DropMemoryCopy();
  begun_.position = -1;
  return UpdateHeader();
}

// ---- Facts -------------------------------------------------------------------------------------------

HRESULT AudioPeak::PrepareAccess(uint32_t /*reserved*/) { return S_OK; }

HRESULT AudioPeak::GetStreamReader(CZrAudioPeakStreamReader** reader) {
  if (reader == nullptr) return E_POINTER;
  *reader = reader_;
  return S_OK;
}

HRESULT AudioPeak::GetPeakHeader(void* buffer, uint32_t bytes) {
  if (buffer == nullptr) return E_POINTER;
  std::memset(buffer, 0, bytes);
  std::memcpy(buffer, &file_.header, std::min<size_t>(bytes, sizeof file_.header));
  return S_OK;
}

HRESULT AudioPeak::SetKeepOpen(int32_t keep, int32_t openNow) {
  keepOpen_ = keep != 0;
  if (openNow != 0) return OpenFile() ? S_OK : ZR_E_FILE_OPEN;
  if (!keepOpen_) file_.Close();
  return S_OK;
}

HRESULT AudioPeak::GetPeakInfo(uint32_t* sampleType, int32_t* interval, uint32_t* peakType, int32_t* memoryInterval,
                               uint32_t* memoryPeakType) {
  const Session session(*this);
  const bool usable = OpenUsableFile();
  if (sampleType != nullptr) *sampleType = ZrAudio_GetSampleType(reader_->GetFormat());
  if (interval != nullptr) *interval = usable ? static_cast<int32_t>(file_.header.interval) : wishedInterval_;
  if (peakType != nullptr) *peakType = usable ? file_.PeakType() : 0;
  if (memoryInterval != nullptr) *memoryInterval = static_cast<int32_t>(memory_ != nullptr ? memoryInterval_ : 0);
  if (memoryPeakType != nullptr) *memoryPeakType = memory_ != nullptr ? ZRSAMPLETYPE_PCM16 : ZRSAMPLETYPE_NONE;
  return S_OK;
}

HRESULT AudioPeak::Reserved17() { return E_NOTIMPL; }

HRESULT AudioPeak::HandleMediaRename(const char16_t* mediaPath) noexcept {
  const Session session(*this);
  file_.Close();
  char16_t former[kPathCharacters];
  plat::CopyText(former, kPathCharacters, file_.path);
  const HRESULT renamed = reader_->Rename(mediaPath);
  if (FAILED(renamed)) return renamed;
  if (temporary_ || IsMemoryInstance()) {
    OpenFile();
    return S_OK;
  }
  file_.path[0] = 0;
  FindName();
  if (former[0] != 0 && plat::FileExists(former) && !plat::MoveFileOver(former, file_.path)) {
    plat::CopyText(file_.path, kPathCharacters, former);
    OpenFile();
    return ZR_E_FILE_WRITE;
  }
  OpenFile();
  return S_OK;
}

}  // namespace marlo::peak
