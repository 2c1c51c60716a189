#pragma once

#include <span>
#include <string_view>

/// The vocabulary of evidence: how an edge is known, and why it is no proof. These words, and no
/// others, stand in the index, in exports and in reports; docs/index.md lists them.
namespace context_delta::indexer {

/// How an edge is known: of a proven one the step that proved it, of a guessed one how the caller
/// may be tied.
struct Rule {
  std::string_view text;
  std::string_view meaning;  ///< a clause, for documents
};

std::span<const Rule> rules();
/// Why an edge is guessed: clauses without a full stop.
std::span<const std::string_view> doubts();

bool is_rule(std::string_view text);
bool is_doubt(std::string_view text);

}  // namespace context_delta::indexer
