#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "indexer/update.h"
#include "storage/graph.h"
#include "storage/repository_changes.h"
#include "support/git_repository.h"
#include "support/index_dump.h"

namespace context_delta {
namespace {

struct Variants {
  std::string_view path;
  std::vector<std::string_view> texts;  ///< the empty one stands for no file
};

/// Files that define, declare, inherit, import and call each other's names, in several versions:
/// what one version proves, another makes a guess.
const std::vector<Variants> FILES = {
    {"store.h",
     {"namespace db {\nclass Store {\n public:\n  int get(int key);\n  void put(int key);\n};\n}\n",
      "namespace db {\nclass Store {\n public:\n  virtual int get(int key);\n  int put(int key);\n"
      "};\nint open();\n}\n",
      "int get(int key);\n", ""}},
    {"store.cc",
     {"#include \"store.h\"\nnamespace db {\nint Store::get(int key) { return key; }\n"
      "void Store::put(int key) { get(key); }\n}\n",
      "#include \"store.h\"\nint db::Store::get(int key) { return key; }\n"
      "static int open(int) { return 1; }\nint db::open() { return ::open(2); }\n",
      "int get(int key) { return key; }\n", ""}},
    {"main.cc",
     {"#include \"store.h\"\nint main() {\n  db::Store store;\n  store.put(1);\n"
      "  return store.get(1);\n}\n",
      "#include \"store.h\"\nint main() { return get(db::open()); }\n"}},
    {"util.c",
     {"#include \"util.h\"\nint twice(int n) { return n * 2; }\nint main(void) { return twice(1); "
      "}\n",
      "#ifdef FAST\nint twice(int n) { return n << 1; }\n#else\nint twice(int n) { return n + n; "
      "}\n"
      "#endif\n",
      ""}},
    {"util.h",
     {"int twice(int n);\n#define HALF(n) ((n) / 2)\n", "#define twice(n) ((n) * 2)\n", ""}},
    {"x/tool.py", {"def go(): pass\n", ""}},
    {"y/tool.py",
     {"def go(): pass\n", "class Made:\n    def __init__(self): pass\n\nMade()\n",
      "class Made:\n    def __new__(cls): pass\n\nMade()\n", ""}},
    {"pkg/__init__.py", {"from .base import Base, make\n", "from .base import *\n", ""}},
    {"pkg/base.py",
     {"class Base:\n    def run(self):\n        return self.step()\n\n    def step(self):\n"
      "        return 1\n\ndef make():\n    return Base()\n",
      "from .child import Child\n\nclass Base:\n    def run(self):\n        return 2\n\n"
      "def make() -> Child:\n    return Child()\n",
      "def make():\n    pass\n\nmake = None\n"}},
    {"pkg/child.py",
     {"from .base import Base\n\nclass Child(Base):\n    def step(self):\n"
      "        return super().step()\n",
      "from pkg import Base, make\n\nclass Child(Base):\n    pass\n\nchild = "
      "Child()\nchild.run()\n",
      ""}},
    {"go.mod", {"module example.org/m\n", "module example.org/other\n", ""}},
    {"queue/queue.go",
     {"package queue\n\nimport \"example.org/m/queue/item\"\n\ntype Queue struct{ Base }\n\n"
      "func New() *Queue { return &Queue{} }\n\nfunc (q *Queue) Next() item.Item { return "
      "open(q) }\n",
      "package queue\n\ntype Queue interface{ Next() int }\n\nfunc New() Queue { return nil }\n",
      "package other\n\nfunc New() {}\n"}},
    {"queue/queue_linux.go",
     {"package queue\n\ntype Base struct{}\n\nfunc (b Base) Stop() {}\n\n"
      "func open(q *Queue) (i item.Item) { q.Stop(); return }\n",
      "package queue\n\nfunc open(q *Queue) { New() }\n", ""}},
    {"queue/queue_windows.go", {"", "package queue\n\nfunc open(q *Queue) {}\n"}},
    {"queue/item/item.go",
     {"package item\n\ntype Item struct{}\n\nfunc (i Item) Run() {}\n",
      "package item\n\nimport . \"example.org/m/queue\"\n\ntype Item = Queue\n"}},
    {"cmd/main.go",
     {"package main\n\nimport \"example.org/m/queue\"\n\nvar all = queue.New()\n\n"
      "func main() {\n\tall.Next().Run()\n\tall.Stop()\n}\n",
      "package main\n\nimport q \"example.org/other/queue\"\n\nfunc main() { q.New().Next() }\n"}},
    {"use.py",
     {"import pkg\n\ndef use():\n    pkg.make().run()\n",
      "from pkg.child import Child\n\ndef use(make):\n    make()\n    Child().run()\n"}},
    {"Cargo.toml",
     {"[package]\nname = \"shop\"\n", "[package]\nname = \"shop\"\n[lib]\nname = \"stall\"\n", ""}},
    {"src/lib.rs",
     {"pub mod item;\npub use item::*;\npub trait Priced {\n    fn price(&self) -> u8;\n}\n",
      "pub mod item;\npub use crate::item::Item;\npub struct Offer(Item);\n",
      "#[path = \"other.rs\"]\npub mod item;\npub use item::Item;\n"}},
    {"src/item.rs",
     {"pub struct Item { pub cost: Cost }\npub struct Cost;\nimpl Cost {\n    pub fn net(&self) "
      "{}\n"
      "}\nimpl Item {\n    pub fn new() -> Item { todo!() }\n}\n",
      "use crate::Priced;\npub struct Item { pub cost: u8 }\nimpl Item {\n"
      "    pub fn new() -> Option<Item> { None }\n}\nimpl Priced for Item {\n"
      "    fn price(&self) -> u8 { self.cost }\n}\n",
      ""}},
    {"src/other.rs",
     {"",
      "pub struct Item;\nimpl Item { pub fn new() -> Self { Item } pub fn price(&self) {} }\n"}},
    {"tests/buy.rs",
     {"use shop::Item;\nfn buy() { Item::new().cost.net(); }\n",
      "use stall::{Item, Priced};\nfn buy() { Item::new().price(); }\n",
      "fn buy() { shop::Item::new().unwrap().price(); }\n"}},
    {"j/Base.java",
     {"package j;\npublic class Base<T> {\n  public static class Part { public void go() { } }\n"
      "  public T get() { return null; }\n  public void run() { }\n}\n",
      "package j;\npublic class Base<T> {\n  public void run(int a) { }\n"
      "  public final void run() { }\n  public String get() { return null; }\n}\n",
      "package j;\npublic class Base { public void run(Object o) { } }\n", ""}},
    {"j/Sub.java",
     {"package j;\npublic class Sub extends Base<Sub> {\n  public static class Own extends Part {\n"
      "    void f() { go(); }\n  }\n  public void run() { super.run(); get().run(); }\n}\n",
      "package j;\npublic class Sub extends Base<String> {\n  class Part { void go() { } }\n"
      "  class Own extends Part { void f() { go(); } }\n}\n",
      "package k;\nclass Sub { void run() { } Sub get() { return this; } }\n", ""}},
    {"k/Use.java",
     {"package k;\nimport j.*;\nclass Use {\n  void f(Base<Sub> b, Sub s) {\n    b.run();\n"
      "    s.get().run();\n    b.get().run(1);\n    new Sub.Own().go();\n  }\n}\n",
      "package k;\nimport static j.Base.*;\nclass Use extends j.Sub {\n"
      "  void f(Part p) { run(); run(1); p.go(); }\n}\n"}},
};

/// The same for modules that are found through the manifests of packages.
const std::vector<Variants> MODULES = {
    {"package.json", {"{\"workspaces\": [\"packages/*\"]}", "{\"name\": \"root\"}", ""}},
    {"tsconfig.json",
     {"{\"compilerOptions\": {\"paths\": {\"@x/*\": [\"packages/*/src\"]}}}", "{}", ""}},
    {"packages/one/package.json",
     {"{\"name\": \"@x/one\", \"main\": \"main.js\"}", "{\"name\": \"other\"}", ""}},
    {"packages/one/main.js",
     {"module.exports = { make };\nfunction make() { const s = new Set(); return { run }; "
      "function run() {} }\n",
      "exports.make = () => new Store();\nclass Store { run() {} }\n", ""}},
    {"packages/one/src/index.ts",
     {"export * from './store';\nexport const make = (): Store => new Store();\n"
      "import { Store } from './store';\n",
      "export { Store as default, make } from './store';\n", ""}},
    {"packages/one/src/store.ts",
     {"export class Store {\n  run() { this.step() }\n  step() {}\n}\n",
      "export interface Store { run(): void }\nexport function make(): Store { return null! }\n",
      ""}},
    {"packages/two/use.ts",
     {"import { make } from '@x/one';\nmake().run();\n",
      "import Store, { make } from '@x/one';\nexport class Sub extends Store { step() { make() } "
      "}\n"}},
    {"packages/two/old.js",
     {"const one = require('@x/one');\nconst s = one.make();\ns.run();\n",
      "const { Sub } = require('./use');\n/** @param {Sub} s */\nfunction f(s) { s.run() }\n"
      "Sub.prototype.step = f;\n",
      ""}},
};

void write_first_texts(const test::GitRepository& repository, const std::vector<Variants>& files) {
  for (const Variants& file : files) {
    if (!file.texts.front().empty()) repository.write(file.path, file.texts.front());
  }
}

class RealLanguages : public testing::TestWithParam<unsigned> {};

void expect_updates_like_cold_builds(const std::vector<Variants>& files, unsigned seed) {
  std::mt19937 random(seed);
  test::GitRepository repository;
  write_first_texts(repository, files);
  repository.commit();
  const git_utils::Git git(repository.root());
  storage::Repository updated(repository.beside() / "updated.sqlite");
  for (int step = 0; step < 15; ++step) {
    for (std::size_t edits = 1 + random() % 4; edits > 0; --edits) {
      const Variants& file = files[random() % files.size()];
      const std::string_view text = file.texts[random() % file.texts.size()];
      repository.remove(file.path);
      if (!text.empty()) repository.write(file.path, text);
    }
    const std::string commit = repository.commit();
    indexer::update(updated, git, commit);
    storage::Repository cold(repository.beside() / ("cold" + std::to_string(step) + ".sqlite"));
    indexer::update(cold, git, commit);
    ASSERT_EQ(test::difference(test::index_dump(updated.db), test::index_dump(cold.db)), "")
        << "step " << step;
  }
}

TEST_P(RealLanguages, AnUpdateEqualsAColdBuild) {
  expect_updates_like_cold_builds(FILES, GetParam());
}

TEST_P(RealLanguages, AnUpdateOfModulesEqualsAColdBuild) {
  expect_updates_like_cold_builds(MODULES, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Seeds, RealLanguages, testing::Range(0u, 6u));

TEST(RealLanguagesUpdate, ResolvesTheFilesWhoseAnswersChanged) {
  test::GitRepository repository;
  repository.write("p/base.py", "class Base:\n    def run(self): pass\n\ndef make(): pass\n");
  repository.write("p/use.py", "from .base import Base\n\ndef f():\n    Base().run()\n");
  repository.write("p/other.py", "from .base import make\n\nmake()\n");
  repository.write("t.h", "int twice(int);\n");
  repository.write("t.c", "#include \"t.h\"\nint twice(int a) { return 2 * a; }\n");
  repository.write("g/go.mod", "module m\n");
  repository.write("g/q/q.go", "package q\n\ntype Q interface{ Run() }\n\nfunc New() Q\n");
  repository.write("g/q/own.go", "package q\n\nvar own = New()\n");
  repository.write("g/use.go", "package g\n\nimport \"m/q\"\n\nfunc f() { q.New().Run() }\n");
  repository.write("u.c", "#include \"t.h\"\nint main(void) { return twice(1); }\n");
  const git_utils::Git git(repository.root());
  storage::Repository index(repository.beside() / "index.sqlite");
  indexer::update(index, git, repository.commit());
  const auto resolved = [&](const char* path, const std::string& text) {
    repository.write(path, text);
    return indexer::update(index, git, repository.commit()).resolved;
  };
  EXPECT_EQ(resolved("p/base.py",
                     "def more(): pass\n\nclass Base:\n    def run(self): pass\n\n"
                     "def make(): pass\n"),
            1);
  EXPECT_EQ(resolved("p/base.py",
                     "def more(): pass\n\nclass Base:\n    def run(self): pass\n\n"
                     "def make() -> Base: pass\n"),
            2)
      << "and p/other.py";
  EXPECT_EQ(resolved("p/base.py",
                     "def more(): pass\n\nclass Base(Top):\n    def run(self): pass\n"
                     "\ndef make() -> Base: pass\n"),
            2)
      << "and p/use.py";
  EXPECT_EQ(resolved("t.h", "int twice(int);\nint thrice(int);\n"), 1);

  const std::string made = "func New() Q\n";
  EXPECT_EQ(resolved("g/q/own.go", "package q\n\nvar own, more = New(), 1\n"), 1);
  EXPECT_EQ(resolved("g/q/q.go", "package q\n\ntype Q interface{ Run(); Stop() }\n\n" + made), 2)
      << "and g/use.go, whose call may mean whatever has all methods";
  EXPECT_EQ(resolved("g/q/q.go", "package q\n\ntype Q struct{ size int }\n\n" + made), 2);
  EXPECT_EQ(resolved("g/q/own.go", "package q\n\nfunc (q Q) Run() {}\n"), 2)
      << "and g/use.go, which looked for it";
  EXPECT_EQ(resolved("t.h", "#include \"p.h\"\nint twice(int);\nint thrice(int);\n"), 3);
}

/// A repository with an index, which counts the files that a change resolves again.
class Counted {
 public:
  explicit Counted(const std::vector<std::pair<std::string, std::string>>& files) {
    for (const auto& [path, text] : files) repository_.write(path, text);
    indexer::update(index_, git_, repository_.commit());
  }
  std::int64_t resolved(const std::string& path, const std::string& text) {
    repository_.write(path, text);
    return indexer::update(index_, git_, repository_.commit()).resolved;
  }

 private:
  test::GitRepository repository_;
  git_utils::Git git_{repository_.root()};
  storage::Repository index_{repository_.beside() / "index.sqlite"};
};

TEST(RealLanguagesUpdate, LeavesRustFilesAloneThatAskedForOtherNames) {
  const std::string shop = "pub mod item;\npub struct Shop;\n";
  const std::string item = "pub struct Item<A, B>(pub A, pub B);\n";
  Counted counted({{"Cargo.toml", "[package]\nname = \"shop\"\n"},
                   {"src/lib.rs", shop},
                   {"src/item.rs", item + "pub fn make() {}\n"},
                   {"tests/a.rs", "fn f(i: shop::item::Item<Shop, u8>) { i.0.go(); }\n"},
                   {"tests/b.rs", "fn f() { shop::item::make(); }\n"},
                   {"tests/c.rs", "fn f() { shop::rest(); }\n"}});
  EXPECT_EQ(counted.resolved("src/lib.rs", "pub fn new() {}\n" + shop), 1);
  EXPECT_EQ(counted.resolved("src/lib.rs", shop + "mod own { use super::*; }\n"), 1);
  EXPECT_EQ(counted.resolved("src/lib.rs", shop + "pub use item::*;\n"), 2) << "and tests/c.rs";
  EXPECT_EQ(counted.resolved("src/item.rs", item + "pub fn make() -> u8 {}\n"), 2)
      << "and tests/b.rs";
  const std::string swapped = "pub struct Item<B, A>(pub A, pub B);\n";
  EXPECT_EQ(counted.resolved("src/item.rs", swapped + "pub fn make() -> u8 {}\n"), 2)
      << "and tests/a.rs";
  EXPECT_EQ(
      counted.resolved("Cargo.toml", "[package]\nname = \"shop\"\n[dependencies]\nlog = \"1\"\n"),
      1);
}

TEST(RealLanguagesUpdate, LeavesJavaFilesAloneThatAskedForOtherNames) {
  const std::string package = "package j;\n";
  Counted counted(
      {{"j/Base.java", package + "class Base { void run() { } void stop() { } }\n"},
       {"j/Job.java", package + "interface Job { void start(int n); }\n"},
       {"j/A.java", package + "class A { void f(Base b) { b.run(); } }\n"},
       {"j/B.java", package + "class B { void f(Base b) { b.stop(); } }\n"},
       {"j/C.java", package + "class C { void f() { on(n -> { }); } void on(Job j) { } }\n"}});
  EXPECT_EQ(
      counted.resolved("j/Base.java",
                       package + "class Base { void run() { } int stop() { } int n() { } }\n"),
      2)
      << "and j/B.java";
  EXPECT_EQ(counted.resolved("j/Job.java",
                             package + "interface Job { void start(int n); int SIZE = 1; }\n"),
            1);
  EXPECT_EQ(counted.resolved("j/Job.java",
                             package + "interface Job { void halt(); void start(int n); }\n"),
            2)
      << "and j/C.java";
}

TEST(RealLanguagesGraph, CallsAcrossFilesAreProven) {
  test::GitRepository repository;
  write_first_texts(repository, FILES);
  const std::string commit = repository.commit();
  const git_utils::Git git(repository.root());
  storage::Repository index(repository.beside() / "index.sqlite");
  indexer::update(index, git, commit);
  std::vector<std::string> proven;
  storage::export_calls(index.db, [&](std::string_view line) {
    if (line.find("\"proven\": true") != std::string_view::npos) proven.emplace_back(line);
  });
  const auto has = [&](std::string_view caller, std::string_view callee) {
    return std::any_of(proven.begin(), proven.end(), [&](const std::string& line) {
      return line.find(caller) != std::string::npos && line.find(callee) != std::string::npos;
    });
  };
  EXPECT_TRUE(
      has(R"("caller_file": "main.cc")", R"("callee_file": "store.cc", "callee_name": "get")"));
  EXPECT_TRUE(has(R"("caller_file": "util.c")", R"("callee_name": "twice")"));
  EXPECT_TRUE(
      has(R"("caller_file": "use.py")", R"("callee_file": "pkg/base.py", "callee_name": "make")"));
  EXPECT_TRUE(has(R"("caller_file": "cmd/main.go")",
                  R"("callee_file": "queue/item/item.go", "callee_name": "Run")"));
  EXPECT_TRUE(has(R"("caller_file": "tests/buy.rs")",
                  R"("callee_file": "src/item.rs", "callee_name": "net")"));
  EXPECT_FALSE(has(R"("caller_name": "run")", R"("callee_name": "step")")) << "Child overrides it";
  EXPECT_TRUE(has(R"("caller_file": "k/Use.java")",
                  R"("callee_file": "j/Sub.java", "callee_name": "run")"));
  EXPECT_TRUE(has(R"("caller_file": "j/Sub.java")", R"("callee_name": "go")"));
}

TEST(RealLanguagesGraph, AChangedConstructorHasTheCallersOfItsClass) {
  test::GitRepository repository;
  repository.write("e.js", "class E extends Error { constructor(){} }\nfunction f() { new E() }\n");
  repository.write("p.py", "class P:\n    def __init__(self):\n        pass\n");
  repository.write("q.py", "from p import P\n\ndef make():\n    return P()\n");
  const std::string commit = repository.commit();
  storage::Repository index(repository.beside() / "index.sqlite");
  indexer::update(index, git_utils::Git(repository.root()), commit);
  const std::vector<std::string_view> kinds = {"class", "constructor", "function"};
  const auto callers = [&](const std::string& path, std::int64_t line) {
    std::vector<std::string> found;
    for (const auto& symbol :
         repository_changes::symbols_on_lines(index.db, {{path, {{line, line}}}}, kinds, 9)) {
      const std::array<std::int64_t, 1> id = {symbol.id};
      for (const storage::Caller& caller : index.callers_of(id, false, 9)) {
        found.push_back(symbol.name + " < " + caller.name);
      }
    }
    return found;
  };
  EXPECT_EQ(callers("e.js", 1), (std::vector<std::string>{"E < f", "constructor < f"}));
  EXPECT_EQ(callers("p.py", 1), std::vector<std::string>{"P < make"});
  EXPECT_EQ(callers("p.py", 3), std::vector<std::string>{"__init__ < make"});
  int calls = 0;
  storage::export_calls(index.db, [&](std::string_view) { ++calls; });
  EXPECT_EQ(calls, 2) << "a call is exported once";
  EXPECT_EQ(storage::graph_size(index.db).proven_calls, 2);
  const std::vector<std::string> paths = {"p.py"};
  EXPECT_EQ(repository_changes::file_impact(index.db, paths).at("p.py").references, 2)
      << "the import and the call";
}

/// The parser would ask for gigabytes, or for minutes, to find its way through such texts.
TEST(HostileTexts, AreSkippedAndLeaveTheOthersAlone) {
  const std::vector<std::tuple<std::string, std::string, int>> texts = {
      {"a.java", "a < ", 25'000},
      {"c.cc", "a < ", 25'000},
      {"d.tsx", "<a<b> ", 20'000},
      {"e.c", "(a)(b)*", 15'000},
      {"f.ts", "[\"/*\"]}", 40'000},
      {"g.rs", "Sub s) {\n b.run();\n s.get().run();\n b.get().run(1);", 13'000}};
  test::GitRepository repository;
  std::vector<std::string> names;
  for (const auto& [name, text, count] : texts) {
    std::string whole;
    for (int i = 0; i < count; ++i) whole += text;
    repository.write(name, whole);
    const std::string after = "z" + name;
    repository.write(after,
                     name.ends_with("java") ? "class Z { void f() { } }\n" : "class Z {};\n");
    names.push_back(name);
  }
  repository.commit();
  storage::Repository index(repository.beside() / "index.sqlite");
  indexer::UpdateOptions options;
  options.threads = 1;
  const auto report = indexer::update(index, git_utils::Git(repository.root()),
                                      repository.git({"rev-parse", "HEAD"}), options);
  std::vector<std::string> skipped;
  for (const indexer::SkippedFile& file : report.skipped) {
    EXPECT_EQ(file.reason, "too costly to parse") << file.path;
    skipped.push_back(file.path);
  }
  EXPECT_EQ(skipped, names);
  EXPECT_EQ(report.files, std::ssize(texts));
  EXPECT_GE(storage::graph_size(index.db).symbols, 4);
}

}  // namespace
}  // namespace context_delta
