#include "wiki/source_history.h"

#include <algorithm>
#include <map>
#include <span>
#include <utility>

#include "utils/cancellation.h"
#include "utils/utf8.h"
#include "wiki/history_graph.h"

namespace context_delta::wiki {
namespace {

using Known = PageAnswer::Known;

constexpr std::size_t FIRST_CHECK = 64;  // commits read; later ones after twice as many
constexpr std::size_t SLACK = 256;       // commits read on after all is known

/// All is known, or as much as may be read was.
struct Enough {};

/// A question in numbers.
struct Asked {
  std::vector<std::optional<Topic>> sources;
  std::string commit;
  std::optional<Topic> own;
};

class History final : public LogReader {
 public:
  History(const std::vector<PageQuestion>& questions, const std::string& head,
          const HistoryLimits& limits, CancelFlag cancelled)
      : LogReader(head), limits_(limits), cancelled_(cancelled), glob_steps_(limits.glob_steps) {
    for (const PageQuestion& question : questions) {
      Asked asked{.sources = {}, .commit = lower(question.commit), .own = {}};
      for (const std::string& source : question.sources) {
        asked.sources.push_back(topics_.number(source, limits.sources));
      }
      if (question.commit.empty() && !question.path.empty()) {
        asked.own = topics_.number(question.path, limits.sources);
        if (!asked.own) asked.commit = UNREACHABLE;
      }
      asked_.push_back(std::move(asked));
    }
    graph_.emplace(topics_.size());
  }

  void commit(const LoggedCommit& logged) override {
    if (logged.id != current_.id) {
      finish_commit();
      current_ = logged;
      if (logged.by_head && !std::exchange(started_, true)) graph_->start_at(logged.id);
      differs_.assign(std::max<std::size_t>(logged.parents.size(), 1), {});
      if (bytes_read() > limits_.bytes || glob_steps_ == 0) throw Enough();
    }
    const auto& parents = logged.parents;
    const auto found = std::find(parents.begin(), parents.end(), logged.compared);
    compared_ = found == parents.end() ? 0 : static_cast<std::size_t>(found - parents.begin());
  }

  void change(std::string_view path, bool deleted) override {
    if (differs_.empty()) return;
    const std::string text = utf8::path_text(path);
    for (const Topic topic : topics_.of(text, glob_steps_)) {
      differs_[compared_].push_back(topic);
      if (deleted && topics_.is_exactly(topic, text)) deleted_.push_back(topic);
    }
    if (bytes_read() > limits_.bytes || glob_steps_ == 0) throw Enough();
  }

  /// The log ended by itself.
  void finish() {
    finish_log();
    finish_commit();
    whole_ = true;
  }

  std::vector<PageAnswer> answers() const {
    std::vector<PageAnswer> answers(asked_.size());
    for (const auto& [node, pages] : pages_by_commit(answers)) {
      check_cancelled(cancelled_);
      const std::vector<bool> before = graph_->ancestors(node);
      for (const std::size_t page : pages) judge(asked_[page], before, answers[page]);
    }
    return answers;
  }

 private:
  static constexpr std::string_view UNREACHABLE = "-";

  static std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
      return letter >= 'A' && letter <= 'F' ? static_cast<char>(letter + 32) : letter;
    });
    return text;
  }

  void finish_commit() {
    if (current_.id.empty()) return;
    for (std::vector<Topic>& topics : differs_) {
      std::sort(topics.begin(), topics.end());
      topics.erase(std::unique(topics.begin(), topics.end()), topics.end());
    }
    graph_->add(current_, std::exchange(differs_, {}), std::exchange(deleted_, {}));
    current_.id.clear();
    const std::size_t read = graph_->commits_read();
    if (read >= limits_.commits || read == stop_at_) throw Enough();
    if (stop_at_ != 0 || read != next_check_) return;
    next_check_ *= 2;
    if (all_known()) stop_at_ = read + SLACK;
  }

  bool all_known() const {
    const auto known = [](const PageAnswer& answer) {
      return answer.known != Known::NO_SUCH_COMMIT && answer.known != Known::NOT_REACHED;
    };
    if (!started_) return false;
    std::vector<PageAnswer> now(asked_.size());
    pages_by_commit(now);  // the cheaper part comes first
    if (!std::all_of(now.begin(), now.end(), known)) return false;
    now = answers();
    return std::all_of(now.begin(), now.end(), known);
  }

  /// The pages that were written at the same commit, and why those of none are not known.
  std::map<Node, std::vector<std::size_t>> pages_by_commit(std::vector<PageAnswer>& answers) const {
    std::map<std::string_view, std::optional<Node>> found;
    std::map<Node, std::vector<std::size_t>> pages;
    for (std::size_t i = 0; i < asked_.size(); ++i) {
      const std::string& commit = asked_[i].commit;
      const auto [known, is_new] = found.try_emplace(commit);
      if (is_new && !commit.empty()) known->second = graph_->find(commit);
      if (const auto node = written_at(asked_[i], known->second, answers[i])) {
        pages[*node].push_back(i);
      }
    }
    return pages;
  }

  /// The commit of a page; null, and why, when it is not known.
  std::optional<Node> written_at(const Asked& asked, std::optional<Node> node,
                                 PageAnswer& answer) const {
    if (asked.own) {
      const auto& place = graph_->place(*asked.own);
      if (place && place->changed) node = place->node;
      answer.known = place ? Known::NOT_REACHED : Known::NOT_COMMITTED;
    } else if (asked.commit.empty()) {
      answer.known = Known::NO_COMMIT;
    } else {
      answer.known =
          whole_ && asked.commit != UNREACHABLE ? Known::NO_SUCH_COMMIT : Known::NOT_REACHED;
    }
    if (!node) return std::nullopt;
    answer.known = Known::YES;
    answer.commit = graph_->id(*node);
    return node;
  }

  /// `before`: the page's commit and its ancestors.
  void judge(const Asked& asked, const std::vector<bool>& before, PageAnswer& answer) const {
    std::vector<std::pair<std::size_t, std::size_t>> changed;  // place in the log, source
    for (std::size_t i = 0; i < asked.sources.size(); ++i) {
      if (!asked.sources[i]) {
        answer.known = Known::NOT_REACHED;
        continue;
      }
      const auto& place = graph_->place(*asked.sources[i]);
      if (!place || before[place->node]) continue;
      if (place->changed) {
        changed.emplace_back(graph_->order(place->node), i);
      } else {
        answer.known = Known::NOT_REACHED;
      }
    }
    if (changed.empty()) return;
    std::sort(changed.begin(), changed.end());
    for (const auto& [order, source] : changed) answer.changed.push_back(source);
    const auto& newest = graph_->place(*asked.sources[answer.changed.front()]);
    answer.changed_in = graph_->id(newest->node);
    answer.deleted = newest->deleted;
  }

  HistoryLimits limits_;
  CancelFlag cancelled_;
  std::size_t glob_steps_;
  Topics topics_;
  std::vector<Asked> asked_;
  std::optional<HistoryGraph> graph_;
  LoggedCommit current_;
  std::vector<std::vector<Topic>> differs_;
  std::vector<Topic> deleted_;
  std::size_t compared_ = 0;
  std::size_t next_check_ = FIRST_CHECK;
  std::size_t stop_at_ = 0;
  bool started_ = false;
  bool whole_ = false;
};

}  // namespace

std::vector<PageAnswer> ask_history(const git_utils::Git& git,
                                    const std::vector<PageQuestion>& questions,
                                    const std::string& head, const HistoryLimits& limits) {
  std::vector<std::string> commits;
  for (const PageQuestion& question : questions) {
    if (!question.commit.empty()) commits.push_back(question.commit);
  }
  History history(questions, head, limits, git.limits().cancelled);
  const bool nothing_to_find =
      std::all_of(questions.begin(), questions.end(), [](const PageQuestion& question) {
        return question.commit.empty() && question.path.empty();
      });
  if (nothing_to_find) return history.answers();
  const git_utils::Git::Streamed log{log_command(head, commits),
                                     [&](std::string_view bytes) { history.feed(bytes); }};
  try {
    const git_utils::Git::Output output = git.stream(std::span(&log, 1)).front();
    if (output.status != 0) {
      throw git_utils::GitHistoryError("git cannot tell when the wiki's sources changed in " +
                                       git.root().string() + ": " + output.errors);
    }
    history.finish();
  } catch (const Enough&) {
  }
  return history.answers();
}

}  // namespace context_delta::wiki
