#include <algorithm>

#include "workers/git_history.h"
#include "workers/path_pattern.h"

// One table says what is not production source; its patterns are those of matches_path().
namespace context_delta::git_history {
namespace {

enum class Files {
  ALL,
  NOT_IN_A_LANGUAGE,  // whatever the case of their letters; no text that a program reads
};

struct Rule {
  std::string_view file_class, pattern;
  Files files = Files::ALL;
};

constexpr std::string_view TEST = "test";
constexpr std::string_view DOCUMENT = "document";
constexpr std::string_view GENERATED = "generated";
constexpr std::string_view ASSET = "asset";

constexpr Rule RULES[] = {
    {TEST, "{test,tests,Test,Tests}/"},
    {TEST, "{unittest,unittests,testdata}/"},
    {TEST, "{__tests__,__mocks__,__snapshots__,cypress,e2e}/"},
    {TEST, "src/*[a-z0-9]Test/"},
    {TEST, "benches/*.rs"},
    {TEST, "conftest.py"},
    {TEST, "test_*.{py,c,cc,cpp,cxx}"},
    {TEST, "*_test.{py,go,c,cc,cpp,cxx,h,rb,exs}"},
    {TEST, "*_tests.{py,c,cc,cpp,cxx}"},
    {TEST, "*_unittest.{c,cc,cpp,cxx}"},
    {TEST, "*.{test,spec}.{js,jsx,ts,tsx,cjs,mjs,cts,mts}"},
    {TEST, "*.stories.{js,jsx,ts,tsx,mdx}"},
    {TEST, "*[a-z0-9A-Z_]{Test,Tests}.{java,kt,cs,cc,cpp,swift}"},
    {TEST, "{Test,Tests}.java"},
    {TEST, "Test[!a-z]*.java"},
    {TEST, "*TestCase.java"},
    {TEST, "*[a-z0-9]IT.java"},

    {GENERATED, "{package-lock.json,npm-shrinkwrap.json,yarn.lock,pnpm-lock.yaml}"},
    {GENERATED, "{bun.lock,bun.lockb,deno.lock}"},
    {GENERATED, "{poetry.lock,uv.lock,pdm.lock,Pipfile.lock}"},
    {GENERATED, "{Cargo.lock,composer.lock,Gemfile.lock,go.sum,flake.lock,MODULE.bazel.lock}"},
    {GENERATED, "*.pb.{go,cc,h}"},
    {GENERATED, "*{_pb2,_pb2_grpc}.{py,pyi}"},
    {GENERATED, "*_pb.{js,d.ts}"},
    {GENERATED, "*Grpc.java"},
    {GENERATED, "*_gen.go"},
    {GENERATED, "zz_generated*.go"},
    {GENERATED, "*.generated.*"},
    {GENERATED, "*.g.dart"},
    {GENERATED, "*.{d,D}esigner.cs"},
    {GENERATED, "moc_*.cpp"},
    {GENERATED, "ui_*.h"},
    {GENERATED, "*_generated.h"},
    {GENERATED, "*.min.{js,css}"},
    {GENERATED, "*.map"},
    {GENERATED, "*.snap"},
    {GENERATED, "__generated__/"},
    {GENERATED, "{node_modules,vendor,bower_components,Godeps,Pods,Carthage,.yarn}/"},

    {DOCUMENT, "/{docs,doc,man}/"},
    {DOCUMENT, "Documentation/"},
    {DOCUMENT, "{readme,changes,changelog,contributing,license,licence,copying,authors}",
     Files::NOT_IN_A_LANGUAGE},
    {DOCUMENT, "{readme,changes,changelog,contributing,license,licence,copying,authors}[._-]*",
     Files::NOT_IN_A_LANGUAGE},
    {DOCUMENT, "*.{md,markdown,rst,adoc,asciidoc,tex,txt}", Files::NOT_IN_A_LANGUAGE},

    {ASSET, "*.{png,jpg,jpeg,gif,bmp,ico,icns,webp,avif,tif,tiff,psd,svg,pdf}",
     Files::NOT_IN_A_LANGUAGE},
    {ASSET, "*.{woff,woff2,ttf,otf,eot}", Files::NOT_IN_A_LANGUAGE},
    {ASSET, "*.{mp3,mp4,ogg,wav,webm,mov}", Files::NOT_IN_A_LANGUAGE},
    {ASSET, "*.{zip,tar,gz,tgz,bz2,xz,zst,7z,jar,whl}", Files::NOT_IN_A_LANGUAGE},
    {ASSET, "*.{class,pyc,exe,dll,so,dylib}", Files::NOT_IN_A_LANGUAGE},
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

bool holds(const Rule& rule, std::string_view path, bool is_in_language) {
  if (rule.files == Files::ALL) return matches_path(rule.pattern, path);
  return !is_in_language && matches_path(rule.pattern, path, LetterCase::ANY) &&
         !is_read_by_programs(path);
}

}  // namespace

std::optional<SourceExclusion> source_exclusion(std::string_view path,
                                                std::optional<std::string_view> language) {
  const auto rule = std::find_if(std::begin(RULES), std::end(RULES), [&](const Rule& each) {
    return holds(each, path, language.has_value());
  });
  if (rule == std::end(RULES)) return std::nullopt;
  return SourceExclusion{rule->file_class, rule->pattern};
}

bool is_source_path(std::string_view path, std::optional<std::string_view> language) {
  return !source_exclusion(path, language);
}

}  // namespace context_delta::git_history
