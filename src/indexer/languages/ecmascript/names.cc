#include "indexer/languages/ecmascript/names.h"

#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::ecmascript {

bool is_name_byte(char byte) { return kit::is_identifier_byte(byte) || byte == '$' || byte == '#'; }

bool is_name(std::string_view text) {
  if (text.empty() || (text.front() >= '0' && text.front() <= '9')) return false;
  for (const char byte : text) {
    if (!is_name_byte(byte)) return false;
  }
  return true;
}

DefinitionIndex number_in(std::string_view text) {
  DefinitionIndex number = NOWHERE;
  for (const char byte : text.substr(0, 9)) {
    if (byte < '0' || byte > '9') break;
    number = (number == NOWHERE ? 0 : number * 10) + (byte - '0');
  }
  return number;
}

bool is_in_range(const Interface& facts, DefinitionIndex index) {
  return index == NOWHERE ||
         (index >= 0 && static_cast<std::size_t>(index) < facts.definitions.size());
}

std::size_t end_of_brackets(std::string_view text) {
  int open = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char byte = text[i];
    if (byte == '<' || byte == '(' || byte == '[' || byte == '{') ++open;
    const bool arrow = byte == '>' && i > 0 && text[i - 1] == '=';
    if ((byte == '>' && !arrow) || byte == ')' || byte == ']' || byte == '}') --open;
    if (open == 0) return i + 1;
  }
  return text.size();
}

}  // namespace context_delta::indexer::ecmascript
