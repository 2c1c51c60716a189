#include "utils/git_objects_view.h"

#include <fstream>
#include <stdexcept>

namespace context_delta::git_utils {
namespace {

void write(const std::filesystem::path& file, const std::string& text) {
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  stream.close();
  if (!stream) throw std::runtime_error("cannot write " + file.string());
}

std::string config(const std::string& object_format) {
  const bool is_default = object_format == "sha1";
  std::string text =
      "[core]\n\tbare = true\n\tattributesFile = /dev/null\n\trepositoryFormatVersion = ";
  text += is_default ? "0\n" : "1\n[extensions]\n\tobjectFormat = " + object_format + "\n";
  return text;
}

}  // namespace

ObjectsView::ObjectsView(const std::filesystem::path& common_directory,
                         const std::string& object_format,
                         const std::filesystem::path& more_objects) {
  std::filesystem::create_directory(directory() / "refs");
  write(directory() / "HEAD", "ref: refs/heads/none\n");
  write(directory() / "config", config(object_format));
  environment_ = {"GIT_DIR=" + directory().string(),
                  "GIT_OBJECT_DIRECTORY=" + (common_directory / "objects").string(),
                  "GIT_CONFIG_NOSYSTEM=1", "GIT_CONFIG_GLOBAL=/dev/null"};
  if (!more_objects.empty()) {
    environment_.push_back("GIT_ALTERNATE_OBJECT_DIRECTORIES=" + in_list_of_stores(more_objects));
  }
  const std::filesystem::path shallow = common_directory / "shallow";
  std::error_code unreadable;
  if (std::filesystem::exists(shallow, unreadable)) {
    environment_.push_back("GIT_SHALLOW_FILE=" + shallow.string());
  }
}

std::string in_list_of_stores(const std::filesystem::path& folder) {
  const std::string& text = folder.native();
  if (text.find_first_of(":\"\n") == text.npos) return text;
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    if (c == '\n') {
      quoted += "\\n";
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

}  // namespace context_delta::git_utils
