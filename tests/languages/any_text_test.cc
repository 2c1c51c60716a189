#include <random>

#include <gtest/gtest.h>

#include "languages/sound_facts.h"
#include "support/memory_source.h"

namespace context_delta::tests {
namespace {

/// Real shapes of every language, to be cut and shuffled.
const std::string SAMPLES[] = {
    "@d(1)\nclass C(B, metaclass=M):\n    def m(self, *a, k: 'X' = 1) -> T:\n        return [x for "
    "x "
    "in self.y[0].z(*a)]\n\nif a:\n    from .b import *\nelse:\n    async def g(): await h()\n",
    "#ifdef A\nstatic int f(a, b) int a; { return g(a ? b : (c)(1)); }\n#else\n#define M(x) \\\n  "
    "x /* y */\n#endif\nstruct s { int (*p)(int); union { int u; }; } t = { .p = f };\n",
    "template <class T> class E X : public B<T> { explicit X(int a = 1) : b_(a) {} ~X(); operator "
    "bool(); }; namespace a::b { auto l = [&](auto... x) { return x->y<z>(R\"(q)\", 'c', 1'000); "
    "}; auto m = [] { return [] {}; }; using enum E; using n = X<>; }\n",
    "//go:build a\npackage p\nimport . \"x\"\ntype G[T any] struct { *b.C; f func(x, y T) (z chan "
    "[]T) }\nfunc (g *G[K]) m(a ...K) (n int, e error) { x, ok := <-g.f()[1:], func() { for i := "
    "range a[0] {} }; switch y := x.(type) { case *K, I: y.z(G[int]{1}, a...) } }\n",
    "#[cfg(a)]\npub mod m { use super::{a::*, b as c}; impl<'a, T: A<B = C>> D<T> for E<'a> where "
    "T: F { type G = T; fn h(&self, (i, j): (u8, T)) -> Result<T, u8> { let k = match self.l.m(|n| "
    "n.o())? { Some(P { q, .. }) | Some(P { q }) => q, _ => return r!(s.t(1)), }; for u in &k[..] "
    "{ <T as A>::v::<u8>(u as u8); } } } }\ncfg_if! { if #[cfg(x)] { fn y() {} } else { 'z' } }\n"
    "[dependencies]\nw = { path = \"../x\" }\n",
    "package a.b; import static c.D.*; @A(b = {1, 2}) class E<T extends F & G> extends H<T[]> { "
    "enum "
    "I { J(1) { int k; }, L; } E(int... m) { this(m, () -> { return n::o; }); } record P(int q) { "
    "P "
    "{ } } { for (var r : s) if (t instanceof U v && v.w(x ? 1L : 'y' + \"z\")) new A.B<>() { }; } "
    "}\n",
    "import d, { a as b } from './b'; export default class C extends (m(B)) { #p = () => this.q; "
    "static async *[k](x = {y, ...z}, ...r) { for (const [i, {j}] of r) yield* j?.l`t${i}`; } }\n"
    "/** @param {Array.<C>} s @type {(x} */ module.exports = { 'm:n'(o) { return new o.P() } };\n",
    "@d() export abstract class C<T extends X> implements I { constructor(private readonly a?: "
    "T[]) "
    "{ super() } declare x: typeof y; } namespace N.M { enum E { A = 1 } } function f(this: C): x "
    "is "
    "T;\nconst v = <div a={b as unknown as (c) => void}><N.T/></div>; type U = { m(): void } & "
    "import('./z').W<string>;\n",
    "{\"name\": \"n\", \"exports\": {\"./a/*\": [\"./b/*.js\", {\"x\": null}]}, /* c */ "
    "\"compilerOptions\": {\"paths\": {\"@/*\": [\"*\"],},},}\npackages:\n - 'a/*'\n",
};

void try_everywhere(const std::string& text) {
  for (const std::string path : {"a.py", "a.c", "a.cc", "a.go", "go.mod", "src/lib.rs",
                                 "Cargo.toml", "a.java", "a.js", "a.ts", "a.tsx", "package.json"}) {
    MemorySource source;
    source.add(path, text);
    ASSERT_EQ(fault_of(*source.files().at(path).facts), "") << path << "\n" << text;
    const indexer::Resolution resolution = source.resolve(path);
    ASSERT_EQ(resolution.qualified_names.size(), source.files().at(path).facts->definitions.size());
  }
}

TEST(AnyText, OfRandomBytes) {
  std::mt19937 random(1);
  for (int round = 0; round < 60; ++round) {
    std::string text(random() % 400, ' ');
    for (char& byte : text) byte = static_cast<char>(random() % 256);
    try_everywhere(text);
  }
}

TEST(AnyText, CutAnywhere) {
  for (const std::string& sample : SAMPLES) {
    for (std::size_t size = 0; size < sample.size(); size += 3) {
      try_everywhere(sample.substr(0, size));
      try_everywhere(sample.substr(size));
    }
  }
}

TEST(AnyText, OfShuffledPieces) {
  std::mt19937 random(2);
  for (int round = 0; round < 150; ++round) {
    std::string text;
    for (int piece = 0; piece < 12; ++piece) {
      const std::string& sample = SAMPLES[random() % std::size(SAMPLES)];
      text += sample.substr(random() % sample.size(), random() % 25);
    }
    try_everywhere(text);
  }
}

TEST(AnyText, NestedDeeply) {
  for (const std::string open : {"(", "[", "{", "f(", "a.b(", "class A { ", "x[", "if (a) "}) {
    std::string text = "x = ";
    // The parser itself is slow on what is not its language.
    const std::size_t size = open.size() > 4 ? 10000 : 100000;
    while (text.size() < size) text += open;
    try_everywhere(text);
  }
  std::string chain = "x = a";
  while (chain.size() < 20000) chain += ".b()";
  try_everywhere(chain);
  std::string conditions;
  while (conditions.size() < 10000) conditions += "#if A\n{\n";
  try_everywhere(conditions);
}

}  // namespace
}  // namespace context_delta::tests
