#include "indexer/rows/compression.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include <zstd.h>

#include "indexer/model/facts.h"

namespace context_delta::indexer {
namespace {

constexpr int LEVEL = 1;
constexpr unsigned long long MOST_BYTES = 1u << 30;
/// A block holds up to 128 KiB and takes four bytes at least.
constexpr unsigned long long MOST_PER_BYTE = (128u << 10) / 4;

struct Free {
  void operator()(ZSTD_CCtx* context) const { ZSTD_freeCCtx(context); }
  void operator()(ZSTD_DCtx* context) const { ZSTD_freeDCtx(context); }
};

}  // namespace

std::string compressed(std::string_view bytes) {
  thread_local const std::unique_ptr<ZSTD_CCtx, Free> context(ZSTD_createCCtx());
  std::string small(ZSTD_compressBound(bytes.size()), '\0');
  const std::size_t size = ZSTD_compressCCtx(context.get(), small.data(), small.size(),
                                             bytes.data(), bytes.size(), LEVEL);
  if (ZSTD_isError(size)) throw std::runtime_error(ZSTD_getErrorName(size));
  small.resize(size);
  return small;
}

std::string decompressed(std::string_view bytes) {
  thread_local const std::unique_ptr<ZSTD_DCtx, Free> context(ZSTD_createDCtx());
  const unsigned long long size = ZSTD_getFrameContentSize(bytes.data(), bytes.size());
  if (size > std::min(MOST_BYTES, MOST_PER_BYTE * bytes.size())) throw DamagedData();
  std::string whole(size, '\0');
  const std::size_t read =
      ZSTD_decompressDCtx(context.get(), whole.data(), whole.size(), bytes.data(), bytes.size());
  if (ZSTD_isError(read) || read != whole.size()) throw DamagedData();
  return whole;
}

}  // namespace context_delta::indexer
