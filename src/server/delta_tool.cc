#include "server/delta_tool.h"

#include <optional>
#include <string>

#include "indexer/update.h"
#include "server/delta_schema.h"
#include "services/delta.h"
#include "storage/repository.h"
#include "utils/git_utils.h"
#include "wiki/wiki_lens.h"

namespace context_delta::server {
namespace {

using Type = Parameter::Type;

/// Hosts refuse results of more than about 25,000 of their tokens. One copy of a result of this
/// many estimated ones stays below; a host that hands its model both copies counts twice as many.
constexpr std::int64_t MOST_TOKENS = 20'000;

constexpr Parameter PARAMETERS[] = {
    {.name = "action",
     .type = Type::STRING,
     .description = "what to look at",
     .only_value = "delta"},
    {.name = "repo_root",
     .type = Type::STRING,
     .description = "a folder of the repository, absolute; may be left out when the server was "
                    "started for one repository"},
    {.name = "base_branch",
     .type = Type::STRING,
     .description = "branch, tag or commit to compare with; null: the repository's default branch"},
    {.name = "target_branch",
     .type = Type::STRING,
     .description = "branch, tag or commit to review, checked out or not; null: what is checked "
                    "out"},
    {.name = "uncommitted",
     .type = Type::BOOLEAN,
     .description = "review the changes and new files that are not committed too; only without "
                    "target_branch. base_branch \"HEAD\" then shows them alone",
     .default_number = 0},
    {.name = "token_budget",
     .type = Type::INTEGER,
     .description =
         "most tokens of the answer's rows. When something was omitted, more tokens show "
         "more, but for what no budget lists: more than 50 symbols of a file, more than "
         "10 callers of a symbol, callers of symbols after the first 20",
     .default_number = services::DEFAULT_TOKEN_BUDGET,
     .most = MOST_TOKENS},
    {.name = "include_call_graph",
     .type = Type::BOOLEAN,
     .description = "list who calls the changed symbols",
     .default_number = 1},
    {.name = "include_snippets",
     .type = Type::BOOLEAN,
     .description = "show the first changed lines of the first files",
     .default_number = 0},
    {.name = "source_only",
     .type = Type::BOOLEAN,
     .description = "leave out tests, documents and generated files",
     .default_number = 1},
    {.name = "wiki",
     .type = Type::STRING,
     .description =
         "a folder of Markdown pages that name their sources, relative to the repository "
         "or absolute: list those that the change may make stale"},
};

constexpr std::string_view DESCRIPTION =
    "What did a branch change, for review? Compares any two commits, checked out or not: the "
    "branch since it left its base; with uncommitted, also what is not committed yet. "
    "Answers in one piece, cut to a token budget, with the changed files by impact, the symbols on "
    "the changed lines, their callers (proven; guessed ones apart, in neighbours), and counts of "
    "all that was left out. Use it first when reviewing a branch or a pull request, or to see what "
    "a change may break. Do not use it for the full text of a diff (git diff), "
    "for reading files, or for code that did not change. The first call on a "
    "repository indexes it, which may take a while.";

std::optional<std::string> text_of(const Call& call, std::string_view name) {
  const json::Value& value = call.arguments.at(name);
  if (value.is_null()) return std::nullopt;
  return *value.as<std::string>();
}

bool flag_of(const Call& call, std::string_view name) {
  return *call.arguments.at(name).as<bool>();
}

services::DeltaRequest request_of(const Surroundings& surroundings, const Call& call) {
  services::DeltaRequest request;
  request.base_branch = text_of(call, "base_branch");
  request.target_branch = text_of(call, "target_branch");
  if (flag_of(call, "uncommitted")) {
    if (request.target_branch) {
      throw ToolError("uncommitted reviews what is checked out: leave target_branch out");
    }
    request.uncommitted = services::Uncommitted::ALL;
  }
  request.token_budget =
      *call.arguments.at("token_budget").as<std::int64_t>() * 100 / surroundings.token_scale;
  request.include_call_graph = flag_of(call, "include_call_graph");
  request.include_snippets = flag_of(call, "include_snippets");
  request.source_only = flag_of(call, "source_only");
  return request;
}

services::Update updater(const Surroundings& surroundings, const Call& call) {
  indexer::UpdateOptions options;
  options.threads = surroundings.jobs;
  options.cancelled = call.cancelled;
  options.progress = call.progress;
  return [options](storage::Repository& repository, const git_utils::Git& git,
                   const std::string& commit) {
    return indexer::update(repository, git, commit, options);
  };
}

json::Mapping make_pack(const Surroundings& surroundings, const Call& call) {
  services::DeltaRequest request = request_of(surroundings, call);
  const auto folder = surroundings.roots.folder(text_of(call, "repo_root"), "repo_root");
  try {
    const git_utils::Git git(folder, {.cancelled = call.cancelled});
    surroundings.roots.check(git);
    if (const auto wiki = text_of(call, "wiki")) {
      request.wiki = surroundings.roots.folder_below(git.root(), *wiki, "wiki");
    }
    const std::filesystem::path path = storage::default_index_path(git.common_directory());
    return services::delta_answer(git, path, request, updater(surroundings, call)).pack;
  } catch (const git_utils::GitHistoryError& error) {
    return services::error_result(error);
  }
}

Answer call_delta(const Surroundings& surroundings, const Call& call) {
  try {
    json::Mapping pack = make_pack(surroundings, call);
    const bool is_error = pack.find("error") != nullptr;
    return {std::move(pack), is_error};
  } catch (const wiki::WikiError& error) {
    throw ToolError(error.what());
  } catch (const storage::IndexError& error) {
    if (error.cause != storage::IndexError::Cause::BUSY) throw;
    throw ToolError(std::string(error.what()) + ": try again later");
  }
}

}  // namespace

constinit const Tool DELTA_TOOL = {
    .name = "context",
    .title = "What a branch changed",
    .description = DESCRIPTION,
    .parameters = PARAMETERS,
    .output_schema = delta_schema,
    .call = call_delta,
};

}  // namespace context_delta::server
