#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/gate.h"
#include "render/formats.h"
#include "services/delta.h"

namespace context_delta::cli {

enum class Command : unsigned char { DELTA, INDEX, GRAPH, SERVE, COMPLETION, MANUAL, HELP };
enum class Colour : unsigned char { AUTO, ALWAYS, NEVER };
/// What is asked for instead of running the command.
enum class Question : unsigned char { NONE, SHORT_HELP, HELP, VERSION };

/// How to say what an update did.
enum class Stats { NONE, TEXT, JSON };

/// What a command line asks for.
struct Settings {
  Command command = Command::DELTA;
  std::string word;  ///< the word after the command; empty when there is none
  Question question = Question::NONE;
  bool configuration = true;  ///< read files and variables that preset options
  std::filesystem::path directory = ".";
  std::optional<std::filesystem::path> index;  ///< null: storage::default_index_path()
  std::optional<std::string> at;               ///< commit of the index; null: what is checked out
  unsigned jobs = 0;                           ///< 0: as many as the machine runs at once
  bool quiet = false;
  bool verbose = false;
  Stats stats = Stats::NONE;
  std::string output = "-";  ///< a file; "-" is standard output
  Colour colour = Colour::AUTO;
  std::optional<std::string> pager;  ///< command of the shell; null: PAGER, else less
  bool no_pager = false;
  const render::Format* format = render::formats().data();
  std::int64_t token_scale = 100;  ///< percent: what a token of the caller's model counts here
  bool explain_files = false;      ///< instead of the pack
  std::vector<const Gate*> gates;  ///< what the answer must not have
  std::vector<std::filesystem::path> roots;  ///< of the tool server; none: the repository here
  services::DeltaRequest request;
  std::vector<std::string> remarks;   ///< where presets came from, a line each
  std::vector<std::string> warnings;  ///< what a project's file got wrong, a line each
};

}  // namespace context_delta::cli
