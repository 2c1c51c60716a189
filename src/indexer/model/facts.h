#pragma once

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "indexer/model/expression.h"

/// What one source text says by itself, whatever repository it stands in: the facts of a blob.
///
/// Facts depend on the bytes, the language and the extractor's version alone, so they are stored
/// once per blob. Names are as written. Lines are counted from 1, both ends included.
namespace context_delta::indexer {

/// Kinds of definitions; kind_name() gives the words that packs and exports use.
enum class Kind : std::uint8_t {
  NAMESPACE,
  CLASS,
  STRUCT,
  INTERFACE,
  TRAIT,
  ENUM,
  UNION,
  TYPE,  ///< typedef, alias
  FUNCTION,
  METHOD,
  CONSTRUCTOR,
  VARIABLE,  ///< of a module or namespace, constants included
  MACRO,
};

std::string_view kind_name(Kind kind);

/// Index of a definition in Facts::definitions; NOWHERE is the top level of the file.
using DefinitionIndex = std::int32_t;
inline constexpr DefinitionIndex NOWHERE = -1;

/// As an argument count: not known (spread arguments), or any number (variadic parameters).
inline constexpr std::int16_t ANY_NUMBER = std::numeric_limits<std::int16_t>::max();

/// Properties of a definition, a binding or a reference, as bits.
enum Trait : std::uint16_t {
  LOCAL_LINKAGE = 1,   ///< not visible to other files: static, anonymous namespace
  CONDITIONAL = 2,     ///< under if, try or #if: another definition may take its place
  DECORATED = 4,       ///< a decorator may replace it
  DECLARATION = 8,     ///< declares without defining: a prototype, an abstract method
  VIRTUAL = 16,        ///< may be overridden by rule of the language
  GENERIC = 32,        ///< a template
  STATIC_MEMBER = 64,  ///< a member called without an instance
  BROKEN = 128,        ///< stands in text that did not parse
  FROM_MACRO = 256,    ///< written inside a macro's arguments or body
  REASSIGNED = 512,    ///< a binding that is bound more than once
  PROPERTY = 1024,     ///< a method used without a call
  MAYBE_CAST = 2048,   ///< a call `(name)(value)`, which is a cast when `name` is a type
};

/// A definition: a symbol of the index.
struct Definition {
  std::string name;
  Kind kind = Kind::FUNCTION;
  DefinitionIndex parent = NOWHERE;  ///< the enclosing definition; always an earlier index
  std::int32_t first_line = 1;       ///< decorators, attributes, template headers included
  std::int32_t last_line = 1;
  std::int32_t name_line = 1;
  std::string signature;           ///< on one line, without the body
  std::string scope;               ///< qualifier written before the name: `ns::Class` in C++
  std::vector<std::string> bases;  ///< base classes, as written without type arguments
  std::string type;                ///< return type or value type, as written; empty when unknown
  std::int16_t least_arguments = 0;
  std::int16_t most_arguments = ANY_NUMBER;  ///< the receiver (self, this) is not counted
  std::uint16_t traits = 0;
  /// Types of a function's parameters, as written, in a language whose overloads they tell apart.
  std::vector<std::string> parameters = {};
  friend bool operator==(const Definition&, const Definition&) = default;
};

/// How a name is used. Only the first three make a caller.
enum class Role : std::uint8_t { CALL, CONSTRUCT, DECORATE, TYPE, IMPORT, INHERIT, OTHER };

constexpr bool is_call(Role role) { return role <= Role::DECORATE; }

/// A use of a name.
struct Reference {
  std::string name;
  /// The expression before the name, normalised: identifiers joined by '.' (or "::" as written),
  /// "()" for a call, "[]" for an index, '?' for anything else: `self.store`, `Foo()`, `ns::`.
  /// Empty for a bare name.
  std::string receiver;
  Role role = Role::CALL;
  std::int32_t line = 1;                ///< of the name
  DefinitionIndex enclosing = NOWHERE;  ///< innermost definition around it
  std::int16_t arguments = ANY_NUMBER;  ///< of a call
  std::uint16_t traits = 0;
  /// The arguments of a call, each normalised like a receiver, joined by ','; empty in a language
  /// that does not choose by their types.
  std::string values = {};
  /// The expression before the name; NO_EXPRESSION for a bare name.
  ExpressionIndex receiver_expression = NO_EXPRESSION;
  /// The arguments of a call, in a language that chooses by their types.
  std::vector<ExpressionIndex> value_expressions = {};
  friend bool operator==(const Reference&, const Reference&) = default;
};

/// A name that a scope binds to a value: what may shadow a definition, and what a receiver is.
struct Binding {
  enum class Kind : std::uint8_t { PARAMETER, LOCAL, MEMBER, GLOBAL };
  std::string name;
  Kind kind = Kind::LOCAL;
  DefinitionIndex scope = NOWHERE;  ///< the function, class (of members) or file that binds it
  std::string type;                 ///< as written; empty when none is
  std::string value;                ///< the bound expression, normalised like a receiver
  std::int32_t line = 1;
  std::uint16_t traits = 0;
  ExpressionIndex value_expression = NO_EXPRESSION;  ///< what is bound
  friend bool operator==(const Binding&, const Binding&) = default;
};

/// An import or include.
struct Import {
  std::string module;  ///< as written: `.a.b`, `pkg.mod`, `"dir/header.h"`, `<vector>`
  std::string name;    ///< what is imported from it: a name, `*`, or empty for the module itself
  std::string alias;   ///< the local name it is bound to; empty when none is
  DefinitionIndex scope = NOWHERE;
  std::int32_t line = 1;
  std::uint16_t traits = 0;
  friend bool operator==(const Import&, const Import&) = default;
};

/// What other files may be told of a file. Lines are for display: no rule may decide by them.
struct Interface {
  std::vector<Definition> definitions;  ///< in the order of their starts, parents first
  std::vector<Binding> bindings;        ///< but for those inside functions
  std::vector<Import> imports;
  std::vector<std::string> exports;  ///< names the file lists as public, where the language can
  std::vector<Expression> expressions;
  friend bool operator==(const Interface&, const Interface&) = default;
};

/// All of a file. `bindings` and `expressions` go on with what is for its own resolution alone:
/// the indexes of the interface hold in both.
struct Facts : Interface {
  std::vector<Reference> references;   ///< in the order of the text
  std::size_t interface_bindings = 0;  ///< how many of the bindings belong to the interface
  std::size_t interface_expressions = 0;
  friend bool operator==(const Facts&, const Facts&) = default;
};

/// Puts the bindings outside functions, and the expressions that they are made of, in front and
/// counts them. To be called once, when all facts are there.
void put_interface_first(Facts& facts);

/// The names that enclose a definition and its own, joined by '.', by these facts alone:
/// `Class.method`, `ns.Class.method` (a written scope counts as enclosing names).
std::string local_name(const Interface& facts, DefinitionIndex definition);

/// The names that enclose a definition, joined by '.': local_name without its own name.
std::string container_name(const Interface& facts, DefinitionIndex definition);

/// What the index stores of a file cannot be read back.
class DamagedData : public std::runtime_error {
 public:
  DamagedData() : std::runtime_error("stored data of a file is damaged") {}
};

/// Facts as bytes, in two parts: the interface, and what only the file's own resolution reads.
struct EncodedFacts {
  std::string shared;      ///< the interface
  std::string references;  ///< the rest; of no use without the other part
};

EncodedFacts encode_facts(const Facts& facts);
/// Both raise DamagedData on bytes that are no facts.
Facts decode_facts(const EncodedFacts& encoded);
Interface decode_shared_facts(std::string_view shared);

/// A hash of all but line numbers.
std::uint64_t interface_hash(const Interface& facts);
/// The same of the imports alone.
std::uint64_t imports_hash(const Interface& facts);

/// The name that an import gives a meaning to: its alias, else what is imported, else the first
/// part of a dotted module: `a` of `a.b.c`.
std::string_view bound_name(const Import& import);

/// For each name, a hash of what the facts say of it in any scope, in their order: its definitions,
/// bindings and imports; of an interface, also the names of its
/// members, and of any definition those of its type parameters (MEMBER bindings with the trait
/// GENERIC), in their order. A scope counts as the names around it, so that other definitions may
/// come and go. The names point into the facts.
std::unordered_map<std::string_view, std::uint64_t> name_hashes(const Interface& facts);

}  // namespace context_delta::indexer
