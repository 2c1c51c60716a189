#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "cli/options.h"

/// What presets options beside the command line: the user's file, the project's file and the
/// environment, each before the next.
namespace context_delta::cli {

/// The name of the project's file, at the top of its work tree.
inline constexpr std::string_view PROJECT_FILE = ".context-delta.toml";

/// The value of a variable; null when it is not set.
using Environment = std::function<const char*(const char* name)>;

/// The user's file: CONTEXT_DELTA_CONFIG, else context-delta/config.toml in the folder
/// XDG_CONFIG_HOME, else in ~/.config. Empty when none of them is set.
std::filesystem::path user_config_path(const Environment& environment);

/// The work tree that holds a folder: the nearest folder upwards with an entry `.git`. Empty when
/// there is none. Git is not asked: it would look into the repository's settings.
std::filesystem::path work_tree_of(const std::filesystem::path& folder);

/// Puts all presets for the settings' command into them, and where they came from into
/// `settings.remarks`. What is wrong in the user's file or the environment raises UsageError. What
/// is wrong in the project's file is passed over with a warning: a branch must not be able to keep
/// its reviewers from looking at it.
void apply_presets(Settings& settings, const Environment& environment);

}  // namespace context_delta::cli
