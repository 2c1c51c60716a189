#include "cli/presets.h"

#include <fstream>
#include <iterator>
#include <optional>
#include <system_error>

#include "cli/config_file.h"
#include "tool_handlers/context_docs.h"
#include "utils/suggestion.h"
#include "utils/utf8.h"

namespace context_delta::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t MOST_WARNINGS = 5;

/// A file that presets options.
struct Source {
  std::string name;  ///< in messages
  Preset trust;      ///< USER or PROJECT
  fs::path root;     ///< the work tree; paths in the file are relative to it
};

std::string value_of(const Environment& environment, const char* name) {
  const char* value = environment(name);
  return value == nullptr ? "" : value;
}

std::vector<std::string_view> keys_for(Preset trust) {
  std::vector<std::string_view> keys;
  for (const OptionRow& option : options()) {
    if (option.preset >= trust) keys.push_back(preset_key(option));
  }
  return keys;
}

const OptionRow* option_of(const std::string& key) {
  const OptionRow* option = find_option("--" + key);
  return option == nullptr || option->preset == Preset::NOBODY ? nullptr : option;
}

/// "1", "true", "yes", "on" and their opposites.
std::string switch_value(const std::string& value) {
  for (const std::string_view on : {"true", "1", "yes", "on"}) {
    if (value == on) return "true";
  }
  for (const std::string_view off : {"false", "0", "no", "off"}) {
    if (value == off) return "false";
  }
  throw UsageError("takes true or false, not '" + value + "'");
}

/// `value`, a path in a project's file, as a path inside the work tree.
fs::path path_inside(const fs::path& root, const std::string& value) {
  std::error_code error;
  const fs::path real_root = fs::canonical(root, error);
  const fs::path path = fs::canonical(root / value, error);
  if (error) throw UsageError("names '" + value + "', which is not there");
  const fs::path relative = path.lexically_relative(real_root);
  if (relative.empty() || *relative.begin() == "..") {
    throw UsageError("names '" + value + "', which is outside the work tree");
  }
  return path;
}

std::string usable_value(const OptionRow& option, const std::string& value, const Source& source) {
  if (option.value.empty()) return switch_value(value);
  if (option.completion != Completion::FOLDER || value.empty()) return value;
  if (source.trust == Preset::PROJECT) return path_inside(source.root, value);
  return source.root / value;
}

/// Puts one entry into the settings. Raises UsageError, worded to follow the key.
void apply_entry(const ConfigEntry& entry, const Source& source, Settings& settings) {
  if (entry.key.empty()) throw UsageError(entry.problem);
  const OptionRow* option = option_of(entry.key);
  if (option == nullptr) {
    throw UsageError("is no setting" + did_you_mean(entry.key, keys_for(source.trust)));
  }
  if (option->preset < source.trust) {
    throw UsageError(source.trust == Preset::PROJECT
                         ? "cannot be set by a project's file"
                         : "cannot be set by a file, only by " + preset_variable(*option));
  }
  if (!entry.problem.empty()) throw UsageError(entry.problem);
  if (!takes(*option, settings.command)) return;
  option->apply(settings, usable_value(*option, entry.value, source));
  settings.remarks.push_back(entry.key + " = " + entry.value + " from " + source.name);
}

void apply_file(std::string_view text, const Source& source, Settings& settings) {
  const auto complain = [&](std::size_t line, const std::string& what) {
    const std::string where = source.name + ":" + std::to_string(line) + ": ";
    if (source.trust != Preset::PROJECT) throw UsageError(where + what);
    if (settings.warnings.size() > MOST_WARNINGS) return;
    settings.warnings.push_back(settings.warnings.size() < MOST_WARNINGS
                                    ? where + what + "; passed over"
                                    : source.name + ": more like these; passed over");
  };
  for (const ConfigEntry& entry : read_config(text)) {
    try {
      apply_entry(entry, source, settings);
    } catch (const UsageError& error) {
      complain(entry.line, (entry.key.empty() ? "" : entry.key + " ") + error.what());
    }
  }
}

/// The text of the user's file; null when there is none.
std::optional<std::string> user_text(const fs::path& path, bool must_exist) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream && !must_exist) return std::nullopt;
  std::string text(MOST_CONFIG_BYTES + 1, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (stream.bad() || (stream.fail() && !stream.eof())) {
    throw UsageError("cannot read the configuration file " + utf8::path_text(path.native()));
  }
  text.resize(static_cast<std::size_t>(stream.gcount()));
  if (text.size() > MOST_CONFIG_BYTES) {
    throw UsageError("the configuration file " + utf8::path_text(path.native()) +
                     " is longer than " + std::to_string(MOST_CONFIG_BYTES) + " bytes");
  }
  return text;
}

void apply_user_file(const fs::path& root, const Environment& environment, Settings& settings) {
  const fs::path path = user_config_path(environment);
  if (path.empty()) return;
  const bool named = !value_of(environment, "CONTEXT_DELTA_CONFIG").empty();
  const std::optional<std::string> text = user_text(path, named);
  if (text) apply_file(*text, {utf8::path_text(path.native()), Preset::USER, root}, settings);
}

void apply_project_file(const fs::path& root, Settings& settings) {
  if (root.empty()) return;
  const std::optional<std::string> text =
      context_docs::read_repo_text(root, PROJECT_FILE, MOST_CONFIG_BYTES);
  if (text) apply_file(*text, {std::string(PROJECT_FILE), Preset::PROJECT, root}, settings);
}

void apply_environment(const Environment& environment, Settings& settings) {
  for (const OptionRow& option : options()) {
    if (option.preset == Preset::NOBODY || !takes(option, settings.command)) continue;
    const std::string variable = preset_variable(option);
    const std::string value = value_of(environment, variable.c_str());
    if (value.empty()) continue;
    try {
      option.apply(settings, option.value.empty() ? switch_value(value) : value);
    } catch (const UsageError& error) {
      throw UsageError(variable + " " + error.what());
    }
    settings.remarks.push_back(std::string(preset_key(option)) + " = " + value + " from " +
                               variable);
  }
}

}  // namespace

fs::path user_config_path(const Environment& environment) {
  const std::string named = value_of(environment, "CONTEXT_DELTA_CONFIG");
  if (!named.empty()) return named;
  const std::string configuration = value_of(environment, "XDG_CONFIG_HOME");
  const fs::path below = fs::path("context-delta") / "config.toml";
  // The base directory rules have relative folders passed over.
  if (fs::path(configuration).is_absolute()) return configuration / below;
  const std::string home = value_of(environment, "HOME");
  return home.empty() ? fs::path() : fs::path(home) / ".config" / below;
}

fs::path work_tree_of(const fs::path& folder) {
  std::error_code error;
  const fs::path start = fs::canonical(folder, error);
  if (error) return {};
  for (fs::path at = start;; at = at.parent_path()) {
    if (fs::exists(fs::symlink_status(at / ".git", error))) return at;
    if (at == at.parent_path()) return {};
  }
}

void apply_presets(Settings& settings, const Environment& environment) {
  const fs::path root = work_tree_of(settings.directory);
  apply_user_file(root, environment, settings);
  apply_project_file(root, settings);
  apply_environment(environment, settings);
}

}  // namespace context_delta::cli
