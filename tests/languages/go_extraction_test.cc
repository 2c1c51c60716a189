#include <gtest/gtest.h>

#include "support/annotated_repository.h"

namespace context_delta::tests {
namespace {

std::string definitions_of(std::string_view text) {
  MemorySource source;
  source.add("go.mod", "module example.org/m\n");
  source.add("p/a.go", text);
  return describe_definitions(source.files().at("p/a.go"),
                              source.resolve("p/a.go").qualified_names);
}

std::string references_of(std::string_view text) {
  MemorySource source;
  source.add("a.go", text);
  return describe_references(*source.files().at("a.go").facts);
}

std::string bindings_of(const std::string& path, std::string_view text) {
  MemorySource source;
  source.add(path, text);
  return describe_bindings(*source.files().at(path).facts);
}

TEST(GoExtraction, Definitions) {
  EXPECT_EQ(
      definitions_of(R"(package p

// Doc comments stay outside.
func Plain(a, b int, rest ...string) (n int, err error) {
	helper := func(x int) int {
		type local struct{}
		return x
	}
	return helper(a), nil
}

func Map[T, U any](xs []T, f func(T) U) []U { return nil }

func (s *Store[K]) Get(k K) (K, bool) {
	return k, true
}
func (Kind) String() string
func init() {}

type (
	Store[K comparable] struct {
		sync.Mutex
		*Base
		byKey map[K]int
	}
	Kind int
)
type Reader interface {
	io.Reader
	~int | Kind
	Read(p []byte, n ...int) (int, error)
}
type Alias = other.Thing
type Handler func(Reader) error

const (
	A, B Kind = iota, 2
	_         = 3
)

var table = map[string]int{
	"a": 1,
}
var run = func() {
	inner := func() {}
	inner()
}
)"),
      R"(function example.org/m/p.Plain 4-10 @4 [2 *] `func Plain(a, b int, rest ...string) (n int, err error)`
function example.org/m/p.Plain.helper 5-8 @5 [1 1] {local} `helper := func(x int) int`
struct example.org/m/p.Plain.helper.local 6-6 @6 {local} `type local struct`
function example.org/m/p.Map 12-12 @12 [2 2] {generic} `func Map[T, U any](xs []T, f func(T) U) []U`
method example.org/m/p.(*Store).Get 14-16 @14 [1 1] `func (s *Store[K]) Get(k K) (K, bool)`
method example.org/m/p.Kind.String 17-17 @17 [0 0] `func (Kind) String() string`
function example.org/m/p.init 18-18 @18 [0 0] `func init()`
struct example.org/m/p.Store 21-25 @21 {generic} `type Store[K comparable] struct`
type example.org/m/p.Kind 26-26 @26 `type Kind int`
interface example.org/m/p.Reader 28-32 @28 `type Reader interface`
method example.org/m/p.Reader.Read 31-31 @31 [1 *] {declaration,virtual} `Read(p []byte, n ...int) (int, error)`
type example.org/m/p.Alias 33-33 @33 `type Alias = other.Thing`
type example.org/m/p.Handler 34-34 @34 `type Handler func(Reader) error`
variable example.org/m/p.A 37-37 @37 `const A, B Kind = iota, 2`
variable example.org/m/p.B 37-37 @37 `const A, B Kind = iota, 2`
variable example.org/m/p.table 41-43 @41 `var table = map[string]int`
variable example.org/m/p.run 44-47 @44 `var run = func()`
function example.org/m/p.inner 45-45 @45 [0 0] {local} `inner := func()`
)");
}

TEST(GoExtraction, References) {
  EXPECT_EQ(references_of(R"(package p

func f(s *pkg.Store, fn func()) error {
	s.items[0].Load().Close(1, xs...)
	fn()
	pkg.New[int](1)
	Map[int, string](xs)
	go func() { defer s.Stop() }()
	x := &Point{1, Y: g(h())}
	_ = []Point{{1}}
	(*Point)(nil).Move(make([]byte, 3), len(xs))
	new(pkg.Store).Open()
	v, _ := x.(interface{ M() })
	return errors.Wrap(v)
}
type E struct {
	Base
	*pkg.Other[T]
}
)"),
            R"(3 type pkg|Store in f
4 call s'1.items[].Load()|Close(*) in f
4 call s'1.items[]|Load(0) in f
5 call '1|fn(0) in f
6 call pkg|New(*) in f
7 call |Map(*) in f
8 call s'1|Stop(0) in f
9 construct |Point(*) in f
9 call |g(*) in f
9 call |h(0) in f
10 type |Point in f
11 call Point()|Move(2) in f
12 call {pkg.Store}|Open(0) in f
12 type pkg|Store in f
14 call errors|Wrap(1) in f
17 inherit |Base in E
18 inherit pkg|Other in E
17 type |Base in E
18 type pkg|Other in E
18 type |T in E
)");
}

TEST(GoExtraction, BindingsFollowBlocks) {
  EXPECT_EQ(bindings_of("a.go", R"(//go:build linux && !cgo

package p

import (
	"fmt"
	. "dots"
	other "x/y"
)

type Box[T any] struct {
	a, b *T
	pkg.Base
}

const (
	One Kind = iota
	Two
)

var Default, fallback = NewBox(), 3

func (b *Box[U]) Each(fn func(U) bool, more ...string) (err error) {
	x, err := fn(b.a), b.list[1:]
	if x, ok := x.(*Thing); ok {
		x := <-b.done
	}
	for key, each := range b.items {
		each++
	}
	switch y := b.any().(type) {
	case *Thing:
	case A, B:
	}
	var z Kind = x + 1
	n, m := b.pair()
	return
}
)"),
            R"(global go:build in - = linux && !cgo
global package in - = p
parameter $0 in Box : any
member a in Box : *$0
member b in Box : *$0
member Base in Box : pkg.Base
global One in - : Kind = {int}
global Two in - : Kind = {int}
global Default in - = NewBox()
global fallback in - = {int}
parameter b'1 in Each : *Box[$0]
parameter fn'1 in Each : func($0) bool
parameter more'1 in Each : []string
local err'1 in Each : error
local x'1 in Each = fn'1()
local err'2 in Each = b'1.list[:]
local x'2 in Each = {*Thing}
local ok'1 in Each = {bool}
local x'3 in Each = b'1.done<-
local key'1 in Each = b'1.items~0
local each'1 in Each = b'1.items~1
local y'1 in Each : *Thing
local y'2 in Each = b'1.any()
local z'1 in Each : Kind = x'1
local n'1 in Each = b'1.pair()#0
local m'1 in Each = b'1.pair()#1
import fmt|| in -
import dots|*| in -
import x/y||other in -
)");
}

TEST(GoExtraction, ModuleFiles) {
  EXPECT_EQ(bindings_of("go.mod", R"(// a comment
module "example.org/m" // another

require example.org/other v1.2.3

replace (
	example.org/other v1.2.3 => ./other
	example.org/remote => example.org/fork v1.0.0
)
replace example.org/last => ../last
)"),
            R"(global module in - = example.org/m
import example.org/other||./other in -
import example.org/remote||example.org/fork in -
import example.org/last||../last in -
)");
  MemorySource source;
  source.add("go.mod", "module example.org/m\n");
  EXPECT_TRUE(source.files().at("go.mod").facts->definitions.empty());
}

}  // namespace
}  // namespace context_delta::tests
