#pragma once

#include <string>

#include "calc/failure_observer.h"

namespace kelcalc {

/// Watches a run: counts its failures, says where and why on request, and may end the process at
/// the first one.
class FailureReport final : public CaFailureObserver {
 public:
  struct Settings {
    bool where = false;   // one line on standard error for each failure
    bool stop = false;    // end with status 1 after the first
    bool colour = false;  // control sequences of a terminal may be written
  };

  explicit FailureReport(const Settings& chosen) : settings(chosen) {}

  long long Count() const { return count; }
  bool SaysWhere() const { return settings.where; }

  void Failed(const CaInterpreter& interpreter, CaFailure failure, const char* name,
              const CaOperatorEntry* entry) override;

 private:
  Settings settings;
  long long count = 0;
};

}  // namespace kelcalc
