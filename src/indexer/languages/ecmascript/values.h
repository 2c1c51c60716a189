#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "indexer/languages/ecmascript/modules.h"
#include "indexer/languages/kit/scopes.h"
#include "indexer/model/facts.h"
#include "indexer/world/world.h"

/// What names, expressions and types mean, as far as the text says.
namespace context_delta::indexer::ecmascript {

/// How many steps of names, members and calls are followed.
inline constexpr int DEEPEST = 24;

/// How many of a name's meanings in one scope, or of a member, are looked at: with more it is
/// unsure.
inline constexpr std::size_t MOST_MEANINGS = 40;

/// The meaning of an expression.
struct Value {
  enum class Kind : std::uint8_t {
    UNKNOWN,
    NONE,       ///< null or undefined
    EXTERNAL,   ///< something that the repository does not define
    MODULE,     ///< what a file exports
    NAMESPACE,  ///< of TypeScript
    CLASS,
    INSTANCE,  ///< of a class, an interface, an object type or a constructor function
    FUNCTION,
    OBJECT,  ///< an object literal
    SUPER,   ///< the base of a class
  };
  /// A variable that a value was read from: members may have been added to it.
  struct Home {
    const File* file = nullptr;
    DefinitionIndex scope = NOWHERE;
    std::string name = {};
  };
  Kind kind = Kind::UNKNOWN;
  const File* file = nullptr;  ///< where the definition or object stands
  DefinitionIndex definition = NOWHERE;
  std::string object = {};      ///< of an object: its name in facts
  bool exact = false;           ///< of this class and not of a subclass
  bool sure = true;             ///< nothing seen can give the name another meaning
  std::string_view rule = {};   ///< by which a definition was reached
  std::string_view doubt = {};  ///< why not sure
  std::string element = {};     ///< of a container: the type of what is in it, to be read in `file`
  Home home = {};
  std::vector<std::pair<const File*, DefinitionIndex>> choices = {};  ///< of a name bound twice
  bool is_definition() const { return kind == Kind::CLASS || kind == Kind::FUNCTION; }
};

bool same_meaning(const Value& a, const Value& b);
Value unsure(Value value, std::string_view doubt);

/// A class and those it inherits from, interfaces last.
struct Ancestry {
  std::vector<Value> classes;  ///< itself first, in the order in which members are looked up
  bool complete = true;        ///< every base class is known
};

/// Which of a name's two meanings is asked for.
enum class Space : std::uint8_t { VALUES, TYPES };

/// Reads names, expressions and types in the light of the repository, for the file being resolved.
class Evaluator {
 public:
  Evaluator(const File& file, const Facts& facts, World& world);

  /// Starts the count of steps that the next questions may take together.
  void start_question() { steps_ = 0; }
  /// Whether they took too many: what they gave is then incomplete.
  bool gave_up() const { return steps_ > MOST_STEPS; }

  const Interface& facts(const File& file);
  const kit::ScopeIndex& scopes(const File& file);
  const Definition& definition(const Value& value);
  ModuleAnswer module(const File& importer, std::string_view specifier);

  /// What `name` means in a scope of `file`.
  Value name_value(const File& file, DefinitionIndex scope, std::string_view name, Space space,
                   int depth = 0);
  /// What an expression means, written as in expressions.h.
  Value expression_value(const File& file, DefinitionIndex scope, std::string_view text,
                         int depth = 0);
  /// What has the type that is written.
  Value type_value(const File& file, DefinitionIndex scope, std::string_view text, int depth = 0);
  /// The member `name` of a value; EXTERNAL when it can only come from outside the repository.
  Value member(const Value& owner, std::string_view name, int depth = 0);
  /// What a module exports under a name, re-exports followed.
  Value exported(const File& module, std::string_view name, Space space, int depth = 0);
  /// The class or function that a module as a whole is; other values as they are.
  Value as_whole(const Value& value, Space space, int depth = 0);
  /// What calling or constructing a value gives.
  Value called(const Value& given, const Value& receiver, int depth = 0);

  /// What `new` of a class runs; none when no class of the repository defines it.
  std::optional<Value> constructor(const Value& type);

  const Ancestry& ancestry(const Value& of);
  /// Whether `of` is a strict subclass of `base`, or implements it.
  bool is_below(const Value& of, const Value& base);
  /// The class that encloses a scope; UNKNOWN when none does.
  Value enclosing_class(const File& file, DefinitionIndex scope);

 private:
  using Binders = std::span<const kit::Binder>;
  /// Types and modules may refer to each other in more ways than could ever be followed.
  static constexpr int MOST_STEPS = 5000;
  bool spend() { return ++steps_ <= MOST_STEPS; }
  Value combined(const File& file, DefinitionIndex scope, Binders binders, Space space, int depth);
  bool is_meant(const File& file, const kit::Binder& binder, Space space);
  Binders meant(const File& file, Binders binders, Space space);
  bool names_value(const File& file, const kit::Binder& binder);
  bool names_member(const File& file, const kit::Binder& binder);
  bool names_type(const File& file, const kit::Binder& binder);
  Value definition_value(const File& file, DefinitionIndex index);
  Value binding_value(const File& file, const Binding& binding, int depth);
  Value import_value(const File& file, const Import& import, Space space, int depth);
  Value exported_from_all(const File& module, std::string_view name, Space space, int depth);
  Value head_value(const File& file, DefinitionIndex scope, std::string_view& text, int depth);
  Value class_member(const Value& owner, std::string_view name, int depth);
  Value own_member(const Value& owner, std::string_view name, bool of_class, int depth);
  Value object_member(const Value& owner, std::string_view name, int depth);
  Value added_member(const Value& owner, std::string_view name, int depth);
  Value constructed(const Value& given, int depth);
  Value subscripted(const Value& value, int depth);
  Value apply(const Value& value, std::string_view operation, Value& receiver, int depth);
  Value parameter_of_type(const File& file, DefinitionIndex scope, std::string_view type,
                          std::size_t index, int depth);
  Value instance_of(Value type, int depth);
  Value union_type(const File& file, DefinitionIndex scope,
                   const std::vector<std::string_view>& choices, int depth);
  Value imported_type(const File& file, std::string_view text, int depth);
  Value named_type(const File& file, DefinitionIndex scope, std::string_view text, int depth);
  Value generic_type(const File& file, DefinitionIndex scope, std::string_view head,
                     std::string_view arguments, int depth);
  Value element_of(const File& file, DefinitionIndex scope, std::string_view type);
  void add_ancestors(Ancestry& line, const Value& of, int depth);
  std::vector<Value> bases(const Value& of, bool& complete);

  const File& file_;
  const Facts& facts_;
  World& world_;
  kit::ScopeIndex scopes_;
  std::map<std::pair<std::int64_t, DefinitionIndex>, Ancestry> ancestries_;
  std::map<std::pair<std::int64_t, std::string>, ModuleAnswer> modules_;
  std::map<std::pair<const kit::Binder*, Space>, std::vector<kit::Binder>> meant_;
  // While the bases of a class are read, what is inherited is not known.
  int reading_bases_ = 0;
  int steps_ = 0;
};

}  // namespace context_delta::indexer::ecmascript
