#include "python/delta.h"

#include <optional>
#include <utility>

#include "python/conversion.h"
#include "python/host_services.h"
#include "services/delta.h"
#include "tool_handlers/context_delta/context_delta.h"
#include "wiki/wiki_lens.h"

namespace context_delta::python {
namespace {

std::optional<Object> unless_none(const Object& value) {
  if (value.is_none()) return std::nullopt;
  return value;
}

std::optional<std::filesystem::path> wiki_folder(const Object& lens) {
  if (lens.is_none()) return std::nullopt;
  const py::handle handle(lens.ptr());
  if (py::isinstance<NativeWikiLens>(handle)) return handle.cast<NativeWikiLens&>().folder;
  PyErr_Format(PyExc_TypeError,
               "wiki_lens must be a context_delta.WikiLens or None where repository is a "
               "context_delta.Repository, not %.200s",
               Py_TYPE(lens.ptr())->tp_name);
  throw_raised();
}

services::DeltaRequest request_of(const DeltaArguments& arguments) {
  services::DeltaRequest request;
  request.base_branch = optional_text(arguments.base_branch, "base_branch");
  request.target_branch = optional_text(arguments.target_branch, "target_branch");
  request.token_budget = integer_of(arguments.token_budget);
  request.include_call_graph = static_cast<bool>(arguments.include_call_graph);
  request.include_snippets = static_cast<bool>(arguments.include_snippets);
  request.source_only = static_cast<bool>(arguments.source_only);
  request.wiki = wiki_folder(arguments.wiki_lens);
  return request;
}

json::Mapping pack_of(const NativeRepository& repository, const std::filesystem::path& root,
                      const services::DeltaRequest& request, const Object& no_progress) {
  const std::filesystem::path& index_path = repository.db().path;
  try {
    const git_utils::Git git(root);
    if (git.common_directory() != repository.common_directory()) {
      throw py::value_error("repo_root " + root.string() + " is not in the repository " +
                            repository.root().string());
    }
    return services::delta_answer(git, index_path, request, updater(no_progress)).pack;
  } catch (const git_utils::GitHistoryError& error) {
    return services::error_result(error);
  }
}

}  // namespace

Object host_delta_pack(const DeltaArguments& arguments, const Object& symbols_per_row) {
  HostServices services(symbols_per_row);
  return handle_build_delta_context_pack(services,
                                         Request<HostServices>{
                                             .repository = arguments.repository,
                                             .repo_root = arguments.repo_root,
                                             .base_branch = unless_none(arguments.base_branch),
                                             .target_branch = unless_none(arguments.target_branch),
                                             .token_budget = arguments.token_budget,
                                             .include_call_graph = arguments.include_call_graph,
                                             .include_snippets = arguments.include_snippets,
                                             .source_only = arguments.source_only,
                                             .wiki_lens = OptionalObject(arguments.wiki_lens),
                                         })
      .object();
}

Object native_delta_pack(const NativeRepository& repository, const DeltaArguments& arguments) {
  repository.check_open();
  const services::DeltaRequest request = request_of(arguments);
  const std::filesystem::path root = path_of(arguments.repo_root);
  const Object no_progress;
  json::Mapping pack;
  {
    const py::gil_scoped_release unlocked;
    pack = pack_of(repository, root, request, no_progress);
  }
  return object_of(pack);
}

Object NativeWikiLens::pages_citing(const Object& paths) const {
  std::vector<std::string> texts;
  for (const Object& path : paths) texts.push_back(text_of(path));
  json::List pages;
  {
    const py::gil_scoped_release unlocked;
    const git_utils::Git git(folder);
    auto next = texts.begin();
    pages = wiki::WikiLens(folder, git).pages_citing([&]() -> std::optional<std::string> {
      if (next == texts.end()) return std::nullopt;
      return std::move(*next++);
    });
  }
  return object_of(json::Value(std::move(pages)));
}

}  // namespace context_delta::python
