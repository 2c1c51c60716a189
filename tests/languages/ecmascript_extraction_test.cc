#include <gtest/gtest.h>

#include "support/annotated_repository.h"

namespace context_delta::tests {
namespace {

const MemorySource::Entry& entry_of(MemorySource& source, const std::string& path,
                                    const std::string& text) {
  source.add(path, text);
  return source.files().at(path);
}

std::string definitions_of(const std::string& path, const std::string& text) {
  MemorySource source;
  const MemorySource::Entry& entry = entry_of(source, path, text);
  return describe_definitions(entry, source.resolve(path).qualified_names);
}

TEST(EcmascriptExtraction, DefinitionsOfJavascript) {
  EXPECT_EQ(definitions_of("lib/m.js", R"(/** Doc. */
export default async function run(a, { b } = {}, ...rest) {
  function inner() {}
  const late = (x) => {
    return x;
  };
  items.map(function named(y) {});
}
const LIMIT = 3, table = {
  size: 1,
  get width() {},
  grow(by) {},
  shrink: function (by) {},
  inner: { deep: () => 1 },
};
class Base extends mixin(Root) {
  #count = 0;
  static make = () => new Base();
  constructor(a) { this.go = () => a; }
  static build() {}
  *[Symbol.iterator]() {}
  'quoted name'() {}
  get area() {}
}
if (LIMIT) { function twin() {} } else { function twin() {} }
exports.named = function () {};
Base.prototype.late = function (x) {};
module.exports = class extends Base {};
let unset;
unset = function () {};
register({ handler() {} });
)"),
            R"(function lib/m.run 2-8 @2 [0 *] `async function run(a, { b } = {}, ...rest)`
function lib/m.run.inner 3-3 @3 [0 0] `function inner()`
function lib/m.run.late 4-6 @4 [0 1] `late = (x)`
variable lib/m.LIMIT 9-9 @9 `LIMIT = 3`
variable lib/m.table 9-15 @9 `table = { size: 1, get width() {}, grow(by) {}, shrink: function (by) {}, inner: { deep: () => 1 }, }`
method lib/m.table.width 11-11 @11 [0 0] {property} `get width()`
method lib/m.table.grow 12-12 @12 [0 1] `grow(by)`
method lib/m.table.shrink 13-13 @13 [0 1] `shrink: function (by)`
method lib/m.table.inner.deep 14-14 @14 [0 0] `deep: ()`
class lib/m.Base 16-24 @16 `class Base extends mixin(Root)`
method lib/m.Base.make 18-18 @18 [0 0] {static} `make = ()`
constructor lib/m.Base.constructor 19-19 @19 [0 1] `constructor(a)`
method lib/m.Base.constructor.go 19-19 @19 [0 0] `go = ()`
method lib/m.Base.build 20-20 @20 [0 0] {static} `static build()`
method lib/m.Base.[Symbol.iterator] 21-21 @21 [0 0] `*[Symbol.iterator]()`
method lib/m.Base.quoted name 22-22 @22 [0 0] `'quoted name'()`
method lib/m.Base.area 23-23 @23 [0 0] {property} `get area()`
function lib/m.twin 25-25 @25 [0 0] {local} `function twin()`
function lib/m.twin 25-25 @25 [0 0] {local} `function twin()`
function lib/m.named 26-26 @26 [0 0] `named = function ()`
method lib/m.Base.late 27-27 @27 [0 1] `late = function (x)`
class lib/m.exports 28-28 @28 `exports = class extends Base`
variable lib/m.unset 29-29 @29 `unset`
method lib/m.handler 31-31 @31 [0 0] `handler()`
)");
}

TEST(EcmascriptExtraction, DefinitionsOfTypescript) {
  EXPECT_EQ(
      definitions_of("m.d.ts", R"(export declare function run(a: string, b?: number): void;
@sealed
@log("x")
export abstract class Base<T> implements Root, other.Thing {
  private items: T[] = [];
  constructor(readonly name: string, size = 1) { super(); }
  abstract work(): void;
  run(a: string): void;
  run(a: any) {}
}
export interface Root extends A<B>, C {
  size: number;
  go(x: number): string;
  done: (a: string, b?: number) => void;
}
type Alias = Root | null;
type Shape = { draw(): void };
enum Color { RED, GREEN = 2 }
namespace N.M {
  export const limit = 1;
  export function help(this: Root, x: number) {}
}
declare module "outer" {
  function inside(): void;
}
)"),
      R"(function m.run 1-1 @1 [1 2] {declaration} `function run(a: string, b?: number): void;`
class m.Base 2-10 @4 {decorated} `abstract class Base<T> implements Root, other.Thing`
constructor m.Base.constructor 6-6 @6 [1 2] `constructor(readonly name: string, size = 1)`
method m.Base.work 7-7 @7 [0 0] {declaration,virtual} `abstract work(): void`
method m.Base.run 8-8 @8 [1 1] {declaration} `run(a: string): void`
method m.Base.run 9-9 @9 [1 1] `run(a: any)`
interface m.Root 11-15 @11 `interface Root extends A<B>, C`
method m.Root.go 13-13 @13 [1 1] {declaration,virtual} `go(x: number): string`
method m.Root.done 14-14 @14 [1 2] {declaration,virtual} `done: (a: string, b?: number) => void`
type m.Alias 16-16 @16 `type Alias = Root | null;`
type m.Shape 17-17 @17 `type Shape = { draw(): void };`
method m.Shape.draw 17-17 @17 [0 0] {declaration,virtual} `draw(): void`
enum m.Color 18-18 @18 `enum Color`
namespace m.N.M 19-22 @19 `namespace N.M`
function m.N.M.help 21-21 @21 [1 1] `function help(this: Root, x: number)`
namespace m.outer 23-25 @23 `module "outer"`
function m.outer.inside 24-24 @24 [0 0] {declaration} `function inside(): void;`
)");
}

TEST(EcmascriptExtraction, References) {
  MemorySource source;
  EXPECT_EQ(describe_references(*entry_of(source, "m.tsx", R"(import a, { b as c } from './x';
export { d as e } from './y';
@mark @app.route('/') class D extends m.Base<Foo> {}
function f(x: t.Opt<Bar>) {
  x!.y[0].go(1, ...xs);
  (x as Bar)?.cast();
  new a.B(1).c`t`;
  xs.map(x => x.inner());
  require('./z').load(a(), import('./w'));
  return <Item a={h()}><N.T/><div/></Item>;
}
)")
                                     .facts),
            R"(1 import ./x|default in -
1 import ./x|b in -
2 import ./y|d in -
3 inherit m|Base in -
3 decorate |mark(*) in D
3 call app|route(1) in D
3 type |Foo in D
4 type t|Opt in f
4 type |Bar in f
5 call x.y[]|go(*) in f
6 call <Bar>|cast(0) in f
6 type |Bar in f
7 call a.B~|c(*) in f
7 construct a|B(1) in f
8 call xs|map(1) in f
8 call x'2_1|inner(0) in f
9 call 'm0|load(2) in f
9 call |a(0) in f
10 call |Item(*) in f
10 call |h(0) in f
10 call N|T(*) in f
)");
}

TEST(EcmascriptExtraction, BindingsAndImports) {
  MemorySource source;
  EXPECT_EQ(describe_bindings(*entry_of(source, "m.js", R"(import d, * as all from './x';
const { a, b: renamed, ...rest } = require('./y');
export const one = a.b(), two = new One();
export { one as uno, d as default };
export * from './z';
module.exports = { one, run() {}, ...rest };
/** @type {Map<string, Foo>} */
let kept;
/**
 * @param {?Foo} p the first
 * @param {string} [q=1]
 * @returns {Promise<Bar>}
 */
function f(p, q, { r: [s] }) {
  for (const each of p.items) { const one = each.x; kept = one; }
  try { this.p = p; } catch ({ message }) {}
  return { p, late };
  function late() {}
}
f.added = () => 1;
)")
                                   .facts),
            R"(global rest in - = ?
global export one in - = one
global export two in - = two
global one in - = a.b()
global two in - = One~
global export uno in - = one
global export default in - = d
global export = in - = {-1:0}
member {-1:0}.* in - = rest
member {-1:0}.one in - = one
member {-1:0}.run in - = =2
global kept in - : Map<string, Foo>
parameter p in f : Foo
parameter q in f : string
parameter s in f = ?.r[]
global kept in - = <Foo>.items[].x
local each'5_1 in f = p.items[]
local one'5_2 in f = each'5_1.x
member p in f = <Foo>
local message'5_4 in f = ?.message
local {4:0}.p in f = <Foo>
local {4:0}.late in f = =5
member added in f = =6 {static}
import ./x|default|d in -
import ./x||all in -
import ./y|a|a in -
import ./y|b|renamed in -
import ./y||'m0 in -
import ./z|*|export * in -
)");
}

TEST(ManifestExtraction, KeepsWhatRulesAskFor) {
  MemorySource source;
  EXPECT_EQ(describe_bindings(*entry_of(source, "package.json", R"({
  "name": "@x/y", "version": "1.0.0",
  "exports": { ".": { "import": "./a.js", "types": "./a.d.ts" }, "./b/*": ["./b/*.js"] },
  "workspaces": ["packages/*", "tools"], // both
  "dependencies": { "name": "1" },
  "compilerOptions": { "paths": { "@/*": ["src/*"] }, "target": "es5", },
}
)")
                                   .facts),
            R"(global name in - = @x/y
global exports|.|import in - = ./a.js
global exports|.|types in - = ./a.d.ts
global exports|./b/*|0 in - = ./b/*.js
global workspaces|0 in - = packages/*
global workspaces|1 in - = tools
global compilerOptions|paths|@/*|0 in - = src/*
)");
  EXPECT_EQ(describe_bindings(
                *entry_of(source, "pnpm-workspace.yaml",
                          "catalog:\n  - no\npackages:\n  # all\n  - 'packages/*'\n  - tools\n")
                     .facts),
            R"(global workspaces|0 in - = packages/*
global workspaces|1 in - = tools
)");
}

}  // namespace
}  // namespace context_delta::tests
