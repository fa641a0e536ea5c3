// SPDX-License-Identifier: Apache-2.0
// The first resampler: opening, changing, counting frames, and the block call.
#include "audio/resample.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "audio/sample_rules.h"
#include "marlo110k/waveformat.h"

namespace marlo {
namespace {

constexpr uint32_t kFilterShift = 4;
constexpr double kRatioLimit = 1e6;  ///< Beyond this a block can't be counted in 64 bits.

bool IsResampleType(uint32_t sampleType) {
  return VisitRule(MemoryRules{}, sampleType, [](auto) {});
}

uint32_t BytesOf(uint32_t sampleType) {
  uint32_t bytes = 0;
  VisitRule(MemoryRules{}, sampleType, [&](auto rule) { bytes = decltype(rule)::kBytes; });
  return bytes;
}

/// Integer types have neither filter nor sinc.
void RestrictToType(tZRRESAMPLEINSTANCE& instance) {
  if (instance.IsFloatType()) return;
  if (instance.quality == ZRRESAMPLE_SINC || instance.filterCode != 0) instance.quality = ZRRESAMPLE_LINEAR_FILTERED;
  instance.filterCode = 0;
}

bool DesignFilter(tZRRESAMPLEINSTANCE& instance, bool clear) {
  if (instance.filterCode == 0) {
    instance.filter.Free();
    return true;
  }
  const uint32_t order = 2 * (instance.filterCode >> kFilterShift);
  const double cutOff = 0.5 * std::min(instance.ratio, 1 / instance.ratio);
  return instance.filter.Design(ZRIIR_CHEBYSHEV, order, cutOff, instance.channels, clear, false);
}

bool MakeHistory(tZRRESAMPLEINSTANCE& instance) {
  delete[] instance.sinc.frames;
  instance.sinc = SincHistory();
  if (instance.quality != ZRRESAMPLE_SINC) return true;
  instance.sinc.frames = new (std::nothrow) double[2 * kSincRingFrames * static_cast<size_t>(instance.channels)]();
  SharedSincTable();  // Built at the first open, not at the first block.
  return instance.sinc.frames != nullptr;
}

void ClearStream(tZRRESAMPLEINSTANCE& instance) {
  std::fill_n(instance.lastFrame, kMaxResampleChannels, 0.0);
  instance.phase = 0;
  instance.intPhase = 0;
  instance.srcPos = instance.dstPos = instance.srcOffset = instance.dstOffset = 0;
  double* frames = instance.sinc.frames;
  instance.sinc = SincHistory();
  instance.sinc.frames = frames;
  if (frames != nullptr) std::fill_n(frames, 2 * kSincRingFrames * instance.channels, 0.0);
}

/// Takes over exact rates; the integer phase keeps its place between two frames.
void SetRates(tZRRESAMPLEINSTANCE& instance, int64_t srcRate, int64_t dstRate, double ratio) {
  instance.intPhase = std::llround(static_cast<double>(instance.intPhase) / static_cast<double>(instance.dstRate) *
                                   static_cast<double>(dstRate));
  instance.srcRate = srcRate;
  instance.dstRate = dstRate;
  instance.ratio = ratio;
  instance.inverse = 1 / ratio;
  instance.srcPos = instance.dstPos = 0;
}

/// What a reset changes; 0 leaves a value alone.
struct Change {
  uint32_t sampleType;
  int32_t channels;
  int64_t srcRate;
  int64_t dstRate;
  double ratio;
  bool clear;
};

HRESULT Apply(tZRRESAMPLEINSTANCE& instance, Change change) {
  bool design = change.clear;
  if (IsResampleType(change.sampleType) && change.sampleType != instance.sampleType) {
    instance.sampleType = change.sampleType;
    RestrictToType(instance);
    design = true;
  }
  if (change.channels > 0 && change.channels <= kMaxResampleChannels && change.channels != instance.channels) {
    instance.channels = change.channels;
    change.clear = design = true;
    if (!MakeHistory(instance)) return E_OUTOFMEMORY;
  }
  if (change.ratio > 0 && change.ratio != instance.ratio) {
    SetRates(instance, change.srcRate, change.dstRate, change.ratio);
    design = true;
  }
  if (design && !DesignFilter(instance, change.clear)) return E_OUTOFMEMORY;
  if (change.clear) ClearStream(instance);
  return S_OK;
}

HRESULT ApplyOrClose(tZRRESAMPLEINSTANCE* instance, const Change& change) {
  if (instance == nullptr) return E_INVALIDARG;
  const HRESULT result = Apply(*instance, change);
  if (FAILED(result)) ZrAudio_ResampleClose(instance);
  return result;
}

/// Rates of a free ratio, small enough that positions of long blocks fit.
bool RatesOfRatio(double ratio, int64_t& srcRate, int64_t& dstRate) {
  if (!(ratio >= 1 / kRatioLimit && ratio <= kRatioLimit)) return false;
  return ZrRatApprox(ratio, 0, 0, &dstRate, &srcRate, nullptr) && dstRate > 0 && srcRate > 0;
}

/// Position of output frame n, rounded down.
int64_t FloorOf(const tZRRESAMPLEINSTANCE& instance, int64_t n) {
  if (instance.IsFloatType()) return FloorPosition(static_cast<double>(n) * instance.inverse + instance.phase);
  const int64_t position = n * instance.srcRate + instance.intPhase;
  return position / instance.dstRate - (position % instance.dstRate < 0);
}

/// True when output frame n lies behind frame `last`.
bool IsBehind(const tZRRESAMPLEINSTANCE& instance, int64_t n, int64_t last) {
  if (instance.IsFloatType()) {
    return CeilPosition(static_cast<double>(n) * instance.inverse + instance.phase) > last;
  }
  return n * instance.srcRate + instance.intPhase > last * instance.dstRate;
}

/// Output frames of a block of `sourceFrames`. Going up, all at or before its last frame; going down, up to the
/// first one that would need the frame behind it. Both leave the next position within one frame of the next block,
/// where the kept last frame reaches, and neither depends on how the stream is cut.
int64_t CountDestFrames(const tZRRESAMPLEINSTANCE& instance, int64_t sourceFrames) {
  int64_t frames = std::max<int64_t>(0, ZrAudio_ResampleGetDstFromSrc(&instance, sourceFrames));
  const int64_t last = sourceFrames - 1;
  if (instance.inverse <= 1) {
    while (frames > 0 && IsBehind(instance, frames - 1, last)) --frames;
  } else {
    while (FloorOf(instance, frames) < last) ++frames;
    while (frames > 0 && FloorOf(instance, frames - 1) >= last) --frames;
  }
  return frames;
}

void FilterBlock(tZRRESAMPLEINSTANCE& instance, void* block, int64_t frames) {
  if (!instance.filter.IsOn()) return;
  if (instance.sampleType == ZRSAMPLETYPE_FLOAT32) {
    instance.filter.Process(static_cast<float*>(block), frames);
  } else if (instance.sampleType == ZRSAMPLETYPE_FLOAT64) {
    instance.filter.Process(static_cast<double*>(block), frames);
  }
}

/// Going down, the band is cut on the source before; with keepSource it isn't cut at all.
void FilterSource(tZRRESAMPLEINSTANCE& instance, const void* dest, void* source, int64_t frames) {
  if (instance.ratio < 1 && (!instance.keepSource || source == dest)) FilterBlock(instance, source, frames);
}

LinearRun DescribeRun(const tZRRESAMPLEINSTANCE& instance, const void* source, int64_t sourceFrames, void* dest,
                      int64_t destFrames) {
  LinearRun run = {};
  run.sampleType = instance.sampleType;
  run.channels = instance.channels;
  run.source = source;
  run.sourceFrames = sourceFrames;
  run.dest = dest;
  run.destFrames = destFrames;
  run.lastFrame = instance.lastFrame;
  run.goingUp = instance.inverse < 1;
  run.phase = instance.phase;
  run.inverse = instance.inverse;
  run.intPhase = instance.intPhase;
  run.srcRate = instance.srcRate;
  run.dstRate = instance.dstRate;
  return run;
}

}  // namespace
}  // namespace marlo

using namespace marlo;

HRESULT ZrAudio_ResampleOpen(tZRRESAMPLEINSTANCE** instance, uint32_t sampleType, int32_t srcRate, int32_t dstRate,
                             int32_t channels, uint32_t flags) noexcept {
  if (instance == nullptr) return E_INVALIDARG;
  *instance = nullptr;
  if (!IsResampleType(sampleType) || srcRate <= 0 || dstRate <= 0) return E_INVALIDARG;
  if (channels < 1 || channels > kMaxResampleChannels) return E_INVALIDARG;
  auto* state = new (std::nothrow) tZRRESAMPLEINSTANCE;
  if (state == nullptr) return E_OUTOFMEMORY;
  state->sampleType = sampleType;
  state->channels = channels;
  state->quality = flags & ZRRESAMPLE_QUALITY_MASK;
  state->filterCode = flags & ZRRESAMPLE_FILTER_MASK;
  state->countIsDest = (flags & ZRRESAMPLE_COUNT_IS_DEST) != 0;
  state->keepSource = (flags & ZRRESAMPLE_KEEP_SOURCE) != 0;
  RestrictToType(*state);
  SetRates(*state, srcRate, dstRate, static_cast<double>(dstRate) / srcRate);
  if (!MakeHistory(*state) || !DesignFilter(*state, true)) {
    ZrAudio_ResampleClose(state);
    return E_OUTOFMEMORY;
  }
  *instance = state;
  return S_OK;
}

HRESULT ZrAudio_ResampleOpenEx(tZRRESAMPLEINSTANCE** instance, uint32_t sampleType, int32_t channels, double ratio,
                               uint32_t flags) noexcept {
  if (instance == nullptr) return E_INVALIDARG;
  *instance = nullptr;
  int64_t srcRate;
  int64_t dstRate;
  if (!RatesOfRatio(ratio, srcRate, dstRate)) return E_INVALIDARG;
  const HRESULT result = ZrAudio_ResampleOpen(instance, sampleType, 1, 1, channels, flags);
  if (FAILED(result)) return result;
  const HRESULT reset = ZrAudio_ResampleResetEx(*instance, 0, ratio, 0, 1);
  if (FAILED(reset)) *instance = nullptr;
  return reset;
}

void ZrAudio_ResampleClose(tZRRESAMPLEINSTANCE* instance) noexcept {
  if (instance == nullptr) return;
  delete[] instance->sinc.frames;
  delete instance;
}

HRESULT ZrAudio_ResampleReset(tZRRESAMPLEINSTANCE* instance, uint32_t sampleType, int32_t srcRate, int32_t dstRate,
                              int32_t channels, int32_t clear) noexcept {
  if (instance == nullptr) return E_INVALIDARG;
  const int64_t source = srcRate > 0 ? srcRate : instance->srcRate;
  const int64_t dest = dstRate > 0 ? dstRate : instance->dstRate;
  // Without a rate the ratio stays as it is: one given freely isn't quite the quotient of its rates.
  const bool changes = srcRate > 0 || dstRate > 0;
  const double ratio = changes ? static_cast<double>(dest) / static_cast<double>(source) : 0;
  return ApplyOrClose(instance, {sampleType, channels, source, dest, ratio, clear != 0});
}

HRESULT ZrAudio_ResampleResetEx(tZRRESAMPLEINSTANCE* instance, uint32_t sampleType, double ratio, int32_t channels,
                                int32_t clear) noexcept {
  if (instance == nullptr) return E_INVALIDARG;
  Change change = {sampleType, channels, instance->srcRate, instance->dstRate, 0, clear != 0};
  if (ratio > 0 && RatesOfRatio(ratio, change.srcRate, change.dstRate)) change.ratio = ratio;
  if (IsResampleType(sampleType) && sampleType != instance->sampleType && !instance->IsFloatType()) {
    instance->filterCode = 0;
  }
  return ApplyOrClose(instance, change);
}

int64_t ZrAudio_ResampleEx(tZRRESAMPLEINSTANCE* instance, void* dest, void* source, int64_t count) noexcept {
  if (instance == nullptr || dest == nullptr || source == nullptr || count <= 0) return 0;
  tZRRESAMPLEINSTANCE& state = *instance;
  const bool up = state.inverse < 1;
  const int64_t sourceFrames = state.countIsDest ? ZrAudio_ResampleGetSrcFromDst(instance, count) : count;
  int64_t destFrames = state.countIsDest ? count : CountDestFrames(state, count);
  // The look-ahead frame of an upward step comes again with the next block.
  const int64_t consumed = sourceFrames - (state.countIsDest && up ? 1 : 0);
  if (sourceFrames <= 0) return 0;

  if (state.ratio == 1) {
    if (source != dest) {
      std::memcpy(dest, source, static_cast<size_t>(destFrames * state.channels) * BytesOf(state.sampleType));
    }
    state.srcPos += sourceFrames;
    state.dstPos += destFrames;
    return destFrames;
  }
  if (state.quality > ZRRESAMPLE_SINC) {
    state.srcPos += consumed;
    return 0;
  }
  if (state.quality < ZRRESAMPLE_LINEAR_FILTERED) {
    state.filterCode = 0;
    state.filter.Free();
  }
  // What the phase moves on by. Counted by source it is what came out, so that the kernel's look-ahead stays part of
  // the phase and a block's room never cuts it short; counted by destination it is what was asked for.
  const int64_t askedFrames = destFrames;
  if (state.quality == ZRRESAMPLE_SINC && state.IsFloatType()) {
    if (source == dest) return 0;
    FilterSource(state, dest, source, consumed);
    destFrames = RunSinc(state, dest, destFrames, source, consumed, state.inverse);
    if (up) FilterBlock(state, dest, destFrames);
  } else {
    FilterSource(state, dest, source, consumed);
    double kept[kMaxResampleChannels] = {};
    const bool keep = consumed > 0;
    if (keep) ReadFrame(state.sampleType, state.channels, source, consumed - 1, kept);
    RunLinear(DescribeRun(state, source, sourceFrames, dest, destFrames));
    if (up) FilterBlock(state, dest, destFrames);
    if (keep) std::copy_n(kept, state.channels, state.lastFrame);
  }
  const int64_t phaseFrames = state.countIsDest ? askedFrames : destFrames;
  state.phase += static_cast<double>(phaseFrames) * state.inverse - static_cast<double>(consumed);
  state.intPhase += phaseFrames * state.srcRate - consumed * state.dstRate;
  state.srcPos += consumed;
  state.dstPos += destFrames;
  return destFrames;
}

HRESULT ZrAudio_Resample(const _zrwaveformat* format, void* dest, int64_t destFrames, void* source,
                         int64_t sourceFrames) noexcept {
  if (format == nullptr || sourceFrames <= 0 || destFrames < 0) return S_OK;
  const auto srcRate = static_cast<int64_t>(format->samplesPerSec);
  const __int128 wanted = static_cast<__int128>(srcRate) * destFrames / sourceFrames;
  if (wanted <= 0 || wanted > INT32_MAX || srcRate > INT32_MAX) return S_OK;
  tZRRESAMPLEINSTANCE* instance = nullptr;
  constexpr uint32_t kFlags = ZRRESAMPLE_LINEAR_FILTERED | ZRRESAMPLE_FILTER_4 | 0x200;
  if (FAILED(ZrAudio_ResampleOpen(&instance, format->sampleType, static_cast<int32_t>(srcRate),
                                  static_cast<int32_t>(wanted), format->channels, kFlags))) {
    return S_OK;
  }
  ZrAudio_ResampleEx(instance, dest, source, sourceFrames);
  ZrAudio_ResampleClose(instance);
  return S_OK;
}

HRESULT ZrAudio_Resample(const WAVEFORMATEX* format, void* dest, int64_t destFrames, void* source,
                         int64_t sourceFrames) noexcept {
  if (format == nullptr) return S_OK;
  _zrwaveformat own;
  own.Init(sizeof(own), format);
  return ZrAudio_Resample(&own, dest, destFrames, source, sourceFrames);
}

int64_t ZrAudio_ResampleStupid(tZRRESAMPLEINSTANCE* instance, void* dest, int64_t destFrames, const void* source,
                               int64_t sourceFrames) noexcept {
  if (instance == nullptr || source == nullptr || sourceFrames <= 0 || destFrames < 0) return 0;
  tZRRESAMPLEINSTANCE& state = *instance;
  if (state.sampleType >= ZRSAMPLETYPE_PCM8SIGNED) return -1;
  double kept[kMaxResampleChannels] = {};
  ReadFrame(state.sampleType, state.channels, source, sourceFrames - 1, kept);
  if (destFrames > 0 && dest != nullptr) {
    if (destFrames == sourceFrames) {
      if (dest != source) {
        std::memcpy(dest, source, static_cast<size_t>(destFrames * state.channels) * BytesOf(state.sampleType));
      }
    } else {
      // Output n stands at (n + 1) * source / dest - 1: from behind the last frame of the block before to the
      // last frame of this one.
      SetRates(state, sourceFrames, destFrames, static_cast<double>(destFrames) / static_cast<double>(sourceFrames));
      LinearRun run = DescribeRun(state, source, sourceFrames, dest, destFrames);
      run.phase = state.inverse - 1;
      run.intPhase = sourceFrames - destFrames;
      RunLinear(run);
    }
  }
  std::copy_n(kept, state.channels, state.lastFrame);
  return destFrames;
}

int64_t ZrAudio_Resample_Sinc(uint32_t sampleType, int32_t channels, void* dest, int64_t destFrames, void* source,
                              int64_t sourceFrames, tZRRESAMPLEINSTANCE* instance) noexcept {
  if (instance == nullptr || dest == nullptr || source == dest || destFrames <= 0 || sourceFrames < 0) return 0;
  tZRRESAMPLEINSTANCE& state = *instance;
  if (sampleType != state.sampleType || channels != state.channels || !state.IsFloatType()) return 0;
  if (state.sinc.frames == nullptr || (source == nullptr && sourceFrames > 0)) return 0;
  if (sourceFrames > 0) FilterSource(state, dest, source, sourceFrames);
  const double step =
      sourceFrames == 0 ? state.inverse : static_cast<double>(sourceFrames) / static_cast<double>(destFrames);
  const int64_t written = RunSinc(state, dest, destFrames, source, sourceFrames, step);
  if (state.ratio > 1) FilterBlock(state, dest, written);
  return written;
}

int64_t ZrAudio_ResampleGetDstFromSrc(const tZRRESAMPLEINSTANCE* instance, int64_t sourceFrames) noexcept {
  if (instance == nullptr) return 0;
  return static_cast<int64_t>(static_cast<double>(sourceFrames) * instance->ratio - instance->phase);
}

int64_t ZrAudio_ResampleGetSrcFromDst(const tZRRESAMPLEINSTANCE* instance, int64_t destFrames) noexcept {
  if (instance == nullptr) return 0;
  int64_t frames;
  if (instance->IsFloatType()) {
    frames = CeilPosition(static_cast<double>(destFrames) * instance->inverse + instance->phase);
  } else {
    const int64_t position = destFrames * instance->srcRate + instance->intPhase;
    frames = position / instance->dstRate + (position % instance->dstRate > 0);
  }
  return frames + (instance->inverse < 1 ? 1 : 0);
}

int64_t ZrAudio_ResampleGetSrcPos(const tZRRESAMPLEINSTANCE* instance) noexcept {
  return instance == nullptr ? 0 : instance->srcPos + instance->srcOffset;
}

int64_t ZrAudio_ResampleGetDstPos(const tZRRESAMPLEINSTANCE* instance) noexcept {
  return instance == nullptr ? 0 : instance->dstPos + instance->dstOffset;
}

void ZrAudio_ResampleSetSrcPos(tZRRESAMPLEINSTANCE* instance, int64_t frames) noexcept {
  if (instance != nullptr) instance->srcPos = frames;
}

void ZrAudio_ResampleSetDstPos(tZRRESAMPLEINSTANCE* instance, int64_t frames) noexcept {
  if (instance != nullptr) instance->dstPos = frames;
}

void ZrAudio_ResampleSetSrcOffset(tZRRESAMPLEINSTANCE* instance, int64_t frames) noexcept {
  if (instance != nullptr) instance->srcOffset = frames;
}

void ZrAudio_ResampleSetDstOffset(tZRRESAMPLEINSTANCE* instance, int64_t frames) noexcept {
  if (instance != nullptr) instance->dstOffset = frames;
}

void ZrAudio_ResampleStuffPrevSample(tZRRESAMPLEINSTANCE* instance, double left, double right) noexcept {
  if (instance == nullptr) return;
  instance->lastFrame[0] = left;
  instance->lastFrame[1] = right;
}
