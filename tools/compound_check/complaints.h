#pragma once

/// What a check complains of.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace compound {

enum class Grade {
  Damaged,  // bytes of a stream cannot be trusted
  Unusual,  // allowed, or common among the programs that write such files; nothing is lost
};

/// Where in the file something was met, and the numbers; any of them may be missing.
struct Evidence {
  std::optional<std::uint64_t> offset = {};  // bytes from the beginning of the file
  std::optional<std::uint64_t> expected = {};
  std::optional<std::uint64_t> found = {};
};

struct Complaint {
  Grade grade;
  std::string text;  // "the element: what is the matter with it"
  Evidence evidence;
};

/// The evidence in brackets with a blank before it; empty when there is none.
std::string EvidenceText(const Evidence& evidence);

/// Gathers complaints. Of each grade it keeps the first ones and counts the rest, because a file of
/// noise has one for every word.
class Complaints {
 public:
  void Add(Grade grade, const std::string& where, const std::string& what,
           const Evidence& evidence = {});

  void Damaged(const std::string& where, const std::string& what, const Evidence& evidence = {}) {
    Add(Grade::Damaged, where, what, evidence);
  }
  void Unusual(const std::string& where, const std::string& what, const Evidence& evidence = {}) {
    Add(Grade::Unusual, where, what, evidence);
  }

  /// All that was kept, the damages first, and a line for each grade of which some were not.
  std::vector<Complaint> Sorted() const;

 private:
  struct Kept {
    std::vector<Complaint> complaints;
    std::size_t leftOut = 0;
  };

  Kept damaged_, unusual_;
};

}  // namespace compound
