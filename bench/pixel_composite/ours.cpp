// SPDX-License-Identifier: Apache-2.0
// Compositing: all modes at full and partial opacity in bytes and floats, the cross-fade and premultiplication, one
// thread, in cache and at the sizes of video.

#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "marlo110k/dib_alpha.h"
#include "marlo110k/dib_blend.h"
#include "marlo110k/dib_composite.h"
#include "pixel_composite/pictures.h"
#include "platform/parallel/rows.h"

namespace bench {
namespace {

struct Size {
  const char* name;
  int width, height;
};
constexpr Size kSizes[] = {{"256x256", 256, 256}, {"1080p", 1920, 1080}, {"4K", 3840, 2160}};
constexpr int kModes = 13;

std::shared_ptr<Pictures> Make(const Size& size) {
  auto pictures = std::make_shared<Pictures>(Pictures{size.width, size.height, {}, {}});
  const size_t bytes = static_cast<size_t>(pictures->Pixels()) * 4;
  std::mt19937 random(1);
  for (std::vector<uint8_t>* picture : {&pictures->src, &pictures->dst}) {
    picture->resize(bytes);
    for (uint8_t& byte : *picture) byte = static_cast<uint8_t>(random());
    const RECT bounds{0, 0, size.width, size.height};
    ZrDibPremultiply(picture->data(), &bounds, size.width * 4, nullptr, 4);
  }
  return pictures;
}

std::vector<uint8_t> Floats(const std::vector<uint8_t>& bytes) {
  std::vector<uint8_t> floats(bytes.size() * 4);
  for (size_t index = 0; index < bytes.size(); ++index) {
    const float value = static_cast<float>(bytes[index]) / 255.0f;
    std::memcpy(&floats[index * 4], &value, 4);
  }
  return floats;
}

void Composite(int mode, float opacity, int width, int height, int32_t pixelBytes, uint8_t* dst, const uint8_t* src) {
  const RECT bounds{0, 0, width, height};
  const tZRDIBCOMPOSITEPARAMS params{0, mode, opacity, nullptr};
  ZrDibCompositeUnscaled(dst, &bounds, width * pixelBytes, nullptr, src, &bounds, width * pixelBytes, nullptr,
                         pixelBytes, &params);
}

void AskMode(const Size& size, const std::shared_ptr<Pictures>& pictures, int mode, float opacity, bool floats) {
  const int32_t pixelBytes = floats ? 16 : 4;
  const std::vector<uint8_t> src = floats ? Floats(pictures->src) : pictures->src;
  std::vector<uint8_t> dst = floats ? Floats(pictures->dst) : pictures->dst;
  Question question(std::string(floats ? "float " : "") + "mode " + std::to_string(mode) +
                        (opacity == 1.0f ? ", full, " : ", partial, ") + size.name,
                    "pixel");
  question.Ours({"ours",
                 [&] {
                   Composite(mode, opacity, size.width, size.height, pixelBytes, dst.data(), src.data());
                   Use(dst.data());
                 },
                 pictures->Pixels()});
  question.Goal(-1, floats ? 0.6e9 : mode <= 5 ? 1e9 : 0.8e9);
  if (!floats && mode == 4 && opacity == 1.0f) {
    AddPixmanOver(&question, pictures);
    if (std::strcmp(size.name, "256x256") == 0) question.Goal(0, 1.5);
  }
  question.Print(7, 0.01);
}

void AskBlends(const Size& size, const std::shared_ptr<Pictures>& pictures) {
  const RECT bounds{0, 0, size.width, size.height};
  const int32_t stride = size.width * 4;
  // 0.6 and 0.4 in 14 bits are one short of a whole, which takes the general way.
  for (const double weight : {0.5, 0.6}) {
    Question fade("cross-fade by " + std::to_string(weight).substr(0, 3) + ", " + size.name, "pixel");
    fade.Ours({"ours",
               [&, weight] {
                 ZrDibWeightedCrossFade(pictures->dst.data(), &bounds, stride, nullptr, weight, pictures->src.data(),
                                        &bounds, stride, nullptr, 1 - weight, 4);
               },
               pictures->Pixels()});
    AddLibyuvFade(&fade, pictures);
    fade.Goal(0, 0.7);
    fade.Print();
  }
  Question premultiply(std::string("premultiply, ") + size.name, "pixel");
  premultiply.Ours(
      {"ours", [&] { ZrDibPremultiply(pictures->dst.data(), &bounds, stride, nullptr, 4); }, pictures->Pixels()});
  AddLibyuvPremultiply(&premultiply, pictures);
  premultiply.Goal(0, 0.7);
  premultiply.Print();
}

}  // namespace
}  // namespace bench

int main() {
  using namespace bench;
  plat::SetParallelThreads(1);
  for (const Size& size : kSizes) {
    const auto pictures = Make(size);
    AskBlends(size, pictures);
    for (const bool floats : {false, true}) {
      for (int mode = 0; mode < kModes; ++mode) {
        for (const float opacity : {1.0f, 0.7f}) AskMode(size, Make(size), mode, opacity, floats);
      }
    }
  }
  return 0;
}
