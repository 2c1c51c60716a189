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

Extraction extraction_of(std::string_view text) {
  MemorySource source;
  source.add("M.java", text);
  const MemorySource::Entry& entry = source.files().at("M.java");
  return {describe_definitions(entry, source.resolve("M.java").qualified_names),
          describe_references(*entry.facts), describe_bindings(*entry.facts)};
}

TEST(JavaExtraction, Definitions) {
  EXPECT_EQ(
      extraction_of(R"(package a.b;
/** Not part of the class. */
@Deprecated
public abstract class Outer<T extends Base>
    extends Base<T> implements I, J<String> {
  Outer(@A int a, String... rest) throws E { }
  @Override
  protected <K> Map<K, T> put(final K key, int[] a[]) { return null; }
  abstract void open();
  private static native int size();
  static final class Inner { void go() { } }
  Object o = new Runnable() {
    public void run() { class Local { } }
  };
}
enum Color implements I { RED(1) { int get() { return 1; } }, BLUE; Color(int... a) { } }
record Point(int x, int... y) { Point { } static int zero() { return 0; } }
@interface Mark { String value() default ""; }
interface I { void act(); default int size() { return 0; } }
)")
          .definitions,
      R"(class a.b.Outer 3-15 @4 {virtual,generic} `public abstract class Outer<T extends Base> extends Base<T> implements I, J<String>`
constructor a.b.Outer.Outer 6-6 @6 [1 *] `Outer(@A int a, String... rest) throws E`
method a.b.Outer.put 7-8 @8 [2 2] {virtual,generic} `protected <K> Map<K, T> put(final K key, int[] a[])`
method a.b.Outer.open 9-9 @9 [0 0] {declaration,virtual} `abstract void open()`
method a.b.Outer.size 10-10 @10 [0 0] {local,static} `private static native int size()`
class a.b.Outer.Inner 11-11 @11 `static final class Inner`
method a.b.Outer.Inner.go 11-11 @11 [0 0] `void go()`
class a.b.Outer.<anonymous Runnable> 12-14 @12 `new Runnable()`
method a.b.Outer.<anonymous Runnable>.run 13-13 @13 [0 0] `public void run()`
class a.b.Outer.<anonymous Runnable>.run.Local 13-13 @13 `class Local`
enum a.b.Color 16-16 @16 `enum Color implements I`
class a.b.Color.RED 16-16 @16 `RED(1)`
method a.b.Color.RED.get 16-16 @16 [0 0] `int get()`
constructor a.b.Color.Color 16-16 @16 [0 *] `Color(int... a)`
class a.b.Point 17-17 @17 `record Point(int x, int... y)`
constructor a.b.Point.Point 17-17 @17 [1 *] `Point`
method a.b.Point.zero 17-17 @17 [0 0] {static} `static int zero()`
interface a.b.Mark 18-18 @18 `@interface Mark`
method a.b.Mark.value 18-18 @18 [0 0] {declaration,virtual} `String value() default ""`
interface a.b.I 19-19 @19 `interface I`
method a.b.I.act 19-19 @19 [0 0] {declaration,virtual} `void act()`
method a.b.I.size 19-19 @19 [0 0] {virtual} `default int size()`
)");
}

TEST(JavaExtraction, References) {
  EXPECT_EQ(extraction_of(R"(import a.B;
import static a.B.*;
@Mark(x = 1)
class C extends p.D<E> implements I {
  C(int n) { this(n, 1L); super.go(); }
  int f(C c) {
    for (C d : c.all[0].list("x" + n, y -> y)) { d.g(c, this, null, -n, (E) n, new E[1], n > 0); }
    Outer.super.h(I::run, E::new, String.class, n == 1 ? c : d);
    return c.new Inner<F>(1.0f, 'x').m(new G() { });
  }
}
enum K { A(1) }
)")
                .references,
            R"(1 import a|B in -
3 type |Mark in C
4 inherit p|D in C
4 type |E in C
4 inherit |I in C
5 construct |this(2) in C
5 call super|go(0) in C
6 type |C in f
7 type |C in f
7 call c@1.all[]|list(2) in f
7 call d@2|g(7) in f
7 type |E in f
7 type |E in f
8 call Outer.super|h(4) in f
8 call I|run(*) in f
8 construct |E(*) in f
8 type |String in f
9 call {new Inner<F>}|m(1) in f
9 construct c@1.new|Inner(2) in f
9 type |F in f
9 construct |G(0) in f {declaration}
12 construct |K(1) in K
)");
}

/// The types of arguments are what overloads are chosen by, so the facts keep them.
TEST(JavaExtraction, Arguments) {
  MemorySource source;
  source.add("M.java", R"(class C {
  void f(C c, int n) {
    g("x" + n, y -> y, () -> { }, c, this, null, -n);
    g((E) n, new E[1][], n > 0, String.class, n == 1 ? c : d, n + 1 + 2L, 'x', c.h(1)[0]);
    g(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13);
  }
})");
  std::vector<std::string> values;
  for (const indexer::Reference& each : source.files().at("M.java").facts->references) {
    if (each.name == "g") values.push_back(each.values);
  }
  EXPECT_EQ(values,
            (std::vector<std::string>{
                "{java.lang.String},->1r,->0v,c@0,this,null,~(n@1)",
                "{E},{E[][]},{boolean},{java.lang.Class<String>},?(c@0,d),+(n@1,{int},{long}),"
                "{char},c@0.h({int})[]",
                "*"}));
}

TEST(JavaExtraction, Bindings) {
  EXPECT_EQ(extraction_of(R"(package a;
import b.C;
import static b.C.*;
class D {
  final C made = new C(), other = make();
  static int[] a, b[];
  void f(int p, C... rest) throws E {
    var x = p; C y = new C(); y = null;
    try (R r = open()) { p++; } catch (A | B e) { }
    for (C c : rest) if (o instanceof C d) g((C l) -> 1, k -> 2);
  }
}
record R(int x) { }
enum E { ONE }
)")
                .bindings,
            R"(member made in D : C = {new C}
member other in D : C
member a in D : int[] {static}
member b in D : int[][] {static}
parameter p in f : int {reassigned}
parameter rest in f : C[]
local x in f : var = p@4
local y in f : C = {new C} {reassigned}
local r in f : R = open()
local e in f = ?
local c in f : C
local d in f : C
local l in f : C = ?
local k in f = ^1.0:g(->1r,->1r)
member x in R : int {property}
member ONE in E : E {static}
import b|C| in -
import b.C|*| in - {static}
)");
}

}  // namespace
}  // namespace context_delta::tests
