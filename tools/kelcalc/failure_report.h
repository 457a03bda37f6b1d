#pragma once

#include <span>
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

  void NoRuleAmong(std::span<const CaRule> rules) override { pairRules = rules; }
  void NoRuleAmong(std::span<const CaTopRule> rules) override { topRules = rules; }
  void Failed(const CaInterpreter& interpreter, CaFailure failure, const char* name) override;

 private:
  void SayWhere(const CaInterpreter& interpreter, CaFailure failure, const char* name) const;
  std::string Reason(const CaInterpreter& interpreter, CaFailure failure, const char* name) const;
  std::string OperatorReason(const CaInterpreter& interpreter, const std::string& name) const;

  Settings settings;
  long long count = 0;
  std::span<const CaRule> pairRules;    // tried by the operator that is failing
  std::span<const CaTopRule> topRules;  // the same
};

}  // namespace kelcalc
