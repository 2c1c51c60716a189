#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// The memory of the parser runtime. A parse asks for millions of small blocks, which come from
/// large ones here and go with them all at once. Some texts make it ask for gigabytes within one
/// step, so no look between its steps can hold it back: a limit can.
namespace context_delta::indexer {

/// Memory for one parse after another, on one thread at a time.
class ParserMemory {
 public:
  /// Thrown out of the runtime when a scope asks for more than its limit. Whatever the runtime was
  /// working on is of no use then.
  struct Exceeded {};

  ParserMemory();
  ~ParserMemory();
  ParserMemory(const ParserMemory&) = delete;
  ParserMemory& operator=(const ParserMemory&) = delete;

  /// For its lifetime, what the runtime asks for on this thread comes from here. Everything is
  /// given back with the scope: parsers and trees made within it are gone then, and need not be
  /// deleted before.
  class Scope {
   public:
    /// `limit`: most bytes that may be asked for, those given back included, so that it bounds the
    /// time as well. The same on every machine.
    Scope(ParserMemory& memory, std::size_t limit);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    ParserMemory& memory_;
    ParserMemory* outer_;
  };

 private:
  friend struct ParserAllocator;

  /// What stands before the bytes of every block.
  struct alignas(std::max_align_t) Header {
    ParserMemory* owner;       // null: asked for outside of any scope
    std::uint32_t size_class;  // NO_CLASS: a block of its own
  };
  /// A block given back, waiting for the next request of its size.
  struct Free {
    Free* next;
  };
  /// A block too large to be cut from a chunk, in a ring of its kind.
  struct alignas(std::max_align_t) Large {
    Large* before;
    Large* after;
    Header header;
  };
  struct Chunk {
    std::unique_ptr<std::byte[]> bytes;
    std::size_t size = 0;
  };

  /// Up to FINE_BYTES, sizes are rounded up to a multiple of the first; beyond, to a power of two.
  static constexpr std::size_t FINE_STEP = 16;
  static constexpr std::size_t FINE_BYTES = 512;
  /// Larger blocks are the C library's.
#ifdef CONTEXT_DELTA_SANITIZED
  static constexpr std::size_t MOST_POOLED_BYTES = 0;  // so that sanitizers see each block
#else
  static constexpr std::size_t MOST_POOLED_BYTES = 64 * 1024;
#endif
  static constexpr std::size_t FINE_CLASSES = FINE_BYTES / FINE_STEP;
  static constexpr std::size_t CLASSES = FINE_CLASSES + 7;
  static constexpr std::uint32_t NO_CLASS = 0xFFFFFFFF;

  static std::uint32_t class_of(std::size_t bytes);
  static std::size_t size_of(std::uint32_t size_class);

  void* take(std::size_t bytes);
  void* take_pooled(std::uint32_t size_class);
  void* take_large(std::size_t bytes);
  std::byte* cut(std::size_t bytes);
  void use_next_chunk();
  void give_back_all();

  std::size_t left_ = 0;  // of the scope's limit
  std::array<Free*, CLASSES> free_{};
  std::vector<Chunk> chunks_;
  std::size_t next_chunk_ = 0;
  std::byte* next_ = nullptr;  // what is left of the current chunk
  std::byte* end_ = nullptr;
  Large large_;  // the ring; this one is no block itself
};

}  // namespace context_delta::indexer
