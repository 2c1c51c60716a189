#pragma once

#include "python/native_repository.h"
#include "python/object.h"
#include "python/value.h"

namespace context_delta::python {

/// `context_delta.WikiLens`: a folder of wiki pages.
struct NativeWikiLens {
  std::filesystem::path folder;

  /// The pages that cite any of the paths, as dicts. Raises WikiError, and GitHistoryError when
  /// the folder is in no repository.
  Object pages_citing(const Object& paths) const;
};

/// The nine arguments of the operation, as they were passed.
struct DeltaArguments {
  Object repository, repo_root, base_branch, target_branch, token_budget, include_call_graph,
      include_snippets, source_only, wiki_lens;
};

/// The pack over the server's own modules.
Object host_delta_pack(const DeltaArguments& arguments, const Object& symbols_per_row);

/// The pack over our git and index, which is brought up to date first.
Object native_delta_pack(const NativeRepository& repository, const DeltaArguments& arguments);

}  // namespace context_delta::python
