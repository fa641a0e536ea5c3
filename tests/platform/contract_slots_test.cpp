// SPDX-License-Identifier: Apache-2.0
// The slots of published interfaces, as a module of another compiler counts them.
#include <gtest/gtest.h>

#include "marlo110k/contract/audiodev.h"

namespace {

/// Slot of a virtual function in its interface's table. A pointer to a virtual member holds one more than eight times
/// its slot.
template <typename Member>
size_t SlotOf(Member member) {
  size_t words[2] = {};
  static_assert(sizeof member == sizeof words);
  __builtin_memcpy(words, &member, sizeof member);
  return (words[0] - 1) / sizeof(void*);
}

TEST(ContractSlots, AudioDevices) {
  EXPECT_EQ(16u, SlotOf(&IAudioClass::Enumerate));
  EXPECT_EQ(19u, SlotOf(&IAudioClass::SetLatency));
  EXPECT_EQ(21u, SlotOf(&IAudioClass::Open));
  EXPECT_EQ(23u, SlotOf(&IAudioClass::Start));
  EXPECT_EQ(30u, SlotOf(&IAudioClass::GetPlayedTicks));
  EXPECT_EQ(35u, SlotOf(&IAudioClass::EnumOutputs));
  EXPECT_EQ(37u, SlotOf(&IAudioClass::Destroy));
  EXPECT_EQ(17u, SlotOf(&IAudioDevice::GetCounts));
  EXPECT_EQ(23u, SlotOf(&IAudioDevice::Open));
  EXPECT_EQ(37u, SlotOf(&IAudioDevice::Destroy));
  EXPECT_EQ(40u, SlotOf(&IAudioDevice::Initialize));
  EXPECT_EQ(48u, SlotOf(&IAudioDevice::PortStopped));
  EXPECT_EQ(57u, SlotOf(&IAudioDevice::PumpThread));
  EXPECT_EQ(17u, SlotOf(&IAudioOut::GetChannelNames));
  EXPECT_EQ(19u, SlotOf(&IAudioOut::Open));
  EXPECT_EQ(24u, SlotOf(&IAudioOut::Write));
  EXPECT_EQ(28u, SlotOf(&IAudioOut::GetPlayedSamples));
  EXPECT_EQ(34u, SlotOf(&IAudioOut::SetProperty));
  EXPECT_EQ(39u, SlotOf(&IAudioOut::OutSlot39));
  EXPECT_EQ(14u, SlotOf(&IAudioIn::GetKind));
  EXPECT_EQ(21u, SlotOf(&IAudioIn::ReadPeaks));
  EXPECT_EQ(24u, SlotOf(&IAudioIn::Open));
  EXPECT_EQ(37u, SlotOf(&IAudioIn::Destroy));
  EXPECT_EQ(4u, SlotOf(&IAudioClasses::Initialize));
  EXPECT_EQ(12u, SlotOf(&IAudioClasses::Destroy));
}

}  // namespace
