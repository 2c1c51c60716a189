#include "utils/git_objects_view.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace context_delta::git_utils {
namespace {

std::filesystem::path new_temporary_folder() {
  std::error_code error;
  const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
  std::string name = (error ? "/tmp" : parent) / "context-delta-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("cannot write a temporary folder (" + name +
                             "): set TMPDIR to a folder that can be written");
  }
  return name;
}

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
                         const std::string& object_format)
    : directory_(new_temporary_folder()) {
  try {
    std::filesystem::create_directory(directory_ / "refs");
    write(directory_ / "HEAD", "ref: refs/heads/none\n");
    write(directory_ / "config", config(object_format));
  } catch (...) {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
    throw;
  }
  environment_ = {"GIT_DIR=" + directory_.string(),
                  "GIT_OBJECT_DIRECTORY=" + (common_directory / "objects").string(),
                  "GIT_CONFIG_NOSYSTEM=1", "GIT_CONFIG_GLOBAL=/dev/null"};
  const std::filesystem::path shallow = common_directory / "shallow";
  if (std::filesystem::exists(shallow)) {
    environment_.push_back("GIT_SHALLOW_FILE=" + shallow.string());
  }
}

ObjectsView::~ObjectsView() {
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

}  // namespace context_delta::git_utils
