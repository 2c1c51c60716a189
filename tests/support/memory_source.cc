#include "support/memory_source.h"

#include <stdexcept>

namespace context_delta::tests {

using indexer::Candidate;
using indexer::Definition;
using indexer::DefinitionIndex;
using indexer::Facts;
using indexer::File;
using indexer::Language;

Facts facts_of(const Language& language, std::string_view text) {
  const auto complete = [](Facts facts) {
    put_interface_first(facts);
    return facts;
  };
  if (language.grammar == nullptr) return complete(language.extract({}, text));
  const std::unique_ptr<TSParser, decltype(&ts_parser_delete)> parser(ts_parser_new(),
                                                                      &ts_parser_delete);
  if (!ts_parser_set_language(parser.get(), language.grammar())) {
    throw std::runtime_error("the grammar does not fit the runtime");
  }
  const std::string prepared = language.prepare == nullptr ? std::string() : language.prepare(text);
  const std::string_view read = prepared.empty() ? text : std::string_view(prepared);
  const std::unique_ptr<TSTree, decltype(&ts_tree_delete)> tree(
      ts_parser_parse_string(parser.get(), nullptr, read.data(),
                             static_cast<std::uint32_t>(read.size())),
      &ts_tree_delete);
  return complete(language.extract(ts_tree_root_node(tree.get()), text));
}

void MemorySource::add(const std::string& path, std::string_view text) {
  const Language* language = indexer::language_of(path, text);
  if (language == nullptr) return;
  add(path, *language, facts_of(*language, text));
}

void MemorySource::add(const std::string& path, const Language& language, Facts facts) {
  Entry& entry = files_[path];
  entry.file = {.id = static_cast<std::int64_t>(files_.size()),
                .path = path,
                .language = std::string(language.name),
                .family = std::string(language.family)};
  entry.language = &language;
  entry.interface = std::make_shared<const indexer::Interface>(
      indexer::decode_shared_facts(indexer::encode_facts(facts).shared));
  entry.facts = std::make_shared<const Facts>(std::move(facts));
  indexed_ = false;
}

void MemorySource::index_names() {
  names_.clear();
  for (const auto& [path, entry] : files_) {
    for (std::size_t i = 0; i < entry.facts->definitions.size(); ++i) {
      const Definition& definition = entry.facts->definitions[i];
      Candidate made{
          .file = &entry.file,
          .definition = static_cast<DefinitionIndex>(i),
          .kind = definition.kind,
          .traits = definition.traits,
          .least_arguments = definition.least_arguments,
          .most_arguments = definition.most_arguments,
          .first_line = definition.first_line,
          .container = indexer::container_name(*entry.facts, static_cast<DefinitionIndex>(i))};
      names_[definition.name].push_back(std::move(made));
    }
  }
  indexed_ = true;
}

std::vector<Candidate> MemorySource::definitions(std::string_view family, std::string_view name) {
  if (!indexed_) index_names();
  const auto found = names_.find(name);
  std::vector<Candidate> all = found == names_.end() ? std::vector<Candidate>() : found->second;
  std::erase_if(all, [&](const Candidate& each) { return each.file->family != family; });
  return all;
}

const File* MemorySource::file(std::string_view path) {
  const auto found = files_.find(path);
  return found == files_.end() ? nullptr : &found->second.file;
}

std::vector<const File*> MemorySource::folder(std::string_view folder) {
  std::vector<const File*> found;
  for (const auto& [path, entry] : files_) {
    const std::size_t slash = path.rfind('/');
    const std::string_view own =
        slash == std::string::npos ? std::string_view() : std::string_view(path).substr(0, slash);
    if (own == folder) found.push_back(&entry.file);
  }
  return found;
}

std::vector<const File*> MemorySource::files_named(std::string_view name) {
  std::vector<const File*> found;
  for (const auto& [path, entry] : files_) {
    const std::size_t slash = path.rfind('/');
    if (std::string_view(path).substr(slash == std::string::npos ? 0 : slash + 1) == name) {
      found.push_back(&entry.file);
    }
  }
  return found;
}

std::shared_ptr<const indexer::Interface> MemorySource::facts(const File& file) {
  return files_.find(file.path)->second.interface;
}

indexer::Resolution MemorySource::resolve(std::string_view path) {
  const Entry& entry = files_.find(path)->second;
  indexer::World world(*this);
  world.start_record(entry.file.family);
  return entry.language->resolve(entry.file, *entry.facts, world);
}

}  // namespace context_delta::tests
