#include "wiki/history_graph.h"

#include <algorithm>
#include <numeric>

#include "wiki/source_pattern.h"

namespace context_delta::wiki {

std::optional<Topic> Topics::number(const std::string& text, std::size_t most) {
  const auto found = numbers_.find(text);
  if (found != numbers_.end()) return found->second;
  if (texts_.size() >= most) return std::nullopt;
  const auto topic = static_cast<Topic>(texts_.size());
  texts_.push_back(text);
  numbers_.emplace(text, topic);
  if (is_glob(text)) globs_.push_back(topic);
  return topic;
}

const std::vector<Topic>& Topics::of(const std::string& path, std::size_t& steps) {
  const auto [known, is_new] = known_.try_emplace(path);
  if (!is_new) return known->second;
  std::vector<Topic>& topics = known->second;
  for (std::size_t end = path.size(); end != path.npos && end > 0; end = path.rfind('/', end - 1)) {
    const auto found = numbers_.find(path.substr(0, end));
    if (found != numbers_.end()) topics.push_back(found->second);
  }
  for (const Topic glob : globs_) {
    const std::string& text = texts_[glob];
    const std::size_t literal = text.find_first_of("*?");
    if (path.compare(0, literal, text, 0, literal) != 0) continue;
    const std::size_t cost = (text.size() + 1) * (path.size() + 1);
    steps -= std::min(steps, cost);
    if (steps > 0 && glob_matches(text, path)) topics.push_back(glob);
  }
  std::sort(topics.begin(), topics.end());
  topics.erase(std::unique(topics.begin(), topics.end()), topics.end());
  return topics;
}

HistoryGraph::HistoryGraph(std::size_t topics) : places_(topics) {}

Node HistoryGraph::node(const std::string& id) {
  const auto [found, is_new] = nodes_.try_emplace(id, static_cast<Node>(commits_.size()));
  if (is_new) {
    commits_.emplace_back();
    commits_.back().id = &found->first;
  }
  return found->second;
}

void HistoryGraph::start_at(const std::string& head) {
  const Node start = node(head);
  std::vector<Topic>& visitors = commits_[start].visitors;
  visitors.resize(places_.size());
  std::iota(visitors.begin(), visitors.end(), 0);
  for (std::optional<Place>& place : places_) place = Place{start, false, false};
}

void HistoryGraph::add(const LoggedCommit& logged, std::vector<std::vector<Topic>> differs,
                       const std::vector<Topic>& deleted) {
  const Node added = node(logged.id);
  if (commits_[added].read) return;
  std::vector<Node> parents;
  for (const std::string& parent : logged.parents) parents.push_back(node(parent));
  Commit& commit = commits_[added];
  commit.read = true;
  commit.order = read_++;
  commit.parents = std::move(parents);
  commit.differs = std::move(differs);
  commit.deleted = deleted;
  follow(added);
}

void HistoryGraph::follow(Node from) {
  std::vector<Node> left = {from};
  while (!left.empty()) {
    const Node at = left.back();
    left.pop_back();
    Commit& commit = commits_[at];
    if (!commit.read) continue;
    const auto differs = [&](std::size_t parent, Topic topic) {
      const std::vector<Topic>& topics = commit.differs[parent];
      return std::binary_search(topics.begin(), topics.end(), topic);
    };
    for (const Topic topic : std::exchange(commit.visitors, {})) {
      std::size_t parent = 0;
      while (parent < commit.differs.size() && differs(parent, topic)) ++parent;
      if (parent == commit.differs.size()) {
        const bool gone =
            std::find(commit.deleted.begin(), commit.deleted.end(), topic) != commit.deleted.end();
        places_[topic] = Place{at, true, gone};
      } else if (commit.parents.empty()) {
        places_[topic] = std::nullopt;
      } else {
        const Node next = commit.parents[parent];
        places_[topic] = Place{next, false, false};
        commits_[next].visitors.push_back(topic);
        if (left.empty() || left.back() != next) left.push_back(next);
      }
    }
  }
}

std::optional<Node> HistoryGraph::find(std::string_view id) const {
  std::optional<Node> found;
  const auto exact = nodes_.find(std::string(id));
  if (exact != nodes_.end()) {
    return commits_[exact->second].read ? std::optional(exact->second) : std::nullopt;
  }
  for (Node node = 0; node < commits_.size(); ++node) {
    if (!commits_[node].read || !commits_[node].id->starts_with(id)) continue;
    if (found) return std::nullopt;
    found = node;
  }
  return found;
}

std::vector<bool> HistoryGraph::ancestors(Node node) const {
  std::vector<bool> result(commits_.size(), false);
  std::vector<Node> left = {node};
  result[node] = true;
  while (!left.empty()) {
    const Node at = left.back();
    left.pop_back();
    for (const Node parent : commits_[at].parents) {
      if (!result[parent]) left.push_back(parent);
      result[parent] = true;
    }
  }
  return result;
}

}  // namespace context_delta::wiki
