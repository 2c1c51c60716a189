#include <algorithm>

#include "workers/git_history.h"
#include "workers/path_pattern.h"

// One table says what is not production source; its patterns are those of matches_path().
namespace context_delta::git_history {
namespace {

enum class Files {
  ALL,
  NOT_IN_GO,        // whose packages may have such names
  NOT_IN_SRC,       // where packages are laid out that are shipped whole
  NOT_IN_LANGUAGE,  // whatever the case of their letters; no text that a program reads
};

struct Rule {
  std::string_view file_class, name, pattern;
  Files files = Files::ALL;
};

constexpr std::string_view TEST = "test";
constexpr std::string_view DOCUMENT = "document";
constexpr std::string_view GENERATED = "generated";
constexpr std::string_view ASSET = "asset";

constexpr Rule RULES[] = {
    {TEST, "test folder", "{test,tests,Test,Tests}/"},
    {TEST, "test folder", "{unittest,unittests,testdata}/"},
    {TEST, "folder of one kind of tests",
     "{unit,integration,functional,acceptance,regression,runtime,smoke,system}{-,_}{test,tests}/"},
    {TEST, "JavaScript test folder", "{__tests__,__mocks__,__snapshots__,cypress,e2e}/"},
    {TEST, "Gradle test folder", "src/*[a-z0-9]Test/"},
    {TEST, "Rust benchmark", "benches/*.rs"},
    {TEST, "pytest settings", "conftest.py"},
    {TEST, "test_ at the start", "test_*.{py,c,cc,cpp,cxx}"},
    {TEST, "_test at the end", "*_test.{py,go,c,cc,cpp,cxx,h,rb,exs,dart,lua,clj,cljc,cljs}"},
    {TEST, "_test at the end", "*_test.{js,jsx,ts,tsx,mjs,mts}"},
    {TEST, "_tests at the end", "*_tests.{py,c,cc,cpp,cxx,rs}"},
    {TEST, "Django tests", "tests.py", Files::NOT_IN_SRC},
    {TEST, "Rust test module", "tests.rs"},
    {TEST, "Ruby or Lua specification", "*_spec.{rb,lua}"},
    {TEST, "Ruby specification", "{spec,rails}_helper.rb"},
    {TEST, "Spec at the end", "*[a-z0-9]Spec.{groovy,scala,hs}"},
    {TEST, "Erlang test suite", "*_SUITE.erl"},
    {TEST, "_unittest at the end", "*_unittest.{c,cc,cpp,cxx}"},
    {TEST, "JavaScript test", "*.{test,spec}.{js,jsx,ts,tsx,cjs,mjs,cts,mts}"},
    {TEST, "Cypress test", "*.cy.{js,jsx,ts,tsx}"},
    {TEST, "TypeScript type test", "*.{test,spec}-d.{ts,tsx}"},
    {TEST, "JavaScript story", "*.stories.{js,jsx,ts,tsx,mdx}"},
    {TEST, "Test at the end",
     "*[a-z0-9A-Z_]{Test,Tests}.{java,kt,cs,cc,cpp,swift,php,scala,groovy,dart,m,mm}"},
    {TEST, "Java test", "{Test,Tests}.java"},
    {TEST, "Java test", "Test[!a-z]*.java"},
    {TEST, "test case", "*TestCase.{java,php}"},
    {TEST, "Java integration test", "*[a-z0-9]IT.java"},

    {GENERATED, "npm lock file",
     "{package-lock.json,npm-shrinkwrap.json,yarn.lock,pnpm-lock.yaml}"},
    {GENERATED, "JavaScript lock file", "{bun.lock,bun.lockb,deno.lock}"},
    {GENERATED, "Python lock file", "{poetry.lock,uv.lock,pdm.lock,Pipfile.lock}"},
    {GENERATED, "lock file",
     "{Cargo.lock,composer.lock,Gemfile.lock,go.sum,flake.lock,MODULE.bazel.lock}"},
    {GENERATED, "protocol buffers", "*.pb.{go,cc,h}"},
    {GENERATED, "protocol buffers", "*{_pb2,_pb2_grpc}.{py,pyi}"},
    {GENERATED, "protocol buffers", "*_pb.{js,d.ts}"},
    {GENERATED, "protocol buffers", "*Grpc.java"},
    {GENERATED, "generated Go", "*_gen.go"},
    {GENERATED, "generated Go", "zz_generated*.go"},
    {GENERATED, "named generated", "*.generated.*"},
    {GENERATED, "generated Dart", "*.g.dart"},
    {GENERATED, "form designer", "*.{d,D}esigner.cs"},
    {GENERATED, "Qt", "moc_*.cpp"},
    {GENERATED, "Qt", "ui_*.h"},
    {GENERATED, "generated header", "*_generated.h"},
    {GENERATED, "minified", "*.min.{js,css}"},
    {GENERATED, "source map", "*.map"},
    {GENERATED, "JavaScript bundle", "dist/*.{js,cjs,mjs,css}"},
    {GENERATED, "JavaScript bundle", "dist/*/*.{js,cjs,mjs,css}"},
    {GENERATED, "snapshot", "*.snap"},
    {GENERATED, "generated folder", "__generated__/"},
    {GENERATED, "written by a package manager",
     "{node_modules,vendor,bower_components,Godeps,Pods,Carthage,.yarn}/"},

    {DOCUMENT, "document folder", "/docs/"},
    {DOCUMENT, "document folder", "/{doc,man}/", Files::NOT_IN_GO},
    {DOCUMENT, "document folder", "Documentation/"},
    {DOCUMENT, "document of a project",
     "{readme,changes,changelog,contributing,license,licence,copying,authors}",
     Files::NOT_IN_LANGUAGE},
    {DOCUMENT, "document of a project",
     "{readme,changes,changelog,contributing,license,licence,copying,authors}[._-]*",
     Files::NOT_IN_LANGUAGE},
    {DOCUMENT, "document of a project",
     "{BUGS,COPYRIGHT,CREDITS,HISTORY,INSTALL,MAINTAINERS,NEWS,NOTICE,THANKS,TODO,UNLICENSE}"},
    {DOCUMENT, "text", "*.{md,markdown,rst,adoc,asciidoc,tex,txt}", Files::NOT_IN_LANGUAGE},

    {ASSET, "image",
     "*.{png,jpg,jpeg,gif,bmp,ico,icns,webp,avif,tif,tiff,psd,svg,pdf,eps,xcf,excalidraw}",
     Files::NOT_IN_LANGUAGE},
    {ASSET, "font", "*.{woff,woff2,ttf,otf,eot}", Files::NOT_IN_LANGUAGE},
    {ASSET, "sound or film", "*.{mp3,mp4,ogg,wav,webm,mov}", Files::NOT_IN_LANGUAGE},
    {ASSET, "archive", "*.{zip,tar,gz,tgz,bz2,xz,zst,7z,jar,whl}", Files::NOT_IN_LANGUAGE},
    {ASSET, "program", "*.{class,pyc,exe,dll,so,dylib}", Files::NOT_IN_LANGUAGE},
    {ASSET, "signature", "*.{asc,sig}", Files::NOT_IN_LANGUAGE},
};

// What programs read although its name is a document's. The index may not know their language.
constexpr std::string_view READ_BY_PROGRAMS[] = {
    "{CMakeLists,meson_options,robots}.txt",
    "{requirements,constraints}*.txt",
    "*{requirements,constraints}.txt",
    "requirements/*.txt",
    "*.{c,cc,cpp,cs,css,ex,exs,go,h,hpp,hs,java,js,jsx,kt,lua,ml,mjs,php,pl,py,rb,rs,scala,scss,"
    "sh}",
    "*.{cmake,in,json,sql,swift,toml,ts,tsx,vue,xml,yaml,yml}",
};

bool is_read_by_programs(std::string_view path) {
  return std::any_of(std::begin(READ_BY_PROGRAMS), std::end(READ_BY_PROGRAMS),
                     [&](std::string_view pattern) { return matches_path(pattern, path); });
}

bool holds(const Rule& rule, std::string_view path, std::optional<std::string_view> language) {
  switch (rule.files) {
    case Files::ALL:
      break;
    case Files::NOT_IN_GO:
      if (language == "go") return false;
      break;
    case Files::NOT_IN_SRC:
      if (matches_path("src/", path)) return false;
      break;
    case Files::NOT_IN_LANGUAGE:
      return !language && matches_path(rule.pattern, path, LetterCase::ANY) &&
             !is_read_by_programs(path);
  }
  return matches_path(rule.pattern, path);
}

}  // namespace

std::optional<SourceExclusion> source_exclusion(std::string_view path,
                                                std::optional<std::string_view> language) {
  const auto rule = std::find_if(std::begin(RULES), std::end(RULES),
                                 [&](const Rule& each) { return holds(each, path, language); });
  if (rule == std::end(RULES)) return std::nullopt;
  return SourceExclusion{rule->file_class, rule->name, rule->pattern};
}

bool is_source_path(std::string_view path, std::optional<std::string_view> language) {
  return !source_exclusion(path, language);
}

}  // namespace context_delta::git_history
