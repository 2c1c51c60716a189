#include "indexer/parser_memory.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include <tree_sitter/api.h>

namespace context_delta::indexer {
namespace {

thread_local ParserMemory* current = nullptr;

}  // namespace

/// What the runtime calls instead of the C library.
struct ParserAllocator {
  using Block = ParserMemory::Block;

  static Block* block_of(void* bytes) { return static_cast<Block*>(bytes) - 1; }

  /// Puts a block into the ring of the current scope; a ring of its own outside of any.
  static void* listed(Block* block) {
    // The runtime does not expect a request to fail.
    if (block == nullptr) {
      std::fputs("context-delta: out of memory\n", stderr);
      std::abort();
    }
    if (current == nullptr) {
      block->before = block->after = block;
    } else {
      Block& ring = current->blocks_;
      *block = {&ring, ring.after};
      block->after->before = block;
      ring.after = block;
    }
    return block + 1;
  }

  static void unlist(Block* block) {
    block->before->after = block->after;
    block->after->before = block->before;
  }

  static void charge(std::size_t bytes) {
    if (current == nullptr) return;
    if (bytes > current->left_) throw ParserMemory::Exceeded();
    current->left_ -= bytes;
  }

  static void* allocate(std::size_t bytes) {
    charge(bytes);
    return listed(static_cast<Block*>(std::malloc(sizeof(Block) + bytes)));
  }

  static void* allocate_zeros(std::size_t count, std::size_t bytes) {
    charge(count * bytes);
    return listed(static_cast<Block*>(std::calloc(1, sizeof(Block) + count * bytes)));
  }

  static void* reallocate(void* memory, std::size_t bytes) {
    if (memory == nullptr) return allocate(bytes);
    charge(bytes);
    unlist(block_of(memory));
    return listed(static_cast<Block*>(std::realloc(block_of(memory), sizeof(Block) + bytes)));
  }

  static void release(void* memory) {
    if (memory == nullptr) return;
    unlist(block_of(memory));
    std::free(block_of(memory));
  }

  static void install() {
    static std::once_flag once;
    std::call_once(once, [] { ts_set_allocator(allocate, allocate_zeros, reallocate, release); });
  }
};

ParserMemory::ParserMemory() : blocks_{&blocks_, &blocks_} { ParserAllocator::install(); }

ParserMemory::~ParserMemory() { release(); }

void ParserMemory::release() {
  for (Block* block = blocks_.after; block != &blocks_;) {
    Block* after = block->after;
    std::free(block);
    block = after;
  }
  blocks_ = {&blocks_, &blocks_};
}

ParserMemory::Scope::Scope(ParserMemory& memory, std::size_t limit) : outer_(current) {
  current = &memory;
  memory.left_ = limit;
}

ParserMemory::Scope::~Scope() { current = outer_; }

}  // namespace context_delta::indexer
