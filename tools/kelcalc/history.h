#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kelcalc {

/// The lines typed in this session and the ones before it, oldest first.
///
/// The file holds one line per entry and is added to as each line is entered, so that sessions
/// that run at the same time keep each other's lines and a killed one loses nothing. It is
/// readable by its owner only. A history that cannot be read or written is no error: the session
/// then remembers its own lines and no others.
class History {
 public:
  static constexpr std::size_t MostLines = 1000;

  /// A history kept in `path`; an empty path keeps it in memory only.
  explicit History(std::string path);

  /// Appends `line` (without its newline) unless it is blank or repeats the one before it.
  void Add(const std::string& line);

  const std::vector<std::string>& Lines() const { return lines; }

 private:
  void Load();
  void Rewrite() const;

  std::string path;
  std::vector<std::string> lines;
};

/// $XDG_STATE_HOME/kelcalc/history, or $HOME/.local/state/kelcalc/history; empty when neither
/// variable holds an absolute path, or when there is no home folder: none is made.
std::string HistoryPath();

}  // namespace kelcalc
