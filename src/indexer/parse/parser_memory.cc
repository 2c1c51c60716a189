#include "indexer/parse/parser_memory.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

#include <tree_sitter/api.h>

namespace context_delta::indexer {
namespace {

thread_local ParserMemory* current = nullptr;

/// Chunks double from the least size to the most.
constexpr std::size_t LEAST_CHUNK_BYTES = std::size_t{256} << 10;
constexpr std::size_t MOST_CHUNK_BYTES = std::size_t{4} << 20;

/// Chunks that are kept for the next scope.
constexpr std::size_t MOST_KEPT_BYTES = std::size_t{8} << 20;

// The runtime does not expect a request to fail.
template <class Pointer>
Pointer checked(Pointer memory) {
  if (memory == nullptr) {
    std::fputs("context-delta: out of memory\n", stderr);
    std::abort();
  }
  return memory;
}

}  // namespace

/// What the runtime calls instead of the C library.
struct ParserAllocator {
  using Header = ParserMemory::Header;
  using Large = ParserMemory::Large;

  static Header* header_of(void* bytes) { return static_cast<Header*>(bytes) - 1; }
  static Large* large_of(Header* header) {
    return reinterpret_cast<Large*>(reinterpret_cast<std::byte*>(header) - offsetof(Large, header));
  }

  static void charge(std::size_t bytes) {
    if (current == nullptr) return;
    if (bytes > current->left_) throw ParserMemory::Exceeded();
    current->left_ -= bytes;
  }

  static void* take(std::size_t bytes) {
    if (current != nullptr) return current->take(bytes);
    auto* header = checked(static_cast<Header*>(std::malloc(sizeof(Header) + bytes)));
    *header = {nullptr, ParserMemory::NO_CLASS};
    return header + 1;
  }

  static void* allocate(std::size_t bytes) {
    charge(bytes);
    return take(bytes);
  }

  static void* allocate_zeros(std::size_t count, std::size_t bytes) {
    charge(count * bytes);
    return std::memset(take(count * bytes), 0, count * bytes);
  }

  static void* reallocate(void* memory, std::size_t bytes) {
    if (memory == nullptr) return allocate(bytes);
    charge(bytes);
    Header* header = header_of(memory);
    if (header->owner == nullptr) {
      return checked(static_cast<Header*>(std::realloc(header, sizeof(Header) + bytes))) + 1;
    }
    if (header->size_class == ParserMemory::NO_CLASS) return grown(large_of(header), bytes);
    const std::size_t size = ParserMemory::size_of(header->size_class);
    if (bytes <= size) return memory;
    void* larger = header->owner->take(bytes);
    std::memcpy(larger, memory, size);
    release(memory);
    return larger;
  }

  static void* grown(Large* block, std::size_t bytes) {
    block = checked(static_cast<Large*>(std::realloc(block, sizeof(Large) + bytes)));
    block->before->after = block->after->before = block;
    return block + 1;
  }

  static void release(void* memory) {
    if (memory == nullptr) return;
    Header* header = header_of(memory);
    if (header->owner == nullptr) {
      std::free(header);
    } else if (header->size_class == ParserMemory::NO_CLASS) {
      Large* block = large_of(header);
      block->before->after = block->after;
      block->after->before = block->before;
      std::free(block);
    } else {
      ParserMemory::Free*& list = header->owner->free_[header->size_class];
      list = new (memory) ParserMemory::Free{list};
    }
  }

  static void install() {
    static std::once_flag once;
    std::call_once(once, [] { ts_set_allocator(allocate, allocate_zeros, reallocate, release); });
  }
};

ParserMemory::ParserMemory() : large_{&large_, &large_, {}} {
  static_assert(sizeof(Header) + offsetof(Large, header) == sizeof(Large));
  ParserAllocator::install();
}

ParserMemory::~ParserMemory() { give_back_all(); }

std::uint32_t ParserMemory::class_of(std::size_t bytes) {
  if (bytes <= FINE_BYTES) {
    return static_cast<std::uint32_t>((std::max<std::size_t>(bytes, 1) - 1) / FINE_STEP);
  }
  const auto doublings = std::bit_width((bytes - 1) / FINE_BYTES);
  return static_cast<std::uint32_t>(FINE_CLASSES + doublings - 1);
}

std::size_t ParserMemory::size_of(std::uint32_t size_class) {
  if (size_class < FINE_CLASSES) return (size_class + 1) * FINE_STEP;
  return FINE_BYTES << (size_class - FINE_CLASSES + 1);
}

void* ParserMemory::take(std::size_t bytes) {
  return bytes <= MOST_POOLED_BYTES ? take_pooled(class_of(bytes)) : take_large(bytes);
}

void* ParserMemory::take_pooled(std::uint32_t size_class) {
  Free*& list = free_[size_class];
  if (list != nullptr) {
    void* memory = list;
    list = list->next;
    return memory;
  }
  return new (cut(sizeof(Header) + size_of(size_class))) Header{this, size_class} + 1;
}

void* ParserMemory::take_large(std::size_t bytes) {
  auto* block = checked(static_cast<Large*>(std::malloc(sizeof(Large) + bytes)));
  *block = {&large_, large_.after, {this, NO_CLASS}};
  block->after->before = large_.after = block;
  return block + 1;
}

std::byte* ParserMemory::cut(std::size_t bytes) {
  if (static_cast<std::size_t>(end_ - next_) < bytes) use_next_chunk();
  std::byte* piece = next_;
  next_ += bytes;
  return piece;
}

void ParserMemory::use_next_chunk() {
  if (next_chunk_ == chunks_.size()) {
    const std::size_t size =
        chunks_.empty() ? LEAST_CHUNK_BYTES : std::min(2 * chunks_.back().size, MOST_CHUNK_BYTES);
    chunks_.push_back({std::unique_ptr<std::byte[]>(new std::byte[size]), size});
  }
  Chunk& chunk = chunks_[next_chunk_++];
  next_ = chunk.bytes.get();
  end_ = next_ + chunk.size;
}

void ParserMemory::give_back_all() {
  for (Large* block = large_.after; block != &large_;)
    std::free(std::exchange(block, block->after));
  large_.before = large_.after = &large_;
  free_ = {};
  std::size_t kept = 0;
  std::size_t bytes = 0;
  while (kept < chunks_.size() && (bytes += chunks_[kept].size) <= MOST_KEPT_BYTES) ++kept;
  chunks_.resize(kept);
  next_chunk_ = 0;
  next_ = end_ = nullptr;
}

ParserMemory::Scope::Scope(ParserMemory& memory, std::size_t limit)
    : memory_(memory), outer_(current) {
  current = &memory;
  memory.left_ = limit;
}

ParserMemory::Scope::~Scope() {
  current = outer_;
  memory_.give_back_all();
}

}  // namespace context_delta::indexer
