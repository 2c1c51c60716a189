#include "python/host_services.h"

#include "tool_handlers/context_delta/handler.h"

namespace context_delta::python {
namespace {

/// The module as the interpreter has it now, imported when it has none.
template <FieldName name>
Object module() {
  PyObject* const modules = PyImport_GetModuleDict();
  if (PyDict_CheckExact(modules)) {
    PyObject* const known = PyDict_GetItemWithError(modules, interned<name>());
    if (known != nullptr && known != Py_None) return Object::borrowed(known);
    if (known == nullptr && PyErr_Occurred() != nullptr) throw_raised();
  }
  return Object::taken(PyImport_Import(interned<name>()));
}

Object git_history() { return module<"workers.git_history">(); }
Object git_utils() { return module<"utils.git_utils">(); }
Object repository_changes() { return module<"storage.repository_changes">(); }
Object context_builder() { return module<"workers.context_builder">(); }
Object context_docs() { return module<"tool_handlers.context_docs">(); }
Object quality_impact() { return module<"tool_handlers.quality_impact">(); }

PyObject* truth_value(bool flag) { return flag ? Py_True : Py_False; }

Object none_when_absent(const std::optional<Object>& value) { return value.value_or(Object()); }

}  // namespace

static_assert(ContextServices<HostServices>);

Object HostServices::branch_changes(const Object& root, const std::optional<Object>& base_branch,
                                    const std::optional<Object>& target_branch,
                                    std::string_view head_parameter) {
  const Object base = none_when_absent(base_branch);
  const Object target = none_when_absent(target_branch);
  return call(git_history().attribute<"branch_changes">(),
              {root.ptr(), base.ptr(), target.ptr(), interned(head_parameter)},
              argument_names<"head_parameter">());
}

Object HostServices::resolve_commit(const Object& root, std::string_view revision) {
  return call(git_utils().attribute<"resolve_commit">(), {root.ptr(), interned(revision)});
}

Object HostServices::changed_line_spans(const Object& root, const Object& base_commit,
                                        const Object& head_commit, const std::vector<Object>& files,
                                        bool merge_base) {
  const Object list = new_list(files);
  return call(
      git_history().attribute<"changed_line_spans">(),
      {root.ptr(), base_commit.ptr(), head_commit.ptr(), list.ptr(), truth_value(merge_base)},
      argument_names<"merge_base">());
}

bool HostServices::is_source_path(const Object& path, const Object& language) {
  return static_cast<bool>(
      call(git_history().attribute<"is_source_path">(), {path.ptr(), language.ptr()}));
}

Object HostServices::line_ranges(const Object& spans, const std::vector<Object>& paths) {
  const Object list = new_list(paths);
  return call(git_history().attribute<"line_ranges">(), {spans.ptr(), list.ptr()});
}

Row HostServices::change_row(const Object& change) {
  return Row(call(git_history().attribute<"change_row">(), {change.ptr()}));
}

Object HostServices::change_kinds() { return git_history().attribute<"CHANGE_KINDS">(); }

Object HostServices::file_impact(const Object& db, const std::vector<Object>& paths) {
  const Object list = new_list(paths);
  return call(repository_changes().attribute<"file_impact">(), {db.ptr(), list.ptr()});
}

std::vector<Object> HostServices::symbols_on_lines(const Object& db, const Object& ranges,
                                                   const Object& kinds, const Integer& per_file) {
  const Object limit = per_file.object();
  return items_of(call(repository_changes().attribute<"symbols_on_lines">(),
                       {db.ptr(), ranges.ptr(), kinds.ptr(), limit.ptr()},
                       argument_names<"per_file">()));
}

Integer HostServices::count_symbols_on_lines(const Object& db, const Object& ranges,
                                             const Object& kinds) {
  return call(repository_changes().attribute<"count_symbols_on_lines">(),
              {db.ptr(), ranges.ptr(), kinds.ptr()});
}

std::vector<Object> HostServices::callers_of(const Object& repository,
                                             const std::vector<Object>& ids, bool guessed,
                                             const Integer& limit) {
  const Object list = new_list(ids);
  const Object most = limit.object();
  return items_of(call(repository.attribute<"callers_of">(),
                       {list.ptr(), truth_value(guessed), most.ptr()},
                       argument_names<"guessed", "limit">()));
}

Integer HostServices::estimate_tokens(const Object& text) {
  return call(context_builder().attribute<"estimate_tokens">(), {text.ptr()});
}

std::optional<std::string> HostServices::read_repo_text(const Object& root, const Object& path,
                                                        std::int64_t most_characters) {
  const Object most = Integer(most_characters).object();
  const Object text =
      call(context_docs().attribute<"read_repo_text">(), {root.ptr(), path.ptr(), most.ptr()});
  if (text.is_none()) return std::nullopt;
  return text_of(text);
}

Row HostServices::guessed_caller_row(const Object& caller) {
  return Row(call(quality_impact().attribute<"guessed_caller_row">(), {caller.ptr()}));
}

Object HostServices::pages_citing(const OptionalObject& lens, KeptPaths<HostServices>& paths) {
  const auto rest = paths.rest();
  const Object files = new_list({rest.begin(), rest.end()});
  const Object attrgetter =
      Object::taken(PyImport_Import(interned<"operator">())).attribute<"attrgetter">();
  const Object path_of = call(attrgetter, {interned<"path">()});
  const Object map = Object::borrowed(reinterpret_cast<PyObject*>(&PyMap_Type));
  const Object each = call(map, {path_of.ptr(), files.ptr()});
  return call((*lens).attribute<"pages_citing">(), {each.ptr()});
}

std::optional<Object> host_symbols_per_row() {
  try {
    return git_history().attribute<"SYMBOLS_PER_ROW">();
  } catch (const PythonError& error) {
    if (PyErr_GivenExceptionMatches(error.value().ptr(), PyExc_ModuleNotFoundError) == 0) throw;
    // Another module missing inside the server's is its fault, not a process without a server.
    const std::string missing = text_of(Object(error.value()).attribute<"name">());
    if (missing != "workers" && missing != "workers.git_history") throw;
    return std::nullopt;
  }
}

Object error_text(const HostGitHistoryError& error) {
  return Object::taken(PyObject_Str(error.value().ptr()));
}

std::string plain_text(const Object& value) {
  return text_of(Object::taken(PyObject_Format(value.ptr(), nullptr)));
}

}  // namespace context_delta::python

namespace context_delta {
template python::Row handle_build_delta_context_pack(python::HostServices&,
                                                     const Request<python::HostServices>&);
}
