// SPDX-License-Identifier: Apache-2.0
// marlo picture: chooses the kind of work and holds what the kinds share.
#include "picture.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "command.h"
#include "errors.h"
#include "image_file.h"
#include "numbers.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo picture info IN [--json]\n"
    "       marlo picture convert IN -o OUT\n"
    "       marlo picture scale IN --size WxH [--filter F] -o OUT\n"
    "       marlo picture composite BASE PIC[@x,y[,WxH]][:mode=NAME|N][:opacity=F]... [--type T] -o OUT\n"
    "       marlo picture fade FROM [TO | --color RRGGBB[AA]] --weight F -o OUT\n"
    "       marlo picture fields WORK IN [LOWER] -o OUT\n"
    "       marlo picture testcard [--size WxH] -o OUT\n"
    "       marlo picture yuv IN [--raw V --size WxH] [--to V] [--matrix 601|709] [--field upper|lower]\n"
    "                         [--shrink 2|4|8] -o OUT\n"
    "\n"
    "Works on PNG and JPEG files. The extension of OUT chooses its format: .png, .jpg or .jpeg. JPEG and\n"
    "video have no alpha; transparent parts are laid over black. Values are full range, 0 black and 255\n"
    "white, and stay so: video of 16 to 235 comes and goes through floats of full range.\n"
    "\n"
    "  info       format, size and alpha\n"
    "  convert    from one format into the other\n"
    "  scale      to another size; F is bilinear or bicubic (without it), both with a box filter in an\n"
    "             axis that gets smaller\n"
    "  composite  lays each PIC over BASE in turn, with its top left corner at x,y (0,0) and in its own\n"
    "             size or WxH; all four may be fractions. OUT has BASE's size. The opacity is 0 to 1 (1).\n"
    "             T is rgba8 (without it) or rgba16, which works in floats and makes a PNG of 16 bits.\n"
    "             A name with an ending that looks like these is protected by writing them out.\n"
    "  fade       FROM, with a weight of 1 minus F, and TO or a colour with a weight of F, 0 to 1\n"
    "  fields     interlaced pictures, the upper field being the rows 0, 2, 4 and so on. WORK is weave (IN's\n"
    "             upper field and LOWER's lower one), upper or lower (that field, with the rows of the other\n"
    "             as means of their neighbours), soften (rows weighted 1, 2, 1) or smooth (columns too)\n"
    "  testcard   colour bars, ramps, a zone plate and an alpha wedge, 640x360 without a size\n"
    "  yuv        video frames without a header: --raw says what IN is, --to what OUT becomes, if not a\n"
    "             picture file. V is uyvy, yuyv, i420, yv12, v210 or bgra; yuv422p and y41b for IN. The\n"
    "             matrix depends on the size if not given: BT.601 for 704 to 720 columns below 720 rows,\n"
    "             else BT.709. --field makes 4:2:0 chroma interlaced; --shrink divides IN's size.\n"
    "\n"
    "modes: 0 source, 1 add, 2 subtract, 3 multiply, 4 over (without a mode), 5 over-fade,\n"
    "  6 inverse-source, 7 destination, 8 inverse-destination, 9 product, 10 inverse-product, 11 maximum,\n"
    "  12 minimum\n"
    "\n"
    "options:\n"
    "  -o OUT  the output, complete or not there at all\n"
    "  --json  info as one JSON document\n"
    "\n"
    "example:\n"
    "  marlo picture composite city.jpg logo.png@20.5,12:opacity=0.6 -o titled.png\n"
    "  marlo picture yuv frame.raw --raw uyvy --size 1920x1080 -o frame.png\n";

constexpr Option kOptions[] = {{"-o", true},      {"--size", true},   {"--filter", true}, {"--color", true},
                               {"--type", true},  {"--raw", true},    {"--to", true},     {"--matrix", true},
                               {"--field", true}, {"--shrink", true}, {"--weight", true}, {"--json", false}};

struct Work {
  const char* name;
  std::span<const char* const> options;
  int (*run)(const Arguments& arguments);
};

constexpr const char* kOutputOnly[] = {"-o"};
constexpr const char* kCompositeOptions[] = {"-o", "--type"};
constexpr const char* kFadeOptions[] = {"-o", "--color", "--weight"};
constexpr const char* kInfoOptions[] = {"--json"};
constexpr const char* kScaleOptions[] = {"-o", "--size", "--filter"};
constexpr const char* kTestcardOptions[] = {"-o", "--size"};

constexpr const char* kYuvOptions[] = {"-o", "--raw", "--size", "--to", "--matrix", "--field", "--shrink"};

constexpr Work kWorks[] = {
    {"composite", kCompositeOptions, RunPictureComposite},
    {"convert", kOutputOnly, RunPictureConvert},
    {"fade", kFadeOptions, RunPictureFade},
    {"fields", kOutputOnly, RunPictureFields},
    {"info", kInfoOptions, RunPictureInfo},
    {"scale", kScaleOptions, RunPictureScale},
    {"testcard", kTestcardOptions, RunPictureTestcard},
    {"yuv", kYuvOptions, RunPictureYuv},
};

int RunPicture(const Arguments& arguments) {
  if (arguments.Positionals().empty()) throw UsageError("The command takes a kind of work, such as info.");
  const std::string& name = arguments.Positionals()[0];
  const Work* const work =
      std::find_if(std::begin(kWorks), std::end(kWorks), [&](const Work& known) { return name == known.name; });
  if (work == std::end(kWorks)) throw UsageError("There is no kind of work \"" + name + "\".");
  for (const Option& option : kOptions) {
    const bool taken = std::any_of(work->options.begin(), work->options.end(),
                                   [&](const char* known) { return std::strcmp(known, option.name) == 0; });
    if (!taken && arguments.Has(option.name)) throw UsageError(name + " takes no option " + option.name + ".");
  }
  return work->run(arguments);
}

}  // namespace

std::string OutputOfPicture(const Arguments& arguments) {
  const std::string* output = arguments.Value("-o");
  if (output == nullptr) throw UsageError("The output is missing: -o OUT.");
  RequireImageExtension(*output);
  return *output;
}

void RequireSameSize(const Image& first, const Image& second, const std::string& secondPath) {
  if (first.Width() != second.Width() || first.Height() != second.Height()) {
    throw Failure(E_INVALIDARG, secondPath, "The pictures differ in size.");
  }
}

PictureSize ParsePictureSize(const std::string& text) {
  constexpr uint64_t kLargestSide = 131071;  // What the library scales to.
  const size_t cross = text.find('x');
  const std::optional<uint64_t> width = ParseCount(text.substr(0, cross));
  const std::optional<uint64_t> height = cross == std::string::npos ? std::nullopt : ParseCount(text.substr(cross + 1));
  if (!width || !height || *width == 0 || *height == 0 || *width > kLargestSide || *height > kLargestSide) {
    throw UsageError("\"" + text + "\" is no size such as 640x360.");
  }
  return {static_cast<int32_t>(*width), static_cast<int32_t>(*height)};
}

extern const Command kPictureCommand;
const Command kPictureCommand = {"picture", "show, convert, scale, composite and fade pictures and video frames", kHelp,
                                 kOptions, RunPicture};

}  // namespace host
