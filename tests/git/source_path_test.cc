#include <gtest/gtest.h>

#include "workers/git_history.h"

namespace context_delta::git_history {
namespace {

struct Case {
  const char* path;
  const char* language;    // null: none that the index knows
  const char* file_class;  // null: production source
};

const Case CASES[] = {
    {"test/server.cc", "cpp", "test"},
    {"pkg/tests/helpers.py", "python", "test"},
    {"Tests/AppTests/Model.swift", nullptr, "test"},
    {"tests/fixtures/data.json", nullptr, "test"},
    {"latest/server.cc", "cpp", nullptr},
    {"contest.c", "c", nullptr},
    {"src/testing/harness.py", "python", nullptr},
    {"pkg/testutils/fake.go", "go", nullptr},
    {"test", nullptr, nullptr},
    {"src/test.py", "python", nullptr},
    {"a/test_router.py", "python", "test"},
    {"a/router_test.py", "python", "test"},
    {"conftest.py", "python", "test"},
    {"attest_router.py", "python", nullptr},
    {"web/button.test.tsx", "tsx", "test"},
    {"web/button.spec.mjs", "javascript", "test"},
    {"web/__mocks__/fs.js", "javascript", "test"},
    {"web/Button.stories.jsx", "javascript", "test"},
    {"cypress/login.ts", "typescript", "test"},
    {"spec/openapi.yaml", nullptr, nullptr},
    {"web/test.ts", "typescript", nullptr},
    {"pkg/server_test.go", "go", "test"},
    {"pkg/testdata/in.go", "go", "test"},
    {"pkg/server_testing.go", "go", nullptr},
    {"crate/tests/api.rs", "rust", "test"},
    {"crate/benches/speed.rs", "rust", "test"},
    {"benches/notes.toml", nullptr, nullptr},
    {"app/src/test/java/A.java", "java", "test"},
    {"app/src/androidTest/java/A.java", "java", "test"},
    {"app/src/latest/java/A.java", "java", nullptr},
    {"a/TestServer.java", "java", "test"},
    {"a/ServerTest.java", "java", "test"},
    {"a/ServerTests.java", "java", "test"},
    {"a/ServerTestCase.java", "java", "test"},
    {"a/ServerIT.java", "java", "test"},
    {"a/Testament.java", "java", nullptr},
    {"a/Contest.java", "java", nullptr},
    {"a/AUDIT.java", "java", nullptr},
    {"db/cache_test.cc", "cpp", "test"},
    {"db/cache_unittest.cc", "cpp", "test"},
    {"db/CacheTest.cpp", "cpp", "test"},
    {"db/test_cache.c", "c", "test"},
    {"db/fastest.cpp", "cpp", nullptr},
    {"runtime-tests/node/index.ts", "typescript", "test"},
    {"crate/integration_tests/api.rs", "rust", "test"},
    {"ab_tests/button.py", "python", nullptr},
    {"contests/entry.py", "python", nullptr},
    {"types/ref.test-d.ts", "typescript", "test"},
    {"types/test-driver.ts", "typescript", nullptr},
    {"doc/yaml_docs.go", "go", nullptr},
    {"doc/api.c", "c", "document"},
    {"docs/docs.go", "go", "document"},
    {"NEWS", nullptr, "document"},
    {"scripts/install", nullptr, nullptr},
    {"deps/lua/INSTALL", nullptr, "document"},
    {".github/CODEOWNERS", nullptr, nullptr},
    {"VERSION", nullptr, nullptr},
    {"sig/tool.tar.gz.asc", nullptr, "asset"},
    {"certificates/server.key", nullptr, nullptr},
    {"docs/conf.py", "python", "document"},
    {"doc/build/index.rst", nullptr, "document"},
    {"src/doc/parser.py", "python", nullptr},
    {"linux/Documentation/a.c", "c", "document"},
    {"README", nullptr, "document"},
    {"Readme.md", nullptr, "document"},
    {"README.zh-CN", nullptr, "document"},
    {"CHANGES.rst", nullptr, "document"},
    {"LICENSE-APACHE", nullptr, "document"},
    {"COPYING.LESSER", nullptr, "document"},
    {"src/changes.py", "python", nullptr},
    {"src/license.rb", nullptr, nullptr},
    {"readmeter.go", "go", nullptr},
    {"changeset.ts", "typescript", nullptr},
    {"notes.txt", nullptr, "document"},
    {"CMakeLists.txt", nullptr, nullptr},
    {"requirements.txt", nullptr, nullptr},
    {"dev-requirements.txt", nullptr, nullptr},
    {"requirements/lint.txt", nullptr, nullptr},
    {"public/robots.txt", nullptr, nullptr},
    {"package-lock.json", nullptr, "generated"},
    {"a/go.sum", nullptr, "generated"},
    {"a/Cargo.lock", nullptr, "generated"},
    {"a/api.pb.go", "go", "generated"},
    {"a/api_pb2_grpc.py", "python", "generated"},
    {"a/ApiGrpc.java", "java", "generated"},
    {"a/zz_generated.deepcopy.go", "go", "generated"},
    {"a/api.generated.ts", "typescript", "generated"},
    {"a/Form.Designer.cs", nullptr, "generated"},
    {"a/app.min.js", "javascript", "generated"},
    {"a/app.js.map", nullptr, "generated"},
    {"a/handgenerated.go", "go", nullptr},
    {"a/admin.js", "javascript", nullptr},
    {"node_modules/x/index.js", "javascript", "generated"},
    {"vendor/x/x.go", "go", "generated"},
    {"third_party/zlib/inflate.c", "c", nullptr},
    {"deps/lua/lua.c", "c", nullptr},
    {"build/release.py", "python", nullptr},
    {"dist/index.js", "javascript", "generated"},
    {"packages/one/dist/bundle.js", "javascript", "generated"},
    {"dist/esm/axios.mjs", "javascript", "generated"},
    {"dist/build.py", "python", nullptr},
    {"src/dist.js", "javascript", nullptr},
    {"app/tests.py", "python", "test"},
    {"src/jinja/tests.py", "python", nullptr},
    {"src/tests.rs", "rust", "test"},
    {"src/commands/test.rs", "rust", nullptr},
    {"crate/src/parser_tests.rs", "rust", "test"},
    {"spec/foo_spec.rb", nullptr, "test"},
    {"spec/spec_helper.rb", nullptr, "test"},
    {"lib/openapi_spec.py", "python", nullptr},
    {"src/FooTest.php", nullptr, "test"},
    {"src/FooTestCase.php", nullptr, "test"},
    {"src/Latest.php", nullptr, nullptr},
    {"lib/foo_test.dart", nullptr, "test"},
    {"src/foo_test.ts", "typescript", "test"},
    {"src/contest.ts", "typescript", nullptr},
    {"src/x.cy.ts", "typescript", "test"},
    {"core/FooSpec.groovy", nullptr, "test"},
    {"src/kafka_SUITE.erl", nullptr, "test"},
    {"man/m.go", "go", nullptr},
    {"man/git.1", nullptr, "document"},
    {".github/dependabot.yml", nullptr, nullptr},
    {"logo.PNG", nullptr, "asset"},
    {"fonts/a.woff2", nullptr, "asset"},
    {"a/release.tar.gz", nullptr, "asset"},
    {".github/workflows/ci.yml", nullptr, nullptr},
    {"debian/rules", nullptr, nullptr},
    {"types/index.d.ts", "typescript", nullptr},
    {"schema.sql", nullptr, nullptr},
    {"Makefile", nullptr, nullptr},
    {"", nullptr, nullptr},
};

TEST(SourceExclusion, ByClass) {
  for (const auto& [path, language, file_class] : CASES) {
    const auto known =
        language == nullptr ? std::nullopt : std::optional<std::string_view>(language);
    const auto exclusion = source_exclusion(path, known);
    EXPECT_EQ(exclusion ? exclusion->file_class : "source",
              file_class != nullptr ? file_class : "source")
        << path << " by " << (exclusion ? exclusion->rule : "no rule");
    EXPECT_EQ(is_source_path(path, known), file_class == nullptr) << path;
  }
}

TEST(SourceExclusion, NamesTheRule) {
  const auto exclusion = source_exclusion("a/TestServer.java", "java");
  ASSERT_TRUE(exclusion);
  EXPECT_EQ(exclusion->rule, "Java test");
  EXPECT_EQ(exclusion->pattern, "Test[!a-z]*.java");
}

}  // namespace
}  // namespace context_delta::git_history
