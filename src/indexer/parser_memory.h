#pragma once

#include <cstddef>

/// The memory of the parser runtime. Some texts make it ask for gigabytes within one step, so no
/// look between its steps can hold it back.
namespace context_delta::indexer {

/// What one parser and its trees have asked for. Everything is given back with the object, also
/// what a parse that was broken off had taken.
class ParserMemory {
 public:
  /// Thrown out of the runtime when a scope asks for more than its limit. The parser is of no use
  /// then: it must not even be deleted, but its memory released.
  struct Exceeded {};

  ParserMemory();
  ~ParserMemory();
  ParserMemory(const ParserMemory&) = delete;
  ParserMemory& operator=(const ParserMemory&) = delete;

  /// For its lifetime, what the runtime asks for on this thread counts here.
  class Scope {
   public:
    /// `limit`: most bytes that may be asked for, those given back included, so that it bounds the
    /// time as well. The same on every machine.
    Scope(ParserMemory& memory, std::size_t limit);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    ParserMemory* outer_;
  };

  /// Gives everything back at once.
  void release();

  /// A block's place in the list of those that are in use; its bytes follow.
  struct alignas(std::max_align_t) Block {
    Block* before;
    Block* after;
  };

 private:
  friend struct ParserAllocator;

  Block blocks_;  // a ring; this one is no block itself
  std::size_t left_ = 0;
};

}  // namespace context_delta::indexer
