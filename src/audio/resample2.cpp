// SPDX-License-Identifier: Apache-2.0
// The second resampler: opening, changing, and the process call around its floating-point core.
#include "audio/resample2.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "audio/sample_rules.h"

namespace marlo {

void* WorkBuffer::Need(size_t bytes) noexcept {
  if (bytes > size_) {
    auto* larger = new (std::nothrow) uint8_t[bytes];
    if (larger == nullptr) return nullptr;
    delete[] bytes_;
    bytes_ = larger;
    size_ = bytes;
  }
  return bytes_;
}

namespace {

constexpr uint32_t kOpenLimit = 0x100000;
constexpr uint32_t kResetLimit = 22;
constexpr double kExactError = 1e-20;
constexpr double kRatioLimit = 1e6;

struct TypeFacts {
  uint32_t bytes = 0;
  bool isFloat = false;
  int bits = 0;
};

bool FactsOf(uint32_t sampleType, TypeFacts& facts) {
  return VisitRule(MemoryRules{}, sampleType, [&](auto rule) {
    using Rule = decltype(rule);
    facts.bytes = Rule::kBytes;
    facts.isFloat = !Rule::kInteger;
    if constexpr (Rule::kInteger) facts.bits = Rule::kBits;
  });
}

/// Chooses the type the kernels run on, and the copies to it and back.
HRESULT ChooseWorkType(tZRRESAMPLE2& state) {
  TypeFacts facts;
  if (!FactsOf(state.sampleType, facts)) return E_INVALIDARG;
  state.frameBytes = facts.bytes * static_cast<uint32_t>(state.channels);
  state.workType = state.sampleType;
  state.copyIn = state.copyOut = nullptr;
  const bool plainLines = state.mode == ZRRESAMPLE2_LINEAR && state.filterCode == 0;
  if (!facts.isFloat && !plainLines) {
    state.workType = facts.bits <= 24 ? ZRSAMPLETYPE_FLOAT32 : ZRSAMPLETYPE_FLOAT64;
    state.copyIn = ZrAudio_GetCopyFunction2(state.workType, state.sampleType);
    state.copyOut = ZrAudio_GetCopyFunction2(state.sampleType, state.workType);
    if (state.copyIn == nullptr || state.copyOut == nullptr) return E_NOTIMPL;
  } else if (facts.isFloat && state.filterCode != 0 && state.GoesDown()) {
    // The filter works in place, and the caller's block stays as it is.
    state.copyIn = ZrAudio_GetCopyFunction2(state.workType, state.sampleType);
    if (state.copyIn == nullptr) return E_NOTIMPL;
  }
  FactsOf(state.workType, facts);
  state.workFrameBytes = facts.bytes * static_cast<uint32_t>(state.channels);
  return S_OK;
}

bool DesignFilter(tZRRESAMPLE2& state, bool clear) {
  uint32_t order = 0;
  switch (state.filterCode) {
    case ZRRESAMPLE2_FILTER_4:
      order = 4;
      break;
    case ZRRESAMPLE2_FILTER_8:
      order = 8;
      break;
    case ZRRESAMPLE2_FILTER_11:
      order = 11;
      break;
    default:
      state.filter.Free();
      return true;
  }
  const double cutOff = 0.95 * 0.5 * std::min(state.ratio, 1 / state.ratio);
  return state.filter.Design(ZRIIR_BUTTERWORTH, order, cutOff, state.channels, clear,
                             (state.flags & ZRRESAMPLE2_SCALAR) != 0);
}

bool MakeRing(tZRRESAMPLE2& state) {
  delete[] state.ring;
  state.ring = new (std::nothrow) double[2 * kSincTaps * static_cast<size_t>(state.channels)]();
  if (state.ring != nullptr && state.sincEntries == nullptr) {
    state.sincEntries = new (std::nothrow) SincEntry[kSecondTableEntries + 1];
    if (state.sincEntries != nullptr) {
      FillSincEntries(state.sincEntries, kSecondTableEntries);
      state.sincEntries[kSecondTableEntries] = state.sincEntries[kSecondTableEntries - 1];
    }
  }
  return state.ring != nullptr && state.sincEntries != nullptr;
}

/// The ring's frames are stale, or there never were any: the next outputs wait for new ones.
void StartRing(tZRRESAMPLE2& state) {
  state.framesNeeded = state.mode == ZRRESAMPLE2_SINC ? kSincCrossings : kCubicNeed;
  state.tailLeft = state.framesNeeded;
  state.ringHead = 0;
  std::fill_n(state.ring, 2 * kSincTaps * state.channels, 0.0);
}

void ClearStream(tZRRESAMPLE2& state) {
  state.position.rational = state.linearRational = 0;
  state.position.real = state.linearReal = 0;
  std::fill_n(state.lastFrame, kMaxResampleChannels, 0.0);
  state.srcPos = state.dstPos = 0;
  state.filter.ClearDelays();
  StartRing(state);
}

void SetFraction(tZRRESAMPLE2& state, int64_t num, int64_t den) {
  StreamPosition& position = state.position;
  const double fraction = position.Fraction();
  const double linear = position.isRational
                            ? static_cast<double>(state.linearRational) / static_cast<double>(position.num)
                            : state.linearReal;
  position.isRational = true;
  position.num = num;
  position.den = den;
  state.ratio = static_cast<double>(num) / static_cast<double>(den);
  position.inverse = static_cast<double>(den) / static_cast<double>(num);
  position.rational = std::clamp<int64_t>(std::llround(fraction * static_cast<double>(num)), 0, num - 1);
  state.linearRational = std::llround(linear * static_cast<double>(num));
}

void SetRatio(tZRRESAMPLE2& state, double ratio, uint32_t limit) {
  int64_t num;
  int64_t den;
  double error;
  if (ZrRatApprox(ratio, limit, 1, &num, &den, &error) && std::abs(error) < kExactError && num > 0 && den > 0) {
    SetFraction(state, num, den);
    return;
  }
  StreamPosition& position = state.position;
  if (position.isRational) {
    position.real = position.Fraction();
    state.linearReal = static_cast<double>(state.linearRational) / static_cast<double>(position.num);
  }
  position.isRational = false;
  state.ratio = ratio;
  position.inverse = 1 / ratio;
}

bool IsRatio(double ratio) { return ratio >= 1 / kRatioLimit && ratio <= kRatioLimit; }

/// What an open or reset call asks for; 0 leaves a value alone.
struct Request {
  uint32_t sampleType = 0;
  int32_t channels = 0;
  double ratio = 0;
  uint32_t limit = kOpenLimit;
  int64_t num = 0;
  int64_t den = 0;
  uint32_t flags = 0;
};

HRESULT Apply(tZRRESAMPLE2& state, const Request& request, bool clear) {
  const bool sizeChanges = request.channels != 0 && request.channels != state.channels;
  if (request.channels != 0) {
    if (request.channels < 1 || request.channels > kMaxResampleChannels) return E_INVALIDARG;
    state.channels = request.channels;
  }
  if (request.sampleType != 0) state.sampleType = request.sampleType;
  if (request.flags != 0) {
    const uint32_t oldMode = state.mode;
    state.flags = request.flags;
    state.mode = request.flags & ZRRESAMPLE2_MODE_MASK;
    state.filterCode = request.flags & ZRRESAMPLE2_FILTER_MASK;
    clear = clear || oldMode != state.mode;
  }
  if (request.num != 0) {
    SetFraction(state, request.num, request.den);
  } else if (request.ratio != 0) {
    if (!IsRatio(request.ratio)) return E_INVALIDARG;
    SetRatio(state, request.ratio, request.limit);
  }
  const HRESULT result = ChooseWorkType(state);
  if (FAILED(result)) return result;
  if (sizeChanges || state.ring == nullptr) {
    if (!MakeRing(state)) return E_OUTOFMEMORY;
    clear = true;
  }
  if (!DesignFilter(state, clear)) return E_OUTOFMEMORY;
  if (clear) ClearStream(state);
  return S_OK;
}

HRESULT Open(tZRRESAMPLE2** instance, const Request& request) {
  if (instance == nullptr) return E_INVALIDARG;
  *instance = nullptr;
  if (request.channels == 0 || request.sampleType == 0 || (request.num == 0 && request.ratio == 0)) return E_INVALIDARG;
  auto* state = new (std::nothrow) tZRRESAMPLE2;
  if (state == nullptr) return E_OUTOFMEMORY;
  const HRESULT result = Apply(*state, request, true);
  if (FAILED(result)) {
    ZrAudio_Resample2Close(state);
    return result;
  }
  *instance = state;
  return S_OK;
}

HRESULT Reset(tZRRESAMPLE2* instance, const Request& request, bool clear) {
  if (instance == nullptr) return E_INVALIDARG;
  const HRESULT result = Apply(*instance, request, clear);
  if (FAILED(result)) ZrAudio_Resample2Close(instance);
  return result;
}

void FilterWork(tZRRESAMPLE2& state, void* frames, int64_t count) {
  if (state.workType == ZRSAMPLETYPE_FLOAT32) {
    state.filter.Process(static_cast<float*>(frames), count);
  } else if (state.workType == ZRSAMPLETYPE_FLOAT64) {
    state.filter.Process(static_cast<double*>(frames), count);
  }
}

}  // namespace
}  // namespace marlo

using namespace marlo;

bool tZRRESAMPLE2::IsWholeInverse() const {
  if (position.isRational) return position.den % position.num == 0;
  return position.inverse == std::floor(position.inverse);
}

HRESULT ZrAudio_Resample2OpenEx(tZRRESAMPLE2** instance, uint32_t sampleType, int32_t channels, double ratio,
                                uint32_t flags) noexcept {
  Request request;
  request.sampleType = sampleType;
  request.channels = channels;
  request.ratio = ratio;
  request.flags = flags;
  return Open(instance, request);
}

HRESULT ZrAudio_Resample2Open(tZRRESAMPLE2** instance, uint32_t sampleType, int32_t channels, int32_t srcRate,
                              int32_t dstRate, uint32_t flags) noexcept {
  Request request;
  request.sampleType = sampleType;
  request.channels = channels;
  request.flags = flags;
  if (srcRate > 0 && dstRate > 0) {
    request.num = dstRate;
    request.den = srcRate;
  }
  return Open(instance, request);
}

void ZrAudio_Resample2Close(tZRRESAMPLE2* instance) noexcept {
  if (instance == nullptr) return;
  delete[] instance->ring;
  delete[] instance->sincEntries;
  delete instance;
}

HRESULT ZrAudio_Resample2ResetEx(tZRRESAMPLE2* instance, uint32_t sampleType, int32_t channels, double ratio,
                                 uint32_t flags, int32_t clear) noexcept {
  Request request;
  request.sampleType = sampleType;
  request.channels = channels;
  request.ratio = ratio;
  request.limit = kResetLimit;
  request.flags = flags;
  return Reset(instance, request, clear != 0);
}

HRESULT ZrAudio_Resample2Reset(tZRRESAMPLE2* instance, uint32_t sampleType, int32_t channels, int32_t srcRate,
                               int32_t dstRate, uint32_t flags, int32_t clear) noexcept {
  Request request;
  request.sampleType = sampleType;
  request.channels = channels;
  request.flags = flags;
  if (srcRate > 0 && dstRate > 0) {
    request.num = dstRate;
    request.den = srcRate;
  }
  return Reset(instance, request, clear != 0);
}

HRESULT ZrAudio_Resample2Process(tZRRESAMPLE2* instance, void* dest, int64_t destFrames, int64_t* destDone,
                                 const void* source, int64_t sourceFrames, int64_t* sourceDone) noexcept {
  if (destDone == nullptr || sourceDone == nullptr) return E_POINTER;
  *destDone = *sourceDone = 0;
  if (instance == nullptr || destFrames < 0 || sourceFrames < 0) return E_INVALIDARG;
  tZRRESAMPLE2& state = *instance;
  if (state.ratio == 1) {
    const int64_t frames = std::min(destFrames, sourceFrames);
    *destDone = source == dest ? destFrames : frames;
    *sourceDone = source == dest ? sourceFrames : frames;
    if (source != dest && frames > 0) std::memcpy(dest, source, static_cast<size_t>(frames) * state.frameBytes);
    state.srcPos += *sourceDone;
    state.dstPos += *destDone;
    return S_OK;
  }
  if (destFrames == 0) return S_OK;
  const bool flush = sourceFrames == 0;
  if (dest == nullptr || (source == nullptr && !flush)) return E_POINTER;
  const uint32_t mode = state.ModeInUse();
  // No more than is needed: what a downward filter has passed over can't come again.
  const int64_t offered = std::min(sourceFrames, ZrAudio_Resample2GetSrcFromDst(instance, destFrames));

  const void* workSource = source;
  ZRAUDIOCOPYFUNCTION copyIn = state.copyIn;
  if (copyIn == nullptr && source == dest) copyIn = ZrAudio_GetCopyFunction2(state.workType, state.sampleType);
  if (copyIn != nullptr && offered > 0) {
    void* buffer = state.inBuffer.Need(static_cast<size_t>(offered) * state.workFrameBytes);
    if (buffer == nullptr) return E_OUTOFMEMORY;
    copyIn(buffer, source, offered * state.channels, 1.0f);
    workSource = buffer;
  }
  void* workDest = dest;
  if (state.copyOut != nullptr) {
    workDest = state.outBuffer.Need(static_cast<size_t>(destFrames) * state.workFrameBytes);
    if (workDest == nullptr) return E_OUTOFMEMORY;
  }
  if (state.GoesDown() && state.filter.IsOn() && offered > 0) FilterWork(state, const_cast<void*>(workSource), offered);
  KernelCall call = {workSource, offered, workDest, destFrames, flush, 0, 0};
  if (!RunKernel(state, mode, state.workType, call)) return E_NOTIMPL;
  if (!state.GoesDown() && state.filter.IsOn()) FilterWork(state, workDest, call.made);
  if (state.copyOut != nullptr) state.copyOut(dest, workDest, call.made * state.channels, 1.0f);
  state.srcPos += call.taken;
  state.dstPos += call.made;
  *destDone = call.made;
  *sourceDone = call.taken;
  return S_OK;
}

int64_t ZrAudio_Resample2GetSrcFromDst(const tZRRESAMPLE2* instance, int64_t destFrames) noexcept {
  if (instance == nullptr || destFrames <= 0) return 0;
  const tZRRESAMPLE2& state = *instance;
  if (state.ratio == 1) return destFrames;
  const StreamPosition& position = state.position;
  const bool lines = state.ModeInUse() == ZRRESAMPLE2_LINEAR;
  int64_t frame;
  bool whole;
  if (position.isRational) {
    const int64_t place = (destFrames - 1) * position.den + (lines ? state.linearRational : position.rational);
    frame = place / position.num - (place % position.num < 0);
    whole = place % position.num == 0;
  } else {
    const double place =
        static_cast<double>(destFrames - 1) * position.inverse + (lines ? state.linearReal : position.real);
    frame = FloorPosition(place);
    whole = place == static_cast<double>(frame);
  }
  if (lines) return std::max<int64_t>(0, frame + (whole ? 1 : 2));
  return frame + state.framesNeeded;
}

int64_t ZrAudio_Resample2GetSrcPos(const tZRRESAMPLE2* instance) noexcept {
  return instance == nullptr ? 0 : instance->srcPos;
}

int64_t ZrAudio_Resample2GetDstPos(const tZRRESAMPLE2* instance) noexcept {
  return instance == nullptr ? 0 : instance->dstPos;
}
