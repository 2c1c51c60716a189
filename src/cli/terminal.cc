#include "cli/terminal.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <string>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

namespace context_delta::cli {
namespace {

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

bool shows_colour(const Settings& settings) {
  if (settings.colour != Colour::AUTO) return settings.colour == Colour::ALWAYS;
  if (!environment("NO_COLOR").empty()) return false;
  const std::string_view force = environment("CLICOLOR_FORCE");
  if (!force.empty() && force != "0") return true;
  const std::string_view terminal = environment("TERM");
  return settings.output == "-" && output_is_terminal() && !terminal.empty() && terminal != "dumb";
}

/// As the C library decides: the first of the three that is set.
bool locale_is_utf8() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    std::string locale(environment(name));
    if (locale.empty()) continue;
    std::transform(locale.begin(), locale.end(), locale.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return locale.find("utf-8") != locale.npos || locale.find("utf8") != locale.npos;
  }
  return false;
}

}  // namespace

bool output_is_terminal() { return isatty(STDOUT_FILENO) == 1; }

bool errors_are_terminal() { return isatty(STDERR_FILENO) == 1; }

std::size_t terminal_width() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  const std::string_view columns = environment("COLUMNS");
  std::size_t width = 0;
  const auto read = std::from_chars(columns.data(), columns.data() + columns.size(), width);
  const bool whole = read.ec == std::errc() && read.ptr == columns.data() + columns.size();
  return whole && width > 0 && width <= 1000 ? width : 80;
}

std::size_t terminal_height() {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 ? size.ws_row : 24;
}

render::ReportStyle report_style(const Settings& settings) {
  return {.width = terminal_width(),
          .colour = shows_colour(settings),
          .unicode = locale_is_utf8(),
          .budget = settings.request.token_budget,
          .token_scale = settings.token_scale};
}

}  // namespace context_delta::cli
