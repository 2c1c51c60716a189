#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "indexer/update.h"
#include "support/git_repository.h"
#include "support/index_dump.h"

namespace context_delta {
namespace {

/// Where items go, and what they are: each stands by itself, and all share a few names.
struct Pool {
  std::vector<std::string_view> paths;
  std::vector<std::string_view> items;
  std::string_view manifest_path = {};
  std::vector<std::string_view> manifests = {};
};

const Pool RUST = {
    {"src/lib.rs", "src/a.rs", "src/a/mod.rs", "src/b.rs", "src/a/b.rs", "tests/t.rs",
     "other/src/lib.rs", "other/src/a.rs"},
    {
        "mod a;",
        "pub mod a;",
        "pub mod b;",
        "#[path = \"b.rs\"]\npub mod a;",
        "#[path = \"a.rs\"]\nmod c;",
        "pub mod a { pub use super::*; pub struct S; pub fn run(x: u8) {} mod b; }",
        "pub use a::*;",
        "use crate::b::*;",
        "use super::*;",
        "use crate::a::S;",
        "pub use crate::b::{R, S as T, make};",
        "use shop::{a::S, make, U};",
        "extern crate other as shop;",
        "pub struct S { pub inner: R, first: R }",
        "pub struct S<A, B> { pub first: A, pub second: B }",
        "pub struct S<B, A> { pub first: A, pub second: B }",
        "#[cfg(unix)]\npub struct R;",
        "pub struct R;",
        "pub enum E { S(R), Run { at: S } }",
        "pub enum E { Run { at: R }, S(S) }",
        "impl S { pub fn run(&self) -> R { todo!() } pub fn new() -> S { todo!() } }",
        "impl S { pub fn new() -> R { todo!() } }",
        "impl R { pub const K: S = 1; pub fn run(&self) -> S { todo!() } }",
        "impl<A, B> S<A, B> { pub fn first(&self) -> &A { todo!() } }",
        "impl<B, A> S<A, B> { pub fn first(&self) -> &A { todo!() } }",
        "impl S<R, S> { pub fn pull(&self) -> R { todo!() } }",
        "impl S<S, R> { pub fn pull(&self) -> S { todo!() } }",
        "pub trait U { fn run(&self) {} fn pull(&self) -> R; type At: U; }",
        "pub trait U: V { fn more(&self) {} }",
        "pub trait V { fn run(&self) {} fn pull(&self) -> S; }",
        "impl U for S { type At = R; fn pull(&self) -> R { R } }",
        "impl V for S { fn run(&self) {} }",
        "impl<X: V> U for X { fn more(&self) {} }",
        "impl crate::U for R {}",
        "impl std::ops::Deref for S { type Target = R; fn deref(&self) -> &R { todo!() } }",
        "impl std::ops::Deref for S { type Target = E; }",
        "type R = S;",
        "pub type S = crate::a::S<R, E>;",
        "pub fn make() -> S { todo!() }",
        "pub fn make<X: U>(x: X) -> X { x }",
        "fn make() -> Option<R> { todo!() }",
        "pub fn run(x: u8) {}",
        "macro_rules! run { () => {} }",
        "pub static K: S = make();",
        "pub mod inner { use super::*; pub fn f() { make().run(); S::new().run(); } }",
        "fn f() { make().run(); S::new().run(); run(1); K.run(); R::K.run(); run!(); }",
        "fn f(s: S, r: &R) { s.inner.run(); r.run(); s.first().run(); s.pull().run(); s.more(); }",
        "fn f<X: U>(x: X, y: X::At) { x.run(); x.pull().run(); U::run(&x); y.run(); }",
        "fn f(e: E) { if let E::S(r) = e { r.run(); } if let E::Run { at } = e { at.run(); } }",
        "fn f(s: S<R, E>, t: S<E, R>) { s.first.run(); s.second.run(); t.first().run(); }",
        "fn f() { crate::a::run(1); shop::a::S::new().run(); shop::make().run(); E::S(1); }",
    },
    "Cargo.toml",
    {"[package]\nname = \"shop\"\n", "[package]\nname = \"stall\"\n[lib]\nname = \"shop\"\n",
     "[package]\nname = \"own\"\n[dependencies]\nshop = { path = \"other\" }\n",
     "[package]\nname = \"own\"\n[dependencies]\nshop.workspace = true\n"
     "[workspace.dependencies]\nshop = { path = \"other\" }\n",
     "[workspace]\nmembers = [\"other\"]\n"}};

const Pool JAVA = {
    {"src/j/A.java", "src/j/B.java", "src/k/A.java", "src/k/C.java", "test/j/T.java"},
    {
        "package j;",
        "package k;",
        "package j;",
        "package k;",
        "import k.*;",
        "import j.*;",
        "import j.A;",
        "import k.A;",
        "import static j.A.*;",
        "import static k.A.make;",
        "import static j.B.In;",
        "public class A { public A() { } public void run() { } public static A make() { return "
        "null; } }",
        "public class A extends B { A(int n) { } public void run(int n) { } class In { void go() { "
        "} } }",
        "public class A extends B<A> implements F { public A run() { return this; } }",
        "public class B<T> { public T get() { return null; } public B<T> run() { return this; } }",
        "public class B<S, T> { public T get() { return null; } public S run() { return null; } }",
        "public class B { public final void run() { } public C at; static class In { void go() { } "
        "} }",
        "class B extends C { private void run() { } public A get() { return null; } }",
        "class C { public C run(Object o) { return this; } public B<A> at = new B<A>(); }",
        "class C<T extends A> { T at; <U extends B> U make(U u) { return u; } void run() { } }",
        "enum C { X, Y { void run() { } }; void run() { } static A make() { return null; } }",
        "record C(A at, int n) { void run() { } }",
        "public interface F { A run(int n); }",
        "public interface F { void run(A a); default void go() { run(null); } }",
        "public interface F { void go(); A run(int n); }",
        "public interface F extends G { int SIZE = 1; }",
        "interface G { B go(C c); }",
        "interface G<T> { T run(T t); A go(T t); class In { void go() { } } }",
        "class D extends A { public void run() { super.run(); run(); at.run(); } }",
        "class D { void f(A a, B b) { a.run(); b.run(); a.get().run(); new A().run(1); } }",
        "class D { void f(B<A> b, C<A> c) { b.get().run(); c.at.run(); c.make(b).run(); } }",
        "class D { void f() { make().run(); A.make().run(); j.A.make().run(); C.X.run(); } }",
        "class D { void f(F f) { f.run(1); } void g(A a) { on(x -> x.run()); on(A::run); } void "
        "on(F f) { } }",
        "class D extends B { class E extends In { void f() { go(); } } void f(In i) { i.go(); } }",
        "class D { B<A> b = new B<A>() { public A get() { return make(); } A make() { return null; "
        "} }; }",
    }};

/// A repository of files that are lists of items: what is edited is a whole item each time.
class ItemEditor {
 public:
  ItemEditor(const Pool& pool, std::uint32_t seed)
      : pool_(pool), random_(seed), files_(pool.paths.size()) {
    repository.write("other/Cargo.toml", "[package]\nname = \"shop\"\n");
    edit_manifest();
    for (std::size_t i = 0; i < 8 * files_.size(); ++i) insert(below(files_.size()));
    for (std::size_t i = 0; i < files_.size(); ++i) write(i);
    repository.commit();
  }

  std::string step() {
    for (std::size_t edits = 1 + below(2); edits > 0; --edits) {
      const std::size_t file = below(files_.size());
      edit(file);
      write(file);
    }
    if (below(10) == 0) edit_manifest();
    return repository.commit();
  }

  test::GitRepository repository;

 private:
  std::size_t below(std::size_t bound) { return random_() % bound; }

  void insert(std::size_t file) {
    std::vector<std::string_view>& items = files_[file];
    const auto place = items.begin() + static_cast<std::ptrdiff_t>(below(items.size() + 1));
    items.insert(place, pool_.items[below(pool_.items.size())]);
  }

  void edit(std::size_t file) {
    std::vector<std::string_view>& items = files_[file];
    const std::size_t kind = items.empty() ? 0 : below(4);
    if (kind == 0) return insert(file);
    const std::size_t place = below(items.size());
    if (kind == 1) items.erase(items.begin() + static_cast<std::ptrdiff_t>(place));
    if (kind == 2) items[place] = pool_.items[below(pool_.items.size())];
    if (kind == 3) std::swap(items[place], items[below(items.size())]);
  }

  void edit_manifest() {
    if (pool_.manifests.empty()) return;
    repository.write(pool_.manifest_path, pool_.manifests[below(pool_.manifests.size())]);
  }

  /// Where an item has to stand in its file.
  static int rank(std::string_view item) {
    return item.starts_with("package ") ? 0 : item.starts_with("import ") ? 1 : 2;
  }

  /// A file without items is none.
  void write(std::size_t file) {
    std::vector<std::string_view> items = files_[file];
    std::stable_sort(items.begin(), items.end(),
                     [](std::string_view a, std::string_view b) { return rank(a) < rank(b); });
    std::string text;
    for (const std::string_view item : items) text += std::string(item) + "\n";
    repository.remove(pool_.paths[file]);
    if (!text.empty()) repository.write(pool_.paths[file], text);
  }

  const Pool& pool_;
  std::mt19937 random_;
  std::vector<std::vector<std::string_view>> files_;
};

void expect_updates_like_cold_builds(const Pool& pool, std::uint32_t seed, int steps) {
  ItemEditor editor(pool, seed);
  const git_utils::Git git(editor.repository.root());
  storage::Repository updated(editor.repository.beside() / "updated.sqlite");
  for (int step = 0; step < steps; ++step) {
    const std::string commit = editor.step();
    indexer::update(updated, git, commit);
    storage::Repository cold(editor.repository.beside() /
                             ("cold" + std::to_string(step) + ".sqlite"));
    indexer::update(cold, git, commit);
    ASSERT_EQ(test::difference(test::index_dump(updated.db), test::index_dump(cold.db)), "")
        << "step " << step;
  }
}

class ItemsProperty : public testing::TestWithParam<std::uint32_t> {};

TEST_P(ItemsProperty, AnUpdateOfRustEqualsAColdBuild) {
  expect_updates_like_cold_builds(RUST, GetParam(), 25);
}

TEST_P(ItemsProperty, AnUpdateOfJavaEqualsAColdBuild) {
  expect_updates_like_cold_builds(JAVA, GetParam(), 25);
}

INSTANTIATE_TEST_SUITE_P(Seeds, ItemsProperty, testing::Range(0u, 4u));

}  // namespace
}  // namespace context_delta
