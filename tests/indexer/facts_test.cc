#include "indexer/model/facts.h"

#include <random>
#include <set>
#include <stdexcept>

#include <gtest/gtest.h>

namespace context_delta::indexer {
namespace {

/// Random facts that keep the rules of the structure: parents first, scopes that exist.
class Generator {
 public:
  explicit Generator(std::uint32_t seed) : random_(seed) {}

  Facts facts() {
    Facts facts;
    for (std::uint32_t i = below(6); i > 0; --i) facts.definitions.push_back(definition());
    for (std::uint32_t i = below(9); i > 0; --i) facts.expressions.push_back(expression());
    for (std::uint32_t i = below(9); i > 0; --i) facts.references.push_back(reference());
    for (std::uint32_t i = below(5); i > 0; --i) facts.bindings.push_back(binding());
    for (std::uint32_t i = below(4); i > 0; --i) facts.imports.push_back(import());
    for (std::uint32_t i = below(3); i > 0; --i) facts.exports.push_back(text());
    for (Expression& each : facts.expressions) {
      if (each.kind == ExpressionKind::LOCAL) {
        each.number = static_cast<std::int32_t>(below(facts.bindings.size() + 1)) - 1;
      }
    }
    put_interface_first(facts);
    return facts;
  }

 private:
  std::uint32_t below(std::size_t bound) { return static_cast<std::uint32_t>(random_() % bound); }
  std::string text() {
    static const std::vector<std::string> TEXTS = {
        "", "f", "a.b()", "\xC3\xA9", "x\ny", std::string(300, 'q'), std::string("\0z", 2)};
    return TEXTS[below(static_cast<std::uint32_t>(TEXTS.size()))];
  }
  std::int32_t line() {
    return below(9) == 0 ? std::numeric_limits<std::int32_t>::max()
                         : static_cast<std::int32_t>(below(5000));
  }
  std::int16_t arguments() {
    return below(3) == 0 ? ANY_NUMBER : static_cast<std::int16_t>(below(400));
  }
  std::uint16_t traits() { return static_cast<std::uint16_t>(below(0x10000)); }
  DefinitionIndex scope() { return static_cast<DefinitionIndex>(below(definitions_ + 1)) - 1; }

  Definition definition() {
    Definition made;
    made.name = text();
    made.kind = static_cast<Kind>(below(13));
    made.parent = scope();
    made.first_line = line();
    made.last_line = line();
    made.name_line = line();
    made.signature = text();
    made.scope = text();
    for (std::uint32_t i = below(3); i > 0; --i) made.bases.push_back(text());
    made.type = text();
    for (std::uint32_t i = below(3); i > 0; --i) made.parameters.push_back(text());
    made.least_arguments = arguments();
    made.most_arguments = arguments();
    made.traits = traits();
    ++definitions_;
    return made;
  }
  ExpressionIndex earlier() { return static_cast<ExpressionIndex>(below(expressions_ + 1)) - 1; }
  std::vector<ExpressionIndex> some_earlier() {
    std::vector<ExpressionIndex> indexes;
    for (std::uint32_t i = expressions_ == 0 ? 0 : below(3); i > 0; --i) {
      indexes.push_back(static_cast<ExpressionIndex>(below(expressions_)));
    }
    return indexes;
  }
  Expression expression() {
    Expression made = {
        static_cast<ExpressionKind>(below(static_cast<std::size_t>(ExpressionKind::NEVER) + 1)),
        text(), static_cast<std::int32_t>(below(9)) - 1, some_earlier()};
    ++expressions_;
    return made;
  }
  Reference reference() {
    return {text(),        text(),  static_cast<Role>(below(7)),
            line(),        scope(), arguments(),
            traits(),      text(),  earlier(),
            some_earlier()};
  }
  Binding binding() {
    return {
        text(),   static_cast<Binding::Kind>(below(4)), scope(), text(), text(), line(), traits(),
        earlier()};
  }
  Import import() { return {text(), text(), text(), scope(), line(), traits()}; }

  std::mt19937 random_;
  std::uint32_t definitions_ = 0, expressions_ = 0;
};

TEST(Facts, DecodeGivesBackWhatWasEncoded) {
  for (std::uint32_t seed = 0; seed < 500; ++seed) {
    Facts facts = Generator(seed).facts();
    const EncodedFacts encoded = encode_facts(facts);
    ASSERT_EQ(decode_facts(encoded), facts) << "seed " << seed;
    facts.bindings.resize(facts.interface_bindings);
    facts.expressions.resize(facts.interface_expressions);
    ASSERT_EQ(decode_shared_facts(encoded.shared), Interface(facts)) << "seed " << seed;
  }
}

TEST(Facts, BytesCutShortAreRefused) {
  for (std::uint32_t seed = 0; seed < 50; ++seed) {
    const EncodedFacts whole = encode_facts(Generator(seed).facts());
    for (std::string EncodedFacts::*part : {&EncodedFacts::shared, &EncodedFacts::references}) {
      EncodedFacts other = whole;
      for (std::size_t length = 0; length < (whole.*part).size(); ++length) {
        other.*part = (whole.*part).substr(0, length);
        ASSERT_THROW(decode_facts(other), std::runtime_error) << seed;
      }
      other.*part = whole.*part + '\0';
      ASSERT_THROW(decode_facts(other), std::runtime_error) << seed;
    }
  }
}

TEST(Facts, DamagedBytesAreRefusedOrGiveFactsThatKeepTheRules) {
  for (std::uint32_t seed = 0; seed < 300; ++seed) {
    EncodedFacts encoded = encode_facts(Generator(seed).facts());
    std::mt19937 random(seed);
    std::string& bytes = seed % 2 == 0 ? encoded.shared : encoded.references;
    bytes[random() % bytes.size()] = static_cast<char>(random());
    try {
      const Facts facts = decode_facts(encoded);
      for (std::size_t i = 0; i < facts.definitions.size(); ++i) {
        ASSERT_LT(facts.definitions[i].parent, static_cast<DefinitionIndex>(i));
      }
      for (const Reference& reference : facts.references) {
        ASSERT_LT(reference.enclosing, std::ssize(facts.definitions));
      }
    } catch (const std::runtime_error&) {
    }
  }
}

Interface interface_of(Facts facts) {
  put_interface_first(facts);
  facts.bindings.resize(facts.interface_bindings);
  facts.expressions.resize(facts.interface_expressions);
  return facts;
}

Facts small_facts() {
  Facts facts;
  facts.definitions.resize(3);
  facts.definitions[0].name = "Box";
  facts.definitions[0].kind = Kind::CLASS;
  facts.definitions[0].scope = "outer::inner";
  facts.definitions[1].name = "open";
  facts.definitions[1].kind = Kind::METHOD;
  facts.definitions[1].parent = 0;
  facts.definitions[2].name = "helper";
  facts.expressions = {{.name = "x"}, {.name = "y"}, {.name = "z", .operands = {0}}};
  facts.bindings.push_back({"size", Binding::Kind::MEMBER, 0, "", "", 1, 0, 2});
  facts.bindings.push_back({"i", Binding::Kind::LOCAL, 1, "", "", 1, 0, 1});
  facts.references.push_back({.name = "helper", .receiver = "", .enclosing = 1});
  return facts;
}

TEST(Facts, LocalNameJoinsWrittenScopesAndEnclosingNames) {
  EXPECT_EQ(local_name(small_facts(), 1), "outer.inner.Box.open");
  EXPECT_EQ(local_name(small_facts(), 2), "helper");
  EXPECT_EQ(local_name(small_facts(), NOWHERE), "");
}

TEST(Facts, InterfaceHashCoversWhatOthersMaySeeAndNothingElse) {
  const std::uint64_t hash = interface_hash(interface_of(small_facts()));
  const auto changed = [&](auto change) {
    Facts facts = small_facts();
    change(facts);
    return interface_hash(interface_of(facts)) != hash;
  };
  EXPECT_FALSE(changed([](Facts& f) { f.definitions[1].first_line = 9; }));
  EXPECT_FALSE(changed([](Facts& f) { f.definitions[1].last_line = 9; }));
  EXPECT_FALSE(changed([](Facts& f) { f.references.clear(); }));
  EXPECT_FALSE(changed([](Facts& f) { f.expressions[1].name = "other"; }));
  EXPECT_FALSE(changed([](Facts& f) { f.bindings[1].value_expression = 0; }));
  EXPECT_FALSE(changed([](Facts& f) { f.bindings[0].line = 9; }));
  EXPECT_TRUE(changed([](Facts& f) { f.expressions[0].name = "other"; }));
  EXPECT_TRUE(changed([](Facts& f) { f.bindings[0].value_expression = NO_EXPRESSION; }));
  EXPECT_TRUE(changed([](Facts& f) { f.definitions[1].traits = VIRTUAL; }));
  EXPECT_TRUE(changed([](Facts& f) { f.definitions[1].parent = NOWHERE; }));
  EXPECT_TRUE(changed([](Facts& f) { f.definitions[0].bases = {"Base"}; }));
  EXPECT_TRUE(changed([](Facts& f) { f.definitions[1].parameters = {"int"}; }));
  EXPECT_TRUE(changed([](Facts& f) { std::swap(f.definitions[0], f.definitions[2]); }));
  EXPECT_TRUE(changed([](Facts& f) { f.imports.push_back({"m", "", "", NOWHERE, 1, 0}); }));
  EXPECT_TRUE(changed([](Facts& f) { f.exports = {"Box"}; }));
}

/// The names of which two versions say different things.
std::set<std::string> changed_names(const Facts& before, const Facts& after) {
  const Interface was = interface_of(before);
  const Interface is = interface_of(after);
  const auto old_names = name_hashes(was);
  const auto new_names = name_hashes(is);
  std::set<std::string> changed;
  for (const auto& [name, hash] : old_names) {
    const auto place = new_names.find(name);
    if (place == new_names.end() || place->second != hash) changed.emplace(name);
  }
  for (const auto& [name, hash] : new_names) {
    if (!old_names.contains(name)) changed.emplace(name);
  }
  return changed;
}

TEST(Facts, NameHashesTellWhichNamesChanged) {
  using Names = std::set<std::string>;
  const auto changed = [&](auto change) {
    Facts facts = small_facts();
    change(facts);
    return changed_names(small_facts(), facts);
  };
  EXPECT_EQ(changed([](Facts& f) { f.definitions[1].first_line = 9; }), Names());
  EXPECT_EQ(changed([](Facts& f) { f.references.clear(); }), Names());
  EXPECT_EQ(changed([](Facts& f) { f.expressions[1].name = "other"; }), Names());
  EXPECT_EQ(changed([](Facts& f) { f.expressions[0].name = "other"; }), Names({"size"}));
  EXPECT_EQ(changed([](Facts& f) { f.definitions[1].type = "int"; }), Names({"open"}));
  EXPECT_EQ(changed([](Facts& f) { f.definitions[0].bases = {"Base"}; }), Names({"Box"}));
  Facts interface = small_facts();
  interface.definitions[0].kind = Kind::INTERFACE;
  Facts wider = interface;
  wider.definitions.emplace_back().name = "more";
  wider.definitions.back().parent = 0;
  EXPECT_EQ(changed_names(interface, wider), Names({"Box", "more"})) << "it lists its members";
  EXPECT_EQ(changed([](Facts& f) { f.definitions[0].name = "Case"; }),
            Names({"Box", "Case", "open", "size"}));
  EXPECT_EQ(changed([](Facts& f) {
              f.imports.push_back({"m.n", "", "", NOWHERE, 1, 0});
            }),
            Names({"m"}));
  EXPECT_EQ(changed([](Facts& f) {
              f.imports.push_back({"m", "*", "", NOWHERE, 1, 0});
            }),
            Names({"*"}));
  const auto with_parameters = [](const char* first, const char* second) {
    Facts facts = small_facts();
    facts.bindings.push_back({first, Binding::Kind::MEMBER, 0, "", "", 1, GENERIC});
    facts.bindings.push_back({second, Binding::Kind::MEMBER, 0, "", "", 1, GENERIC});
    return facts;
  };
  EXPECT_EQ(changed_names(with_parameters("A", "B"), with_parameters("B", "A")), Names({"Box"}));
  // A second Box: what is in the first is as before.
  EXPECT_EQ(changed([](Facts& f) { f.definitions.push_back(f.definitions[0]); }), Names({"Box"}));
}

/// Puts a definition of a new name first, so that all others get other numbers.
void put_first(Facts& facts) {
  for (Definition& each : facts.definitions) each.parent += each.parent == NOWHERE ? 0 : 1;
  for (Binding& each : facts.bindings) each.scope += each.scope == NOWHERE ? 0 : 1;
  for (Import& each : facts.imports) each.scope += each.scope == NOWHERE ? 0 : 1;
  for (Expression& each : facts.expressions) {
    each.number += each.kind == ExpressionKind::DEFINITION && each.number >= 0 ? 1 : 0;
  }
  Definition made;
  made.name = "new";
  facts.definitions.insert(facts.definitions.begin(), made);
}

TEST(Facts, OtherNamesKeepTheirHashesWhenDefinitionsAreNumberedAnew) {
  for (std::uint32_t seed = 0; seed < 300; ++seed) {
    const Facts before = Generator(seed).facts();
    Facts after = before;
    put_first(after);
    ASSERT_EQ(changed_names(before, after), std::set<std::string>{"new"}) << "seed " << seed;
  }
}

}  // namespace
}  // namespace context_delta::indexer
