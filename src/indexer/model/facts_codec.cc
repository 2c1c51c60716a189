#include <span>
#include <unordered_map>

#include "indexer/model/facts.h"
#include "indexer/model/varint.h"

// Layout of each part: the strings that no part before it has, each once, in the order of first use
// (count, then length and bytes of each), then its lists (count, then items). All numbers are
// variable-length integers; lines are differences from the line of the item before, strings
// indexes.
namespace context_delta::indexer {
namespace {

class Writer {
 public:
  void unsigned_number(std::uint64_t number) { append_number(body_, number); }
  void number(std::int64_t number) { append_number(body_, folded(number)); }
  void arguments(std::int16_t count) { count == ANY_NUMBER ? number(-1) : number(count); }
  void line(std::int32_t line) {
    number(std::int64_t{line} - last_line_);
    last_line_ = line;
  }
  void string(std::string_view text) {
    const auto [place, added] = indexes_.try_emplace(text, indexes_.size());
    if (added) {
      ++added_;
      append_number(strings_, text.size());
      strings_ += text;
    }
    append_number(body_, place->second);
  }
  template <class Items, class WriteItem>
  void list(const Items& items, WriteItem write_item) {
    unsigned_number(items.size());
    last_line_ = 0;
    for (const auto& item : items) write_item(item);
  }
  /// Ends a part; what is written next belongs to the one after it.
  std::string take_part() {
    std::string part;
    part.reserve(strings_.size() + body_.size() + 10);
    append_number(part, added_);
    part += strings_;
    part += body_;
    strings_.clear();
    body_.clear();
    added_ = 0;
    return part;
  }

 private:
  std::unordered_map<std::string_view, std::size_t> indexes_;
  std::string strings_, body_;  // of the part being written
  std::size_t added_ = 0;       // strings
  std::int64_t last_line_ = 0;
};

class Reader {
 public:
  /// Begins a part. Its bytes must outlive the reader.
  void begin(std::string_view part) {
    bytes_ = part;
    std::size_t left = count();
    strings_.reserve(strings_.size() + left);
    for (; left > 0; --left) {
      const std::uint64_t length = unsigned_number();
      if (length > bytes_.size()) fail();
      strings_.push_back(bytes_.substr(0, length));
      bytes_.remove_prefix(length);
    }
  }

  std::uint64_t unsigned_number() { return take_number(bytes_); }
  /// A number from `least` to `most`.
  template <class Number>
  Number number(std::int64_t least, std::int64_t most) {
    const std::int64_t number = unfolded(unsigned_number());
    if (number < least || number > most) fail();
    return static_cast<Number>(number);
  }
  template <class Enumeration>
  Enumeration choice(Enumeration last) {
    const std::uint64_t number = unsigned_number();
    if (number > static_cast<std::uint64_t>(last)) fail();
    return static_cast<Enumeration>(number);
  }
  std::int16_t arguments() {
    const auto count = number<std::int16_t>(-1, ANY_NUMBER);
    return count == -1 ? ANY_NUMBER : count;
  }
  std::uint16_t traits() {
    const std::uint64_t traits = unsigned_number();
    if (traits > 0xFFFF) fail();
    return static_cast<std::uint16_t>(traits);
  }
  std::int32_t line() {
    last_line_ += number<std::int64_t>(-MOST_LINES, MOST_LINES);
    if (last_line_ < 0 || last_line_ > MOST_LINES) fail();
    return static_cast<std::int32_t>(last_line_);
  }
  std::string string() {
    const std::uint64_t index = unsigned_number();
    if (index >= strings_.size()) fail();
    return std::string(strings_[index]);
  }
  /// A count of items of at least a byte each.
  std::size_t count() {
    const std::uint64_t count = unsigned_number();
    if (count > bytes_.size()) fail();
    return count;
  }
  /// Appends to the items.
  template <class Item, class ReadItem>
  void list(std::vector<Item>& items, ReadItem read_item) {
    const std::size_t before = items.size();
    items.resize(before + count());
    last_line_ = 0;
    for (std::size_t i = before; i < items.size(); ++i) read_item(items[i]);
  }
  /// An index of one of `count` items, or NO_EXPRESSION.
  ExpressionIndex expression(std::size_t count) {
    return number<ExpressionIndex>(NO_EXPRESSION, static_cast<std::int64_t>(count) - 1);
  }
  void expressions(std::vector<ExpressionIndex>& indexes, std::size_t existing) {
    indexes.resize(count());
    for (ExpressionIndex& index : indexes) {
      index = number<ExpressionIndex>(0, static_cast<std::int64_t>(existing) - 1);
    }
  }
  void finish() const {
    if (!bytes_.empty()) fail();
  }

 private:
  static constexpr std::int64_t MOST_LINES = std::numeric_limits<std::int32_t>::max();
  [[noreturn]] static void fail() { throw DamagedData(); }

  std::string_view bytes_;
  std::vector<std::string_view> strings_;
  std::int64_t last_line_ = 0;
};

constexpr std::int64_t MOST = std::numeric_limits<std::int32_t>::max();

void write(Writer& writer, const Definition& definition) {
  writer.string(definition.name);
  writer.unsigned_number(static_cast<std::uint64_t>(definition.kind));
  writer.number(definition.parent);
  writer.line(definition.first_line);
  writer.number(std::int64_t{definition.last_line} - definition.first_line);
  writer.number(std::int64_t{definition.name_line} - definition.first_line);
  writer.string(definition.signature);
  writer.string(definition.scope);
  writer.unsigned_number(definition.bases.size());
  for (const std::string& base : definition.bases) writer.string(base);
  writer.string(definition.type);
  writer.unsigned_number(definition.parameters.size());
  for (const std::string& parameter : definition.parameters) writer.string(parameter);
  writer.arguments(definition.least_arguments);
  writer.arguments(definition.most_arguments);
  writer.unsigned_number(definition.traits);
}

void read(Reader& reader, Definition& definition, DefinitionIndex index) {
  definition.name = reader.string();
  definition.kind = reader.choice(Kind::MACRO);
  definition.parent = reader.number<DefinitionIndex>(NOWHERE, std::int64_t{index} - 1);
  definition.first_line = reader.line();
  const std::int64_t first = definition.first_line;
  definition.last_line =
      static_cast<std::int32_t>(first + reader.number<std::int64_t>(-first, MOST - first));
  definition.name_line =
      static_cast<std::int32_t>(first + reader.number<std::int64_t>(-first, MOST - first));
  definition.signature = reader.string();
  definition.scope = reader.string();
  definition.bases.resize(reader.count());
  for (std::string& base : definition.bases) base = reader.string();
  definition.type = reader.string();
  definition.parameters.resize(reader.count());
  for (std::string& parameter : definition.parameters) parameter = reader.string();
  definition.least_arguments = reader.arguments();
  definition.most_arguments = reader.arguments();
  definition.traits = reader.traits();
}

void write(Writer& writer, const Expression& expression) {
  writer.unsigned_number(static_cast<std::uint64_t>(expression.kind));
  writer.string(expression.name);
  writer.number(expression.number);
  writer.unsigned_number(expression.operands.size());
  for (const ExpressionIndex operand : expression.operands) writer.number(operand);
}

void read(Reader& reader, Expression& expression, std::size_t index) {
  expression.kind = reader.choice(ExpressionKind::NEVER);
  expression.name = reader.string();
  expression.number = reader.number<std::int32_t>(-1, MOST);
  reader.expressions(expression.operands, index);
}

void write(Writer& writer, const Reference& reference) {
  writer.string(reference.name);
  writer.string(reference.receiver);
  writer.unsigned_number(static_cast<std::uint64_t>(reference.role));
  writer.line(reference.line);
  writer.number(reference.enclosing);
  writer.arguments(reference.arguments);
  writer.string(reference.values);
  writer.unsigned_number(reference.traits);
  writer.number(reference.receiver_expression);
  writer.unsigned_number(reference.value_expressions.size());
  for (const ExpressionIndex value : reference.value_expressions) writer.number(value);
}

void read(Reader& reader, Reference& reference, DefinitionIndex last, std::size_t expressions) {
  reference.name = reader.string();
  reference.receiver = reader.string();
  reference.role = reader.choice(Role::OTHER);
  reference.line = reader.line();
  reference.enclosing = reader.number<DefinitionIndex>(NOWHERE, last);
  reference.arguments = reader.arguments();
  reference.values = reader.string();
  reference.traits = reader.traits();
  reference.receiver_expression = reader.expression(expressions);
  reader.expressions(reference.value_expressions, expressions);
}

void write(Writer& writer, const Binding& binding) {
  writer.string(binding.name);
  writer.unsigned_number(static_cast<std::uint64_t>(binding.kind));
  writer.number(binding.scope);
  writer.string(binding.type);
  writer.string(binding.value);
  writer.line(binding.line);
  writer.unsigned_number(binding.traits);
  writer.number(binding.value_expression);
}

void read(Reader& reader, Binding& binding, DefinitionIndex last, std::size_t expressions) {
  binding.name = reader.string();
  binding.kind = reader.choice(Binding::Kind::GLOBAL);
  binding.scope = reader.number<DefinitionIndex>(NOWHERE, last);
  binding.type = reader.string();
  binding.value = reader.string();
  binding.line = reader.line();
  binding.traits = reader.traits();
  binding.value_expression = reader.expression(expressions);
}

void write(Writer& writer, const Import& import) {
  writer.string(import.module);
  writer.string(import.name);
  writer.string(import.alias);
  writer.number(import.scope);
  writer.line(import.line);
  writer.unsigned_number(import.traits);
}

void read(Reader& reader, Import& import, DefinitionIndex last) {
  import.module = reader.string();
  import.name = reader.string();
  import.alias = reader.string();
  import.scope = reader.number<DefinitionIndex>(NOWHERE, last);
  import.line = reader.line();
  import.traits = reader.traits();
}

void read_expressions(Reader& reader, Interface& facts) {
  std::size_t index = facts.expressions.size();
  reader.list(facts.expressions, [&](Expression& item) { read(reader, item, index++); });
}

void read_bindings(Reader& reader, Interface& facts) {
  const DefinitionIndex last = static_cast<DefinitionIndex>(facts.definitions.size()) - 1;
  reader.list(facts.bindings,
              [&](Binding& item) { read(reader, item, last, facts.expressions.size()); });
}

void read_interface(Reader& reader, std::string_view shared, Interface& facts) {
  reader.begin(shared);
  DefinitionIndex index = 0;
  reader.list(facts.definitions, [&](Definition& item) { read(reader, item, index++); });
  read_expressions(reader, facts);
  read_bindings(reader, facts);
  reader.list(facts.imports, [&](Import& item) { read(reader, item, index - 1); });
  reader.list(facts.exports, [&](std::string& name) { name = reader.string(); });
  reader.finish();
}

}  // namespace

EncodedFacts encode_facts(const Facts& facts) {
  Writer writer;
  EncodedFacts encoded;
  const auto write_item = [&](const auto& item) { write(writer, item); };
  const std::span<const Expression> expressions(facts.expressions);
  const std::span<const Binding> bindings(facts.bindings);
  writer.list(facts.definitions, write_item);
  writer.list(expressions.first(facts.interface_expressions), write_item);
  writer.list(bindings.first(facts.interface_bindings), write_item);
  writer.list(facts.imports, write_item);
  writer.list(facts.exports, [&](const std::string& name) { writer.string(name); });
  encoded.shared = writer.take_part();
  writer.list(expressions.subspan(facts.interface_expressions), write_item);
  writer.list(bindings.subspan(facts.interface_bindings), write_item);
  writer.list(facts.references, write_item);
  encoded.references = writer.take_part();
  return encoded;
}

Facts decode_facts(const EncodedFacts& encoded) {
  Reader reader;
  Facts facts;
  read_interface(reader, encoded.shared, facts);
  facts.interface_bindings = facts.bindings.size();
  facts.interface_expressions = facts.expressions.size();
  reader.begin(encoded.references);
  read_expressions(reader, facts);
  read_bindings(reader, facts);
  const DefinitionIndex last = static_cast<DefinitionIndex>(facts.definitions.size()) - 1;
  reader.list(facts.references,
              [&](Reference& item) { read(reader, item, last, facts.expressions.size()); });
  reader.finish();
  return facts;
}

Interface decode_shared_facts(std::string_view shared) {
  Reader reader;
  Interface facts;
  read_interface(reader, shared, facts);
  return facts;
}

}  // namespace context_delta::indexer
