// SPDX-License-Identifier: Apache-2.0
// marlo info: format, length and chunks of files, and what is broken in them.
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "chunk_tree.h"
#include "command.h"
#include "errors.h"
#include "json_output.h"
#include "marlo110k/formattext.h"
#include "marlo110k/wavefile.h"
#include "open_file.h"
#include "size_plan.h"
#include "sound_layout.h"
#include "unicode.h"

namespace host {
namespace {

constexpr char kHelp[] =
    "usage: marlo info FILE... [--json]\n"
    "\n"
    "Tells the format, the channels with their speaker mask, the length and the chunks of Wave, Wave64\n"
    "and AIFF files, and what is broken if something is. Files are read only.\n"
    "\n"
    "options:\n"
    "  --json  the same as one JSON document\n"
    "\n"
    "example:\n"
    "  marlo info take1.wav take2.w64\n";

constexpr Option kOptions[] = {{"--json", false}};

struct FileReport {
  FormHeader form;
  int64_t fileBytes = 0;
  bool hasFormat = false;  ///< An uncompressed format with samples was read.
  _zrwaveformat format;
  int64_t frames = 0;
  int64_t dataOffset = 0;
  ChunkTree tree;
};

FileReport Examine(const std::string& path) {
  const OpenFile file = OpenFile::ForReading(path);
  const std::optional<FormHeader> form = ReadFormHeader(file.Get());
  if (!form) throw Failure(ZR_E_UNKNOWN_FORMAT, path);
  FileReport report;
  report.form = *form;
  report.fileBytes = LengthOf(file.Get(), path);
  report.tree = ReadChunkTree(file.Get(), *form, report.fileBytes);

  std::string reason;
  if (const std::optional<SoundLayout> layout = FindSound(file.Get(), report.fileBytes, &reason)) {
    const SizePlan plan = PlanSizes(file.Get(), report.fileBytes, *layout);
    for (const SizeChange& change : plan.changes) {
      report.tree.problems.push_back("The " + NameOf(*layout, change) + " says " + std::to_string(change.before) +
                                     " where the file has " + std::to_string(change.after) + ".");
    }
  } else {
    report.tree.problems.push_back(reason);
  }
  const std::unique_ptr<WAVEFORMATEX, decltype(&std::free)> wfx(
      ZrGetFileWfx(ToUtf16(path).c_str(), &report.frames, &report.dataOffset), &std::free);
  if (wfx && wfx->nSamplesPerSec != 0) {
    report.hasFormat = true;
    report.format.Init(sizeof report.format, wfx.get());
  }
  return report;
}

/// "48,000 Hz, 16 Bit, Stereo, PCM", in the user's number form.
std::string DescriptionOf(const _zrwaveformat& format) {
  char16_t text[256];
  return ToUtf8(ZrAudio_GetFormatText(&format, text, std::size(text), 0));
}

Json JsonOf(Container container, const std::vector<ChunkNode>& nodes) {
  Json list = Json::array();
  for (const ChunkNode& node : nodes) {
    Json entry{
        {"id", NameOf(container, node.header.label)}, {"offset", node.header.offset}, {"bytes", node.header.bytes}};
    if (node.isList) {
      entry["list_type"] = NameOf(container, node.listType);
      entry["chunks"] = JsonOf(container, node.children);
    }
    list.push_back(std::move(entry));
  }
  return list;
}

Json JsonOf(const std::string& path, const FileReport& report) {
  Json document{{"file", path}, {"container", NameOf(report.form.container)}, {"file_bytes", report.fileBytes}};
  if (report.hasFormat) {
    const _zrwaveformat& format = report.format;
    document["type"] = NameOf(static_cast<ZRSAMPLETYPE>(format.sampleType));
    document["description"] = DescriptionOf(format);
    document["rate"] = format.samplesPerSec;
    document["channels"] = format.channels;
    document["channel_mask"] = format.channelMask;
    document["frames"] = report.frames;
    document["seconds"] = static_cast<double>(report.frames) / format.samplesPerSec;
    document["data_offset"] = report.dataOffset;
  }
  document["chunks"] = JsonOf(report.form.container, report.tree.chunks);
  document["chunks_complete"] = report.tree.complete;
  document["problems"] = report.tree.problems;
  return document;
}

void PrintChunks(Container container, const std::vector<ChunkNode>& nodes, int depth) {
  for (const ChunkNode& node : nodes) {
    std::string name(static_cast<size_t>(depth) * 2, ' ');
    name += NameOf(container, node.header.label);
    if (node.isList) name.append(1, ' ').append(NameOf(container, node.listType));
    std::printf("  %-14s offset %12lld  bytes %14llu\n", name.c_str(), static_cast<long long>(node.header.offset),
                static_cast<unsigned long long>(node.header.bytes));
    PrintChunks(container, node.children, depth + 1);
  }
}

void Print(const std::string& path, const FileReport& report) {
  std::printf("%s: %s", path.c_str(), NameOf(report.form.container));
  if (report.hasFormat) {
    const _zrwaveformat& format = report.format;
    std::printf(", %s", DescriptionOf(format).c_str());
    if (format.channelMask != 0) std::printf(" (mask 0x%X)", format.channelMask);
    std::printf(", %lld frames, %.3f s", static_cast<long long>(report.frames),
                static_cast<double>(report.frames) / format.samplesPerSec);
  } else {
    std::printf(", no uncompressed samples");
  }
  std::printf(", %lld bytes\n", static_cast<long long>(report.fileBytes));
  PrintChunks(report.form.container, report.tree.chunks, 0);
  if (!report.tree.complete) std::printf("  and more chunks\n");
  for (const std::string& problem : report.tree.problems) std::printf("  broken: %s\n", problem.c_str());
}

int RunInfo(const Arguments& arguments) {
  if (arguments.Positionals().empty()) throw UsageError("The command takes at least one file.");
  const bool json = arguments.Has("--json");
  Json files = Json::array();
  int code = kFine;
  for (const std::string& path : arguments.Positionals()) {
    try {
      const FileReport report = Examine(path);
      if (json) {
        files.push_back(JsonOf(path, report));
      } else {
        Print(path, report);
      }
    } catch (const Failure& failure) {
      // The other files are still told about, unless the user has had enough.
      if (failure.Code() == ZR_E_CANCELLED) throw;
      std::fprintf(stderr, "marlo info: %s\n", failure.what());
      code = kFailed;
    }
  }
  if (json) PrintJson(Json{{"files", files}});
  return code;
}

}  // namespace

extern const Command kInfoCommand;
const Command kInfoCommand = {"info", "tell format, length and chunks of files", kHelp, kOptions, RunInfo};

}  // namespace host
