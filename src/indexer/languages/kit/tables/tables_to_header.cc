/// Makes a C++ header of a language's tables, at build time:
///
///     tables_to_header TABLES.txt HEADER.h NAMESPACE
///
/// TABLES.txt is plain text. `#` begins a comment at the start of a line; sections begin with a
/// line in brackets:
///
///     [nodes]          lines `KIND name ...`: what the grammar calls its nodes. Makes `enum class
///                      Node`, which starts with OTHER and ERROR, and NODE_NAMES.
///     [fields]         names of the grammar's fields, or `ours=theirs`. Makes `struct Fields`, and
///                      fields_of().
///     [words NAME]     words in the order of their bytes, any number a line. Makes an array NAME.
///     [records NAME]   lines `key | field | ...` in the order of their keys, equally many fields
///                      each. Makes an array NAME of arrays.
///
/// What is out of order, repeated or misplaced fails with the line.
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

class Tables {
 public:
  explicit Tables(const std::string& name_space) {
    out_ << "#pragma once\n\n#include <array>\n#include <cstdint>\n#include <string_view>\n"
            "#include <utility>\n\n#include \"indexer/languages/kit/nodes.h\"\n\n"
            "namespace "
         << name_space << " {\n";
    end_ = "\n}  // namespace " + name_space + "\n";
  }

  void add(const std::string& line) {
    if (line.empty() || line[0] == '#') return;
    if (line[0] == '[') return open(line);
    std::istringstream words(line);
    if (section_ == "nodes") return add_node(words);
    if (section_ == "records") return add_record(line);
    for (std::string word; words >> word;) section_ == "fields" ? add_field(word) : add_word(word);
  }

  std::string finish() {
    close();
    return out_.str() + end_;
  }

 private:
  void open(const std::string& line) {
    close();
    std::istringstream words(line.substr(1, line.find(']') - 1));
    section_ = name_ = last_ = items_ = names_ = {};
    words >> section_ >> name_;
    const bool named = section_ == "words" || section_ == "records";
    if (!named && section_ != "nodes" && section_ != "fields") fail("unknown section");
    if (named == name_.empty()) fail(named ? "the table needs a name" : "the section has no name");
    fields_ = 0;
    count_ = 0;
  }

  void add_node(std::istringstream& words) {
    std::string kind;
    words >> kind;
    once(kind);
    items_ += "  " + kind + ",\n";
    for (std::string word; words >> word;) {
      if (!node_names_.insert(word).second) fail("two kinds have the node '" + word + "'");
      names_ += "    {\"" + word + "\", Node::" + kind + "},\n";
    }
  }

  void add_field(const std::string& word) {
    const std::size_t equals = word.find('=');
    const std::string ours = word.substr(0, equals);
    once(ours);
    const std::string theirs = equals == std::string::npos ? ours : word.substr(equals + 1);
    items_ += "  TSFieldId " + ours + " = 0;\n";
    names_ += "          ." + ours + " = kit::field_id(language, \"" + theirs + "\"),\n";
  }

  void add_word(const std::string& word) {
    if (section_.empty()) fail("a word before the first section");
    in_order(word);
    items_ += "    " + quoted(word) + ",\n";
  }

  void add_record(const std::string& line) {
    std::vector<std::string> fields(1);
    for (const char byte : line)
      byte == '|' ? fields.emplace_back() : fields.back() += byte, void();
    std::string made;
    for (std::string& field : fields) {
      const std::size_t first = field.find_first_not_of(' ');
      const std::size_t last = field.find_last_not_of(' ');
      field = first == std::string::npos ? "" : field.substr(first, last - first + 1);
      made += (made.empty() ? "" : ", ") + quoted(field);
    }
    in_order(fields.front());
    if (fields_ != 0 && fields_ != fields.size()) fail("the record has another number of fields");
    fields_ = fields.size();
    items_ += "    {{" + made + "}},\n";
  }

  void close() {
    if (section_ == "nodes") {
      out_ << "\nenum class Node : std::uint8_t {\n  OTHER,\n  ERROR,\n"
           << items_ << "};\n"
           << "\ninline constexpr auto NODE_NAMES = std::to_array<std::pair<std::string_view, "
              "Node>>({\n    {\"ERROR\", Node::ERROR},\n"
           << names_ << "});\n";
    } else if (section_ == "fields") {
      out_ << "\nstruct Fields {\n"
           << items_ << "};\n\ninline Fields fields_of(const TSLanguage* language) {\n  return {\n"
           << names_ << "  };\n}\n";
    } else if (!section_.empty() && count_ == 0) {
      fail("the table '" + name_ + "' is empty");
    } else if (section_ == "words") {
      out_ << "\ninline constexpr auto " << name_ << " = std::to_array<std::string_view>({\n"
           << items_ << "});\n";
    } else if (section_ == "records") {
      out_ << "\ninline constexpr auto " << name_
           << " = std::to_array<std::array<std::string_view, " << fields_ << ">>({\n"
           << items_ << "});\n";
    }
    seen_.clear();
  }

  void once(const std::string& name) {
    if (!seen_.insert(name).second) fail("'" + name + "' is repeated");
  }
  void in_order(const std::string& key) {
    if (count_++ > 0 && key == last_) fail("'" + key + "' is repeated");
    if (count_ > 1 && key < last_)
      fail("'" + key + "' is out of order: it comes before '" + last_ + "'");
    last_ = key;
  }
  static std::string quoted(const std::string& text) {
    std::string made = "\"";
    for (const char byte : text)
      made += (byte == '"' || byte == '\\' ? "\\" : "") + std::string(1, byte);
    return made + "\"";
  }
  [[noreturn]] static void fail(const std::string& what) { throw std::runtime_error(what); }

  std::ostringstream out_;
  std::string end_, section_, name_, last_;
  std::string items_, names_;  // of the section, as code
  std::set<std::string> seen_, node_names_;
  std::size_t fields_ = 0, count_ = 0;
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) {
    std::cerr << "usage: tables_to_header TABLES.txt HEADER.h NAMESPACE\n";
    return EXIT_FAILURE;
  }
  std::ifstream in(arguments[1]);
  std::size_t number = 0;
  try {
    Tables tables(arguments[3]);
    std::string line;
    while (std::getline(in, line)) {
      ++number;
      tables.add(line);
    }
    if (number == 0) throw std::runtime_error("cannot be read");
    const std::string header = tables.finish();
    std::ofstream(arguments[2], std::ios::binary) << header;
  } catch (const std::exception& error) {
    std::cerr << arguments[1] << ":" << number << ": " << error.what() << "\n";
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
