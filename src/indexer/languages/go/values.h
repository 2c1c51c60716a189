#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "indexer/languages/go/packages.h"
#include "indexer/languages/go/types.h"
#include "indexer/languages/kit/outline.h"
#include "indexer/model/facts.h"
#include "indexer/world/world.h"

/// What names and expressions of Go mean, as far as the text says.
namespace context_delta::indexer::go {

/// The meaning of an expression.
struct Value {
  enum class Kind : std::uint8_t {
    UNKNOWN,
    EXTERNAL,  ///< something that the repository does not define
    PACKAGE,
    TYPE,      ///< `type` names it; `definition` when the repository defines it
    INSTANCE,  ///< a value of `type`
    FUNCTION,  ///< `definition`; calling it yields `type`
  };
  Kind kind = Kind::UNKNOWN;
  Type type = {};
  const Package* package = nullptr;  ///< of PACKAGE
  const File* file = nullptr;        ///< where the definition stands
  DefinitionIndex definition = NOWHERE;
  bool sure = true;             ///< nothing seen can give the name another meaning
  bool abstract = false;        ///< a method that an interface lists
  bool promoted = false;        ///< a method that an embedded type brings
  bool variable = false;        ///< a function that a variable holds, as long as nothing changes it
  std::string_view rule = {};   ///< by which the value was reached
  std::string_view doubt = {};  ///< why not sure
  std::vector<Place> choices = {};  ///< what else a build may choose, and the definition itself
  bool is_definition() const { return definition != NOWHERE; }
};

/// Reads names and expressions in the light of the repository, for the file being resolved.
class Evaluator {
 public:
  Evaluator(const File& file, const Facts& facts, World& world);

  World& world() { return world_; }
  const kit::Outline& outline(const File& file);
  const Definition& definition(const Value& value) {
    return outline(*value.file).definition(value.definition);
  }
  /// The package of the file being resolved; null without a package clause.
  const Package* package() const { return package_; }

  /// What a name that is no local means in a file, in the scope of a function or at the top level.
  Value name_value(const File& file, DefinitionIndex scope, std::string_view name, int depth = 0);
  /// What an expression means; `text` is as Reference::receiver.
  Value expression_value(const File& file, DefinitionIndex scope, std::string_view text,
                         int depth = 0);
  /// As expression_value, of what stands before a dot, which may also be a package.
  Value receiver_value(DefinitionIndex scope, std::string_view text);
  /// What a local of the file being resolved holds; `name` has its number.
  Value local_value(DefinitionIndex scope, std::string_view name, int depth = 0);
  const Binding* local_binding(DefinitionIndex scope, std::string_view name);
  /// `name` behind a dot. Of a type or an instance: the method or field, promoted ones included.
  Value member(const Value& owner, std::string_view name, int depth = 0);

  /// The definition that a type leads to, through pointers and aliases: a TYPE, EXTERNAL or
  /// UNKNOWN.
  Value named_type(const Type& type, int depth = 0);
  /// The methods that an interface lists or embeds.
  std::vector<std::string_view> method_names(const Value& interface);

 private:
  using Binders = std::span<const kit::Binder>;
  Value package_member(const Package& package, const File& from, std::string_view name, int depth);
  Value definition_value(const Place& place, int depth);
  Value chosen(const std::vector<Place>& places, const File& from, int depth);
  Value variable_value(const File& file, std::string_view name, int depth);
  Value local_type(const File& file, DefinitionIndex scope, std::string_view name);
  Value type_parameter(const Type& type, std::string_view name, int depth);
  Value dot_import_value(const File& file, std::string_view name, int depth);
  Value import_value(const File& file, std::string_view name);
  Value root_value(const File& file, DefinitionIndex scope, std::string_view root, int depth);
  Value apply(const Value& value, std::string_view operation, int depth);
  Value called(const Value& value, int depth);
  Value without_element(const Value& value, int depth);
  bool may_be_imported(const File& file, std::string_view name);
  Value ranged(const Value& value, bool key, int depth);
  Value anonymous_member(const Type& type, std::string_view name);
  Value field_or_method(const Value& type, std::string_view name, int depth);
  Value own_member(const Value& type, std::string_view name, int depth);
  std::vector<Value> embedded(const Value& type, int depth);
  Type underlying(const Type& type, int depth);
  Value constrained_by(const Type& type, std::string_view parameter, int depth);

  const File& file_;
  const Facts& facts_;
  World& world_;
  kit::ScopeIndex scopes_;
  std::unordered_map<std::int64_t, kit::Outline> outlines_;  // by the file's id
  const Package* package_;
  struct Origin {
    const Package* package = nullptr;
    std::string constraint;
  };
  const Origin& origin(const File& file);
  std::unordered_map<std::int64_t, Origin> origins_;
  std::vector<std::optional<Value>> bindings_;  // of the file's own locals
};

}  // namespace context_delta::indexer::go
