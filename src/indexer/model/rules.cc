#include "indexer/model/rules.h"

#include <algorithm>
#include <array>

namespace context_delta::indexer {
namespace {

constexpr auto RULES = std::to_array<Rule>({
    {"builtin", "the language itself defines the name"},
    {"class", "the name is found in the classes around the call"},
    {"constructed", "the receiver is of exactly the class that the text constructs"},
    {"construction", "the call names the class whose constructor this is, or one that inherits it"},
    {"constructor", "the call constructs an object of the class that it names"},
    {"declaration", "the function is declared where the call can see it and defined once"},
    {"declared-type", "the receiver's type is written"},
    {"dispatch",
     "the receiver's type only declares the method: one that overrides or implements it may run"},
    {"element-type", "the receiver is an element of a container whose type is written"},
    {"field-type", "the receiver is a field whose type is written"},
    {"function", "the name is a function of the package"},
    {"glob", "the name comes from the only glob import that provides it"},
    {"import", "an import names the definition"},
    {"include", "a header that the file includes declares the function"},
    {"inherent", "an impl of the type itself defines the method"},
    {"local", "a scope around the call defines the name"},
    {"macro", "the only macro of the name is in sight of the call"},
    {"namesake", "a definition of the name fits the call"},
    {"namespace", "the namespace around the call defines the name"},
    {"object", "the receiver is an object whose literal defines the member"},
    {"path", "a path of modules leads to the definition"},
    {"qualified", "the written qualifier names the scope that defines the name"},
    {"receiver", "the receiver's type is written in a parameter or variable"},
    {"result-type", "the receiver is the result of a function whose type is written"},
    {"same-file", "the file's top level defines the name once"},
    {"same-package", "the package defines the name once"},
    {"self", "the receiver is the object that the method belongs to"},
    {"super", "the bases of the class define the member"},
    {"this", "the receiver is the object that the method belongs to"},
    {"trait", "the trait that the path names declares the method"},
    {"trait-impl", "the only impl of the trait for the type defines the method"},
});

/// In the order of their bytes.
constexpr auto DOUBTS = std::to_array<std::string_view>({
    "a base class is not known",
    "a class in between may inherit a method of the name",
    "a macro has this name",
    "a parameter or local variable has this name",
    "a subclass may be constructed instead",
    "a subclass overrides the method",
    "a supertype is not known",
    "no constructor takes these arguments",
    "no declaration of the function is seen from the call",
    "no declaration of the name is seen from the call",
    "no header that both files include declares the function",
    "no method of the name takes these arguments",
    "several base classes have the member",
    "several classes have the receiver's name",
    "several classes have this name",
    "several embedded types may have the member",
    "several impls define the method",
    "several modules export the name",
    "several modules have this name",
    "several objects may have the member",
    "several overloads or definitions fit the call",
    "several wildcard imports bring the name",
    "the build chooses between definitions",
    "the call is written inside a macro's arguments",
    "the declared type names no definition",
    "the definition stands under a condition",
    "the definition's text does not parse",
    "the function is a template",
    "the function is declared only",
    "the import stands under a condition",
    "the macro is defined more than once",
    "the macro is not defined before the call in this file",
    "the member is a variable",
    "the member is assigned elsewhere",
    "the member is assigned more than once",
    "the method is abstract: an implementation runs",
    "the method is declared only",
    "the method is promoted from an embedded type",
    "the method is reached through Deref",
    "the module files do not settle which package is imported",
    "the name comes from a dot import",
    "the name comes from a wildcard import",
    "the name is a parameter or local variable",
    "the name is a variable",
    "the name is bound more than once",
    "the name is bound to a value",
    "the name is bound under a condition",
    "the name is defined more than once",
    "the name is not bound in the file",
    "the number of arguments differs",
    "the number of arguments does not fit",
    "the number of arguments is not known",
    "the package's entry is built from another file",
    "the qualifier's meaning is not known",
    "the receiver does not define the member",
    "the receiver is an interface",
    "the receiver may be of several types",
    "the receiver's class does not declare the member",
    "the receiver's class does not define the member",
    "the receiver's type does not define the method",
    "the receiver's type is not known",
    "the receiver's type is of another crate",
    "the receiver's type only declares it",
    "the repository defines the function more than once",
    "the text around the call does not parse",
    "the types around it are too involved",
    "the types of the arguments leave several methods open",
    "what the path means is not known",
});

}  // namespace

std::span<const Rule> rules() { return RULES; }
std::span<const std::string_view> doubts() { return DOUBTS; }

bool is_rule(std::string_view text) {
  return std::any_of(RULES.begin(), RULES.end(),
                     [&](const Rule& rule) { return rule.text == text; });
}

bool is_doubt(std::string_view text) {
  return std::binary_search(DOUBTS.begin(), DOUBTS.end(), text);
}

}  // namespace context_delta::indexer
