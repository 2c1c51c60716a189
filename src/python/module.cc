#include <exception>
#include <string>

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include "python/conversion.h"
#include "python/delta.h"
#include "python/errors.h"
#include "python/handler_function.h"
#include "python/native_repository.h"
#include "python/python_error.h"
#include "tool_handlers/context_delta/budget.h"
#include "tool_handlers/context_delta/changed_symbols.h"
#include "tool_handlers/context_delta/context_delta.h"
#include "tool_handlers/context_delta/section_assembly.h"
#include "tool_handlers/context_delta/snippets.h"
#include "workers/git_history.h"

namespace context_delta::python {
namespace {

/// Whether the class was bound before: one file may be imported under two names.
template <class Type>
bool is_bound() {
  return py::detail::get_type_info(typeid(Type)) != nullptr;
}

template <class Type, class... Options>
py::class_<Type, Options...> new_class(const py::module_& module, const char* name,
                                       const char* doc) {
  return py::class_<Type, Options...>(module, name, py::module_local(), doc);
}

void bind_records(const py::module_& module) {
  using repository_changes::FileImpact;
  using repository_changes::SymbolOnLines;
  using storage::Caller;
  new_class<NativeDatabase>(module, "Database", "The index file that a Repository reads.")
      .def_readonly("path", &NativeDatabase::path, "The SQLite file, a pathlib.Path.")
      .def("__repr__", [](const NativeDatabase& db) {
        return "<context_delta.Database " + db.path.string() + ">";
      });
  new_class<FileImpact>(module, "FileImpact", "How much of the index depends on a file.")
      .def_readonly("references", &FileImpact::references,
                    "Proven references from other files into its symbols.")
      .def_readonly("symbols", &FileImpact::symbols, "Symbols it defines.")
      .def_readonly("language", &FileImpact::language, "A language's name, or None.");
  new_class<SymbolOnLines>(module, "SymbolOnLines",
                           "A symbol that lies on lines asked for; lines count from 1.")
      .def_readonly("id", &SymbolOnLines::id)
      .def_readonly("path", &SymbolOnLines::path)
      .def_readonly("start_line", &SymbolOnLines::start_line)
      .def_readonly("end_line", &SymbolOnLines::end_line)
      .def_readonly("fqn", &SymbolOnLines::fqn)
      .def_readonly("name", &SymbolOnLines::name)
      .def_readonly("kind", &SymbolOnLines::kind)
      .def_readonly("signature", &SymbolOnLines::signature)
      .def("__repr__", [](const SymbolOnLines& symbol) {
        return "<context_delta.SymbolOnLines " + symbol.fqn + " " + symbol.path + ":" +
               std::to_string(symbol.start_line) + ">";
      });
  new_class<Caller>(module, "Caller", "A caller of a symbol; lines count from 1.")
      .def_readonly("of", &Caller::of, "The id of the symbol called.")
      .def_readonly("total", &Caller::total,
                    "Callers of this kind that the index holds for it, before the limit.")
      .def_readonly("fqn", &Caller::fqn)
      .def_readonly("name", &Caller::name)
      .def_readonly("kind", &Caller::kind)
      .def_readonly("path", &Caller::path)
      .def_readonly("line", &Caller::line)
      .def_readonly("call_line", &Caller::call_line)
      .def_readonly("relation", &Caller::relation, "Of a guess: how the caller may be tied.")
      .def_readonly("why", &Caller::why, "Of a guess: why it is no proof.")
      .def_readonly("candidates", &Caller::candidates, "Of a guess: definitions that it was among.")
      .def("__repr__", [](const Caller& caller) {
        return "<context_delta.Caller " + caller.fqn + " " + caller.path + ":" +
               std::to_string(caller.call_line) + ">";
      });
}

void bind_update_report(const py::module_& module) {
  using indexer::UpdateReport;
  new_class<UpdateReport>(module, "UpdateReport", "What an update of the index did.")
      .def_readonly("up_to_date", &UpdateReport::up_to_date,
                    "The index answered for the commit already; all counts are 0.")
      .def_readonly("files", &UpdateReport::files, "Files that the index covers.")
      .def_readonly("parsed", &UpdateReport::parsed, "Blobs parsed.")
      .def_readonly("reused", &UpdateReport::reused, "Blobs whose facts were stored before.")
      .def_readonly("resolved", &UpdateReport::resolved,
                    "Files whose references were tied to definitions.")
      .def_property_readonly(
          "skipped",
          [](const UpdateReport& report) {
            std::vector<std::pair<std::string, std::string>> skipped;
            for (const auto& file : report.skipped) skipped.emplace_back(file.path, file.reason);
            return skipped;
          },
          "Files that are not indexed: a list of (path, reason).");
}

void bind_repository(const py::module_& module) {
  new_class<NativeRepository>(module, "Repository",
                              "A git repository with an index of its own: what "
                              "handle_build_delta_context_pack needs where there is no server.\n\n"
                              "path: the repository or a folder in it. index: the index file; "
                              "None for context-delta/index.sqlite in the repository's git "
                              "directory. Raises GitHistoryError when path is in no repository. "
                              "Any thread may use it.")
      .def(py::init([](const py::object& path, const py::object& index) {
             return NativeRepository(Object(path), Object(index));
           }),
           py::arg("path"), py::arg("index") = py::none())
      .def_property_readonly("root", &NativeRepository::root,
                             "The top of the work tree, a pathlib.Path.")
      .def_property_readonly("db", &NativeRepository::db, "The index that is read.")
      .def(
          "update",
          [](const NativeRepository& repository, const py::object& progress) {
            return repository.update(Object(progress));
          },
          py::arg("progress") = py::none(),
          "Brings the index to the commit that is checked out.\n\n"
          "progress: called as progress(phase, done, total), phase one of \"parsing\", "
          "\"resolving\", \"writing\"; what it raises ends the update and leaves the index as it "
          "was. Raises GitHistoryError and RepositoryIndexError. Returns an UpdateReport.")
      .def("callers_of", &NativeRepository::callers_of, py::arg("ids"), py::arg("guessed") = false,
           py::arg("limit") = CALLERS_PER_SYMBOL,
           "At most limit callers for each symbol id: those that a call edge proves or, with "
           "guessed, those guessed between namesakes. A list of Caller, nearest first. Raises "
           "RepositoryIndexError.")
      .def("file_impact", &NativeRepository::file_impact, py::arg("paths"),
           "The FileImpact of those of the paths (relative to root) that the index knows, by path. "
           "Raises RepositoryIndexError.")
      .def("symbols_on_lines", &NativeRepository::symbols_on_lines, py::arg("ranges"),
           py::arg("per_file") = git_history::SYMBOLS_PER_ROW,
           "The innermost symbols on lines: ranges maps paths to lists of (first, last), per_file "
           "is the most of one file. A list of SymbolOnLines by path and line. Raises "
           "RepositoryIndexError.")
      .def("close", &NativeRepository::close, "From now on every use raises ValueError.")
      .def("__enter__", [](const py::object& self) { return self; })
      .def("__exit__", [](NativeRepository& self, const py::args&) { self.close(); })
      .def("__repr__", [](const NativeRepository& self) {
        return "<context_delta.Repository " + self.root().string() + ">";
      });
}

void bind_wiki_lens(const py::module_& module) {
  new_class<NativeWikiLens>(module, "WikiLens",
                            "The Markdown pages in a folder that name their source files.")
      .def(py::init([](const py::object& path) { return NativeWikiLens{path_of(Object(path))}; }),
           py::arg("path"))
      .def_readonly("path", &NativeWikiLens::folder, "The folder, a pathlib.Path.")
      .def(
          "pages_citing",
          [](const NativeWikiLens& lens, const py::object& paths) {
            return py::reinterpret_borrow<py::object>(lens.pages_citing(Object(paths)).ptr());
          },
          py::arg("paths"),
          "The pages that cite any of the paths, a list of dicts: page, title, sources, stale, "
          "reason. Raises WikiError, and GitHistoryError when the folder is in no repository.")
      .def("__repr__", [](const NativeWikiLens& lens) {
        return "<context_delta.WikiLens " + lens.folder.string() + ">";
      });
}

template <class Type>
void add_bound(py::module_& module, const char* name) {
  module.attr(name) = py::type::of<Type>();
}

/// The second module of one file has the classes of the first.
void add_bound_classes(py::module_& module) {
  add_bound<NativeDatabase>(module, "Database");
  add_bound<repository_changes::FileImpact>(module, "FileImpact");
  add_bound<repository_changes::SymbolOnLines>(module, "SymbolOnLines");
  add_bound<storage::Caller>(module, "Caller");
  add_bound<indexer::UpdateReport>(module, "UpdateReport");
  add_bound<NativeRepository>(module, "Repository");
  add_bound<NativeWikiLens>(module, "WikiLens");
}

py::dict shares(std::span<const Share> table) {
  py::dict shares;
  for (const Share& share : table) shares[py::str(std::string(share.part))] = share.share;
  return shares;
}

void add_constants(py::module_& module) {
  module.attr("CALLER_LOOKUPS") = CALLER_LOOKUPS;
  module.attr("CALLERS_PER_SYMBOL") = CALLERS_PER_SYMBOL;
  module.attr("SNIPPET_FILES") = SNIPPET_FILES;
  module.attr("SNIPPET_LINES") = SNIPPET_LINES;
  module.attr("_SHARES") = shares(SHARES);
  module.attr("_SHARES_WITH_SNIPPETS") = shares(SHARES_WITH_SNIPPETS);
  module.attr("_FILES_PER_READ") = FILES_PER_READ;
  module.attr("_MAX_SOURCE_CHARS") = MAX_SOURCE_CHARS;
  module.attr("_TARGET_WARNING") = TARGET_WARNING;
}

void fill(py::module_& module) {
  module.doc() =
      "What did this branch change, for review? One operation, "
      "handle_build_delta_context_pack,\nanswers with the delta context pack: over the modules of "
      "the server that imports this one,\nor over a Repository of this module. Lines count from 1, "
      "budgets are in tokens.";
  module.attr("__version__") = CONTEXT_DELTA_VERSION;
  add_errors(module);
  add_constants(module);
  add_handler_function(module);
  if (is_bound<NativeRepository>()) return add_bound_classes(module);
  py::register_local_exception_translator(&set_raised);
  bind_records(module);
  bind_update_report(module);
  bind_repository(module);
  bind_wiki_lens(module);
}

}  // namespace
}  // namespace context_delta::python

/// What the interpreter calls when it loads the module. Written out, since the macro for it would
/// replace an exception of the server's modules by one of its own.
extern "C" PYBIND11_EXPORT PyObject* PyInit_context_delta() {
  namespace python = context_delta::python;
  try {
    pybind11::detail::get_internals();
    // One for each name that this file is loaded under; kept, as the interpreter refers to it.
    auto* const definition = new PyModuleDef();
    auto module = pybind11::module_::create_extension_module("context_delta", nullptr, definition);
    python::fill(module);
    return module.ptr();
  } catch (pybind11::error_already_set& error) {
    error.restore();
  } catch (const python::PythonError& error) {
    error.restore();
  }
  return nullptr;
}
