#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "render/formats.h"
#include "services/delta.h"

namespace context_delta::cli {

enum class Command : unsigned char { DELTA, INDEX, GRAPH };
enum class Colour : unsigned char { AUTO, ALWAYS, NEVER };
/// What is asked for instead of running the command.
enum class Question : unsigned char { NONE, SHORT_HELP, HELP, VERSION };

/// What a command line asks for.
struct Settings {
  Command command = Command::DELTA;
  Question question = Question::NONE;
  std::filesystem::path directory = ".";
  std::optional<std::filesystem::path> index;  ///< null: storage::default_index_path()
  unsigned jobs = 0;                           ///< 0: as many as the machine runs at once
  bool quiet = false;
  bool verbose = false;
  std::string output = "-";  ///< a file; "-" is standard output
  Colour colour = Colour::AUTO;
  const render::Format* format = render::formats().data();
  std::int64_t token_scale = 100;  ///< percent: what a token of the caller's model counts here
  bool explain_files = false;      ///< instead of the pack
  services::DeltaRequest request;
};

}  // namespace context_delta::cli
