// SPDX-License-Identifier: Apache-2.0
// The library's filter designs and finders by the names of the command line.
#include "filter_design.h"

#include <algorithm>
#include <numbers>

#include "errors.h"

namespace host {
namespace {

struct DesignKind {
  const char* name;
  ZRIIR_TYPE type;
  bool resonator;
};
constexpr DesignKind kDesignKinds[] = {{"low", ZRIIR_LOWPASS, false},   {"high", ZRIIR_HIGHPASS, false},
                                       {"band", ZRIIR_BANDPASS, false}, {"stop", ZRIIR_BANDSTOP, false},
                                       {"notch", ZRIIR_BANDSTOP, true}, {"peak", ZRIIR_BANDPASS, true}};

struct Family {
  const char* name;
  ZRIIR_DESIGN design;
};
constexpr Family kFamilies[] = {
    {"butterworth", ZRIIR_BUTTERWORTH}, {"chebyshev", ZRIIR_CHEBYSHEV}, {"bessel", ZRIIR_BESSEL}};

using FindShelf = void (*)(tZRIIR_SHELF_COEFFS*, const tZRIIR_FIND_COEFFS*) noexcept;
struct ShelfKind {
  const char* name;
  FindShelf find;
};
constexpr ShelfKind kShelfKinds[] = {{"low-shelf-cut", ZrIIR_FindLowShelfCutCoeffs},
                                     {"low-shelf-boost", ZrIIR_FindLowShelfBoostCoeffs},
                                     {"high-shelf-cut", ZrIIR_FindHiShelfCutCoeffs},
                                     {"high-shelf-boost", ZrIIR_FindHiShelfBoostCoeffs}};
constexpr char kBell[] = "bell";

template <class Entry, size_t kCount>
const Entry* Find(const Entry (&entries)[kCount], const std::string& name) {
  const Entry* const found = std::ranges::find(entries, name, &Entry::name);
  return found == std::end(entries) ? nullptr : found;
}

}  // namespace

bool IsFinderKind(const std::string& kind) { return kind == kBell || Find(kShelfKinds, kind); }

void CheckFilterRequest(const FilterRequest& request) {
  if (!IsFinderKind(request.kind) && !Find(kDesignKinds, request.kind)) {
    throw UsageError("\"" + request.kind + "\" is no kind of filter; see --help.");
  }
  if (!Find(kFamilies, request.family)) {
    throw UsageError("\"" + request.family + "\" is no family; there are butterworth, chebyshev and bessel.");
  }
}

std::unique_ptr<CZrIIR> DesignFilter(const FilterRequest& request, uint32_t rate, uint32_t channels) {
  const DesignKind& kind = *Find(kDesignKinds, request.kind);
  const uint32_t design = kind.resonator ? ZRIIR_RESONATOR : Find(kFamilies, request.family)->design;
  auto filter = std::make_unique<CZrIIR>();
  const HRESULT result = filter->Design(kind.type, design, request.order, request.frequency / rate,
                                        kind.resonator ? request.q : request.octaves, request.gainDb, channels, 0);
  if (FAILED(result)) {
    throw Failure(result, request.kind, "The order is 1 to 15 (bessel: 10) and the frequency at most half the rate.");
  }
  return filter;
}

std::complex<double> ResponseAt(const CZrIIR& filter, double frequency) {
  const std::complex<double> back = std::polar(1.0, -2 * std::numbers::pi * frequency);
  std::complex<double> response = filter.getGain();
  for (uint32_t index = 0; index < filter.getNumBiquads(); ++index) {
    const tZRIIR_BIQUAD& section = *filter.getBiquad(index);
    response *=
        (section.b0 + back * (section.b1 + back * section.b2)) / (1.0 - back * (section.a1 + back * section.a2));
  }
  return response + filter.getDry();
}

std::vector<NamedCoefficient> FindCoefficients(const FilterRequest& request, uint32_t rate) {
  const tZRIIR_FIND_COEFFS asked{request.frequency / rate, request.gainDb, request.q};
  if (request.kind == kBell) {
    tZRIIR_BANDPASS_COEFFS found{};
    ZrIIR_FindBandPassCoeffs(&found, &asked);
    return {{"a1", found.a1}, {"a2", found.a2}, {"scale", found.scale}, {"fir", found.fir}};
  }
  tZRIIR_SHELF_COEFFS found{};
  Find(kShelfKinds, request.kind)->find(&found, &asked);
  return {{"a1", found.a1},   {"a2", found.a2},   {"scale", found.scale},
          {"fir", found.fir}, {"dry", found.dry}, {"wet", found.wet}};
}

}  // namespace host
