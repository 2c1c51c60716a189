#include <gtest/gtest.h>

#include "support/annotated_repository.h"

namespace context_delta::tests {
namespace {

MemorySource source_of(std::string_view text) {
  MemorySource source;
  source.add("src/lib.rs", text);
  return source;
}

const MemorySource::Entry& entry_of(const MemorySource& source) {
  return source.files().at("src/lib.rs");
}

TEST(RustExtraction, Definitions) {
  MemorySource source = source_of(R"(//! A crate.
#[derive(Debug)]
/// Doc.
#[repr(C)] // why
pub struct Point<T: Copy> where T: Add {
    pub x: T,
}
pub(crate) struct Pair(u8, u8);
enum Shape { Round(Point<u8>), Flat { a: u8 }, None }
union Bits { a: u8 }
#[cfg(unix)]
mod os {
    pub const LIMIT: usize = 3;
}
pub trait Area: Debug + Clone {
    type Unit: Copy;
    const N: u8;
    fn area(&self, a: u8) -> Self::Unit;
    fn twice(&self) {}
}
impl<T> Area for Point<T> {
    type Unit = T;
    #[inline]
    fn area(&self, a: u8) -> T { fn helper() {} }
}
type Alias<T> = Point<T>;
macro_rules! say { ($a:expr) => { fn hidden() {} } }
extern "C" { fn outside(a: u8, ...); }
pub async unsafe fn go<'a>(
    a: &'a str,
    #[cfg(unix)] (b, c): (u8, u8),
) -> Result<(), u8> { const LOCAL: u8 = 1; }
)");
  EXPECT_EQ(describe_definitions(entry_of(source), source.resolve("src/lib.rs").qualified_names),
            R"(struct crate::Point 4-7 @5 `pub struct Point<T: Copy> where T: Add`
struct crate::Pair 8-8 @8 `pub(crate) struct Pair(u8, u8)`
enum crate::Shape 9-9 @9 {local} `enum Shape`
union crate::Bits 10-10 @10 {local} `union Bits`
namespace crate::os 11-14 @12 {local,conditional} `mod os`
variable crate::os::LIMIT 13-13 @13 `pub const LIMIT: usize`
trait crate::Area 15-20 @15 `pub trait Area: Debug + Clone`
method crate::Area::area 18-18 @18 [1 1] {declaration,virtual} `fn area(&self, a: u8) -> Self::Unit`
method crate::Area::twice 19-19 @19 [0 0] {virtual} `fn twice(&self)`
namespace crate::<impl Area for Point<T>> 21-25 @21 `impl<T> Area for Point<T>`
method <crate::Point as Area>::area 23-24 @24 [1 1] `fn area(&self, a: u8) -> T`
function <crate::Point as Area>::area::helper 24-24 @24 [0 0] {local} `fn helper()`
type crate::Alias 26-26 @26 {local} `type Alias<T> = Point<T>`
macro crate::say 27-27 @27 `macro_rules! say`
function crate::outside 28-28 @28 [2 *] {local,declaration} `fn outside(a: u8, ...)`
function crate::go 29-32 @29 [2 2] `pub async unsafe fn go<'a>( a: &'a str, #[cfg(unix)] (b, c): (u8, u8), ) -> Result<(), u8>`
)");
}

TEST(RustExtraction, MacrosAroundItems) {
  MemorySource source = source_of(R"(cfg_if::cfg_if! {
    if #[cfg(unix)] { // '{'
        pub fn a() { x!{ fn no() {} } }
    } else {
        pub fn a() {}
    }
}
mod m { cfg_io! { #[derive(X)] struct S { a: u8 } } }
fn f() { cfg_io! { fn no() {} } }
other! { fn no() {} }
const C: &str = r#"cfg_x! { fn no() {} "#;
)");
  EXPECT_EQ(describe_definitions(entry_of(source), source.resolve("src/lib.rs").qualified_names),
            R"(function crate::a 3-3 @3 [0 0] {conditional,from-macro} `pub fn a()`
function crate::a 5-5 @5 [0 0] {conditional,from-macro} `pub fn a()`
namespace crate::m 8-8 @8 {local} `mod m`
struct crate::m::S 8-8 @8 {local,conditional,from-macro} `struct S`
function crate::f 9-9 @9 [0 0] {local} `fn f()`
variable crate::C 11-11 @11 {local} `const C: &str`
)");
}

TEST(RustExtraction, References) {
  MemorySource source = source_of(R"(use std::fmt::{self, Write as W, *};
fn f(a: Foo<Bar>, b: &dyn m::Trait) -> T {
    let x = a.store.get::<u8>(1)?.go();
    let x = x.again(|y| y.deeper());
    m::Type::<u8>::make(&x, LIMIT, m::VALUE);
    (x.field)(1);
    Foo { a: 1, ..Default::default() };
    vec![x.inside(1), free(2), m::path(3), (x)(4)];
    match x { Foo::A(z) if z.ok() => z.run(), _ => {} }
    if let Some(q) = x.maybe() { q.use_it(); }
    for e in x.all() { e.each(); }
}
)");
  EXPECT_EQ(describe_references(*entry_of(source).facts),
            R"(1 import std::|fmt in -
1 import std::fmt::|Write in -
2 type |Foo in f
2 type |Bar in f
2 type m::|Trait in f
2 type |T in f
3 call a@1.store|get(1) in f
3 call a@1.store.get::<u8>()?|go(0) in f
4 call x@1|again(1) in f
4 call y@1|deeper(0) in f
5 call m::Type::<u8>::|make(3) in f
5 other |LIMIT in f
5 other m::|VALUE in f
7 construct |Foo(*) in f
7 call Default::|default(0) in f
8 call !|vec(*) in f
8 call x@2|inside(*) in f {from-macro}
8 call |free(*) in f {from-macro}
8 call m::|path(*) in f {from-macro}
9 type Foo::|A in f
9 call z@1|ok(0) in f
9 call z@1|run(0) in f
10 call x@2|maybe(0) in f
10 type |Some in f
10 call q@1|use_it(0) in f
11 call x@2|all(0) in f
11 call e@1|each(0) in f
)");
}

TEST(RustExtraction, Bindings) {
  MemorySource source = source_of(R"(mod a;
#[path = "x/y.rs"]
pub mod b;
extern crate c as d;
struct P<T> where T: A { x: T }
struct Q(u8, P<u8>);
enum E { A(u8, P<u8>), B { c: u8 }, C }
impl<T: A> P<T> {
    const N: u8 = 1;
    type U = T;
    fn m<F>(self: Box<Self>, (a, mut b): (u8, u8), _: u8) where T: B {
        let n: u8 = a;
        let E::A(k, P { x, .. }) = e() else { return };
        let v = match n { 1 => return, 2 => Some(k), _ => None };
        let w = { let i = v.or(x); i.f };
        let r = &*w.map(|j| j.g()).collect::<Vec<_>>()[0];
        static S: u8 = 1;
        let t = (S, Ok(n), r as u16, "s", P { x: 1 });
        let [first, ..] = t.0 else { panic!() };
        while let Some(n) = t.next() {}
    }
}
)");
  EXPECT_EQ(describe_bindings(*entry_of(source).facts), R"(member T in P : A {generic}
member x in P : T = field
member 0 in Q : u8 = field
member 1 in Q : P<u8> = field
member A in E : (u8, P<u8>,) = variant
member B in E : {c: u8} = variant
member C in E = variant
member T in P : A {generic}
member N in P : u8 = const
member U in P : T = type
member F in m {generic}
member T in m : B {generic}
parameter a@1 in m = <(u8, u8)>.0
parameter b@1 in m = <(u8, u8)>.1
local n@1 in m : u8
local k@1 in m = e()~E::A.0
local x@1 in m = e()~E::A.1~P.x
local v@1 in m = Some{k@1}
local i@1 in m = v@1.or()
local w@1 in m = i@1.f
local j@1 in m = w@1@map
local r@1 in m = w@1.map{j@1.g()}.collect::<Vec<_>>()[]
local S@1 in m : u8
local t@1 in m = (S@1, Ok{n@1}, <u16>, <str>, <P>)
local first@1 in m = t@1.0[]
local n@2 in m = t@1.next()~Some.0
import mod||a in - {local}
import mod x/y.rs||b in -
import mod x/y.rs||#[path] in -
import ::|c|d in - {local}
)");
}

TEST(RustExtraction, Manifests) {
  MemorySource source;
  source.add("Cargo.toml", R"([package]
name = "my-crate" # [not a section]
version = "1"
[[bin]]
name = "tool"
[lib]
path = 'lib/root.rs'
[dependencies]
plain = "1"
by-path = { version = "1", path = "../other" }
shared = { workspace = true }
[dev-dependencies.tested]
path = "t"
[target.'cfg(unix)'.dependencies]
unix.path = "u"
[workspace.dependencies]
shared = { path = "s" }
)");
  const MemorySource::Entry& entry = source.files().at("Cargo.toml");
  EXPECT_TRUE(entry.facts->definitions.empty());
  EXPECT_EQ(describe_bindings(*entry.facts), R"(global package in - = my-crate
global lib.path in - = lib/root.rs
import registry||plain in -
import path ../other||by_path in -
import workspace||shared in -
import path t||tested in -
import path u||unix in -
import path s||shared in - {declaration}
)");
}

}  // namespace
}  // namespace context_delta::tests
