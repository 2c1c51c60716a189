#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "wiki/change_log.h"
#include "wiki/source_history.h"

namespace context_delta::wiki {

/// A path, folder or glob that is looked for in history, by number.
using Topic = std::uint32_t;
/// A commit, by number.
using Node = std::uint32_t;

/// Which topics a path belongs to.
class Topics {
 public:
  /// The number of a topic, a new one when it was not asked for before; null when there are `most`.
  std::optional<Topic> number(const std::string& text, std::size_t most);

  std::size_t size() const { return texts_.size(); }
  bool is_exactly(Topic topic, std::string_view path) const { return texts_[topic] == path; }

  /// The topics of a path, in ascending order; `steps` counts down what globs cost.
  const std::vector<Topic>& of(const std::string& path, std::size_t& steps);

 private:
  std::vector<std::string> texts_;
  std::unordered_map<std::string, Topic> numbers_;
  std::vector<Topic> globs_;
  std::unordered_map<std::string, std::vector<Topic>> known_;
};

/// Commits as far as the log was read, and where each topic last changed.
class HistoryGraph {
 public:
  explicit HistoryGraph(std::size_t topics);

  /// Begins with all topics at this commit.
  void start_at(const std::string& head);
  /// A commit that is read completely. `differs` has, for each parent (of a root: for none), the
  /// topics in which they differ, in ascending order.
  void add(const LoggedCommit& commit, std::vector<std::vector<Topic>> differs,
           const std::vector<Topic>& deleted);

  struct Place {
    Node node;
    bool changed;  ///< the topic's newest change; else how far back it was followed
    bool deleted;
  };
  /// Null when the topic is in no commit down to the roots.
  const std::optional<Place>& place(Topic topic) const { return places_[topic]; }

  /// The commit of an id or of its beginning, among those read; null when it is none or ambiguous.
  std::optional<Node> find(std::string_view id) const;
  const std::string& id(Node node) const { return *commits_[node].id; }
  std::size_t commits_read() const { return read_; }
  /// Place in the log, the newest first.
  std::size_t order(Node node) const { return commits_[node].order; }

  /// The commit and its ancestors, as far as they are known: by node.
  std::vector<bool> ancestors(Node node) const;

 private:
  struct Commit {
    const std::string* id;
    bool read = false;
    std::size_t order = 0;
    std::vector<Node> parents;
    std::vector<std::vector<Topic>> differs;
    std::vector<Topic> deleted;
    std::vector<Topic> visitors;  // topics that were followed to here
  };

  Node node(const std::string& id);
  void follow(Node from);

  std::unordered_map<std::string, Node> nodes_;
  std::vector<Commit> commits_;
  std::vector<std::optional<Place>> places_;
  std::size_t read_ = 0;
};

}  // namespace context_delta::wiki
