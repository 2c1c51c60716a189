#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "indexer/languages/c_family/linkage.h"
#include "indexer/languages/kit/outline.h"
#include "indexer/model/facts.h"
#include "indexer/world/world.h"

/// What names and expressions of C++ mean, as far as declarations say.
namespace context_delta::indexer::cpp {

/// Where a name is read: its namespaces and classes, joined by '.', and, in the file being
/// resolved, the innermost definition.
struct Context {
  const File* file = nullptr;
  std::string scope = {};
  DefinitionIndex definition = NOWHERE;
};

/// A class of the repository.
struct Class {
  const File* file = nullptr;
  DefinitionIndex definition = NOWHERE;
  std::string name = {};  ///< qualified, joined by '.'
  friend bool operator==(const Class& a, const Class& b) {
    return a.file->id == b.file->id && a.definition == b.definition;
  }
};

/// The type of an expression.
struct Type {
  enum class Kind : std::uint8_t { UNKNOWN, EXTERNAL, CLASS };
  Kind kind = Kind::UNKNOWN;
  Class in = {};               ///< of CLASS
  std::string arguments = {};  ///< template arguments of an EXTERNAL type, to be read in `context`
  std::string name = {};       ///< its name, without namespaces
  Context context = {};
  bool is_this = false;
};

/// The functions or methods that a call may mean.
struct Callees {
  bool sure = false;  ///< nothing else fits
  std::string_view rule = {};
  std::string_view why = {};
  std::vector<Candidate> fitting = {};  ///< the one, or, when not sure, the likeliest first
  bool found = false;                   ///< the name is known, whether or not it is sure
  bool external = false;                ///< it means something outside the repository
};

/// Looks names up for the file being resolved.
class Lookup {
 public:
  Lookup(const File& file, const Facts& facts, World& world);

  c_family::Linkage& linkage() { return linkage_; }
  Context context_of(DefinitionIndex definition) const;

  /// The class that a type name as written means.
  Type type_named(const Context& context, std::string_view written, int depth = 0);
  Type type_of(const Context& context, std::string_view expression, int depth = 0);
  /// What a smart pointer points to; any other type itself.
  Type pointee(const Type& type);
  /// The class around a context; UNKNOWN outside of classes.
  Type enclosing_class(const Context& context);

  Callees method(const Class& owner, std::string_view name, std::int16_t arguments,
                 bool may_dispatch);
  Callees function(const Context& context, std::string_view name, std::int16_t arguments);
  Callees qualified_function(const Context& context, std::string_view qualifier,
                             std::string_view name, std::int16_t arguments);
  Callees constructor(const Class& owner, std::int16_t arguments);

  /// Whether a parameter or local variable around the context has the name.
  bool is_local(const Context& context, std::string_view name) const;
  const std::vector<Class>& ancestors(const Class& of, bool& complete);

 private:
  struct Bases {
    std::vector<Class> classes;  // itself first
    bool complete = true;
  };
  const kit::Outline& outline(const File& file);
  const Definition& definition(const Candidate& of) {
    return outline(*of.file).definition(of.definition);
  }
  std::vector<std::string> levels(const Context& context);
  bool is_visible(const File& file) { return linkage_.seen().contains(file); }
  const Candidate* class_candidate(const Context& context, std::string_view written);
  Type indirect_type(const Context& context, std::string_view written, int depth);
  Type alias_target(const Candidate& alias, int depth);
  Type templated(const Context& context, std::string_view written, int depth);
  Type head_type(const Context& context, std::string_view head, bool called, int depth);
  Type variable_type(const Context& context, std::string_view name, int depth);
  Type member_type(const Type& owner, std::string_view name, bool called, int depth);
  Type element_type(const Type& container, int depth);
  Type result_type(const Callees& callees, int depth);
  Type binding_type(const Context& context, const Binding& binding, int depth);
  Callees chosen(const std::vector<Candidate>& overloads, std::int16_t arguments,
                 const File* declared_in);
  std::vector<Candidate> overriders(const Class& owner, std::string_view name);
  bool is_virtual(const Class& owner, std::string_view name);
  void add_bases(Bases& line, const Class& of, int depth);
  const Bases& bases(const Class& of);

  const File& file_;
  const Facts& facts_;
  World& world_;
  kit::ScopeIndex scopes_;
  std::unordered_map<std::int64_t, kit::Outline> outlines_;  // by the file's id
  c_family::Linkage linkage_;
  std::map<std::pair<std::int64_t, DefinitionIndex>, Bases> bases_;
};

/// The dotted form of a qualified name, template arguments left out: `a::B<C>::` is "a.B".
std::string dotted(std::string_view qualified);

}  // namespace context_delta::indexer::cpp
