#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <system_error>

/// A new folder for one test, removed with everything in it afterwards.
class Folder {
 public:
  explicit Folder(const std::string& parent = std::filesystem::temp_directory_path().string()) {
    std::random_device random;
    do {
      root_ = parent + "/kelsave-test-" + std::to_string(random());
    } while (!std::filesystem::create_directory(root_));
    std::filesystem::permissions(root_, std::filesystem::perms::owner_all);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }

  const std::string& Root() const { return root_; }
  std::string Path(const std::string& name) const { return root_ + "/" + name; }

  /// Writes a file of this text and returns its path.
  std::string Put(const std::string& name, const std::string& text, unsigned mode = 0644) const {
    std::ofstream(Path(name)) << text;
    std::filesystem::permissions(Path(name), static_cast<std::filesystem::perms>(mode));
    return Path(name);
  }

  std::string Text(const std::string& name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  /// Every entry as "name=text", in the order of their names, "!" after what is read-only; the
  /// text is "new" for a compound file, and a folder has a slash.
  std::string List() const {
    std::set<std::string> lines;
    for (const auto& entry : std::filesystem::directory_iterator(root_)) {
      const std::string name = entry.path().filename().string();
      const auto mode = static_cast<unsigned>(entry.status().permissions());
      std::string text = entry.is_directory() ? "" : Text(name);
      if (text.compare(0, 4, "\xD0\xCF\x11\xE0") == 0) text = "new";
      const std::string file = (name + "=").append(text);
      lines.insert(entry.is_directory() ? name + "/" : (mode & 0200U) != 0 ? file : file + "!");
    }
    std::string list;
    for (const std::string& line : lines) (list += list.empty() ? "" : " ") += line;
    return list;
  }

 private:
  std::string root_;
};
