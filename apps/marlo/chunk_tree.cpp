// SPDX-License-Identifier: Apache-2.0
// Walks the chunks of a file and, two lists deep, their entries.
#include "chunk_tree.h"

#include <algorithm>

#include "progress.h"

namespace host {
namespace {

// More chunks than any real file has; a hostile one ends here.
constexpr size_t kMostChunks = 100'000;
constexpr int kDeepestList = 2;

class Walk {
 public:
  Walk(plat::File* file, Container container, int64_t fileBytes, ChunkTree* tree)
      : file_(file), container_(container), fileBytes_(fileBytes), tree_(tree) {}

  void Read(int64_t position, int64_t end, int depth, std::vector<ChunkNode>* nodes) {
    Progress progress(0);
    while (position < end) {
      progress.Update(0);
      if (++count_ > kMostChunks) {
        tree_->complete = false;
        return;
      }
      const std::optional<ChunkHeader> chunk = ReadChunkHeader(file_, container_, position);
      if (!chunk || chunk->dataOffset > end || !IsPlausibleLabel(container_, chunk->label)) {
        // A byte or two of padding at the end is no chunk.
        if (end - position >= (container_ == Container::kWave64 ? 24 : 8)) {
          tree_->problems.push_back("At offset " + std::to_string(position) + " no chunk begins where one should.");
        }
        return;
      }
      const std::string name = NameOf(container_, chunk->label);
      if (chunk->bytes > static_cast<uint64_t>(end - chunk->dataOffset)) {
        const bool cut = chunk->bytes > static_cast<uint64_t>(fileBytes_ - chunk->dataOffset);
        tree_->problems.push_back("The chunk \"" + name + "\" at offset " + std::to_string(position) +
                                  " reaches past the end of " +
                                  (cut          ? "the file."
                                   : depth == 0 ? "the form."
                                                : "its list."));
      }
      nodes->push_back({*chunk, {}, false, {}});
      const int64_t next = std::min(EndOfChunk(container_, *chunk), end);
      if (name == "LIST" || name == "list") ReadList(&nodes->back(), next, depth);
      position = next;
    }
  }

 private:
  void ReadList(ChunkNode* list, int64_t end, int depth) {
    const uint32_t typeBytes = container_ == Container::kWave64 ? 16 : 4;
    uint32_t got = 0;
    plat::SeekFile(file_, list->header.dataOffset, plat::kSeekStart, nullptr);
    if (!ZrReadFile(file_, list->listType.data(), typeBytes, &got) || got != typeBytes) return;
    list->isList = true;
    if (depth < kDeepestList) Read(list->header.dataOffset + typeBytes, end, depth + 1, &list->children);
  }

  plat::File* file_;
  Container container_;
  int64_t fileBytes_;
  ChunkTree* tree_;
  size_t count_ = 0;
};

}  // namespace

ChunkTree ReadChunkTree(plat::File* file, const FormHeader& form, int64_t fileBytes) {
  ChunkTree tree;
  // A form that claims less than its first chunk was never finished; the file shows what there is.
  const bool unfinished = form.end <= static_cast<uint64_t>(form.firstChunk);
  const int64_t end =
      unfinished ? fileBytes : static_cast<int64_t>(std::min(form.end, static_cast<uint64_t>(fileBytes)));
  Walk(file, form.container, fileBytes, &tree).Read(form.firstChunk, end, 0, &tree.chunks);
  return tree;
}

}  // namespace host
