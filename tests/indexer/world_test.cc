#include "indexer/world/world.h"

#include <map>
#include <stdexcept>

#include <gtest/gtest.h>

namespace context_delta::indexer {
namespace {

using Keys = std::vector<std::uint32_t>;

Keys sorted(Keys keys) {
  std::sort(keys.begin(), keys.end());
  return keys;
}

/// A source that counts how often it is asked.
class CountingSource : public WorldSource {
 public:
  std::vector<Candidate> definitions(std::string_view, std::string_view) override {
    ++asked;
    return {{.file = &own, .container = ""}};
  }
  const File* file(std::string_view path) override { return path == own.path ? &own : nullptr; }
  std::vector<const File*> folder(std::string_view) override {
    ++asked;
    return {&own};
  }
  std::vector<const File*> files_named(std::string_view) override {
    ++asked;
    return {};
  }
  std::shared_ptr<const Interface> facts(const File&) override {
    ++asked;
    return std::make_shared<Interface>();
  }

  File own = {1, "a/b.x", "x", "x"};
  int asked = 0;
};

TEST(World, RecordsWhatWasAskedAndAsksTheSourceOnce) {
  CountingSource source;
  World world(source);
  const Keys all =
      sorted({World::name_key("toy", "f"), World::path_key("a/b.x"), World::path_key("none"),
              World::folder_key("a"), World::basename_key("b.x"), World::interface_key("a/b.x")});
  for (int round = 0; round < 2; ++round) {
    world.start_record("toy");
    world.definitions("f");
    world.definitions("f");
    EXPECT_EQ(world.file("none"), nullptr);
    world.folder("a");
    world.files_named("b.x");
    world.facts(*world.file("a/b.x"));
    EXPECT_EQ(world.finish_record(), all);
  }
  EXPECT_EQ(source.asked, 4);
  world.start_record("toy");
  EXPECT_EQ(world.finish_record(), Keys());
}

TEST(World, KeysOfDifferentKindsDiffer) {
  EXPECT_NE(World::name_key("toy", "a"), World::path_key("a"));
  EXPECT_NE(World::path_key("a"), World::interface_key("a"));
  EXPECT_NE(World::folder_key("a"), World::basename_key("a"));
  EXPECT_NE(World::imports_key("a"), World::interface_key("a"));
  EXPECT_NE(World::said_key("a", "bc"), World::said_key("ab", "c"));
  EXPECT_NE(World::said_key("a", "b"), World::said_in_key("a", "b"));
}

TEST(World, RecordsPartsOfAFileByThemselves) {
  CountingSource source;
  World world(source);
  const Keys parts = sorted(
      {World::imports_key("a/b.x"), World::said_key("a/b.x", "f"), World::said_in_key("a", "f")});
  for (int round = 0; round < 2; ++round) {
    world.start_record("toy");
    world.imports(source.own);
    world.facts_by_name(source.own);
    world.rely_on(SaidKeys(source.own.path), "f");
    world.rely_on(SaidKeys(source.own.path), "f");
    world.rely_on_folder("a", "f");
    EXPECT_EQ(world.finish_record(), parts);
  }
}

TEST(World, RemembersAnswersOfEachDefinition) {
  CountingSource source;
  World world(source);
  const auto ask = [&](DefinitionIndex definition, int answer) {
    return world.remember<int>("q", source.own, definition, [&] { return answer; });
  };
  EXPECT_EQ(ask(NOWHERE, 1), 1);
  EXPECT_EQ(ask(0, 2), 2);
  EXPECT_EQ(ask(1, 3), 3);
  EXPECT_EQ(ask(0, 4), 2);
  EXPECT_EQ(ask(NOWHERE, 4), 1);
}

TEST(World, RememberedAnswersBringTheirDependenciesAlong) {
  CountingSource source;
  World world(source);
  int computed = 0;
  const auto inner = [&] {
    return world.remember<int>("inner", source.own, [&] {
      world.definitions("deep");
      return ++computed;
    });
  };
  const auto outer = [&] {
    return world.remember<int>("outer", source.own, [&] {
      world.folder("a");
      return inner() + 10;
    });
  };
  const Keys all = sorted({World::name_key("toy", "deep"), World::folder_key("a")});
  for (int round = 0; round < 2; ++round) {
    world.start_record("toy");
    EXPECT_EQ(outer(), 11);
    EXPECT_EQ(world.finish_record(), all);
  }
  world.start_record("toy");
  EXPECT_EQ(inner(), 1);
  EXPECT_EQ(world.finish_record(), Keys{World::name_key("toy", "deep")});
}

TEST(World, AQuestionAskedWhileItIsAnsweredIsRefused) {
  CountingSource source;
  World world(source);
  std::function<int()> ask = [&] { return world.remember<int>("q", source.own, ask); };
  world.start_record("toy");
  EXPECT_THROW(ask(), std::logic_error);
}

}  // namespace
}  // namespace context_delta::indexer
