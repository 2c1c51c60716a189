#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "indexer/languages/java/types.h"
#include "indexer/languages/kit/outline.h"
#include "indexer/model/facts.h"
#include "indexer/world/world.h"

/// What names of types mean.
namespace context_delta::indexer::java {

/// A class and all that it inherits from.
struct Ancestry {
  std::vector<Type> classes;    ///< itself first; type arguments in terms of its own parameters
  std::vector<Type> externals;  ///< supertypes that the repository does not define
  bool known = true;            ///< every supertype's name was understood
};

struct TypeParameter {
  std::string name;
  std::string bound;  ///< as written; empty when there is none
};

/// Reads types for the file being resolved, in any file of the repository.
class TypeNames {
 public:
  /// `own`: of `file`, which may be another than the one being resolved; `package` is asked for
  /// outside of its classes alone.
  TypeNames(const File& file, const kit::Outline& own, World& world, std::string_view package = {});

  const File& file() const { return file_; }
  World& world() { return world_; }
  const kit::Outline& outline(const File& file);
  const Definition& definition(const File& file, DefinitionIndex index) {
    return outline(file).definition(index);
  }
  const Definition& definition(const Type& type) { return definition(*type.file, type.definition); }

  /// What a simple or qualified name of a type means in a scope: CLASS, EXTERNAL, VARIABLE,
  /// PACKAGE for what may begin a qualified name, or UNKNOWN.
  Type named(const File& file, DefinitionIndex scope, std::string_view name);
  /// The class of a qualified name, for a scope whose file imports it; UNKNOWN when there is none.
  Type imported(const File& importer, DefinitionIndex scope, std::string_view qualified);
  /// A type as written in a scope.
  Type read(const File& file, DefinitionIndex scope, std::string_view written, int depth = 0);
  /// The member class `name` of a class or of what it inherits from.
  Type member_class(const Type& owner, std::string_view name);
  /// The class around a scope; UNKNOWN at the top level.
  Type enclosing_class(const File& file, DefinitionIndex scope);

  const std::vector<TypeParameter>& parameters_of(const Type& generic);
  /// The bound of a VARIABLE, java.lang.Object when it has none.
  Type bound(const Type& variable);
  /// `type` with the parameters of `owner`, a CLASS, replaced by its type arguments.
  Type substituted(const Type& type, const Type& owner, int depth = 0);
  /// Without type variables: each is replaced by its bound.
  Type erased(const Type& type);

  const Ancestry& ancestry(const Type& of);
  bool is_below(const Type& of, const Type& base);

 private:
  Type found_by_name(const File& file, DefinitionIndex scope, std::string_view simple);
  Type found_in_scope(const File& file, DefinitionIndex scope, std::string_view simple);
  Type found_in_imports(const File& file, DefinitionIndex scope, std::string_view simple);
  Type found_on_demand(const File& file, DefinitionIndex scope, std::string_view simple);
  Type class_among(const File& importer, DefinitionIndex scope, std::string_view container,
                   std::string_view simple);
  std::string_view package_of(const File& file, DefinitionIndex scope);
  Type class_type(const File& file, DefinitionIndex index);
  Type variable(const File& file, DefinitionIndex scope, std::string_view name);
  Type own_class(const File& file, DefinitionIndex scope, std::string_view name);
  /// Supertypes are read twice: first without, then with the classes that the classes around
  /// inherit by the first reading.
  enum class Stage : std::uint8_t { DIRECT, INHERITED, COMPLETE };
  const std::vector<Type>& supertypes(const Type& of);
  std::vector<Type> read_supertypes(const Type& of, Stage stage);
  void add_ancestors(Ancestry& line, const Type& of, int depth);

  const File& file_;
  World& world_;
  std::string_view package_;
  std::unordered_map<std::int64_t, kit::Outline> outlines_;  // by the file's id
  std::map<std::pair<std::int64_t, DefinitionIndex>, Ancestry> ancestries_;
  std::map<std::pair<std::int64_t, DefinitionIndex>, std::vector<TypeParameter>> parameters_;
  std::unordered_map<std::string, Type> names_;
  Stage stage_ = Stage::COMPLETE;
  DefinitionIndex header_ = NOWHERE;  // the class whose supertypes are read: its members are unseen
};

/// The parts of a text between separators that stand outside of brackets of any kind.
std::vector<std::string_view> split_outside(std::string_view text, char separator);

}  // namespace context_delta::indexer::java
