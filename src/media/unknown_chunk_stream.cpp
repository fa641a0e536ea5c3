// SPDX-License-Identifier: Apache-2.0
// The stream of a RIFF file's foreign chunks, read from the file as the stream is.
#include <algorithm>
#include <cstring>

#include "kernel/item_stream.h"
#include "marlo110k/riff.h"
#include "media/riff/framing.h"

namespace marlo {
namespace {

constexpr uint32_t kEmptyChunksAllowed = 50;

struct ForeignChunk {
  uint32_t id;
  uint32_t dataBytes;
  uint64_t dataOffset;  ///< In the file.
};

/// Goes from chunk to chunk. It keeps its own place, as the filter may move the file's position.
class ChunkWalk {
 public:
  ChunkWalk(plat::File* file, ZRCHUNKFILTER filter) : file_(file), filter_(filter) {}

  /// Goes to the first chunk; a file that isn't a RIFF has none.
  void Begin() {
    emptyChunks_ = 0;
    nextOffset_ = riff::RiffFraming::kFileHeaderBytes;
    if (!plat::SeekFile(file_, 0, plat::kSeekStart, nullptr) || FAILED(riff_ReadFileID(file_, &bound_, nullptr))) {
      bound_ = 0;
    }
  }

  /// Finds the next chunk that passes. @return S_FALSE when there is none, E_FAIL for a file that isn't to be trusted.
  HRESULT Next(ForeignChunk* chunk) {
    while (bound_ >= riff::RiffFraming::kHeaderBytes) {
      if (!plat::SeekFile(file_, static_cast<int64_t>(nextOffset_), plat::kSeekStart, nullptr) ||
          FAILED(riff_ReadChunkHeader(file_, &chunk->id, &chunk->dataBytes))) {
        return S_FALSE;
      }
      const uint64_t taken = riff::RiffFraming::kHeaderBytes + riff::RiffFraming::Padded(chunk->dataBytes);
      chunk->dataOffset = nextOffset_ + riff::RiffFraming::kHeaderBytes;
      nextOffset_ += taken;
      bound_ = riff::RiffFraming::TakeOff(bound_, taken);
      if (filter_(file_, chunk->id) != 0) continue;
      const HRESULT judged = riff_ValidateChunkHeader(chunk->id, static_cast<int32_t>(chunk->dataBytes));
      if (judged == ZR_E_BAD_STREAM) return E_FAIL;
      if (judged != ZR_E_EMPTY_CHUNK) return S_OK;
      if (++emptyChunks_ > kEmptyChunksAllowed) return E_FAIL;
    }
    return S_FALSE;
  }

 private:
  plat::File* file_;
  ZRCHUNKFILTER filter_;
  uint64_t nextOffset_ = 0;
  uint32_t bound_ = 0;
  uint32_t emptyChunks_ = 0;
};

/// What stands before the bytes of a chunk.
struct ChunkItem {
  tZRSTREAMITEM item;
  uint32_t chunkId;
  uint32_t chunkBytes;
};
static_assert(sizeof(ChunkItem) == 36);

class UnknownChunkStream final : public CZrGenericStreamBase<UnknownChunkStream> {
 public:
  HRESULT Read(void* buffer, uint32_t bytes, uint32_t* bytesRead) override {
    if (bytesRead != nullptr) *bytesRead = 0;
    if (buffer == nullptr || bytes == 0) return E_INVALIDARG;
    if (stage_ == Stage::kHeader && given_ == 0) header_.itemCount = CountChunks();
    auto* target = static_cast<uint8_t*>(buffer);
    uint32_t moved = 0;
    HRESULT result = S_OK;
    while (moved < bytes && result == S_OK) {
      const uint32_t before = given_;
      result = ReadOn(target + moved, bytes - moved);
      moved += given_ - before;
      if (result == S_OK) MoveOn();
    }
    if (bytesRead != nullptr) *bytesRead = moved;
    return result;
  }

  HRESULT Seek(int64_t, uint32_t origin, uint64_t* newPosition) override {
    if (newPosition != nullptr) *newPosition = 0;
    if (file_ == nullptr || file_ == plat::kInvalidFile) return ZR_E_END_OF_STREAM;
    if (origin == STREAM_SEEK_CUR) return E_NOTIMPL;
    if (origin > STREAM_SEEK_END) return STG_E_INVALIDFUNCTION;
    Enter(Stage::kHeader);
    return S_OK;
  }

 private:
  friend StreamObject;
  /// What the next byte belongs to.
  enum class Stage : uint8_t { kHeader, kItem, kData, kPad, kEnd };

  UnknownChunkStream(plat::File* file, ZRCHUNKFILTER filter)
      : CZrGenericStreamBase(kZrUnknownChunkStream), file_(file), walk_(file, filter) {}
  ~UnknownChunkStream() { plat::CloseFile(file_); }

  uint32_t CountChunks() {
    uint32_t count = 0;
    ForeignChunk chunk;
    walk_.Begin();
    while (walk_.Next(&chunk) == S_OK) ++count;
    return count;
  }

  void Enter(Stage stage) {
    stage_ = stage;
    given_ = 0;
  }

  /// Gives at most `bytes` of what the stage holds and counts them in `given_`.
  HRESULT ReadOn(uint8_t* target, uint32_t bytes) {
    switch (stage_) {
      case Stage::kHeader:
        Give(&header_, sizeof header_, target, bytes);
        return S_OK;
      case Stage::kItem:
        Give(&item_, sizeof item_, target, bytes);
        return S_OK;
      case Stage::kData: {
        const uint32_t wanted = std::min(bytes, chunk_.dataBytes - given_);
        const uint32_t taken = ReadFileAt(chunk_.dataOffset + given_, target, wanted);
        given_ += taken;
        return taken == wanted ? S_OK : End(ZR_E_FILE_READ);
      }
      case Stage::kPad:
        // The last chunk of a file often lacks its pad byte.
        *target = 0;
        ReadFileAt(chunk_.dataOffset + chunk_.dataBytes, target, 1);
        given_ = 1;
        return S_OK;
      case Stage::kEnd:
        break;
    }
    return end_;
  }

  /// Enters the next stage when this one was given.
  void MoveOn() {
    if (stage_ == Stage::kHeader && given_ == sizeof header_) {
      walk_.Begin();
      EnterNextChunk();
    } else if (stage_ == Stage::kItem && given_ == sizeof item_) {
      Enter(Stage::kData);
    } else if (stage_ == Stage::kData && given_ == chunk_.dataBytes) {
      if ((chunk_.dataBytes & 1) != 0) {
        Enter(Stage::kPad);
      } else {
        EnterNextChunk();
      }
    } else if (stage_ == Stage::kPad && given_ == 1) {
      EnterNextChunk();
    }
  }

  void EnterNextChunk() {
    Enter(Stage::kItem);
    const HRESULT found = walk_.Next(&chunk_);
    if (found != S_OK) {
      End(found);
      return;
    }
    item_ = {{sizeof(tZRSTREAMITEM), kZrItemStreamVersion, kZrUnknownChunkStream,
              chunk_.dataBytes + riff::RiffFraming::kHeaderBytes},
             chunk_.id,
             chunk_.dataBytes};
  }

  /// Every read from here on gives `result`, until a seek.
  HRESULT End(HRESULT result) {
    stage_ = Stage::kEnd;
    end_ = result;
    return result;
  }

  void Give(const void* part, uint32_t partBytes, uint8_t* target, uint32_t bytes) {
    const uint32_t taken = std::min(bytes, partBytes - given_);
    std::memcpy(target, static_cast<const uint8_t*>(part) + given_, taken);
    given_ += taken;
  }

  uint32_t ReadFileAt(uint64_t offset, void* buffer, uint32_t bytes) const {
    uint32_t taken = 0;
    if (!plat::SeekFile(file_, static_cast<int64_t>(offset), plat::kSeekStart, nullptr)) return 0;
    ZrReadFile(file_, buffer, bytes, &taken);
    return taken;
  }

  plat::File* file_;
  ChunkWalk walk_;
  Stage stage_ = Stage::kHeader;
  uint32_t given_ = 0;  ///< Bytes of the stage that were read.
  ForeignChunk chunk_ = {};
  ChunkItem item_ = {};
  HRESULT end_ = S_OK;
};

}  // namespace
}  // namespace marlo

HRESULT ZrMetaStream_CreateUnknownChunk(plat::File* file, ZRCHUNKFILTER filter, IStream** stream) noexcept {
  if (stream != nullptr) *stream = nullptr;
  if (file == nullptr || filter == nullptr || stream == nullptr) return E_INVALIDARG;
  *stream = marlo::UnknownChunkStream::Make(file, filter);
  return *stream == nullptr ? E_OUTOFMEMORY : S_OK;
}
