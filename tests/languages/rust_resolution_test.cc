#include <gtest/gtest.h>

#include "support/resolution_case.h"

namespace context_delta::tests {
namespace {

class RustResolution : public testing::TestWithParam<Case> {};

TEST_P(RustResolution, TiesTheCall) { EXPECT_EQ(tie_of(GetParam()), GetParam().expected); }

const std::string RUN = "pub fn $target^run(a: u8) {}\n";
const std::string STORE =
    "pub struct Store { pub inner: Inner }\npub struct Inner;\n"
    "impl Store {\n    pub fn new() -> Self { todo!() }\n"
    "    pub fn open(p: u8) -> Result<Option<Store>, u8> { todo!() }\n"
    "    pub fn inner(&self) -> &Inner { &self.inner }\n}\n"
    "impl Inner {\n    pub fn $target^put(&self, a: u8) {}\n}\n";
const std::string SOURCE =
    "pub trait Source {\n    fn $target^pull(&self) -> u8;\n    fn $with_body^peek(&self) {}\n}\n";

std::string in_function(const std::string& body, const std::string& parameters = "") {
  return "fn caller(" + parameters + ") {\n" + body + "\n}\n";
}

const std::string SHADOW = "guessed namesake: the name is a parameter or local variable (of 1)";
const std::string UNKNOWN_RECEIVER = "guessed namesake: the receiver's type is not known (of 1)";

const std::vector<Case> CASES = {
    {"SameFile", {{"src/lib.rs", RUN + in_function("$call^run(1);")}}, "proven same-file"},
    {"BesideANamesakeElsewhere",
     {{"src/lib.rs", "mod b;\n" + RUN + in_function("$call^run(1);")},
      {"src/b.rs", "pub fn run(a: u8) {}\n"}},
     "proven same-file"},
    {"ShadowedByAVariable",
     {{"src/lib.rs", RUN + in_function("let run = other; $call^run(1);")}},
     SHADOW},
    {"ShadowedByAParameter",
     {{"src/lib.rs", RUN + in_function("$call^run(1);", "run: fn(u8)")}},
     SHADOW},
    {"ShadowedByAClosureParameter",
     {{"src/lib.rs", RUN + in_function("with(|run| $call^run(1));")}},
     SHADOW},
    {"NotShadowedBeforeTheVariable",
     {{"src/lib.rs", RUN + in_function("let run = $call^run(1);")}},
     "proven same-file"},
    {"NotShadowedBehindTheBlock",
     {{"src/lib.rs", RUN + in_function("{ let run = 1; }\n $call^run(1);")}},
     "proven same-file"},
    {"ConditionalTwin",
     {{"src/lib.rs", "#[cfg(unix)]\n" + RUN + "#[cfg(windows)]\npub fn run(a: u8) {}\n" +
                         in_function("$call^run(1);")}},
     "guessed namesake: the name is defined more than once (of 2)"},
    {"OtherNumberOfArguments",
     {{"src/lib.rs", RUN + in_function("$call^run(1, 2);")}},
     "guessed namesake: the number of arguments differs (of 1)"},
    {"InAMacro",
     {{"src/lib.rs", RUN + in_function("assert!($call^run(1));")}},
     "guessed namesake: the call is written inside a macro's arguments (of 1)"},
    {"InBrokenText",
     {{"src/lib.rs", RUN + "struct {{{ " + in_function("$call^run(1);")}},
     "guessed namesake: the text around the call does not parse (of 1)"},
    {"NotDefinedInTheModuleInside",
     {{"src/lib.rs", RUN + "mod m {\n" + in_function("$call^run(1);") + "}\n"}},
     "guessed namesake: what the path means is not known (of 1)"},
    {"Super",
     {{"src/lib.rs", RUN + "mod m {\n" + in_function("super::$call^run(1);") + "}\n"}},
     "proven path"},

    {"Module",
     {{"src/lib.rs", "mod a;\n" + in_function("a::$call^run(1);")}, {"src/a.rs", RUN}},
     "proven path"},
    {"ModuleOfAFolder",
     {{"src/lib.rs", "mod a;\n" + in_function("crate::a::b::$call^run(1);")},
      {"src/a/mod.rs", "pub mod b;\n"},
      {"src/a/b.rs", RUN}},
     "proven path"},
    {"ModuleWithAPath",
     {{"src/lib.rs", "#[path = \"other/file.rs\"]\nmod a;\n" + in_function("a::$call^run(1);")},
      {"src/other/file.rs", RUN}},
     "proven path"},
    {"ConditionalModules",
     {{"src/lib.rs",
       "#[cfg(unix)]\n#[path = \"unix.rs\"]\nmod a;\n#[cfg(windows)]\n"
       "#[path = \"windows.rs\"]\nmod a;\n" +
           in_function("a::$call^run(1);")},
      {"src/unix.rs", RUN},
      {"src/windows.rs", "pub fn run(a: u8) {}\n"}},
     "guessed namesake: the name is defined more than once (of 1)"},
    {"Use",
     {{"src/lib.rs", "mod a;\nuse a::{other, run as go};\n" + in_function("$call^go(1);")},
      {"src/a.rs", RUN}},
     "proven import"},
    {"UseInAFunction",
     {{"src/lib.rs", "mod a;\n" + in_function("use crate::a::run;\n$call^run(1);")},
      {"src/a.rs", RUN}},
     "proven import"},
    {"ReExport",
     {{"src/lib.rs", "mod a;\nmod b;\npub use crate::b::run;\n"},
      {"src/a.rs", "use crate::run;\n" + in_function("$call^run(1);")},
      {"src/b.rs", "mod deep;\npub use self::deep::run;\n"},
      {"src/b/deep.rs", RUN}},
     "proven import"},
    {"OneGlob",
     {{"src/lib.rs", "mod a;\nuse a::*;\n" + in_function("$call^run(1);")}, {"src/a.rs", RUN}},
     "proven glob"},
    {"TwoGlobs",
     {{"src/lib.rs", "mod a;\nmod b;\nuse a::*;\nuse b::*;\n" + in_function("$call^run(1);")},
      {"src/a.rs", RUN},
      {"src/b.rs", "pub fn run(a: u8) {}\n"}},
     "guessed namesake: several wildcard imports bring the name (of 1)"},
    {"GlobOfWhatIsPrivate",
     {{"src/lib.rs", "mod a;\nuse a::*;\n" + in_function("$call^run(1);")},
      {"src/a.rs", "fn $target^run(a: u8) {}\n"}},
     "guessed namesake: what the path means is not known (of 1)"},
    {"GlobOfTheModuleAround",
     {{"src/lib.rs", "fn $target^run() {}\nmod tests {\n    use super::*;\n" +
                         in_function("$call^run();") + "}\n"}},
     "proven glob"},
    {"GlobsInACircle",
     {{"src/lib.rs", "mod a;\nmod b;\n"},
      {"src/a.rs", "pub use crate::b::*;\n" + in_function("$call^run(1);")},
      {"src/b.rs", "pub use crate::a::*;\n" + RUN}},
     "proven glob"},
    {"StandardLibrary",
     {{"src/lib.rs", "use std::mem::run;\nmod a;\n" + in_function("$call^run(1);")},
      {"src/a.rs", RUN}},
     "no edge"},

    {"OwnLibrary",
     {{"Cargo.toml", "[package]\nname = \"my-crate\"  # mine\n"},
      {"src/lib.rs", RUN},
      {"tests/all.rs", "use my_crate::run;\n" + in_function("$call^run(1);")}},
     "proven import"},
    {"RenamedLibrary",
     {{"Cargo.toml", "[package]\nname = \"my-crate\"\n[lib]\nname = \"mine\"\npath = \"l.rs\"\n"},
      {"l.rs", RUN},
      {"src/main.rs", in_function("mine::$call^run(1);")}},
     "proven path"},
    {"DependencyByPath",
     {{"a/Cargo.toml", "[package]\nname = \"a\"\n[dependencies]\nx = { path = \"../b\" }\n"},
      {"b/Cargo.toml", "[package]\nname = \"b\"\n"},
      {"a/src/main.rs", in_function("x::$call^run(1);")},
      {"b/src/lib.rs", RUN}},
     "proven path"},
    {"DependencyOfTheWorkspace",
     {{"Cargo.toml", "[workspace.dependencies]\nb = { path = \"b\" }\n"},
      {"a/Cargo.toml", "[package]\nname = \"a\"\n[dependencies]\nb.workspace = true\n"},
      {"b/Cargo.toml", "[package]\nname = \"b\"\n"},
      {"a/src/main.rs", in_function("b::$call^run(1);")},
      {"b/src/lib.rs", RUN}},
     "proven path"},
    {"DependencyFromTheRegistry",
     {{"a/Cargo.toml", "[package]\nname = \"a\"\n[dependencies]\nb = \"1.0\"\n"},
      {"b/Cargo.toml", "[package]\nname = \"b\"\n"},
      {"a/src/main.rs", in_function("b::$call^run(1);")},
      {"b/src/lib.rs", RUN}},
     "no edge"},

    {"AssociatedFunction",
     {{"src/lib.rs",
       "struct A;\nimpl A { fn $target^new() -> A { A } }\n" + in_function("A::$call^new();")}},
     "proven inherent"},
    {"TwinImpls",
     {{"src/lib.rs",
       "struct A;\n#[cfg(unix)]\nimpl A { fn $target^new() -> A { A } }\n"
       "#[cfg(windows)]\nimpl A { fn new() -> A { A } }\n" +
           in_function("A::$call^new();")}},
     "guessed namesake: several impls define the method (of 2)"},
    {"ImplInAnotherFile",
     {{"src/lib.rs", "mod m;\npub struct A;\n" + in_function("A::$call^new();")},
      {"src/m.rs", "use crate::A;\nimpl A { pub fn $target^new() {} }\n"}},
     "proven inherent"},
    {"ImplForANamesake",
     {{"src/lib.rs", "mod m;\npub struct A;\n" + in_function("A::$call^new();")},
      {"src/m.rs", "struct A;\nimpl A { pub fn $target^new() {} }\n"}},
     "no edge"},
    {"Alias",
     {{"src/lib.rs", "struct A;\ntype B = A;\nimpl A { fn $target^new() {} }\n" +
                         in_function("B::$call^new();")}},
     "proven inherent"},
    {"OnSelf",
     {{"src/lib.rs",
       "struct A;\nimpl A {\n fn $target^put(&self) {}\n"
       " fn go(&self) { self.$call^put() }\n}\n"}},
     "proven self"},
    {"OnSelfType",
     {{"src/lib.rs",
       "struct A;\nimpl A {\n fn $target^put() {}\n fn go() { Self::$call^put() }\n}\n"}},
     "proven self"},
    {"Variant",
     {{"src/lib.rs", "enum $target^E { A(u8) }\n" + in_function("E::$call^A(1);")}},
     "proven same-file"},
    {"VariantThroughAGlob",
     {{"src/lib.rs", "enum $target^E { A(u8) }\nuse E::*;\n" + in_function("$call^A(1);")}},
     "proven glob"},
    {"StructLiteral",
     {{"src/lib.rs", "struct $target^P { a: u8 }\n" + in_function("$call^P { a: 1 };")}},
     "proven same-file"},
    {"TupleStruct",
     {{"src/lib.rs", "struct $target^P(u8);\nimpl P { fn go() { $call^Self(1); } }\n"}},
     "proven self"},

    {"DeclaredParameter",
     {{"src/lib.rs", STORE + in_function("s.$call^put(1);", "s: &mut Inner")}},
     "proven inherent"},
    {"UnknownParameter",
     {{"src/lib.rs", STORE + in_function("with(|s| s.$call^put(1));")}},
     UNKNOWN_RECEIVER},
    {"BoxedParameter",
     {{"src/lib.rs", STORE + in_function("s.$call^put(1);", "s: Box<Inner>")}},
     "proven inherent"},
    {"Field",
     {{"src/lib.rs", STORE + in_function("s.inner.$call^put(1);", "s: Store")}},
     "proven inherent"},
    {"ReturnedType",
     {{"src/lib.rs", STORE + in_function("Store::new().inner().$call^put(1);")}},
     "proven inherent"},
    {"QuestionMarkAndUnwrap",
     {{"src/lib.rs",
       STORE + in_function("let s = Store::open(1)?.unwrap();\ns.inner().$call^put(1);")}},
     "proven inherent"},
    {"Matched",
     {{"src/lib.rs",
       STORE + in_function("if let Ok(Some(s)) = Store::open(1) { s.inner.$call^put(1); }")}},
     "proven inherent"},
    {"MatchedField",
     {{"src/lib.rs",
       STORE + in_function("let Store { inner } = s;\ninner.$call^put(1);", "s: Store")}},
     "proven inherent"},
    {"Iterated",
     {{"src/lib.rs", STORE + in_function("for (i, s) in all.iter().enumerate() { "
                                         "s.$call^put(1); }",
                                         "all: &[Inner]")}},
     "proven inherent"},
    {"InAClosure",
     {{"src/lib.rs", STORE + in_function("all.iter().map(|s| s.inner()).for_each(|i| "
                                         "i.$call^put(1));",
                                         "all: Vec<Store>")}},
     "proven inherent"},
    {"ReboundToAnotherType",
     {{"src/lib.rs", STORE + in_function("let s = other();\ns.$call^put(1);", "s: Inner")}},
     UNKNOWN_RECEIVER},
    {"TypeOfAnotherCrate",
     {{"src/lib.rs", STORE + in_function("s.$call^put(1);", "s: String")}},
     "no edge"},
    {"WithoutSuchAMethod",
     {{"src/lib.rs", STORE + in_function("s.$call^put(1);", "s: Store")}},
     "no edge"},
    {"TypeOfConditionalImports",
     {{"src/lib.rs", "mod a;\nmod b;\n#[cfg(unix)]\nuse a::T;\n#[cfg(windows)]\nuse b::T;\n" +
                         in_function("t.$call^put();", "t: &T")},
      {"src/a.rs", "pub struct T;\nimpl T { pub fn $target^put(&self) {} }\n"},
      {"src/b.rs", "pub struct T;\nimpl T { pub fn put(&self) {} }\n"}},
     "guessed namesake: the name is defined more than once (of 2)"},
    {"ModuleInsideAConditionMacro",
     {{"src/lib.rs", "cfg_rt! {\n    mod a;\n}\n" + in_function("a::$call^run(1);")},
      {"src/a.rs", RUN}},
     "proven path"},
    {"CallInsideAConditionMacro",
     {{"src/lib.rs", RUN + "cfg_if::cfg_if! {\n    if #[cfg(feature = \"}\")] {\n" +
                         in_function("$call^run(1);") + "    } else {}\n}\n"}},
     "guessed namesake: the call is written inside a macro's arguments (of 1)"},
    {"TwinsInsideAConditionMacro",
     {{"src/lib.rs", "cfg_if! {\n    if #[cfg(unix)] { " + RUN +
                         " } else if #[cfg(windows)] "
                         "{ pub fn run(a: u8) {} } else { pub fn run(a: u8) {} }\n}\n" +
                         in_function("$call^run(1);")}},
     "guessed namesake: the name is defined more than once (of 3)"},
    {"ThroughDeref",
     {{"src/lib.rs", STORE + "impl std::ops::Deref for Store { type Target = Inner; }\n" +
                         in_function("s.$call^put(1);", "s: Store")}},
     "guessed namesake: the method is reached through Deref (of 1)"},

    {"TraitOfAParameter",
     {{"src/lib.rs", SOURCE + "fn caller<S: Source>(s: S) { s.$call^pull(); }\n"}},
     "proven trait"},
    {"TraitOfAWhereClause",
     {{"src/lib.rs", SOURCE + "fn caller<S>(s: &S) where S: Source { s.$call^pull(); }\n"}},
     "proven trait"},
    {"TraitObject",
     {{"src/lib.rs", SOURCE + in_function("s.$call^pull();", "s: &dyn Source")}},
     "proven trait"},
    {"RequiredTrait",
     {{"src/lib.rs",
       SOURCE + "trait More: Source {}\n" + in_function("s.$call^pull();", "s: impl More")}},
     "proven trait"},
    {"TwoTraits",
     {{"src/lib.rs", SOURCE + "trait More { fn pull(&self); }\n" +
                         in_function("s.$call^pull();", "s: impl More + Source")}},
     "guessed namesake: several impls define the method (of 1)"},
    {"UnboundedParameter",
     {{"src/lib.rs", SOURCE + "fn caller<S>(s: S) { s.$call^pull(); }\n"}},
     "guessed namesake: the receiver's type does not define the method (of 1)"},
    {"AssociatedType",
     {{"src/lib.rs", SOURCE + "trait Has { type S: Source; fn s(&self) -> Self::S; }\n"
                              "fn caller<H: Has>(h: H) { h.s().$call^pull(); }\n"}},
     "proven trait"},
    {"TraitImplOfAType",
     {{"src/lib.rs",
       "trait Source { fn pull(&self); }\nstruct A;\nimpl Source for A {\n"
       " fn $target^pull(&self) {}\n}\n" +
           in_function("a.$call^pull();", "a: A")}},
     "proven trait-impl"},
    {"InherentBeforeTrait",
     {{"src/lib.rs",
       "trait Source { fn pull(&self); }\nstruct A;\nimpl Source for A {\n"
       " fn pull(&self) {}\n}\nimpl A {\n fn $target^pull(&self) {}\n}\n" +
           in_function("a.$call^pull();", "a: A")}},
     "proven inherent"},
    {"QualifiedPath",
     {{"src/lib.rs", SOURCE + "fn caller<S: Source>(s: S) { <S as Source>::$call^pull(&s); }\n"}},
     "proven trait"},
    {"TraitOfATypeOfAnotherCrate",
     {{"src/lib.rs",
       "trait Source { fn pull(&self); }\nimpl Source for str {\n"
       " fn $target^pull(&self) {}\n}\n" +
           in_function("\"a\".$call^pull();")}},
     "guessed namesake: the receiver's type is of another crate (of 1)"},
    {"CommonNameOnAnUnknownReceiver",
     {{"src/lib.rs",
       "struct A;\nimpl A { fn $target^len(&self) {} }\n" + in_function("x().$call^len();")}},
     "no edge"},

    {"Macro",
     {{"src/lib.rs", "macro_rules! $target^say { () => {} }\n" + in_function("$call^say!();")}},
     "proven same-file"},
    {"MacroDefinedLater",
     {{"src/lib.rs", in_function("$call^say!();") + "macro_rules! $target^say { () => {} }\n"}},
     "guessed namesake: the macro is not defined before the call in this file (of 1)"},
    {"MacroTwin",
     {{"src/lib.rs", "macro_rules! $target^say { () => {} }\nmacro_rules! say { () => {} }\n" +
                         in_function("$call^say!();")}},
     "guessed namesake: the macro is defined more than once (of 2)"},
};

INSTANTIATE_TEST_SUITE_P(Rules, RustResolution, testing::ValuesIn(CASES),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(RustNames, FollowTheModuleTree) {
  MemorySource source;
  source.add("Cargo.toml", "[package]\nname = \"my-crate\"\n");
  source.add("src/lib.rs", "mod a;\n");
  source.add("src/a/mod.rs", "mod b;\n");
  source.add("src/a/b.rs",
             "mod inner { pub struct T<X>(X); }\nimpl<X> A<X> for inner::T<X> { fn f() {} }\n"
             "impl inner::T<u8> { fn g() {} }\n");
  source.add("tests/all.rs", "fn t() {}\n");
  EXPECT_EQ(source.resolve("src/a/b.rs").qualified_names,
            (std::vector<std::string>{
                "my_crate::a::b::inner", "my_crate::a::b::inner::T",
                "my_crate::a::b::<impl A<X> for inner::T<X>>", "<my_crate::a::b::T as A<X>>::f",
                "my_crate::a::b::<impl inner::T<u8>>", "my_crate::a::b::T::g"}));
  EXPECT_EQ(source.resolve("src/a/b.rs").module_name, "my_crate::a::b");
  EXPECT_EQ(source.resolve("tests/all.rs").module_name, "all");
}

TEST(RustGuesses, PutTheDeclarationOfATraitFirst) {
  AnnotatedRepository repository;
  repository.add("src/lib.rs",
                 "struct A;\nimpl Source for A {\n fn pull(&self) {}\n}\n"
                 "trait Source {\n fn pull(&self);\n}\nfn f() { x().$call^pull(); }\n");
  EXPECT_EQ(repository.edges("call"),
            (std::vector<std::string>{"guessed src/lib.rs:6", "guessed src/lib.rs:3"}));
}

}  // namespace
}  // namespace context_delta::tests
