#include "workers/branch_names.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "utils/utf8.h"

namespace context_delta::git_history {
namespace {

using git_utils::Git;
using git_utils::GitHistoryError;
using git_utils::in_quotes;
using git_utils::shown;
using git_utils::View;

constexpr std::string_view HEADS = "refs/heads/";
constexpr std::string_view REMOTES = "refs/remotes/";
constexpr std::string_view ORIGIN = "refs/remotes/origin/";
constexpr std::string_view ORIGIN_HEAD = "refs/remotes/origin/HEAD";
constexpr std::array<std::string_view, 4> USUAL_BASES = {"refs/heads/main", "refs/heads/master",
                                                         "refs/remotes/origin/main",
                                                         "refs/remotes/origin/master"};
constexpr std::size_t SHORT_ID = 12;
constexpr std::size_t MOST_REFS_COMPARED = 20'000;

std::vector<std::string> lines_of(std::string_view text) {
  std::vector<std::string> lines;
  for (auto end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return lines;
}

std::string short_name(std::string_view ref) {
  for (const std::string_view prefix : {HEADS, REMOTES, std::string_view("refs/tags/")}) {
    if (ref.starts_with(prefix)) return utf8::path_text(ref.substr(prefix.size()));
  }
  return utf8::path_text(ref);
}

// What a name may mean, best first. A branch wins over a tag of the same name.
std::array<std::string, 3> meanings(const std::string& name) {
  const bool is_id = git_utils::is_object_id(name) || name == "HEAD" || name == "@";
  return {is_id ? name : std::string(HEADS) + name, name, std::string(ORIGIN) + name};
}

// The revisions of one look-up, with the places of those that were asked for together.
class Questions {
 public:
  template <class Revisions>
  std::size_t add(const Revisions& revisions) {
    revisions_.insert(revisions_.end(), revisions.begin(), revisions.end());
    return revisions_.size() - revisions.size();
  }
  Git::Command command() const { return git_utils::commits_command(revisions_); }
  void answer(const Git::Output& output) {
    commits_ = git_utils::commits_found(output);
    commits_.resize(revisions_.size());
  }
  // Index of the first revision from `start` on that names a commit, among `count` of them.
  std::optional<std::size_t> first(std::size_t start, std::size_t count) const {
    for (std::size_t i = start; i < start + count; ++i) {
      if (commits_[i]) return i;
    }
    return std::nullopt;
  }
  const std::string& revision(std::size_t i) const { return revisions_[i]; }
  const std::string& commit(std::size_t i) const { return *commits_[i]; }

 private:
  std::vector<std::string> revisions_;
  std::vector<std::optional<std::string>> commits_;
};

// Restricted edit distance: insertions, deletions, replacements, neighbours swapped.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> cost(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        cost[i][j] = i + j;
        continue;
      }
      const std::size_t differs = a[i - 1] == b[j - 1] ? 0 : 1;
      cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + differs});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
      }
    }
  }
  return cost[a.size()][b.size()];
}

bool is_near(std::string_view name, std::string_view other) {
  if (name.size() > 100 || other.size() > 100) return false;
  const auto at_most = std::max<std::size_t>(1, name.size() / 4);
  const auto [shorter, longer] = std::minmax({name.size(), other.size()});
  return longer - shorter <= at_most && distance(name, other) <= at_most;
}

std::vector<std::string> all_refs(const Git& git) {
  const std::string count = "--count=" + std::to_string(MOST_REFS_COMPARED);
  const Git::Output output = git.run(std::array<std::string, 6>{
      "for-each-ref", "--format=%(refname)", count, "refs/heads", "refs/remotes", "refs/tags"});
  return lines_of(output.out);
}

// " (did you mean a or b?)", or nothing.
std::string suggestion(const std::vector<std::string>& refs, std::string_view name) {
  std::string result;
  int count = 0;
  for (const std::string& ref : refs) {
    const std::string other = short_name(ref);
    const auto slash = other.find('/');
    const bool is_remote = ref.starts_with(REMOTES) && slash != std::string::npos;
    const std::string_view plain = std::string_view(other).substr(is_remote ? slash + 1 : 0);
    if (count == 3 || !(is_near(name, other) || is_near(name, plain))) continue;
    result += (count++ == 0 ? "" : " or ") + shown(other);
  }
  return count == 0 ? "" : " (did you mean " + result + "?)";
}

// Names that git takes for branches and a shell for one word.
bool may_be_branch(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("/._-+").find(c) != std::string_view::npos;
  });
}

bool has_origin(const Git& git) {
  const auto remotes = lines_of(git.run(std::array<std::string, 1>{"remote"}).out);
  return std::find(remotes.begin(), remotes.end(), "origin") != remotes.end();
}

// The command that brings a branch of the remote where its name is looked up.
std::string fetching(const Git& git, std::string_view branch) {
  return git_utils::advised(
      git, "fetch origin " + std::string(branch) + ":" + std::string(ORIGIN) + std::string(branch));
}

// What a name names that is no commit: "blob" or "tree"; empty when it names nothing. Raises
// GitHistoryError when what it leads through is missing.
std::string other_type(const Git& git, const std::string& name) {
  if (std::any_of(name.begin(), name.end(), [](char c) { return c >= 0 && c < ' '; })) return {};
  const View view = git_utils::is_object_id(name) ? View::OBJECTS : View::REPOSITORY;
  const Git::Command command{{"cat-file", "--batch-check=%(objecttype)"}, view, name + "\n", {}};
  const Git::Output output = git.run(std::span(&command, 1)).front();
  if (git_utils::lacks_objects(output.errors)) {
    git_utils::fail_on_objects(git, "looking up " + in_quotes(name), output);
  }
  const std::string type = output.out.substr(0, output.out.find('\n'));
  return type == "blob" || type == "tree" ? type : std::string();
}

// The command that brings the whole history of a shallow clone, and `branch` unless it is empty.
std::string unshallowing(const Git& git, std::string_view branch) {
  std::string command = "fetch --unshallow";
  if (has_origin(git)) {
    command += " origin";
    if (!branch.empty()) {
      command.append(" ").append(branch).append(":").append(ORIGIN).append(branch);
    }
  }
  return git_utils::advised(git, command);
}

bool is_checked_out(const Git& git, const std::string& name) {
  const auto head = lines_of(git.run(std::array<std::string, 3>{"symbolic-ref", "-q", "HEAD"}).out);
  return !head.empty() && (head[0] == std::string(HEADS) + name || head[0] == name);
}

std::string_view without_origin(std::string_view name) {
  return name.substr(name.starts_with("origin/") ? 7 : 0);
}

GitHistoryError unknown_name(const Git& git, const std::string& name, std::string_view parameter) {
  const std::string start = std::string(parameter) + " " + in_quotes(name) + " ";
  const std::string where = shown(git.root().string());
  if (name.empty()) return GitHistoryError(std::string(parameter) + " is empty: name a branch");
  if (name.starts_with('-')) {
    return GitHistoryError(start + "looks like an option, not like a branch of " + where +
                           ": see " + git_utils::advised(git, "branch --all"));
  }
  const std::string type = other_type(git, name);
  if (!type.empty()) {
    return GitHistoryError(start + "is a " + type + " of " + where +
                           ", not a commit: name a branch, tag or commit");
  }
  const std::vector<std::string> refs = all_refs(git);
  const auto wanted = meanings(name);
  for (const std::string& ref : refs) {
    if (std::find(wanted.begin(), wanted.end(), ref) == wanted.end()) continue;
    return GitHistoryError(start + "is a branch whose commit is missing in " + where + ": run " +
                           git_utils::advised(git, "fsck"));
  }
  if (is_checked_out(git, name)) return git_utils::unborn_head_error(git);
  const std::string near = suggestion(refs, name);
  std::string text = start + "is no branch, tag or commit of " + where + near + ": see " +
                     git_utils::advised(git, "branch --all");
  if (git.is_shallow() && near.empty()) {
    const bool is_branch = may_be_branch(name) && !git_utils::is_object_id(name);
    return GitHistoryError(start + "is not in the shallow clone at " + where + ": run " +
                           unshallowing(git, is_branch ? without_origin(name) : ""));
  }
  if (near.empty() && git_utils::is_object_id(name) && has_origin(git)) {
    text += "; if the remote has it, run " + git_utils::advised(git, "fetch origin " + name);
  } else if (near.empty() && may_be_branch(name) && has_origin(git)) {
    text += "; if it is a branch of the remote, run " + fetching(git, without_origin(name));
  }
  return GitHistoryError(text);
}

// Where hosts keep the heads of pull and merge requests, and where users fetch them to; best first.
std::vector<std::string> refs_of_request(const std::string& number) {
  return {"refs/pull/" + number + "/head",
          "refs/merge-requests/" + number + "/head",
          "refs/pull-requests/" + number + "/from",
          "refs/remotes/*/pr/" + number,
          "refs/remotes/*/pull/" + number + "/head",
          "refs/remotes/*/pull/" + number,
          "refs/remotes/*/mr/" + number,
          "refs/remotes/*/merge-requests/" + number + "/head",
          "refs/remotes/*/merge-requests/" + number,
          "refs/remotes/pull/" + number + "/head",
          "refs/remotes/pull/" + number + "/merge",
          "refs/pull/" + number + "/merge",
          "refs/heads/pr/" + number};
}

// The refs that fit a pattern with at most one '*', which stands for one part of the name.
bool fits(std::string_view pattern, std::string_view ref) {
  const auto star = pattern.find('*');
  if (star == pattern.npos) return pattern == ref;
  const std::string_view before = pattern.substr(0, star), after = pattern.substr(star + 1);
  return ref.size() > before.size() + after.size() && ref.starts_with(before) &&
         ref.ends_with(after) &&
         ref.substr(before.size(), ref.size() - before.size() - after.size()).find('/') == ref.npos;
}

std::string ref_of_request(const Git& git, std::int64_t request) {
  const std::string number = std::to_string(request);
  const std::vector<std::string> patterns = refs_of_request(number);
  std::vector<std::string> command = {"for-each-ref", "--format=%(refname)"};
  command.insert(command.end(), patterns.begin(), patterns.end());
  const std::vector<std::string> refs = lines_of(git.run(command).out);
  for (const std::string& pattern : patterns) {
    for (const std::string& ref : refs) {
      if (fits(pattern, ref)) return ref;
    }
  }
  const std::string head = "pull/" + number + "/head";
  throw GitHistoryError("no pull or merge request " + number + " has been fetched in " +
                        shown(git.root().string()) + ": run " +
                        git_utils::advised(git, "fetch origin " + head + ":refs/" + head) +
                        ", or the same with merge-requests/" + number + "/head");
}

// The default branch of the one remote that is there when none is called "origin".
std::optional<std::string> only_remote_head(const Git& git) {
  const Git::Output output = git.run(
      std::array<std::string, 3>{"for-each-ref", "--format=%(symref)", "refs/remotes/*/HEAD"});
  std::vector<std::string> heads = lines_of(output.out);
  std::erase_if(heads, [](const std::string& head) { return head.empty(); });
  if (heads.size() != 1) return std::nullopt;
  return heads.front();
}

GitHistoryError no_base(const Git& git, std::string_view parameter) {
  return GitHistoryError("no base to compare with in " + shown(git.root().string()) +
                         ": tried the remote's default branch (refs/remotes/origin/HEAD), main, "
                         "master, origin/main and origin/master: name one as " +
                         std::string(parameter) +
                         (git.is_shallow()  ? ", or run " + unshallowing(git, "HEAD")
                          : has_origin(git) ? ", or run " + fetching(git, "HEAD")
                                            : ""));
}

std::string why_remote(std::string_view ref) {
  const std::string name = short_name(ref);
  return in_quotes(name) + " was taken as base: it is the default branch of remote " +
         in_quotes(name.substr(0, name.find('/')));
}

struct Base {
  Side side;
  std::string why;
};

std::string request_name(std::string_view ref, std::int64_t request) {
  const bool merges = ref.find("/mr/") != ref.npos || ref.find("merge-requests/") != ref.npos;
  return (merges ? "merge request " : "pull request ") + std::to_string(request);
}

Base remote_base(const std::string& ref, const std::string& commit) {
  return {{short_name(ref), commit}, why_remote(ref)};
}

// `origin_head` is what refs/remotes/origin/HEAD points to, empty when it is no symbolic ref.
Base default_base(const Git& git, const Questions& questions, std::size_t start,
                  std::string origin_head, std::string_view parameter) {
  if (const auto origin = questions.first(start, 1)) {
    if (origin_head.empty()) origin_head = ORIGIN_HEAD;
    return remote_base(origin_head, questions.commit(*origin));
  }
  if (const auto ref = only_remote_head(git)) {
    Questions other;
    other.add(std::array<std::string, 1>{*ref});
    const Git::Command command = other.command();
    other.answer(git.run(std::span(&command, 1)).front());
    if (other.first(0, 1)) return remote_base(*ref, other.commit(0));
  }
  const auto usual = questions.first(start + 1, USUAL_BASES.size());
  if (!usual) throw no_base(git, parameter);
  const std::string name = short_name(questions.revision(*usual));
  return {{name, questions.commit(*usual)},
          in_quotes(name) + " was taken as base: no remote says what its default branch is"};
}

std::string first_line(const Git::Output& output) {
  return output.out.substr(0, output.out.find('\n'));
}

// A name that the repository lacks must not make a partial clone look for it elsewhere.
void check_present(const Git& git, const std::optional<std::string>& name,
                   std::string_view parameter) {
  if (!name || !git_utils::is_object_id(*name) || !git_utils::is_partial_clone(git)) return;
  const Git::Command command{{"cat-file", "-e", *name}, View::OBJECTS, {}, {}};
  if (git.run(std::span(&command, 1)).front().status != 0)
    throw unknown_name(git, *name, parameter);
}

Side named_side(const Git& git, const Questions& questions, std::size_t start,
                const std::string& name, std::string_view parameter) {
  const auto found = questions.first(start, 3);
  if (!found) throw unknown_name(git, name, parameter);
  return {utf8::path_text(name), questions.commit(*found)};
}

}  // namespace

Sides find_sides(const Git& git, const Names& asked) {
  Names names = asked;
  // What is checked out is shown by its own name.
  if (names.head == "HEAD" || names.head == "@") names.head.reset();
  if (names.pull_request) names.head = ref_of_request(git, *names.pull_request);
  check_present(git, names.head, names.head_parameter);
  check_present(git, names.base, names.base_parameter);
  Questions questions;
  const std::size_t head_at =
      names.head ? questions.add(meanings(*names.head)) : questions.add(std::array{"HEAD"});
  const std::size_t base_at =
      names.base ? questions.add(meanings(*names.base)) : questions.add(std::array{ORIGIN_HEAD});
  if (!names.base) questions.add(USUAL_BASES);
  std::vector<Git::Command> commands = {questions.command()};
  const auto ask_symbolic = [&](std::string_view ref) {
    commands.push_back({{"symbolic-ref", "-q", std::string(ref)}, View::REPOSITORY});
  };
  if (!names.head) ask_symbolic("HEAD");
  if (!names.base) ask_symbolic(ORIGIN_HEAD);
  const std::vector<Git::Output> outputs = git.run(commands);
  questions.answer(outputs[0]);

  Sides sides;
  sides.base_parameter = names.base_parameter;
  if (names.head) {
    sides.head = named_side(git, questions, head_at, *names.head, names.head_parameter);
    if (names.pull_request) sides.head.name = request_name(*names.head, *names.pull_request);
  } else {
    if (!questions.first(head_at, 1)) throw git_utils::unborn_head_error(git);
    const std::string& commit = questions.commit(head_at);
    const std::string branch = first_line(outputs[1]);
    sides.head = {branch.empty() ? commit.substr(0, SHORT_ID) : short_name(branch), commit};
  }
  if (names.base) {
    sides.base = named_side(git, questions, base_at, *names.base, names.base_parameter);
  } else {
    Base base =
        default_base(git, questions, base_at, first_line(outputs.back()), names.base_parameter);
    sides.base = std::move(base.side);
    sides.why_base = std::move(base.why);
  }
  return sides;
}

std::string find_commit(const Git& git, const std::string& name, std::string_view parameter) {
  check_present(git, name, parameter);
  Questions questions;
  questions.add(meanings(name));
  const Git::Command command = questions.command();
  questions.answer(git.run(std::span(&command, 1)).front());
  return named_side(git, questions, 0, name, parameter).commit;
}

}  // namespace context_delta::git_history
