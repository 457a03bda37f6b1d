#pragma once

#include <cstddef>
#include <deque>
#include <memory>

struct CaInterpreter;

namespace kelcalc {

/// What stack and variables were before each of the last steps.
class Snapshots {
 public:
  static constexpr std::size_t MostSteps = 50;
  /// Entries and variables in all snapshots together; the oldest are given up for new ones.
  static constexpr std::size_t MostObjects = 100'000;

  Snapshots();
  ~Snapshots();

  /// Keeps what `interpreter` holds now, as the beginning of a step.
  void Take(const CaInterpreter& interpreter);

  /// Makes `interpreter` what it was at the beginning of the last step, which is then forgotten.
  /// False when none is kept.
  bool Restore(CaInterpreter& interpreter);

 private:
  std::size_t Objects() const;

  std::deque<std::unique_ptr<CaInterpreter>> steps;  // the last one at the back
};

}  // namespace kelcalc
