#include "support/toy_language.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <optional>
#include <set>
#include <sstream>

extern "C" const TSLanguage* tree_sitter_python();

namespace context_delta::test {
namespace {

using namespace indexer;

std::atomic<int> parses = 0;

std::string_view folder_of(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? "" : path.substr(0, slash);
}

class Reader {
 public:
  Facts read(std::string_view text) {
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
      ++line_;
      read_line(line);
    }
    while (!open_.empty()) close();
    return std::move(facts_);
  }

 private:
  struct Open {
    std::size_t indentation;
    DefinitionIndex definition;
  };

  void read_line(const std::string& line) {
    const std::size_t indentation = line.find_first_not_of(' ');
    if (indentation == std::string::npos) return;
    while (!open_.empty() && open_.back().indentation >= indentation) close();
    std::istringstream words(line);
    std::string word, name;
    int count = -1;
    words >> word >> name >> count;
    const auto arguments = static_cast<std::int16_t>(count < 0 ? 0 : count);
    if (word == "class" || word == "def") define(word, name, arguments, indentation, line);
    if (word == "call") refer(name, Role::CALL, "", arguments);
    if (word == "type") refer(name, Role::TYPE, "", ANY_NUMBER);
    if (word == "beside" || word == "anywhere") refer(name, Role::CALL, word, ANY_NUMBER);
    if (word == "include") {
      facts_.imports.push_back({.module = name, .name = "", .alias = "", .line = line_});
    }
    last_ = line_;
  }

  void define(const std::string& word, const std::string& name, std::int16_t arguments,
              std::size_t indentation, const std::string& line) {
    Definition definition;
    definition.name = name;
    definition.parent = enclosing();
    const bool member = definition.parent != NOWHERE;
    definition.kind = word == "class" ? Kind::CLASS : member ? Kind::METHOD : Kind::FUNCTION;
    definition.first_line = definition.name_line = line_;
    definition.signature = line.substr(indentation);
    definition.least_arguments = definition.most_arguments = arguments;
    open_.push_back({indentation, static_cast<DefinitionIndex>(facts_.definitions.size())});
    facts_.definitions.push_back(definition);
  }

  void refer(const std::string& name, Role role, const std::string& receiver,
             std::int16_t arguments) {
    facts_.references.push_back({.name = name,
                                 .receiver = receiver,
                                 .role = role,
                                 .line = line_,
                                 .enclosing = enclosing(),
                                 .arguments = arguments});
  }

  DefinitionIndex enclosing() const { return open_.empty() ? NOWHERE : open_.back().definition; }

  void close() {
    facts_.definitions[static_cast<std::size_t>(open_.back().definition)].last_line = last_;
    open_.pop_back();
  }

  Facts facts_;
  std::vector<Open> open_;
  std::int32_t line_ = 0, last_ = 0;
};

Facts extract(TSNode, std::string_view text) {
  ++parses;
  return Reader().read(text);
}

using Files = std::set<std::string>;  // paths

class Resolver {
 public:
  Resolver(const File& file, const Facts& facts, World& world)
      : file_(file), facts_(facts), world_(world) {}

  Resolution resolve() {
    Resolution resolution;
    resolution.module_name = file_.path.substr(0, file_.path.rfind('.'));
    const auto count = static_cast<DefinitionIndex>(facts_.definitions.size());
    for (DefinitionIndex i = 0; i < count; ++i) {
      resolution.qualified_names.push_back(resolution.module_name + ":" + local_name(facts_, i));
    }
    for (std::size_t i = 0; i < facts_.references.size(); ++i) {
      tie(static_cast<std::int32_t>(i), resolution);
    }
    return resolution;
  }

 private:
  void tie(std::int32_t index, Resolution& resolution) {
    const Reference& reference = facts_.references[static_cast<std::size_t>(index)];
    if (const auto target = proven(reference)) {
      resolution.edges.push_back({index, *target, true, rule_, "", 1, 0});
      return;
    }
    if (!reference.receiver.empty()) return;
    std::vector<Candidate> fitting;
    for (const Candidate& candidate : world_.definitions(reference.name)) {
      if (reference.role == Role::TYPE || candidate.least_arguments == reference.arguments) {
        fitting.push_back(candidate);
      }
    }
    const auto is_member = [](const Candidate& each) { return !each.container.empty(); };
    if (fitting.size() > 1 && std::all_of(fitting.begin(), fitting.end(), is_member)) {
      resolution.edges.push_back({index, fitting.front(), false, "dispatch", "in classes",
                                  static_cast<std::int32_t>(fitting.size()), 0,
                                  static_cast<std::int32_t>(resolution.dispatches.size())});
      resolution.dispatches.emplace_back(fitting.begin(), fitting.end());
      return;
    }
    std::int32_t rank = 0;
    for (const Candidate& candidate : fitting) {
      const std::string_view why = candidate.container.empty() ? "no include" : "in a class";
      resolution.edges.push_back({index, candidate, false, "namesake", why,
                                  static_cast<std::int32_t>(fitting.size()), rank++});
    }
  }

  std::optional<Candidate> proven(const Reference& reference) {
    if (reference.receiver == "beside") {
      rule_ = "folder";
      return only_in(world_.folder(folder_of(file_.path)), reference.name);
    }
    if (reference.receiver == "anywhere") {
      rule_ = "basename";
      return only_in(world_.files_named("common.toy"), reference.name);
    }
    rule_ = "same-file";
    if (auto own = defined_in(file_, facts_, reference.name)) return own;
    rule_ = "include";
    for (const std::string& path : closure(file_, facts_)) {
      const File* included = world_.file(path);
      if (included == nullptr) continue;
      if (auto target = defined_in(*included, world_.facts(*included), reference.name)) {
        return target;
      }
    }
    return std::nullopt;
  }

  std::optional<Candidate> only_in(const std::vector<const File*>& files, const std::string& name) {
    std::optional<Candidate> found;
    for (const File* file : files) {
      auto target = defined_in(*file, world_.facts(*file), name);
      if (target && found) return std::nullopt;
      if (target) found = target;
    }
    return found;
  }

  const Files& closure(const File& file, const Interface& facts) {
    return world_.remember<Files>("includes", file, [&] {
      Files seen;
      add_includes(facts, seen);
      return seen;
    });
  }

  void add_includes(const Interface& facts, Files& seen) {
    for (const Import& import : facts.imports) {
      if (!seen.insert(import.module).second) continue;
      const File* included = world_.file(import.module);
      if (included != nullptr) add_includes(world_.facts(*included), seen);
    }
  }

  static std::optional<Candidate> defined_in(const File& file, const Interface& facts,
                                             const std::string& name) {
    for (std::size_t i = 0; i < facts.definitions.size(); ++i) {
      const Definition& definition = facts.definitions[i];
      if (definition.name != name || definition.parent != NOWHERE) continue;
      return Candidate{.file = &file,
                       .definition = static_cast<DefinitionIndex>(i),
                       .kind = definition.kind,
                       .container = ""};
    }
    return std::nullopt;
  }

  const File& file_;
  const Facts& facts_;
  World& world_;
  std::string_view rule_;
};

Resolution resolve(const File& file, const Facts& facts, World& world) {
  return Resolver(file, facts, world).resolve();
}

bool starts_with_other(std::string_view text) { return text.starts_with("other"); }

constexpr std::array<std::string_view, 1> SUFFIXES = {".toy"};

}  // namespace

const Language& toy_language() {
  static const Language language = {.name = "toy",
                                    .family = "toy",
                                    .version = 1,
                                    .suffixes = SUFFIXES,
                                    .accepts = nullptr,
                                    .grammar = tree_sitter_python,
                                    .prepare = nullptr,
                                    .extract = extract,
                                    .resolve = resolve};
  return language;
}

const Language& newer_toy_language() {
  static const Language language = [] {
    Language newer = toy_language();
    newer.version = 2;
    return newer;
  }();
  return language;
}

const Language& other_toy_language() {
  static const Language language = [] {
    Language other = toy_language();
    other.name = "other";
    other.family = "other";
    other.accepts = starts_with_other;
    return other;
  }();
  return language;
}

int toy_parses() { return parses; }

}  // namespace context_delta::test
