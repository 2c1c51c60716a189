#include <gtest/gtest.h>

#include "support/resolution_case.h"

namespace context_delta::tests {
namespace {

class PythonResolution : public testing::TestWithParam<Case> {};

TEST_P(PythonResolution, TiesTheCall) { EXPECT_EQ(tie_of(GetParam()), GetParam().expected); }

const std::string FUNCTION = "def $target^run(a, b=1):\n    pass\n";
const std::string CALL = "def caller():\n    $call^run(1)\n";
const std::string BASE =
    "class Base:\n    def $target^work(self):\n        pass\n"
    "    def go(self):\n        self.$call^work()\n";

const std::vector<Case> CASES = {
    {"SameFile", {{"m.py", FUNCTION + CALL}}, "proven same-file"},
    {"SameFileBesideANamesakeElsewhere",
     {{"m.py", FUNCTION + CALL}, {"n.py", "def run(a): pass\n"}},
     "proven same-file"},
    {"ShadowedByALocal",
     {{"m.py", FUNCTION + "def caller(x):\n    run = x\n    $call^run(1)\n"}},
     "guessed namesake: the name is a parameter or local variable (of 1)"},
    {"ShadowedByAParameter",
     {{"m.py", FUNCTION + "def caller(run):\n    $call^run(1)\n"}},
     "guessed namesake: the name is a parameter or local variable (of 1)"},
    {"ShadowedByALoopVariable",
     {{"m.py", FUNCTION + "def caller(xs):\n    for run in xs:\n        $call^run(1)\n"}},
     "guessed namesake: the name is a parameter or local variable (of 1)"},
    {"ReassignedInTheModule",
     {{"m.py", FUNCTION + "run = other\n" + CALL}},
     "guessed namesake: the name is bound more than once (of 1)"},
    {"ReassignedThroughGlobal",
     {{"m.py", FUNCTION + "def swap(x):\n    global run\n    run = x\n" + CALL}},
     "guessed namesake: the name is bound more than once (of 1)"},
    {"Deleted",
     {{"m.py", FUNCTION + "del run\n" + CALL}},
     "guessed namesake: the name is bound more than once (of 1)"},
    {"ConditionalTwin",
     {{"m.py", "if x:\n    def $target^run(a): pass\nelse:\n    def run(a): pass\n" + CALL}},
     "guessed namesake: the definition stands under a condition (of 2)"},
    {"UnderTry",
     {{"m.py", "try:\n    def $target^run(a): pass\nexcept E:\n    pass\n" + CALL}},
     "guessed namesake: the definition stands under a condition (of 1)"},
    {"TooManyArgumentsStillNamesIt",
     {{"m.py", FUNCTION + "$call^run(1, 2, 3)\n"}},
     "proven same-file"},
    {"NestedFunction",
     {{"m.py", "def outer():\n    def $target^inner(): pass\n    $call^inner()\n"}},
     "proven local"},
    {"MethodIsNoBareName",
     {{"m.py",
       "class C:\n    def $target^run(self): pass\n    def go(self):\n        $call^run()\n"}},
     "no edge"},
    {"Overloads",
     {{"m.py",
       "@overload\ndef run(a: int): ...\n@overload\ndef run(a: str): ...\n"
       "def $target^run(a): pass\n" +
           CALL}},
     "proven same-file"},
    {"Construction",
     {{"m.py", "class $target^Thing:\n    def __init__(self, a): pass\n$call^Thing(1)\n"}},
     "proven same-file"},
    {"ConstructionRunsTheConstructor",
     {{"m.py", "class Thing:\n    def $target^__init__(self, a): pass\n$call^Thing(1)\n"}},
     "proven construction"},
    {"ConstructionRunsAnInheritedConstructor",
     {{"m.py",
       "class Base:\n    def $target^__new__(cls, a): pass\nclass Thing(Base): pass\n"
       "$call^Thing(1)\n"}},
     "proven construction"},
    {"ConstructionRunsTheNearestConstructor",
     {{"m.py",
       "class Base:\n    def $target^__init__(self, a): pass\n"
       "class Thing(Base):\n    def __init__(self): pass\n$call^Thing()\n"}},
     "no edge"},
    {"ConstructionOfWhatMayInheritFromOutside",
     {{"m.py",
       "from abroad import Other\nclass Base:\n    def $target^__init__(self, a): pass\n"
       "class Thing(Other, Base): pass\n$call^Thing(1)\n"}},
     "guessed construction: a base class is not known (of 1)"},
    {"Decorator",
     {{"m.py", "def $target^wrap(f): return f\n@$call^wrap\ndef g(): pass\n"}},
     "proven same-file"},

    {"FromImport",
     {{"pkg/__init__.py", ""},
      {"pkg/a.py", FUNCTION},
      {"pkg/b.py", "from pkg.a import run\n" + CALL}},
     "proven import"},
    {"FromImportAs",
     {{"pkg/__init__.py", ""},
      {"pkg/a.py", "def $target^run(a): pass\n"},
      {"pkg/b.py", "from .a import run as go\n$call^go(1)\n"}},
     "proven import"},
    {"ImportModule",
     {{"pkg/__init__.py", ""},
      {"pkg/a.py", FUNCTION},
      {"main.py", "import pkg.a\npkg.a.$call^run(1)\n"}},
     "proven import"},
    {"ImportModuleAs",
     {{"pkg/__init__.py", ""},
      {"pkg/a.py", FUNCTION},
      {"main.py", "import pkg.a as m\nm.$call^run(1)\n"}},
     "proven import"},
    {"SourceLayout",
     {{"src/pkg/__init__.py", ""},
      {"src/pkg/a.py", FUNCTION},
      {"tests/t.py", "from pkg.a import run\n" + CALL}},
     "proven import"},
    {"ReExportThroughInit",
     {{"pkg/__init__.py", "from .a import run as run\n"},
      {"pkg/a.py", FUNCTION},
      {"main.py", "import pkg\npkg.$call^run(1)\n"}},
     "proven import"},
    {"ParentPackage",
     {{"pkg/__init__.py", ""},
      {"pkg/a.py", FUNCTION},
      {"pkg/sub/__init__.py", ""},
      {"pkg/sub/b.py", "from ..a import run\n" + CALL}},
     "proven import"},
    {"ImportInsideTheFunction",
     {{"pkg/__init__.py", ""},
      {"pkg/a.py", FUNCTION},
      {"pkg/b.py", "def caller():\n    from .a import run\n    $call^run(1)\n"}},
     "proven import"},
    {"WildcardImport",
     {{"pkg/__init__.py", ""}, {"pkg/a.py", FUNCTION}, {"pkg/b.py", "from .a import *\n" + CALL}},
     "guessed namesake: the name comes from a wildcard import (of 1)"},
    {"ImportBoundTwice",
     {{"pkg/__init__.py", ""},
      {"pkg/a.py", FUNCTION},
      {"pkg/c.py", "def run(a): pass\n"},
      {"pkg/b.py", "try:\n    from .a import run\nexcept E:\n    from .c import run\n" + CALL}},
     "guessed namesake: the name is bound more than once (of 2)"},
    {"TwoSourceRoots",
     {{"src/pkg/__init__.py", ""},
      {"src/pkg/a.py", FUNCTION},
      {"lib/pkg/__init__.py", ""},
      {"lib/pkg/a.py", "def run(a): pass\n"},
      {"main.py", "from pkg.a import run\n" + CALL}},
     "guessed namesake: several modules have this name (of 2)"},
    {"ExternalImport",
     {{"a.py", FUNCTION}, {"main.py", "from elsewhere import run\n" + CALL}},
     "no edge"},
    {"StandardLibraryBeforeANamesake",
     {{"tools/__init__.py", ""},
      {"tools/json.py", "def $target^loads(a): pass\n"},
      {"main.py", "import json\njson.$call^loads(1)\n"}},
     "no edge"},

    {"Self", {{"m.py", BASE}}, "proven self"},
    {"SelfOverridden",
     {{"m.py", BASE}, {"n.py", "from m import Base\nclass D(Base):\n    def work(self): pass\n"}},
     "guessed dispatch: a subclass overrides the method (of 2)"},
    {"SelfBesideAnUnrelatedNamesake",
     {{"m.py", BASE}, {"n.py", "class D:\n    def work(self): pass\n"}},
     "proven self"},
    {"SelfMemberAssigned",
     {{"m.py", BASE + "    def late(self, f):\n        self.work = f\n"}},
     "guessed namesake: the name is bound more than once (of 1)"},
    {"SelfPatchedFromOutside",
     {{"m.py", BASE + "Base.work = other\n"}},
     "guessed namesake: the member is assigned elsewhere (of 1)"},
    {"Inherited",
     {{"a.py", "class Base:\n    def $target^work(self): pass\n"},
      {"b.py",
       "from a import Base\nclass D(Base):\n    def go(self):\n        self.$call^work()\n"}},
     "proven self"},
    {"InheritedBehindAnUnknownBase",
     {{"a.py", "class Base:\n    def $target^work(self): pass\n"},
      {"b.py",
       "from a import Base\nfrom x import Mixin\nclass D(Mixin, Base):\n"
       "    def go(self):\n        self.$call^work()\n"}},
     "guessed namesake: a base class is not known (of 1)"},
    {"Super",
     {{"a.py", "class Base:\n    def $target^work(self): pass\n"},
      {"b.py",
       "from a import Base\nclass D(Base):\n    def work(self):\n        super().$call^work()\n"}},
     "proven super"},
    {"SuperOfSeveralBases",
     {{"a.py",
       "class A:\n    def $target^work(self): pass\nclass B:\n    def work(self): pass\n"
       "class D(A, B):\n    def work(self):\n        super().$call^work()\n"}},
     "guessed namesake: several base classes have the member (of 3)"},
    {"ClassMethod",
     {{"m.py",
       "class C:\n    @classmethod\n    def $target^make(cls): pass\n"
       "    @classmethod\n    def go(cls):\n        cls.$call^make()\n"}},
     "proven self"},
    {"Property",
     {{"m.py",
       "class C:\n    @property\n    def $target^hook(self): pass\n"
       "    def go(self):\n        self.$call^hook()\n"}},
     "no edge"},

    {"Constructed",
     {{"m.py",
       BASE.substr(0, BASE.find("    def go")) + "def f():\n    x = Base()\n    x.$call^work()\n"}},
     "proven constructed"},
    {"LiteralIsNoObjectOfAClassOfItsName",
     {{"m.py",
       "class dict:\n    def $target^items(self): pass\n"
       "def f():\n    x = {'a': 1}\n    x.$call^items()\n"}},
     "no edge"},
    {"LiteralItself",
     {{"m.py",
       "class str:\n    def $target^upper(self): pass\n"
       "def f():\n    'x'.$call^upper()\n"}},
     "no edge"},
    {"ClassNamedLikeALiteralsType",
     {{"m.py",
       "class dict:\n    def $target^items(self): pass\n"
       "def f():\n    x = dict()\n    x.$call^items()\n"}},
     "proven constructed"},
    {"ConstructedAlthoughOverridden",
     {{"m.py", BASE.substr(0, BASE.find("    def go")) +
                   "class D(Base):\n    def work(self): pass\n"
                   "def f():\n    x = Base()\n    x.$call^work()\n"}},
     "proven constructed"},
    {"ConstructedThenReassigned",
     {{"m.py", BASE.substr(0, BASE.find("    def go")) +
                   "def f(y):\n    x = Base()\n    x = y.z\n    x.$call^work()\n"}},
     "guessed namesake: the receiver's type is not known (of 1)"},
    {"Annotated",
     {{"m.py",
       BASE.substr(0, BASE.find("    def go")) + "def f(x: 'Base | None'):\n    x.$call^work()\n"}},
     "proven declared-type"},
    {"AnnotatedAndOverridden",
     {{"m.py", BASE.substr(0, BASE.find("    def go")) +
                   "class D(Base):\n    def work(self): pass\n"
                   "def f(x: Base):\n    x.$call^work()\n"}},
     "guessed dispatch: a subclass overrides the method (of 2)"},
    {"FieldType",
     {{"m.py", BASE.substr(0, BASE.find("    def go")) +
                   "class H:\n    def __init__(self, x: Base):\n        self.x = x\n"
                   "    def f(self):\n        self.x.$call^work()\n"}},
     "proven declared-type"},
    {"ReturnType",
     {{"m.py", BASE.substr(0, BASE.find("    def go")) +
                   "def make() -> Base: pass\ndef f():\n    make().$call^work()\n"}},
     "proven declared-type"},
    {"UnknownReceiver",
     {{"m.py", BASE.substr(0, BASE.find("    def go")) + "def f(x):\n    x.$call^work()\n"}},
     "guessed namesake: the receiver's type is not known (of 1)"},
    {"UnknownReceiverOfAnotherArity",
     {{"m.py", BASE.substr(0, BASE.find("    def go")) + "def f(x):\n    x.$call^work(1)\n"}},
     "no edge"},
    {"BuiltInReceiver",
     {{"m.py", "class C:\n    def $target^join(self, a): pass\n' '.$call^join([])\n"}},
     "no edge"},
    {"CommonNameWithoutALink",
     {{"a/c.py", "class C:\n    def $target^append(self, a): pass\n"},
      {"b/m.py", "def f(x):\n    x.$call^append(1)\n"}},
     "no edge"},
};

INSTANTIATE_TEST_SUITE_P(Rules, PythonResolution, testing::ValuesIn(CASES),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(PythonGuesses, AreOrderedByNearness) {
  AnnotatedRepository repository;
  const std::string method = "class C:\n    def work(self): pass\n";
  repository.add("far/z.py", method);
  repository.add("near/imported.py", method);
  repository.add("pkg/__init__.py", "");
  repository.add("pkg/other.py", method);
  repository.add("pkg/m.py", "import near.imported\n" + method + "def f(x):\n    x.$call^work()\n");
  EXPECT_EQ(repository.edges("call"),
            (std::vector<std::string>{"guessed pkg/m.py:3", "guessed pkg/other.py:2",
                                      "guessed near/imported.py:2", "guessed far/z.py:2"}));
}

}  // namespace
}  // namespace context_delta::tests
