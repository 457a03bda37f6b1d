#pragma once

#include <optional>
#include <string>

#include "calc/failure_observer.h"

namespace kelcalc {

/// Watches a run: tells of inputs that cannot be read, counts failures, says where and why on
/// request, and may end the process at the first one.
class Watch final : public CaFailureObserver {
 public:
  struct Settings {
    bool where = false;   // one line on standard error for each failure
    bool strict = false;  // failures count
    bool stop = false;    // end with status 1 after the first
    bool colour = false;  // control sequences of a terminal may be written
  };

  explicit Watch(const Settings& chosen) : settings(chosen) {}

  long long Failures() const { return failures; }

  void Failed(const CaInterpreter& interpreter, CaFailure failure, const char* name,
              const CaOperatorEntry* entry) override;
  void SkippingBegan(const CaInterpreter& interpreter) override;
  void InputEnded(const CaInterpreter& interpreter, CaUnfinished within) override;
  void Warned(const CaInterpreter& interpreter, const char* message) override;

 private:
  void Count(const CaInterpreter& interpreter, const std::string& place, const std::string& reason);

  Settings settings;
  long long failures = 0;
  std::optional<std::string> skippingFrom;  // where the condition stands, until it was told
};

}  // namespace kelcalc
