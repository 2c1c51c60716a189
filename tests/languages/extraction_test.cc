#include <gtest/gtest.h>

#include "support/annotated_repository.h"

namespace context_delta::tests {
namespace {

/// What extraction says of a text, in the form of describe_*.
struct Extraction {
  std::string definitions;
  std::string references;
  std::string bindings;
};

Extraction extraction_of(const std::string& path, std::string_view text) {
  MemorySource source;
  source.add(path, text);
  const MemorySource::Entry& entry = source.files().at(path);
  return {describe_definitions(entry, source.resolve(path).qualified_names),
          describe_references(*entry.facts), describe_bindings(*entry.facts)};
}

TEST(PythonExtraction, Definitions) {
  EXPECT_EQ(extraction_of("m.py", R"(LIMIT: int = 3  # a comment
LIMIT = 4
run = lambda x: x

@wraps(f)
@other
async def outer(a, *,
                b=1) -> "Foo":  # why
    """Text."""
    def inner(*args): pass
    class Local: pass

class Base(Root[int], metaclass=M):
    size = 1

    def __init__(self, a): pass
    @staticmethod
    def make(a, b): pass
    @classmethod
    def build(cls): pass
    @property
    def area(self): pass
    @abstractmethod
    def work(self, **kw): pass

if x:
    def late(): pass
else:
    def late(): pass
Base.size = 2
)")
                .definitions,
            R"(variable m.LIMIT 1-1 @1 `LIMIT: int = 3`
variable m.run 3-3 @3 `run = lambda x: x`
function m.outer 5-11 @7 [1 2] {decorated} `async def outer(a, *, b=1) -> "Foo"`
function m.outer.inner 10-10 @10 [0 *] `def inner(*args)`
class m.outer.Local 11-11 @11 `class Local`
class m.Base 13-24 @13 `class Base(Root[int], metaclass=M)`
constructor m.Base.__init__ 16-16 @16 [1 1] `def __init__(self, a)`
method m.Base.make 17-18 @18 [2 2] {static} `def make(a, b)`
method m.Base.build 19-20 @20 [0 0] {static} `def build(cls)`
method m.Base.area 21-22 @22 [0 0] {property} `def area(self)`
method m.Base.work 23-24 @24 [0 *] {declaration,virtual} `def work(self, **kw)`
function m.late 27-27 @27 [0 0] {conditional} `def late()`
function m.late 29-29 @29 [0 0] {conditional} `def late()`
variable m.Base.size 30-30 @30 {reassigned} `Base.size`
)");
}

TEST(PythonExtraction, References) {
  EXPECT_EQ(extraction_of("m.py", R"(from .a import b as c, d
@mark
@app.route("/")
def f(x: "t.Opt[Foo]" = g()) -> Bar:
    x.y[0].go(1, *xs)
    return f"{h(1, k=2)}" + (await i()).j(z for z in w)
class D(m.Base): pass
)")
                .references,
            R"(1 import module .a|b in -
1 import module .a|d in -
2 decorate |mark(1) in -
3 call app|route(1) in -
4 type t|Opt in f
4 type |Foo in f
4 call |g(0) in f
4 type |Bar in f
5 call x.y[]|go(*) in f
6 call |h(2) in f
6 call i()|j(1) in f
6 call |i(0) in f
7 inherit m|Base in D
)");
}

TEST(PythonExtraction, BindingsAndExports) {
  const std::string text = R"(import a.b, c as d
from e import *
class C:
    size: int = 1
    def m(self, p: Foo, *rest):
        global G
        G = x = y = Bar()
        self.p = p
        self.q: Baz = p.q
        for i, (j, *k) in p: pass
        with open() as f, g: pass
        x += 1
        if (n := p.n): del n
__all__ = ["C", 'D']
)";
  EXPECT_EQ(extraction_of("m.py", text).bindings,
            R"(member size in C : int = "int"
parameter self in m = self
parameter p in m : Foo
parameter rest in m = ?
global G in - = Bar() {reassigned}
local x in m = Bar()
local y in m = Bar()
member p in C : Foo = p
member q in C : Baz = p.q
local i in m = ? {conditional}
local j in m = ? {conditional}
local k in m = ? {conditional}
local f in m = ?
local x in m = ? {reassigned}
local n in m = p.n {conditional}
local n in m = ? {conditional}
global __all__ in - = "list"
import a.b|| in -
import c||d in -
import e|*| in -
)");
  MemorySource source;
  source.add("m.py", text);
  EXPECT_EQ(source.files().at("m.py").facts->exports, (std::vector<std::string>{"C", "D"}));
}

TEST(PythonNames, FollowThePackage) {
  MemorySource source;
  source.add("src/pkg/__init__.py", "def a(): pass\n");
  source.add("src/pkg/sub/__init__.py", "");
  source.add("src/pkg/sub/mod.py", "class C:\n    def m(self): pass\n");
  source.add("tools/run.py", "def main(): pass\n");
  EXPECT_EQ(source.resolve("src/pkg/__init__.py").qualified_names[0], "pkg.a");
  EXPECT_EQ(source.resolve("src/pkg/sub/mod.py").qualified_names[1], "pkg.sub.mod.C.m");
  EXPECT_EQ(source.resolve("tools/run.py").qualified_names[0], "run.main");
}

TEST(Names, DifferWhereDefinitionsOfSeveralFilesDo) {
  MemorySource source;
  source.add("x/util.py", "def f(): pass\n");
  source.add("y/util.py", "def f(): pass\n");
  source.add("one/app/__init__.py", "");
  source.add("one/app/m.py", "def f(): pass\n");
  source.add("two/app/__init__.py", "def f(): pass\n");
  source.add("two/app/sub/__init__.py", "");
  source.add("a.c", "static int f(int);\nstatic int f(int n) { return n; }\nint once(void) {}\n");
  source.add("b/b.c", "static int f(void) { return 1; }\nint main(void) {}\nint only(void) {}\n");
  source.add("b/main.cc", "namespace n { int f() { return 1; } }\nint main() {}\n");
  source.add("b/b.h", "int main(void);\nint only(void);\n");
  source.add("c.cc", "namespace n { namespace { int f() { return 2; } } }\n");
  const auto names = [&](const std::string& path) { return source.resolve(path).qualified_names; };
  using Names = std::vector<std::string>;
  EXPECT_EQ(names("x/util.py"), Names{"x.util.f"});
  EXPECT_EQ(names("y/util.py"), Names{"y.util.f"});
  EXPECT_EQ(names("one/app/m.py"), Names{"one.app.m.f"});
  EXPECT_EQ(names("two/app/__init__.py"), Names{"two.app.f"});
  EXPECT_EQ(names("a.c"), (Names{"a.c:f", "a.c:f", "once"}));
  EXPECT_EQ(names("b/b.c"), (Names{"b/b.c:f", "b/b.c:main", "only"}));
  EXPECT_EQ(names("b/b.h"), (Names{"main", "only"}));
  EXPECT_EQ(names("b/main.cc").back(), "b/main.cc:main");
  EXPECT_NE(names("c.cc").back(), names("b/main.cc")[1]);
}

TEST(CExtraction, Definitions) {
  EXPECT_EQ(extraction_of("m.c", R"(#define LIMIT 3
#define MAX(a, b) \
  ((a) > (b))
typedef struct { int a; } Point;
typedef struct node { struct node *next; } node;
typedef int (*callback)(int);
struct open { int a; };
enum color { RED };
static int table[] = {1};
extern int elsewhere;
int declared(int, ...);
PyMODINIT_FUNC PyInit_m(void) { return 0; }
static inline __attribute__((unused))
int old(a, b) int a; char *b; {
  return a;
}
#ifdef A
char *(*pick(int k))(int) { return 0; }
#endif
#ifdef __cplusplus
extern "C" {
#endif
MY_API(1) void wrapped(void) MY_ATTR;
int any() { return 0; }
#ifdef __cplusplus
}
#endif
)")
                .definitions,
            R"(macro LIMIT 1-1 @1 `#define LIMIT 3`
macro MAX 2-3 @2 `#define MAX(a, b) \ ((a) > (b))`
struct Point 4-4 @4 `typedef struct Point`
struct node 5-5 @5 `struct node`
type callback 6-6 @6 `typedef int (*callback)(int)`
struct open 7-7 @7 `struct open`
enum color 8-8 @8 `enum color`
variable table 9-9 @9 {local} `static int table[] = {1}`
variable elsewhere 10-10 @10 {declaration} `extern int elsewhere`
function declared 11-11 @11 [1 *] {declaration} `int declared(int, ...)`
function PyInit_m 12-12 @12 [0 0] `PyMODINIT_FUNC PyInit_m(void)`
function old 13-16 @14 [2 2] {local} `static inline __attribute__((unused)) int old(a, b) int a; char *b`
function pick 18-18 @18 [1 1] {conditional} `char *(*pick(int k))(int)`
function wrapped 23-23 @23 [0 0] {declaration} `void wrapped(void) MY_ATTR`
function any 24-24 @24 [0 *] `int any()`
)");
}

TEST(CExtraction, BranchesThatAreNoWholeStatements) {
  const std::string text = R"(int f(int a) {
#ifdef A
  if (a) {
#else
  if (!a) {
#endif
    return g(a);
  }
  return h(
#ifdef B
      1
#else
      2
#endif
  );
}
int last(void) { return 0; }
)";
  const Extraction found = extraction_of("m.c", text);
  EXPECT_EQ(
      found.definitions,
      "function f 1-16 @1 [1 1] `int f(int a)`\nfunction last 17-17 @17 [0 0] `int last(void)`\n");
  EXPECT_EQ(found.references, "7 call |g(1) in f\n9 call |h(1) in f\n");
}

TEST(CppExtraction, Definitions) {
  EXPECT_EQ(extraction_of("m.cc", R"(namespace a::b {
namespace {
int hidden() { return 1; }
}
template <class T>
class MY_EXPORT Foo : public Base<T>, ns::Other {
 public:
  explicit Foo(int a = 1) : x_(a) {}
  ~Foo() override;
  virtual void work(int) const = 0;
  static int count(const char* f, ...);
  bool operator==(const Foo& o) const { return true; }
  operator bool() const;
  Foo(const Foo&) = delete;
  struct Inner { int q; };
  using Name = int;
  int guarded() MY_REQUIRES(x_);
 private:
  int x_;
};
}
int ns::Foo::work(int a) { return a; }
ns::Foo::Foo() {}
ns::Foo::operator bool() const { return true; }
template <class T> concept Good = true;
TEST(Suite, Name) { }
auto late(int x) -> Foo* { return 0; }
)")
                .definitions,
            R"(namespace a::b 1-21 @1 `namespace a::b`
function a::b::hidden 3-3 @3 [0 0] {local} `int hidden()`
class a::b::Foo 5-20 @6 {generic} `class MY_EXPORT Foo : public Base<T>, ns::Other`
constructor a::b::Foo::Foo 8-8 @8 [0 1] `explicit Foo(int a = 1) : x_(a)`
method a::b::Foo::~Foo 9-9 @9 [0 0] {declaration,virtual} `~Foo() override`
method a::b::Foo::work 10-10 @10 [1 1] {declaration,virtual} `virtual void work(int) const = 0`
method a::b::Foo::count 11-11 @11 [1 *] {declaration,static} `static int count(const char* f, ...)`
method a::b::Foo::operator== 12-12 @12 [1 1] `bool operator==(const Foo& o) const`
method a::b::Foo::operator bool 13-13 @13 [0 0] {declaration} `operator bool() const`
constructor a::b::Foo::Foo 14-14 @14 [1 1] {declaration} `Foo(const Foo&) = delete`
struct a::b::Foo::Inner 15-15 @15 `struct Inner`
type a::b::Foo::Name 16-16 @16 `using Name = int`
method a::b::Foo::guarded 17-17 @17 [0 0] {declaration} `int guarded() MY_REQUIRES(x_)`
method ns::Foo::work 22-22 @22 [1 1] `int ns::Foo::work(int a)`
constructor ns::Foo::Foo 23-23 @23 [0 0] `ns::Foo::Foo()`
method ns::Foo::operator bool 24-24 @24 [0 0] `ns::Foo::operator bool() const`
type Good 25-25 @25 {generic} `concept Good = true`
function Suite.Name 26-26 @26 [2 2] {from-macro} `TEST(Suite, Name)`
function late 27-27 @27 [1 1] `auto late(int x) -> Foo*`
)");
}

TEST(CppExtraction, References) {
  EXPECT_EQ(extraction_of("m.cc", R"(void K::g() {
  this->a_.b()->c(1);
  ns::f<int>(2); ::glob(); Foo x(1, y); auto* p = new ns::Foo(3);
  static_cast<Bar*>(p)->z(); (*p)[0].q();
  for (auto& e : list) e.r();
}
)")
                .references,
            R"(2 call this.a_.b()|c(1) in g
2 call this.a_|b(0) in g
3 call ns::|f(1) in g
3 call ::|glob(0) in g
3 construct |Foo(2) in g
3 type |Foo in g
3 construct ns::|Foo(1) in g
3 type |Foo in g
4 call Bar()|z(0) in g
4 type |Bar in g
4 call p[]|q(0) in g
5 call e|r(0) in g
)");
}

TEST(Languages, HeadersAreToldByTheirText) {
  using indexer::language_of;
  EXPECT_EQ(language_of("a.h", "int f(void);\n")->name, "c");
  EXPECT_EQ(language_of("a.h", "namespace a {\n}\n")->name, "cpp");
  EXPECT_EQ(language_of("a.h", "#ifdef __cplusplus\nclass A;\n#endif\nint f(void);\n")->name, "c");
  EXPECT_EQ(language_of("a.h", "/*\nclass A;\n*/\nint f(void);\n")->name, "c");
  EXPECT_EQ(language_of("a.h", "#include <vector>\n")->name, "cpp");
  EXPECT_EQ(language_of("a.pyi", "")->name, "python");
  EXPECT_EQ(language_of("a.txt", ""), nullptr);
  EXPECT_TRUE(indexer::may_have_language("dir/a.cpp"));
  EXPECT_FALSE(indexer::may_have_language("dir/cpp"));
}

}  // namespace
}  // namespace context_delta::tests
