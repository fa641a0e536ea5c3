// SPDX-License-Identifier: Apache-2.0
// The twenty blend operations in words and bytes, and those that floats have.

#include "pixel/blendops.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>

#include "pixel/geometry.h"

namespace marlo::pixel {

namespace {

/// Word pixels: full is 65535.
struct WordForm {
  using Pixel = tZRPIXEL64;
  using Channel = uint16_t;
  static constexpr int32_t kFull = 65535;
  static int32_t Moved(int64_t from, int64_t to, int32_t weight) noexcept {
    return Saturate(from + ((to - from) * weight >> 16));
  }
  static int32_t Times(int32_t value, int32_t weight) noexcept {
    return static_cast<int32_t>(int64_t{value} * weight >> 16);
  }
  static int32_t LookedUp(const uint16_t* table, int32_t value) noexcept { return table[value >> 8]; }
};

/// Byte pixels: full is 255.
struct ByteForm {
  using Pixel = tZRPIXEL32;
  using Channel = uint8_t;
  static constexpr int32_t kFull = 255;
  static int32_t Moved(int64_t from, int64_t to, int32_t weight) noexcept {
    return Saturate(from + (to - from) * weight / 256);
  }
  static int32_t Times(int32_t value, int32_t weight) noexcept { return value * weight / 256; }
  static int32_t LookedUp(const uint16_t* table, int32_t value) noexcept { return table[value] >> 8; }
};

/// Channels in plain integers: 0 blue, 1 green, 2 red, 3 alpha.
struct Channels {
  int32_t c[4];
  int32_t Mean() const noexcept { return (c[0] + c[1] + c[2]) / 3; }
  int32_t Largest() const noexcept { return std::max({c[0], c[1], c[2]}); }
};

/// One operation's view of its request in a form's scale.
template <typename Form>
struct Request {
  const tZRDIBBLENDOP& op;
  Channels key;
  int32_t weight;
  int32_t weight2;

  explicit Request(const tZRDIBBLENDOP& request) noexcept
      : op(request),
        key{{Scaled(request.blue), Scaled(request.green), Scaled(request.red), Scaled(request.alpha)}},
        weight(Scaled(request.weight)),
        weight2(Scaled(request.weight2)) {}

  static int32_t Scaled(float value) noexcept {
    return value > 0.0f ? static_cast<int32_t>(std::min(value, 1.0f) * static_cast<float>(Form::kFull)) : 0;
  }
  /// Distance of a colour from the key: the tolerance is in full channels.
  bool IsFar(const Channels& color) const noexcept {
    int32_t distance = 0;
    for (int channel = 0; channel < 3; ++channel) distance += std::abs(color.c[channel] - key.c[channel]);
    return static_cast<double>(distance) > static_cast<double>(op.tolerance) * Form::kFull;
  }
};

template <typename Form>
void MoveAll(Channels* d, const Channels& s, int32_t weight) noexcept {
  for (int channel = 0; channel < 4; ++channel) d->c[channel] = Form::Moved(d->c[channel], s.c[channel], weight);
}

struct Copy {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>&) noexcept {
    *d = s;
  }
};
struct Nothing {
  template <typename Form>
  static void Apply(Channels*, const Channels&, const Request<Form>&) noexcept {}
};
struct OverBySourceAlpha {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>&) noexcept {
    MoveAll<Form>(d, s, s.c[3]);
  }
};
/// The source counts as premultiplied and is added whole.
struct OverPremultiplied {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>&) noexcept {
    for (int channel = 0; channel < 4; ++channel) {
      d->c[channel] = Form::Times(d->c[channel], Form::kFull - s.c[3]) + s.c[channel];
    }
  }
};
struct MoveByWeight {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>& request) noexcept {
    MoveAll<Form>(d, s, request.weight);
  }
};
struct CopyWhenFar {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>& request) noexcept {
    if (request.IsFar(s)) *d = s;
  }
};
struct MoveWhenFar {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>& request) noexcept {
    if (request.IsFar(s)) MoveAll<Form>(d, s, request.weight);
  }
};
/// Near the key the destination darkens by the source's brightness: a shadow on the key's backdrop.
struct MoveOrShade {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>& request) noexcept {
    if (request.IsFar(s)) {
      MoveAll<Form>(d, s, request.weight);
      return;
    }
    const int64_t brightness = s.Largest() + 1;
    for (int channel = 0; channel < 3; ++channel) {
      const int32_t shaded = static_cast<int32_t>(d->c[channel] * brightness / Form::kFull);
      d->c[channel] = Form::Moved(d->c[channel], shaded, request.weight2);
    }
  }
};
struct MatchBrightnessWhenFar {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>& request) noexcept {
    if (!request.IsFar(s)) return;
    const int64_t bright = d->Largest() + 1;
    const int64_t sourceBright = s.Largest() + 1;
    for (int channel = 0; channel < 3; ++channel) {
      const int64_t matched = d->c[channel] * bright / sourceBright;
      d->c[channel] = Form::Moved(s.c[channel], matched, request.weight2);
    }
  }
};
struct Difference {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>&) noexcept {
    for (int channel = 0; channel < 4; ++channel) d->c[channel] = std::abs(d->c[channel] - s.c[channel]);
  }
};
struct TintByKey {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>& request) noexcept {
    for (int channel = 0; channel < 3; ++channel) {
      d->c[channel] = Form::Moved(s.c[channel], request.key.c[channel], request.weight);
    }
  }
};
struct MoveToNegative {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>& request) noexcept {
    for (int channel = 0; channel < 4; ++channel) {
      d->c[channel] = Form::Moved(d->c[channel], Form::kFull - s.c[channel], request.weight);
    }
  }
};
struct MoveToGray {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>& request) noexcept {
    const int32_t gray = s.Mean();
    MoveAll<Form>(d, {{gray, gray, gray, s.c[3]}}, request.weight);
  }
};
struct UnmixKey {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>& request) noexcept {
    for (int channel = 0; channel < 3; ++channel) {
      const int32_t key = request.key.c[channel];
      d->c[channel] = Form::Times(key - d->c[channel], s.c[3]) + s.c[channel] - key + d->c[channel];
    }
  }
};
struct DistanceFromKey {
  template <typename Form>
  static void Apply(Channels* d, const Channels&, const Request<Form>& request) noexcept {
    double squares = 0.0;
    for (int channel = 0; channel < 3; ++channel) {
      const double difference = d->c[channel] - request.key.c[channel];
      squares += difference * difference;
    }
    int32_t distance = std::min(Truncate(std::sqrt(squares) / std::sqrt(3.0)), Form::kFull);
    if (request.op.lookup) distance = Form::LookedUp(request.op.lookup, distance);
    for (int channel = 0; channel < 3; ++channel) d->c[channel] = distance;
  }
};
/// Brightness stretched: 0 below the low threshold, full above low plus high, and between over high minus low.
struct StretchBrightness {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>& request) noexcept {
    const double low = static_cast<double>(request.op.lowThreshold) * Form::kFull;
    const double high = static_cast<double>(request.op.highThreshold) * Form::kFull;
    const double mean = s.Mean();
    int32_t value = 0;
    if (mean > low + high) {
      value = Form::kFull;
    } else if (mean > low) {
      value = high > low ? Truncate((mean - low) * Form::kFull / (high - low)) : Form::kFull;
    }
    for (int channel = 0; channel < 3; ++channel) d->c[channel] = value;
  }
};
struct AddWeighted {
  template <typename Form>
  static void Apply(Channels* d, const Channels& s, const Request<Form>& request) noexcept {
    for (int channel = 0; channel < 3; ++channel) d->c[channel] += Form::Times(s.c[channel], request.weight);
  }
};

template <typename Pixel>
Channels Unpacked(const Pixel& pixel) noexcept {
  return {{pixel.b, pixel.g, pixel.r, pixel.a}};
}

template <typename Form>
typename Form::Pixel Packed(const Channels& value) noexcept {
  const auto channel = [&](int index) {
    return static_cast<typename Form::Channel>(std::clamp(value.c[index], 0, Form::kFull));
  };
  return {channel(0), channel(1), channel(2), channel(3)};
}

template <typename Form, typename Op, int kPixels>
void Run(const tZRDIBXCHGPARAMS* exchange, void* destination, const void* source) {
  const Request<Form> request(exchange->blendParams);
  auto* const to = static_cast<typename Form::Pixel*>(destination);
  const auto* const from = static_cast<const typename Form::Pixel*>(source);
  for (int index = 0; index < kPixels; ++index) {
    Channels value = Unpacked(to[index]);
    Op::Apply(&value, Unpacked(from[index]), request);
    to[index] = Packed<Form>(value);
  }
}

template <int kPixels>
void RunFloatCopy(const tZRDIBXCHGPARAMS*, void* destination, const void* source) {
  std::copy_n(static_cast<const tZRPIXEL128*>(source), kPixels, static_cast<tZRPIXEL128*>(destination));
}
template <int kPixels>
void RunFloatMove(const tZRDIBXCHGPARAMS* exchange, void* destination, const void* source) {
  auto* const to = static_cast<tZRPIXEL128*>(destination);
  const auto* const from = static_cast<const tZRPIXEL128*>(source);
  for (int index = 0; index < kPixels; ++index) to[index] = Moved(to[index], from[index], exchange->blendParams.weight);
}
void RunFloatNothing(const tZRDIBXCHGPARAMS*, void*, const void*) {}

struct OpRow {
  ZRXCHGBLENDFN bytes, bytesFour;
  ZRXCHGBLENDFN words, wordsFour;
  ZRXCHGBLENDFN floats, floatsFour;
};

template <typename Op>
constexpr OpRow Integers(ZRXCHGBLENDFN floats = nullptr, ZRXCHGBLENDFN floatsFour = nullptr) {
  return {Run<ByteForm, Op, 1>, Run<ByteForm, Op, 4>, Run<WordForm, Op, 1>, Run<WordForm, Op, 4>, floats, floatsFour};
}

constexpr OpRow kCopyRow = Integers<Copy>(RunFloatCopy<1>, RunFloatCopy<4>);
constexpr OpRow kNothingRow = Integers<Nothing>(RunFloatNothing, RunFloatNothing);

constexpr OpRow kOps[] = {
    kCopyRow,                                                  // 0
    Integers<OverBySourceAlpha>(),                             // 1
    Integers<OverPremultiplied>(),                             // 2
    Integers<MoveByWeight>(RunFloatMove<1>, RunFloatMove<4>),  // 3
    Integers<CopyWhenFar>(),                                   // 4
    Integers<MoveWhenFar>(),                                   // 5
    Integers<MoveOrShade>(),                                   // 6
    Integers<MatchBrightnessWhenFar>(),                        // 7
    Integers<Difference>(),                                    // 8
    kCopyRow,                                                  // 9
    kCopyRow,                                                  // 10
    Integers<TintByKey>(),                                     // 11
    Integers<MoveToNegative>(),                                // 12
    Integers<MoveToGray>(),                                    // 13
    Integers<UnmixKey>(),                                      // 14
    Integers<DistanceFromKey>(),                               // 15
    kNothingRow,                                               // 16
    Integers<StretchBrightness>(),                             // 17
    kNothingRow,                                               // 18
    Integers<AddWeighted>(),                                   // 19
};

const OpRow* FindRow(int32_t op) noexcept {
  return op >= 0 && op < static_cast<int32_t>(std::size(kOps)) ? &kOps[op] : nullptr;
}

}  // namespace

ZRXCHGBLENDFN FindBlendOp(int32_t op, int32_t form) noexcept {
  const OpRow* row = FindRow(op);
  if (!row) return nullptr;
  return form == ZRXCHG_BYTES ? row->bytes : form == ZRXCHG_WORDS ? row->words : row->floats;
}

ZRXCHGBLENDFN FindBlendOpFour(int32_t op, int32_t form) noexcept {
  const OpRow* row = FindRow(op);
  if (!row) return nullptr;
  return form == ZRXCHG_BYTES ? row->bytesFour : form == ZRXCHG_WORDS ? row->wordsFour : row->floatsFour;
}

}  // namespace marlo::pixel
