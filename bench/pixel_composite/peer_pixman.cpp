// SPDX-License-Identifier: Apache-2.0
// pixman's over.

#include "pixel_composite/pictures.h"

#ifdef MARLO_BENCH_PIXMAN
#include <pixman.h>
#endif

namespace bench {

void AddPixmanOver(Question* question, std::shared_ptr<Pictures> pictures) {
#ifdef MARLO_BENCH_PIXMAN
  const auto image = [&](std::vector<uint8_t>& pixels) {
    return std::shared_ptr<pixman_image_t>(
        pixman_image_create_bits(PIXMAN_a8r8g8b8, pictures->width, pictures->height,
                                 reinterpret_cast<uint32_t*>(pixels.data()), pictures->width * 4),
        [](pixman_image_t* made) { pixman_image_unref(made); });
  };
  const auto src = image(pictures->src);
  const auto dst = image(pictures->dst);
  question->Peer({"pixman over",
                  [src, dst, pictures] {
                    pixman_image_composite32(PIXMAN_OP_OVER, src.get(), nullptr, dst.get(), 0, 0, 0, 0, 0, 0,
                                             pictures->width, pictures->height);
                  },
                  pictures->Pixels()});
#else
  (void)pictures;
  question->Absent("pixman");
#endif
}

}  // namespace bench
