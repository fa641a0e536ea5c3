// SPDX-License-Identifier: Apache-2.0
// Tables of kernel members over pairs of sample types, and which kinds of member may be chosen.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "audio/sample_rules.h"
#include "marlo110k/cpu.h"
#include "platform/base/cpu.h"

namespace marlo {

/// Members of one family: a row per destination, a column per source, null where the pair isn't served.
template <class Function, size_t kTypes>
struct PairTable {
  std::array<uint32_t, kTypes> types;
  std::array<std::array<Function, kTypes>, kTypes> members;

  constexpr Function Find(uint32_t destType, uint32_t sourceType) const noexcept {
    for (size_t dest = 0; dest < kTypes; ++dest) {
      if (types[dest] != destType) continue;
      for (size_t source = 0; source < kTypes; ++source) {
        if (types[source] == sourceType) return members[dest][source];
      }
    }
    return nullptr;
  }
};

/// Fills a row: Member<Dest, Source>::kFunction for each source.
template <class Function, template <class, class> class Member, class Dest, class... Sources>
constexpr std::array<Function, sizeof...(Sources)> MakeRow(RuleList<Sources...>) noexcept {
  return {Member<Dest, Sources>::kFunction...};
}

/// Fills the table of all pairs of a list of rules.
template <class Function, template <class, class> class Member, class... Rules>
constexpr PairTable<Function, sizeof...(Rules)> MakePairTable(RuleList<Rules...> rules) noexcept {
  return {{Rules::kType...}, {MakeRow<Function, Member, Rules>(rules)...}};
}

/// Whether the masks allow a published feature at this moment. Single bits only: the class override shows
/// in the word whatever the filter is.
inline bool IsAllowed(uint32_t feature) noexcept { return (ZrGetCPUSupport(feature) & feature) != 0; }

/// Whether AVX2 members may be chosen. They have no bit of their own in the processor word and go with the
/// SSE2 bit, so that disallowing SSE2 leaves the plain members.
inline bool IsAvx2Allowed() noexcept {
  return IsAllowed(ZRCPU_SSE2) && plat::DetectedVectorLevel() >= plat::VectorLevel::kAvx2;
}

}  // namespace marlo
