#pragma once

#include <cstdint>

#include "storage/database.h"

/// The tables of the index and the numbers they share.
namespace context_delta::storage {

/// Raised whenever a table changes: an index of another version is replaced.
inline constexpr std::int64_t SCHEMA_VERSION = 7;

/// Symbols of a file are numbered in the order of its definitions, from 1; 0 is the file's top
/// level. An id is the file's number followed by the symbol's.
inline constexpr int SYMBOL_BITS = 20;
inline constexpr std::int64_t MOST_SYMBOLS = (std::int64_t{1} << SYMBOL_BITS) - 1;

constexpr std::int64_t symbol_id(std::int64_t file, std::int64_t number) {
  return (file << SYMBOL_BITS) | number;
}

/// The kind of a file's top level, beside the kinds of definitions.
inline constexpr std::int64_t MODULE_KIND = 255;

/// How a call is known, as one number that orders guesses by likelihood: rank, then candidates.
/// `note` is the id of its rule and reason in the table of notes.
constexpr std::int64_t call_evidence(bool guessed, std::int64_t note, std::int64_t rank,
                                     std::int64_t candidates) {
  return (((rank << 12 | (candidates - 1)) << 10 | note) << 1) | (guessed ? 1 : 0);
}
constexpr bool is_guessed(std::int64_t evidence) { return (evidence & 1) != 0; }
constexpr std::int64_t note_of(std::int64_t evidence) { return evidence >> 1 & 1023; }
inline constexpr std::int64_t MOST_NOTES = 1 << 10;
inline constexpr std::int64_t MOST_CANDIDATES = 1 << 12;

/// Makes `database` an index: an empty file gets the tables, one of another version or a damaged
/// one is emptied first. Raises IndexError for a file that some other program made.
void prepare_index(const Database& database);

/// The secondary indexes, which are cheaper to make after the rows than with them.
void create_indexes(const Database& database);
void drop_indexes(const Database& database);

}  // namespace context_delta::storage
