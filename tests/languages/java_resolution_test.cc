#include <gtest/gtest.h>

#include "support/resolution_case.h"

namespace context_delta::tests {
namespace {

class JavaResolution : public testing::TestWithParam<Case> {};

TEST_P(JavaResolution, TiesTheCall) { EXPECT_EQ(tie_of(GetParam()), GetParam().expected); }

using Files = std::vector<std::pair<std::string, std::string>>;

/// A class with members beside a class that has none.
Files one(const std::string& members) { return {{"C.java", "class C {\n" + members + "\n}\n"}}; }

/// `store.Store` with a method, and a class that calls it somehow.
Files with_store(const std::string& imports, const std::string& body) {
  return {{"src/store/Store.java",
           "package store;\npublic class Store {\n  public void $target^save(int key) { }\n}\n"},
          {"src/app/App.java",
           "package app;\n" + imports + "\nclass App {\n  Store field;\n" + body + "\n}\n"}};
}

Files and_also(Files files, const std::string& path, const std::string& text) {
  files.emplace_back(path, text);
  return files;
}

const std::string IMPORT = "import store.Store;";
const std::string ON_PARAMETER = "  void f(Store s) { s.\n$call^save(1); }";
const std::string UNKNOWN_RECEIVER = "guessed namesake: the receiver's type is not known (of 1)";
const std::string OPEN_OVERLOADS =
    "guessed namesake: the types of the arguments leave several methods open (of 2)";
const std::string OVERRIDDEN = "guessed dispatch: a subclass overrides the method (of 2)";

const std::vector<Case> CASES = {
    {"SameClass", one("  void $target^run() { }\n  void go() { $call^run(); }"), "proven this"},
    {"SameClassThroughThis", one("  void $target^run() { }\n  void go() { this.\n$call^run(); }"),
     "proven this"},
    {"LocalVariablesDoNotShadowMethods",
     one("  int $target^run() { return 1; }\n  void go(int run) { $call^run(); }"), "proven this"},
    {"NamesakeInAnotherClass",
     and_also(one("  void $target^run() { }\n  void go() { $call^run(); }"), "D.java",
              "class D { void run() { } }"),
     "proven this"},
    {"OverriddenInASubclass",
     and_also(one("  void $target^run() { }\n  void go() { $call^run(); }"), "D.java",
              "class D extends C { void run() { } }"),
     OVERRIDDEN},
    {"OverriddenInAnAnonymousClass",
     and_also(one("  void $target^run() { }\n  void go() { $call^run(); }"), "D.java",
              "class D { C c = new C() { void run() { } }; }"),
     OVERRIDDEN},
    {"OverloadedInASubclass",
     and_also(one("  void $target^run() { }\n  void go() { $call^run(); }"), "D.java",
              "class D extends C { void run(int a) { } }"),
     "proven this"},
    {"PrivateIsNotOverridden",
     and_also(one("  private void $target^run() { }\n  void go() { $call^run(); }"), "D.java",
              "class D extends C { void run() { } }"),
     "proven this"},
    {"StaticIsNotOverridden",
     and_also(one("  static void $target^run() { }\n  void go() { $call^run(); }"), "D.java",
              "class D extends C { static void run() { } }"),
     "proven this"},
    {"FinalIsNotOverridden",
     and_also(one("  final void $target^run() { }\n  void go() { $call^run(); }"), "D.java",
              "class D extends C { void run(int a) { } }"),
     "proven this"},
    {"Abstract",
     {{"C.java",
       "abstract class C {\n  abstract void $target^run();\n  void go() { $call^run(); }\n}"}},
     "guessed dispatch: the method is abstract: an implementation runs (of 1)"},
    {"Inherited",
     {{"a/B.java", "package a;\npublic class B {\n  protected void $target^run() { }\n}"},
      {"C.java", "class C extends a.B {\n  void go() { $call^run(); }\n}"}},
     "proven this"},
    {"InheritedDefault",
     {{"I.java", "interface I {\n  default void $target^run() { }\n}"},
      {"C.java", "class C implements I {\n  void go() { $call^run(); }\n}"}},
     "proven this"},
    {"InheritedFromOutside",
     {{"D.java", "class D {\n  void $target^run() { }\n}"},
      {"C.java", "import x.B;\nclass C extends B {\n  void go() { $call^run(); }\n}"}},
     "no edge"},
    {"BehindAnUnknownSupertype",
     {{"C.java",
       "class C extends Missing {\n  void go() { $call^run(); }\n  class E {\n"
       "    void $target^run() { }\n  }\n}"}},
     "guessed namesake: a supertype is not known (of 1)"},
    {"Outer", one("  void $target^run() { }\n  class D { void go() { $call^run(); } }"),
     "proven this"},
    {"OuterBehindANamesakeOfAnotherShape",
     one("  void $target^run() { }\n  class D { void run(int a) { } void go() { $call^run(); } }"),
     "no edge"},
    {"OuterFromAnAnonymousClass",
     one("  void $target^run() { }\n  Object o = new Runnable() { public void go() { $call^run(); "
         "} "
         "};"),
     "guessed namesake: a class in between may inherit a method of the name (of 1)"},
    {"OuterFromALambda", one("  void $target^run() { }\n  Runnable r = () -> $call^run();"),
     "proven this"},
    {"OuterThis",
     one("  void $target^run() { }\n  class D { void run() { }\n void go() { C.this.\n$call^run(); "
         "} "
         "}"),
     "proven this"},
    {"Super",
     {{"B.java", "class B {\n  void $target^run() { }\n}"},
      {"C.java", "class C extends B {\n  void run() { super.\n$call^run(); }\n}"}},
     "proven super"},
    {"SuperOfAnInterface",
     {{"I.java", "interface I {\n  default void $target^run() { }\n}"},
      {"C.java", "class C implements I {\n  public void run() { I.super.\n$call^run(); }\n}"}},
     "proven super"},
    {"InBrokenText", one("  void $target^run() { }\n  void go() { for ($call^run(); }"),
     "guessed namesake: the text around the call does not parse (of 1)"},

    {"ImportedType", with_store(IMPORT, ON_PARAMETER), "proven declared-type"},
    {"QualifiedType", with_store("", "  void f(store.Store s) { s.\n$call^save(1); }"),
     "proven declared-type"},
    {"OnDemand", with_store("import store.*;", ON_PARAMETER), "proven declared-type"},
    {"OnDemandOfTwoPackages",
     and_also(with_store("import store.*;\nimport other.*;", ON_PARAMETER), "src/other/Store.java",
              "package other;\npublic class Store { }"),
     "guessed namesake: several classes have the receiver's name (of 1)"},
    {"ImportGoesBeforeTheOwnPackage",
     and_also(with_store(IMPORT, ON_PARAMETER), "src/app/Store.java",
              "package app;\nclass Store { void save(int key) { } }"),
     "proven declared-type"},
    {"OwnPackageGoesBeforeOnDemand",
     and_also(with_store("import store.*;", ON_PARAMETER), "src/app/Store.java",
              "package app;\nclass Store { void save(int key) { } }"),
     "no edge"},
    {"ImportFromOutside", with_store("import elsewhere.Store;", ON_PARAMETER), "no edge"},
    {"NotImported", with_store("", ON_PARAMETER), UNKNOWN_RECEIVER},
    {"TwoSourceRoots",
     and_also(with_store(IMPORT, ON_PARAMETER), "copy/store/Store.java",
              "package store;\npublic class Store { public void save(int key) { } }"),
     "proven declared-type"},
    {"TwoOtherSourceRoots",
     {{"a/store/Store.java",
       "package store;\npublic class Store {\n  public void $target^save(int key) { }\n}"},
      {"b/store/Store.java",
       "package store;\npublic class Store { public void save(int key) { } }"},
      {"c/App.java", "import store.Store;\nclass App {\n" + ON_PARAMETER + "\n}"}},
     "guessed namesake: several classes have the receiver's name (of 1)"},
    {"UnnamedPackagesOfTwoRoots",
     {{"a/Store.java", "public class Store {\n  public void $target^save(int key) { }\n}"},
      {"b/App.java", "class App {\n" + ON_PARAMETER + "\n}"}},
     UNKNOWN_RECEIVER},
    {"TypeOfALocalShadowsAField",
     with_store(IMPORT, "  void f() { String field = \"\"; field.\n$call^save(1); }"), "no edge"},
    {"LocalOfAnotherBlockDoesNot",
     with_store(IMPORT, "  void f() { { String field = \"\"; } field.\n$call^save(1); }"),
     "proven declared-type"},
    {"FieldOfALocalClassShadowsALocal",
     with_store(
         IMPORT,
         "  void f(String s) { new Object() { Store s; void g() { s.\n$call^save(1); } }; }"),
     "proven declared-type"},
    {"LocalClassShadowsTheImport",
     with_store(IMPORT, "  void f() { class Store { } Store s = null; s.\n$call^save(1); }"),
     "no edge"},
    {"TypeParameterShadowsTheImport",
     with_store(IMPORT, "  <Store> void f(Store s) { s.\n$call^save(1); }"), "no edge"},
    {"BoundOfATypeParameter",
     with_store(IMPORT, "  <S extends Store> void f(S s) { s.\n$call^save(1); }"),
     "proven declared-type"},
    {"Var", with_store(IMPORT, "  void f() { var s = field; s.\n$call^save(1); }"),
     "proven declared-type"},
    {"VarOfALoop",
     with_store(IMPORT + "\nimport java.util.List;",
                "  void f(List<Store> all) { for (var s : all) s.\n$call^save(1); }"),
     "proven declared-type"},
    {"ElementOfAnArray", with_store(IMPORT, "  void f(Store[] all) { all[0].\n$call^save(1); }"),
     "proven declared-type"},
    {"ElementOfAList",
     with_store(IMPORT + "\nimport java.util.List;",
                "  void f(List<Store> all) { all.get(0).\n$call^save(1); }"),
     "proven declared-type"},
    {"ElementOfARawList",
     with_store(IMPORT + "\nimport java.util.List;",
                "  void f(List all) { all.get(0).\n$call^save(1); }"),
     UNKNOWN_RECEIVER},
    {"Cast", with_store(IMPORT, "  void f(Object o) { ((Store) o).\n$call^save(1); }"),
     "proven declared-type"},
    {"Pattern",
     with_store(IMPORT, "  void f(Object o) { if (o instanceof Store s) s.\n$call^save(1); }"),
     "proven declared-type"},
    {"Chain",
     with_store(IMPORT, "  App me() { return this; }\n  void f() { me().field.\n$call^save(1); }"),
     "proven declared-type"},
    {"GenericResult",
     with_store(IMPORT,
                "  <T> T same(T t) { return t; }\n  void f() { same(field).\n$call^save(1); }"),
     "proven declared-type"},
    {"GenericResultThatNothingShows",
     with_store(IMPORT, "  <T> T any() { return null; }\n  void f() { any().\n$call^save(1); }"),
     UNKNOWN_RECEIVER},
    {"TypeArgument",
     and_also(with_store(IMPORT, "  void f(Box<Store> b) { b.get().\n$call^save(1); }"),
              "src/app/Box.java", "package app;\nclass Box<T> { T get() { return null; } }"),
     "proven declared-type"},
    {"TypeArgumentOfASupertype",
     and_also(
         and_also(with_store(IMPORT, "  void f(Sub b) { b.get().\n$call^save(1); }"),
                  "src/app/Box.java", "package app;\nclass Box<T> { T get() { return null; } }"),
         "src/app/Sub.java", "package app;\nclass Sub extends Box<store.Store> { }"),
     "proven declared-type"},
    {"RawType",
     and_also(with_store(IMPORT, "  void f(Box b) { b.get().\n$call^save(1); }"),
              "src/app/Box.java", "package app;\nclass Box<T> { T get() { return null; } }"),
     UNKNOWN_RECEIVER},
    {"ParameterOfALambdaOfTheLibrary",
     with_store(IMPORT + "\nimport java.util.function.Consumer;",
                "  void each(Consumer<? super Store> c) { }\n"
                "  void f() { each(s -> s.\n$call^save(1)); }"),
     "proven declared-type"},
    {"ParameterOfALambdaOfTheRepository",
     with_store(IMPORT,
                "  interface Act<T> { void act(int i, T t); }\n  void each(Act<Store> c) { }\n"
                "  void f() { each((i, s) -> s.\n$call^save(1)); }"),
     "proven declared-type"},
    {"ParameterOfALambdaOfAGenericMethod",
     with_store(IMPORT + "\nimport java.util.function.Consumer;",
                "  <T> void each(T t, Consumer<T> c) { }\n"
                "  void f() { each(field, s -> s.\n$call^save(1)); }"),
     "proven declared-type"},
    {"ElementHandedToALambda",
     with_store(IMPORT + "\nimport java.util.List;",
                "  void f(List<Store> all) { all.stream().filter(s -> true).forEach(s -> "
                "s.\n$call^save(1)); }"),
     "proven declared-type"},
    {"ParameterOfALambdaThatTwoMethodsTake",
     with_store(IMPORT + "\nimport java.util.function.*;",
                "  void each(Consumer<Store> c) { }\n  void each(Predicate<App> c) { }\n"
                "  void f() { each(s -> s.\n$call^save(1)); }"),
     UNKNOWN_RECEIVER},
    {"ParameterOfALambdaOfAnUnknownMethod",
     with_store(IMPORT, "  void f() { each(s -> s.\n$call^save(1)); }"), UNKNOWN_RECEIVER},
    {"UnknownReceiverOfAnotherArity",
     with_store(IMPORT, "  void f() { each(s -> s.\n$call^save(1, 2)); }"), "no edge"},
    {"Overridden",
     and_also(with_store(IMPORT, ON_PARAMETER), "src/store/Fast.java",
              "package store;\nclass Fast extends Store { public void save(int key) { } }"),
     OVERRIDDEN},
    {"ConstructedAlthoughOverridden",
     and_also(with_store(IMPORT, "  void f() { Store s = new Store(); s.\n$call^save(1); }"),
              "src/store/Fast.java",
              "package store;\nclass Fast extends Store { public void save(int key) { } }"),
     "proven constructed"},
    {"ConstructedThenReassigned",
     and_also(with_store(IMPORT,
                         "  void f(Store t) { Store s = new Store(); s = t; s.\n$call^save(1); }"),
              "src/store/Fast.java",
              "package store;\nclass Fast extends Store { public void save(int key) { } }"),
     OVERRIDDEN},
    {"AnnotatedType", with_store("", "  void f(store.@NonNull Store s) { s.\n$call^save(1); }"),
     "proven declared-type"},
    {"HeaderDoesNotSeeTheBody",
     {{"B.java", "class B {\n  void $target^go() { }\n}"},
      {"C.java", "class C extends B {\n  static class B { }\n  void f() { $call^go(); }\n}"}},
     "proven this"},
    {"NestedBuilderOfAnInheritedClass",
     {{"B.java", "class B {\n  static class Builder {\n    void $target^go() { }\n  }\n}"},
      {"C.java",
       "class C extends B {\n  static class Made extends Builder {\n    void f() { $call^go(); "
       "}\n  }\n}"}},
     "proven this"},

    {"StaticCall", with_store(IMPORT, "  void f() { Store.\n$call^save(1); }"), "proven class"},
    {"FieldObscuresAType",
     with_store(IMPORT, "  String Store;\n  void f() { Store.\n$call^save(1); }"), "no edge"},
    {"StaticImport", with_store("import static store.Store.save;", "  void f() { $call^save(1); }"),
     "proven import"},
    {"StaticImportOnDemand",
     with_store("import static store.Store.*;", "  void f() { $call^save(1); }"), "proven import"},
    {"OwnMethodGoesBeforeAStaticImport",
     with_store("import static store.Store.save;",
                "  void save(int a) { }\n  void f() { $call^save(1); }"),
     "no edge"},
    {"StaticImportFromOutside",
     with_store("import static elsewhere.Store.save;", "  void f() { $call^save(1); }"), "no edge"},

    {"Construction",
     one("  C(int a) { }\n  $target^C(String a) { }\n  Object f() { return new $call^C(\"\"); }"),
     "proven constructor"},
    {"ConstructionWithoutConstructor",
     {{"C.java", "class $target^C {\n  Object f() { return new $call^C(); }\n}"}},
     "proven constructor"},
    {"ConstructionOfAnUnknownArgument",
     one("  C(int a) { }\n  $target^C(String a) { }\n  Object f() { return new $call^C(x()); }"),
     OPEN_OVERLOADS},
    {"ConstructionOfAnInnerClass",
     one("  class D {\n    $target^D() { }\n  }\n  static Object f(C c) { return c.new $call^D(); "
         "}"),
     "proven constructor"},
    {"AnonymousClass",
     {{"C.java", "class $target^C {\n  C() { }\n  Object o = new $call^C() { };\n}"}},
     "proven constructor"},
    {"ThisConstructor", one("  $target^C(int a) { }\n  C() {\n    $call^this(1);\n  }"),
     "proven constructor"},
    {"SuperConstructor",
     {{"B.java", "class B {\n  $target^B(int a) { }\n}"},
      {"C.java", "class C extends B {\n  C() {\n    $call^super(1);\n  }\n}"}},
     "proven super"},
    {"ConstantOfAnEnum",
     {{"E.java", "enum E {\n  A(1);\n  $target^E(int a) { }\n}"},
      {"F.java", "class F { Object e = new $call^E(1); }"}},
     "proven constructor"},
    {"CompactConstructor",
     {{"R.java", "record R(int a) {\n  $target^R { }\n}"},
      {"F.java", "class F { Object e = new $call^R(1); }"}},
     "proven constructor"},
    {"CanonicalConstructor",
     {{"R.java", "record $target^R(int a) {\n  R(String s) { this(1); }\n}"},
      {"F.java", "class F { Object e = new $call^R(1); }"}},
     "proven constructor"},

    {"MethodReference", with_store(IMPORT, "  Object f = use(Store::\n$call^save);"),
     "proven class"},
    {"MethodReferenceToAnOverload",
     one("  static void $target^run() { }\n  static void run(int a) { }\n  Object f = "
         "use(C::\n$call^run);"),
     OPEN_OVERLOADS},
    {"ConstructorReference", one("  $target^C() { }\n  Object f = use($call^C::new);"),
     "proven constructor"},
};

INSTANTIATE_TEST_SUITE_P(Rules, JavaResolution, testing::ValuesIn(CASES),
                         [](const auto& each) { return std::string(each.param.name); });

/// Which of several overloads a call means: a call, and the parameters that are the target's.
struct Overload {
  const char* name;
  std::vector<std::string> parameters;  ///< the first list is the target's
  std::string call;
  bool proven = true;
};

void PrintTo(const Overload& each, std::ostream* out) { *out << each.name; }

class JavaOverloads : public testing::TestWithParam<Overload> {};

TEST_P(JavaOverloads, Are) {
  AnnotatedRepository repository;
  std::string text =
      "import java.util.*;\nimport java.util.concurrent.Callable;\n"
      "class C<K> {\n  interface Act { void act(C c); }\n  static class D extends C { }\n"
      "  int number; Integer boxed; Object o; K k; int[] ints; String[] strings; List<D> ds;\n";
  std::string mark = "$target^";
  for (const std::string& parameters : GetParam().parameters) {
    text += "  static " + std::string(parameters.starts_with('<') ? "<T> " : "") + "void " + mark +
            "m(" + parameters.substr(parameters.starts_with('<') ? 4 : 0) + ") { }\n";
    mark.clear();
  }
  text += "  void f(D d, byte small, char letter) { $call^m(" + GetParam().call + "); }\n}\n";
  repository.add("C.java", text);
  const std::string found = repository.edge("call", "target");
  EXPECT_TRUE(found.starts_with(GetParam().proven ? "proven" : "guessed")) << found << text;
}

const std::vector<Overload> OVERLOADS = {
    {"ByCount", {"int a", "int a, int b"}, "unknown()"},
    {"OfAnInt", {"int a", "long a", "Object a"}, "1"},
    {"OfALong", {"long a", "int a"}, "1L"},
    {"OfAWidenedByte", {"short a", "int a"}, "small"},
    {"OfAChar", {"int a", "short a"}, "letter"},
    {"OfASum", {"long a", "int a"}, "number + 1L"},
    {"OfAText", {"String a", "Object a"}, "\"a\" + number"},
    {"OfAComparison", {"boolean a", "int a"}, "number > 1"},
    {"OfANull", {"String a", "Object a"}, "null"},
    {"OfANullForTwo", {"String a", "Integer a"}, "null", false},
    {"WideningGoesBeforeBoxing", {"long a", "Integer a"}, "number"},
    {"Boxing", {"Object a", "String a"}, "number"},
    {"Unboxing", {"int a", "String a"}, "boxed"},
    {"BoxingGoesBeforeVariable", {"Object a", "int... a"}, "number"},
    {"VariableWithNothing", {"int... a", "int a"}, ""},
    {"VariableWithMore", {"String a, Object... b", "String a"}, "\"\", 1, 2"},
    {"OfAnArray", {"int[] a", "Object a"}, "ints"},
    {"OfAnArrayOfObjects", {"Object[] a", "int[] a"}, "strings"},
    {"OfASubclass", {"C a", "String a"}, "d"},
    {"OfTheNearestClass", {"D a", "C a"}, "d"},
    {"OfAListOfTheLibrary", {"Collection a", "String a"}, "ds"},
    {"OfAnElement", {"C a", "String a"}, "ds.get(0)"},
    {"OfACast", {"String a", "Object a"}, "(String) o"},
    {"OfANew", {"Object a", "String a"}, "new Object()"},
    {"OfAnArrayMadeHere", {"int[][] a", "int[] a"}, "new int[1][]"},
    {"OfAConditional", {"long a", "int a"}, "o == null ? 1 : 2L"},
    {"OfAClass", {"Class<?> a", "String a"}, "C.class"},
    {"OfACallOfTheLibrary", {"int a", "String a"}, "\"\".length()"},
    {"OfATypeParameter", {"Object a", "String a"}, "k"},
    {"Generic", {"<T> T a", "int a"}, "o"},
    {"GenericArray", {"<T> T[] a", "int[] a"}, "strings"},
    {"LambdaByArity", {"Act a", "Callable<String> a"}, "c -> go()"},
    {"LambdaByResult", {"Callable<String> a", "Runnable a"}, "() -> \"\""},
    {"LambdaOfStatements", {"Runnable a", "Callable<String> a"}, "() -> { number = 1; }"},
    {"LambdaIsNoString", {"Act a", "String a"}, "c -> c.f()"},
    {"LambdaOfACall", {"Runnable a", "Callable<String> a"}, "() -> go()", false},
    {"MethodReferenceIsNoString", {"Act a", "String a"}, "C::go"},
    {"OfAnUnknown", {"int a", "String a"}, "unknown()", false},
    {"OfAnUnknownThatDecidesNothing", {"int a, C b", "String a, C b"}, "1, unknown()"},
};

INSTANTIATE_TEST_SUITE_P(Rules, JavaOverloads, testing::ValuesIn(OVERLOADS),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(JavaGuesses, BeginWithTheDeclaredMethod) {
  AnnotatedRepository repository;
  repository.add("z/I.java", "package z;\npublic interface I {\n  void work();\n}\n");
  repository.add("a/A.java",
                 "package a;\nclass A implements z.I {\n  public void work() { }\n"
                 "  void f(z.I i) { i.\n$call^work(); }\n}\n");
  EXPECT_EQ(repository.edges("call"),
            (std::vector<std::string>{"guessed z/I.java:3", "guessed a/A.java:3"}));
}

TEST(JavaGuesses, LeaveNamesOfTheLibraryToIt) {
  AnnotatedRepository repository;
  repository.add("a/Bag.java", "package a;\npublic class Bag {\n  public void add(int i) { }\n}\n");
  repository.add("b/B.java", "package b;\nclass B { void f() { g(x -> x.$call^add(1)); } }\n");
  repository.add("c/C.java",
                 "package c;\nimport a.Bag;\nclass C { void f() { g(x -> x.$linked^add(1)); } }\n");
  EXPECT_TRUE(repository.edges("call").empty());
  EXPECT_EQ(repository.edges("linked"), (std::vector<std::string>{"guessed a/Bag.java:3"}));
}

}  // namespace
}  // namespace context_delta::tests
