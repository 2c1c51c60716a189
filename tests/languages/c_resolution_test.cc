#include <gtest/gtest.h>

#include "support/resolution_case.h"

namespace context_delta::tests {
namespace {

class CFamilyResolution : public testing::TestWithParam<Case> {};

TEST_P(CFamilyResolution, TiesTheCall) { EXPECT_EQ(tie_of(GetParam()), GetParam().expected); }

const std::string FUNCTION = "int $target^run(int a) { return a; }\n";
const std::string CALL = "int caller(void) { return $call^run(1); }\n";
const std::string INCLUDE = "#include \"run.h\"\n";
const std::string HEADER = "#ifndef RUN_H\n#define RUN_H\nint run(int a);\n#endif\n";

const std::vector<Case> C_CASES = {
    {"SameFile", {{"m.c", FUNCTION + CALL}}, "proven same-file"},
    {"StaticBesideANamesake",
     {{"m.c", "static " + FUNCTION + CALL}, {"n.c", "int run(int a) { return a; }\n"}},
     "proven same-file"},
    {"OldStyleDefinition",
     {{"m.c", "int $target^run(a) int a; { return a; }\n" + CALL}},
     "proven same-file"},
    {"AttributeMacro",
     {{"m.c", "MY_API static int\n$target^run(int a) MY_ATTR(1) { return a; }\n" + CALL}},
     "proven same-file"},
    {"ExternC",
     {{"m.c", "#ifdef __cplusplus\nextern \"C\" {\n#endif\n" + FUNCTION +
                  "#ifdef __cplusplus\n}\n#endif\n" + CALL}},
     "proven same-file"},
    {"HeaderOfBoth",
     {{"run.h", HEADER}, {"run.c", INCLUDE + FUNCTION}, {"m.c", INCLUDE + CALL}},
     "proven declaration"},
    {"HeaderThroughAnother",
     {{"inc/run.h", HEADER},
      {"inc/all.h", "#include \"run.h\"\n"},
      {"src/run.c", INCLUDE + FUNCTION},
      {"src/m.c", "#include \"all.h\"\n" + CALL}},
     "proven declaration"},
    {"NoHeader",
     {{"run.c", FUNCTION}, {"m.c", "int run(int a);\n" + CALL}},
     "guessed namesake: no header that both files include declares the function (of 1)"},
    {"HeaderOfTheCallerOnly",
     {{"api.h", HEADER}, {"run.c", FUNCTION}, {"m.c", "#include \"api.h\"\n" + CALL}},
     "guessed namesake: no header that both files include declares the function (of 1)"},
    {"SecondDefinition",
     {{"run.h", HEADER},
      {"run.c", INCLUDE + FUNCTION},
      {"other.c", INCLUDE + "int run(int a) { return 2; }\n"},
      {"m.c", INCLUDE + CALL}},
     "guessed namesake: the repository defines the function more than once (of 2)"},
    {"ConditionalTwins",
     {{"m.c", "#ifdef A\n" + FUNCTION + "#else\nint run(int a) { return 0; }\n#endif\n" + CALL}},
     "guessed namesake: the repository defines the function more than once (of 2)"},
    {"UnderACondition",
     {{"m.c", "#ifdef A\n" + FUNCTION + "#endif\n" + CALL}},
     "guessed namesake: the definition stands under a condition (of 1)"},
    {"IncludeGuardIsNoCondition",
     {{"m.h", "#ifndef M_H\n#define M_H\nstatic inline " + FUNCTION + "#endif\n"},
      {"m.c", "#include \"m.h\"\n" + CALL}},
     "proven include"},
    {"StaticOfAnotherFile", {{"run.c", "static " + FUNCTION}, {"m.c", CALL}}, "no edge"},
    {"MacroOfTheName",
     {{"run.h", HEADER},
      {"run.c", INCLUDE + FUNCTION},
      {"m.c", INCLUDE + "#define run(x) other(x)\n" + CALL}},
     "guessed namesake: a macro has this name (of 2)"},
    {"Macro",
     {{"m.h", "#define $target^RUN(x) ((x) + 1)\n"},
      {"m.c", "#include \"m.h\"\nint f(void) { return $call^RUN(1); }\n"}},
     "proven macro"},
    {"MacroDefinedTwice",
     {{"m.c",
       "#ifdef A\n#define $target^RUN(x) (x)\n#else\n#define RUN(x) 0\n#endif\n"
       "int f(void) { return $call^RUN(1); }\n"}},
     "guessed namesake: a macro has this name (of 2)"},
    {"ShadowedByAParameter",
     {{"m.c", FUNCTION + "int f(int (*run)(int)) { return $call^run(1); }\n"}},
     "guessed namesake: a parameter or local variable has this name (of 1)"},
    {"ThroughAField",
     {{"m.c", FUNCTION + "int f(struct s *x) { return x->$call^run(1); }\n"}},
     "no edge"},
    {"WrongNumberOfArguments",
     {{"m.c", FUNCTION + "int f(void) { return $call^run(1, 2); }\n"}},
     "guessed namesake: the number of arguments does not fit (of 1)"},
    {"BrokenText",
     {{"m.c", FUNCTION + "int f(void) { @@ ) $call^run(1) ( ; }\n"}},
     "guessed namesake: the text around the call does not parse (of 1)"},
};

INSTANTIATE_TEST_SUITE_P(C, CFamilyResolution, testing::ValuesIn(C_CASES),
                         [](const auto& each) { return std::string(each.param.name); });

const std::string CLASS =
    "class Thing : public Root {\n public:\n  explicit Thing(int a);\n"
    "  int work(int a);\n  virtual int turn(int a);\n  int over(int a);\n  int over(Root* a);\n"
    "  template <class T> int generic(T a) { return 0; }\n};\n";
const std::string WORK = "int Thing::$target^work(int a) { return a; }\n";

std::string in_thing_cc(const std::string& text) {
  return "#include \"thing.h\"\nnamespace ns {\n" + text + "}\n";
}

std::vector<std::pair<std::string, std::string>> thing(const std::string& source,
                                                       const std::string& user) {
  return {{"root.h", "namespace ns { class Root { public: int base(int a) { return a; } }; }\n"},
          {"thing.h", "#include \"root.h\"\nnamespace ns {\n" + CLASS + "int run(int a);\n}\n"},
          {"thing.cc", in_thing_cc(source)},
          {"user.cc", "#include \"thing.h\"\n" + user}};
}

const std::vector<Case> CPP_CASES = {
    {"SameNamespace",
     thing("int $target^run(int a) { return a; }\n",
           "namespace ns { int f() { return $call^run(1); } }\n"),
     "proven declaration"},
    {"Qualified",
     thing("int $target^run(int a) { return a; }\n", "int f() { return ns::$call^run(1); }\n"),
     "proven declaration"},
    {"OtherOverload",
     thing("int $target^run(int a) { return a; }\n",
           "namespace ns { int run(char* a) { return 1; } int f() { return $call^run(1); } }\n"),
     "guessed namesake: several overloads or definitions fit the call (of 2)"},
    {"OverloadOfAnotherArity",
     thing(
         "int $target^run(int a) { return a; }\n",
         "namespace ns { int run(int a, int b) { return 1; } int f() { return $call^run(1); } }\n"),
     "proven declaration"},
    {"NamespaceNotNamed",
     thing("int $target^run(int a) { return a; }\n",
           "using namespace ns;\nint f() { return $call^run(1); }\n"),
     "guessed namesake: no declaration of the name is seen from the call (of 1)"},
    {"StandardNamespace",
     thing("int $target^run(int a) { return a; }\n", "int f() { return std::$call^run(1); }\n"),
     "no edge"},
    {"LocalObject",
     thing(WORK, "namespace ns { int f() { Thing x(1); return x.$call^work(1); } }\n"),
     "proven declared-type"},
    {"Pointer",
     thing(WORK, "namespace ns { int f(const Thing* x) { return x->$call^work(1); } }\n"),
     "proven declared-type"},
    {"UsingDeclaration",
     thing(WORK, "using ns::Thing;\nint f(Thing& x) { return x.$call^work(1); }\n"),
     "proven declared-type"},
    {"SmartPointerInAField",
     thing(WORK,
           "namespace ns { struct H { std::unique_ptr<Thing> x_;\n"
           "  int f() { return x_->$call^work(1); } }; }\n"),
     "proven declared-type"},
    {"ElementOfAContainer",
     thing(WORK,
           "namespace ns { int f(std::vector<Thing*> xs) { for (auto* x : xs) x->$call^work(1); } "
           "}\n"),
     "proven declared-type"},
    {"This", thing(WORK + "int Thing::over(int a) { return $call^work(1); }\n", ""), "proven this"},
    {"InheritedMember",
     {{"root.h",
       "namespace ns { class Root { public: int $target^base(int a) { return a; } }; }\n"},
      {"thing.h", "#include \"root.h\"\nnamespace ns {\n" + CLASS + "}\n"},
      {"user.cc", "#include \"thing.h\"\nint f(ns::Thing& x) { return x.$call^base(1); }\n"}},
     "proven declared-type"},
    {"OverloadedMember",
     thing("int Thing::$target^over(int a) { return a; }\nint Thing::over(Root* a) { return 0; }\n",
           "int f(ns::Thing& x) { return x.$call^over(1); }\n"),
     "guessed namesake: several overloads or definitions fit the call (of 2)"},
    {"VirtualWithoutOverride",
     thing("int Thing::$target^turn(int a) { return a; }\n",
           "int f(ns::Thing& x) { return x.$call^turn(1); }\n"),
     "proven declared-type"},
    {"VirtualOverridden",
     thing("int Thing::$target^turn(int a) { return a; }\n",
           "struct Other : ns::Thing { int turn(int a) override { return 2; } };\n"
           "int f(ns::Thing& x) { return x.$call^turn(1); }\n"),
     "guessed dispatch: a subclass overrides the method (of 2)"},
    {"QualifiedVirtual",
     thing("int Thing::$target^turn(int a) { return a; }\n",
           "struct Other : ns::Thing { int turn(int a) override { return "
           "ns::Thing::$call^turn(a); } };\n"),
     "proven class"},
    {"PureVirtual",
     {{"m.cc",
       "struct Shape { virtual int $target^area() = 0; };\n"
       "struct Square : Shape { int area() override { return 1; } };\n"
       "int f(Shape* s) { return s->$call^area(); }\n"}},
     "guessed dispatch: a subclass overrides the method (of 2)"},
    {"UnknownReceiver", thing(WORK, "template <class T> int f(T x) { return x.$call^work(1); }\n"),
     "guessed namesake: the receiver's type is not known (of 1)"},
    {"Construction",
     thing("Thing::$target^Thing(int a) {}\n", "void* f() { return new ns::$call^Thing(1); }\n"),
     "proven constructor"},
    {"FunctionTemplate",
     {{"m.cc",
       "template <class T> int $target^run(T a) { return 0; }\nint f() { return $call^run(1); "
       "}\n"}},
     "guessed namesake: the function is a template (of 1)"},
    {"AnonymousNamespace",
     {{"m.cc",
       "namespace { int $target^run(int a) { return a; } }\nint f() { return $call^run(1); }\n"},
      {"n.cc", "int run(int a) { return a; }\n"}},
     "proven same-file"},
    {"LocalLambda",
     {{"m.cc",
       "int $target^run(int a) { return a; }\nint f() { auto run = [](int) { return 1; };"
       " return $call^run(1); }\n"}},
     "guessed namesake: a parameter or local variable has this name (of 1)"},
    {"CallsC",
     {{"run.h", HEADER},
      {"run.c", INCLUDE + FUNCTION},
      {"m.cc", "extern \"C\" {\n" + INCLUDE + "}\n" + CALL}},
     "proven declaration"},
};

INSTANTIATE_TEST_SUITE_P(Cpp, CFamilyResolution, testing::ValuesIn(CPP_CASES),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace context_delta::tests
