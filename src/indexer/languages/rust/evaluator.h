#pragma once

#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "indexer/languages/kit/outline.h"
#include "indexer/languages/rust/modules.h"
#include "indexer/languages/rust/type_text.h"
#include "indexer/languages/rust/types.h"

/// Reads names, types and expressions in the light of the repository, for the file being resolved.
namespace context_delta::indexer::rust {

class Evaluator {
 public:
  /// `own`: of `file`, which may be another than the one being resolved.
  Evaluator(const File& file, const kit::Outline& own, World& world);

  World& world() { return world_; }
  const kit::Outline& outline(const File& file);
  const Definition& definition(const File& file, DefinitionIndex index) {
    return outline(file).definition(index);
  }

  // names.cc
  /// What the first name of a path means in a scope of `file`. `except` is the import that asks.
  Meaning name_meaning(const File& file, DefinitionIndex scope, std::string_view name, Space space,
                       int depth = 0, const Import* except = nullptr);
  /// The meaning of the longest part of a path that is no member of a type; `used` segments long.
  Meaning path_meaning(const File& file, DefinitionIndex scope, const std::vector<Segment>& path,
                       Space space, std::size_t& used, int depth = 0,
                       const Import* except = nullptr);
  Meaning import_meaning(const File& file, const Import& import, Space space, int depth = 0);
  Meaning module_member(const Module& module, std::string_view name, Space space, int depth = 0,
                        bool public_only = false);

  // types.cc
  Type type_of_text(const File& file, DefinitionIndex scope, const TypeText& text,
                    const Environment* environment = nullptr, int depth = 0);
  Type type_of_text(const File& file, DefinitionIndex scope, std::string_view text,
                    const Environment* environment = nullptr, int depth = 0);
  /// `Self` in a scope of `file`.
  Type self_type(const File& file, DefinitionIndex scope);
  /// The associated type `name` of a type.
  Type associated(const Type& base, std::string_view name, int depth = 0);
  /// The traits that a PARAMETER or BOUNDED type has, those that they require included.
  std::vector<Type> traits_of(const Type& type, int depth = 0);
  /// The parameters of `definition`, or of the impl that it stands in, as what `self` says.
  Environment environment_of(const File& file, DefinitionIndex definition, const Type& self);

  // methods.cc
  /// The type that an impl block is for.
  const Type& impl_self(const File& file, DefinitionIndex impl);
  /// The trait that an impl block gives; UNKNOWN when it gives none, or one that is not known.
  const Type& impl_trait(const File& file, DefinitionIndex impl);
  Callee method(const Type& type, std::string_view name);
  /// The callee of a path: `a::f`, `Foo::new`, `<T as A>::f`, `Variant`.
  Callee path_callee(const File& file, DefinitionIndex scope, const TypeText& path, int depth = 0);
  /// The type behind a smart pointer or an impl of Deref; UNKNOWN when there is none.
  Type dereferenced(const Type& type, int depth = 0);
  Type field(const Type& type, std::string_view name, int depth = 0);

  // values.cc
  Type value_type(DefinitionIndex scope, std::string_view text, int depth = 0);
  Type returned_type(const Callee& callee);

 private:
  using Binders = std::span<const kit::Binder>;
  Meaning combined(const File& file, Binders binders, Space space, int depth, const Import* except,
                   bool public_only = false);
  Meaning glob_member(const Module& module, DefinitionIndex scope, std::string_view name,
                      Space space, int depth);
  Meaning asked_globs(const Module& module, DefinitionIndex scope, std::string_view name,
                      Space space, int depth);
  Meaning found_name(const File& file, DefinitionIndex scope, std::string_view name, Space space,
                     int depth, const Import* except);
  Meaning outer_name(const File& file, std::string_view name, Space space);
  Meaning variant_of(const File& file, DefinitionIndex definition, std::string_view name);
  bool is_inside(const Module& inner, const Module& outer);

  /// The names of the parameters that a definition binds, in order.
  std::vector<std::string_view> generics(const File& file, DefinitionIndex definition);
  std::optional<Type> parameter(const File& file, DefinitionIndex scope, std::string_view name,
                                const Environment* environment);
  Type path_type(const File& file, DefinitionIndex scope, const TypeText& text,
                 const Environment* environment, int depth);
  Type named_type(const Meaning& meaning, const std::vector<Type>& arguments, int depth);
  Type impl_member(const Type& base, std::string_view name, std::string_view value, int depth);
  std::vector<Type> direct_traits(const Type& type, int depth);
  void unify(const Type& pattern, const Type& actual, Environment& environment, int depth);

  Callee find_method(const Type& type, std::string_view name);
  Callee method_of_named(const Type& type, std::string_view name);
  Callee method_of_traits(const Type& type, std::string_view name);
  Callee method_of_external(const Type& type, std::string_view name);
  Callee chosen(const std::vector<Candidate>& candidates, const Type& self, std::string_view rule);
  bool has_trait(const Type& type, const Type& trait);
  Callee callee_of(const Meaning& meaning, const std::vector<Type>& arguments);
  Callee qualified_callee(const File& file, DefinitionIndex scope, const TypeText& path, int depth);
  Callee member_callee(const Type& type, const std::vector<Segment>& path, std::size_t first);

  Type head_type(DefinitionIndex scope, std::string_view& text, int depth);
  Type called_type(DefinitionIndex scope, const TypeText& path, const Type& given);
  Type constant_type(DefinitionIndex scope, const TypeText& path);
  Type method_result(const Type& type, std::string_view name, const Type& given, const Type& asked);
  Type stepped(DefinitionIndex scope, const Type& type, std::string_view& text, int depth);
  Type binding_type(DefinitionIndex scope, std::string_view name, int depth);
  Type matched(DefinitionIndex scope, const Type& type, std::string_view path,
               std::string_view field);
  Type element(const Type& type);
  Type indexed(const Type& type);

  const File& file_;
  World& world_;
  std::unordered_map<std::int64_t, kit::Outline> outlines_;  // by the file's id
  using Place = std::tuple<std::int64_t, DefinitionIndex, std::string>;
  std::map<Place, Type> values_;                    // of variables of this file
  std::map<Place, std::optional<Callee>> methods_;  // of NAMED types without arguments
  std::map<std::tuple<std::int64_t, DefinitionIndex, std::string, Space>, Meaning> names_;
  std::map<Place, std::vector<Type>> traits_;  // of parameters; empty while they are being read
  // What wildcard imports were asked since the outermost question: modules may import each other.
  std::set<std::tuple<std::int64_t, DefinitionIndex, std::string, Space>> asked_;
  int asking_ = 0;
  int following_ = 0;  // aliases, in search of variants
  // While impls are read: what types have in them is not known yet.
  bool without_impls_ = false;
};

}  // namespace context_delta::indexer::rust
