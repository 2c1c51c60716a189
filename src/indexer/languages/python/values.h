#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "indexer/languages/kit/outline.h"
#include "indexer/languages/python/modules.h"
#include "indexer/model/facts.h"
#include "indexer/world/world.h"

/// What names and expressions of Python mean, as far as the text says.
namespace context_delta::indexer::python {

/// The meaning of an expression.
struct Value {
  enum class Kind : std::uint8_t {
    UNKNOWN,
    NONE,      ///< the constant None
    EXTERNAL,  ///< something that the repository does not define
    MODULE,
    CLASS,
    INSTANCE,
    FUNCTION,
    SUPER,  ///< the bases of a class
  };
  Kind kind = Kind::UNKNOWN;
  const File* file = nullptr;  ///< where the definition stands
  DefinitionIndex definition = NOWHERE;
  bool exact = false;           ///< of this class and not of a subclass
  bool sure = true;             ///< nothing seen can give the name another meaning
  std::string_view rule = {};   ///< by which a definition was reached
  std::string_view doubt = {};  ///< why not sure
  std::string element = {};     ///< of a container: the type of what is in it, to be read in `file`
  bool is_definition() const { return kind == Kind::CLASS || kind == Kind::FUNCTION; }
};

bool same_definition(const Value& a, const Value& b);

/// A class and those it inherits from.
struct Ancestry {
  std::vector<Value> classes;  ///< itself first, in the order in which members are looked up
  std::size_t known = 0;       ///< how many of them are looked up before a base that is not known
  bool complete = true;        ///< every base is known
  bool linear = true;          ///< no class on the way has several bases
};

/// Reads names and expressions in the light of the repository, for the file being resolved.
class Evaluator {
 public:
  /// `own`: of `file`, which may be another than the one being resolved.
  Evaluator(const File& file, const kit::Outline& own, World& world);

  const File& file() const { return file_; }
  World& world() { return world_; }
  const kit::Outline& outline(const File& file);
  const Definition& definition(const Value& value);
  /// find_module(), each answer kept.
  const ModuleAnswer& module(const File& importer, std::string_view dotted);

  /// What `name` means in a scope of `file`.
  Value name_value(const File& file, DefinitionIndex scope, std::string_view name, int depth = 0);
  /// What an expression of `file` means.
  Value expression_value(const File& file, DefinitionIndex scope, ExpressionIndex expression,
                         int depth = 0);
  /// What the dotted name `a.b.c` means, as types and base classes are written.
  Value dotted_value(const File& file, DefinitionIndex scope, std::string_view dotted,
                     int depth = 0);
  /// An instance of the type that an annotation says.
  Value annotation_value(const File& file, DefinitionIndex scope, std::string_view text,
                         int depth = 0);
  /// The attribute `name` of a value. Of a class or an instance: the method or member, looked up
  /// through the bases; EXTERNAL when it can only come from a base outside the repository.
  Value member(const Value& owner, std::string_view name, int depth = 0);
  /// The top-level name of a module, re-exports followed.
  Value module_member(const File& module, std::string_view name, int depth = 0);

  const Ancestry& ancestry(const Value& of);
  /// Whether `of` is a strict subclass of `base`.
  bool is_below(const Value& of, const Value& base);
  /// The class that encloses a scope's method; UNKNOWN when none does.
  Value enclosing_class(const File& file, DefinitionIndex scope);

 private:
  using Binders = std::span<const kit::Binder>;
  const Value& combined(const File& file, DefinitionIndex scope, Binders binders, int depth);
  Value combine(const File& file, DefinitionIndex scope, Binders binders, int depth);
  Value definition_value(const File& file, DefinitionIndex index);
  Value binding_value(const File& file, const Binding& binding, int depth);
  Value import_value(const File& file, const Import& import, int depth);
  Value wildcard_value(const File& file, std::string_view name, int depth);
  Value class_member(const Value& owner, std::string_view name, int depth);
  Value own_member(const Value& owner, std::string_view name, int depth);
  Value called(const Value& value, const Value& receiver, int depth);
  Value subscripted(const Value& value, int depth);
  Value head_value(const File& file, DefinitionIndex scope, const Expression& head, int depth);
  Value attribute(const Value& value, std::string_view name, int depth);
  Value generic_annotation(const File& file, DefinitionIndex scope, std::string_view head,
                           std::string_view arguments, int depth);
  const std::vector<Value>& bases(const File& file, DefinitionIndex definition);
  std::vector<Value> read_bases(const File& file, const kit::Outline& known,
                                DefinitionIndex definition);
  void add_ancestors(Ancestry& line, const Value& of, int depth);

  const File& file_;
  World& world_;
  std::unordered_map<std::int64_t, kit::Outline> outlines_;  // by the file's id
  std::map<std::int64_t, std::map<std::string, ModuleAnswer, std::less<>>> modules_;
  std::map<std::pair<std::int64_t, DefinitionIndex>, Ancestry> ancestries_;
  std::map<DefinitionIndex, std::vector<Value>> own_bases_;
  // By the first binder and the depth, which bounds what is followed. An evaluator serves one
  // record, so what an answer depends on is noted already when it is given again.
  std::map<std::pair<const kit::Binder*, int>, Value> combined_;
  // While the bases of classes are read: what is inherited is not known yet.
  bool own_members_only_ = false;
};

}  // namespace context_delta::indexer::python
