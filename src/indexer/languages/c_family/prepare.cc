#include "indexer/languages/c_family/prepare.h"

namespace context_delta::indexer::c_family {

std::string prepare(std::string_view, bool) { return {}; }

PreparedTree::PreparedTree(const TSLanguage* language, std::string_view text)
    : tree_(nullptr, &ts_tree_delete) {
  const std::unique_ptr<TSParser, decltype(&ts_parser_delete)> parser(ts_parser_new(),
                                                                      &ts_parser_delete);
  if (!ts_parser_set_language(parser.get(), language)) return;
  tree_.reset(ts_parser_parse_string(parser.get(), nullptr, text.data(),
                                     static_cast<std::uint32_t>(text.size())));
}

}  // namespace context_delta::indexer::c_family
