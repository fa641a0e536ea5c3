// SPDX-License-Identifier: Apache-2.0
// Largest sample of a file in memory by libsndfile's scan.
#include <sndfile.h>

#include <algorithm>
#include <cstring>

#include "levels/programme.h"

namespace bench_levels {

struct SndfileScan::State {
  std::vector<char> bytes;
  sf_count_t position = 0;
  SNDFILE* file = nullptr;

  static sf_count_t Length(void* user) { return static_cast<sf_count_t>(static_cast<State*>(user)->bytes.size()); }
  static sf_count_t Seek(sf_count_t offset, int whence, void* user) {
    auto* state = static_cast<State*>(user);
    const sf_count_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? state->position : Length(user);
    return state->position = base + offset;
  }
  static sf_count_t Read(void* buffer, sf_count_t count, void* user) {
    auto* state = static_cast<State*>(user);
    const sf_count_t there = std::min(count, Length(user) - state->position);
    std::memcpy(buffer, state->bytes.data() + state->position, static_cast<size_t>(there));
    state->position += there;
    return there;
  }
  static sf_count_t Write(const void* buffer, sf_count_t count, void* user) {
    auto* state = static_cast<State*>(user);
    const auto end = static_cast<size_t>(state->position + count);
    if (state->bytes.size() < end) state->bytes.resize(end);
    std::memcpy(state->bytes.data() + state->position, buffer, static_cast<size_t>(count));
    state->position += count;
    return count;
  }
  static sf_count_t Tell(void* user) { return static_cast<State*>(user)->position; }
};

SndfileScan::SndfileScan(const std::vector<int16_t>& samples) : state_(new State) {
  SF_VIRTUAL_IO io = {State::Length, State::Seek, State::Read, State::Write, State::Tell};
  SF_INFO info = {};
  info.samplerate = kRate;
  info.channels = static_cast<int>(kChannels);
  info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
  SNDFILE* writer = sf_open_virtual(&io, SFM_WRITE, &info, state_);
  sf_write_short(writer, samples.data(), static_cast<sf_count_t>(samples.size()));
  sf_close(writer);
  state_->position = 0;
  info = {};
  state_->file = sf_open_virtual(&io, SFM_READ, &info, state_);
}

SndfileScan::~SndfileScan() {
  sf_close(state_->file);
  delete state_;
}

double SndfileScan::Peak() {
  double peak = 0;
  sf_command(state_->file, SFC_CALC_NORM_SIGNAL_MAX, &peak, sizeof peak);
  return peak;
}

}  // namespace bench_levels
