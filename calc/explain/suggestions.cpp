#include "calc/explain/suggestions.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <numeric>
#include <vector>

#include "calc/dispatch.h"
#include "calc/explain/alternatives.h"
#include "calc/interpreter.h"

namespace kelcalc {
namespace {

struct Synonym {
  std::string_view name;
  const char* meant;
};

// What other languages call what this one has under a name of its own.
constexpr Synonym Synonyms[] = {
    {"abs", "$"},         {"norm", "$"},      {"normalize", "$"}, {"neg", "~"},
    {"inv", "~"},         {"inverse", "~"},   {"pow", "^"},       {"**", "^"},
    {"dot", "%"},         {"mod", "%"},       {"cross", "*"},     {"mul", "*"},
    {"add", "+"},         {"sub", "-"},       {"div", "/"},       {"swap", "|"},
    {"dup", "'"},         {"pick", "''"},     {"drop", "\\"},     {"pop", "\\"},
    {"clear", "\\\\"},    {"print", "#"},     {"rad", ">>"},      {"deg", "<<"},
    {"len", ";w"},        {"length", ";w"},   {"mag", ";w"},      {"angle", ";a"},
    {"log", ";ln"},       {"load", ";read"},  {"save", ";write"}, {"!=", "~="},
    {"<>", "~="},         {"matrix", ";m"},   {"vector", ";v"},   {"point", ";p"},
    {"quaternion", ";q"}, {"rotation", ";r"}, {"scale", ";s"},    {"store", ":"},
};

char Lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

/// How many letters must be added, left out, changed or exchanged with their neighbour to make one
/// of the other. Capital and small letters count as the same.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool same = Lower(a[i - 1]) == Lower(b[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0U : 1U)});
      const bool exchanged = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (exchanged) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before.swap(last);
    last.swap(row);
  }
  return last[b.size()];
}

/// Keeps the nearest of the names that it is shown.
class Nearest {
 public:
  explicit Nearest(std::string_view wanted) : wanted_(wanted), least_(1 + wanted.size() / 3) {}

  void Consider(std::string_view name, const std::string& spelling) {
    const std::size_t distance = Distance(wanted_, name);
    // A name of which nothing stays the same is no near one.
    if (distance > least_ || distance >= std::max(name.size(), wanted_.size())) return;
    if (distance == least_ && !found_.empty()) return;
    least_ = distance;
    found_ = spelling;
  }

  const std::string& Found() const { return found_; }

 private:
  std::string_view wanted_;
  std::size_t least_;
  std::string found_;
};

bool IsWord(std::string_view name) {
  return !name.empty() && std::isalpha(static_cast<unsigned char>(name.front())) != 0;
}

const char* SynonymFor(std::string_view name) {
  const auto* found = std::find_if(std::begin(Synonyms), std::end(Synonyms),
                                   [&](const Synonym& one) { return one.name == name; });
  return found == std::end(Synonyms) ? nullptr : found->meant;
}

/// "+#" for "+ #": a run that is two operators, with the blank that it lacks.
std::string Split(std::string_view run) {
  for (std::size_t at = 1; at < run.size(); ++at) {
    const std::string_view first = run.substr(0, at);
    const std::string_view second = run.substr(at);
    if (FindEntry(first) != nullptr && FindEntry(second) != nullptr) {
      return std::string(first) + ' ' + std::string(second);
    }
  }
  return "";
}

}  // namespace

std::string NearOperator(std::string_view name) {
  if (const char* meant = SynonymFor(name); meant != nullptr) return meant;
  if (!IsWord(name)) return Split(name);
  Nearest nearest(name);
  for (const CaOperatorEntry* entry = CaFunctionTable; *entry->name != '\0'; ++entry) {
    nearest.Consider(entry->name, SpellingOf(*entry));
  }
  return nearest.Found();
}

std::string NearVariable(std::string_view name, const CaInterpreter& interpreter) {
  const CaOperatorEntry* entry = FindEntry(name);  // a name is no operator
  if (entry != nullptr && name.size() > 1) return SpellingOf(*entry);
  Nearest nearest(name);
  for (const CaListNode* node = interpreter.variables.head; node != nullptr; node = node->next) {
    const char* known = node->payload->Name();
    if (name != known) nearest.Consider(known, known);
  }
  if (!nearest.Found().empty()) return nearest.Found();
  const char* meant = SynonymFor(name);
  return meant == nullptr ? "" : meant;
}

std::string Question(const std::string& suggestion) {
  return suggestion.empty() ? "" : ": did you mean " + suggestion;
}

}  // namespace kelcalc
