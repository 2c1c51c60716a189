#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What the help and the manual page say beside the tables of commands and options.
namespace context_delta::cli {

/// Something and what it means; sentences without a full stop.
struct Described {
  std::string name;
  std::string meaning;
};

/// "What did this branch change, for review?"
std::string_view purpose();

std::span<const Described> examples();
std::vector<Described> exit_codes();
std::span<const Described> environment_variables();
std::span<const Described> files();

}  // namespace context_delta::cli
