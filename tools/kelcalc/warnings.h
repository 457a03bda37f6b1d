#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "calc/item_observer.h"
#include "calc/rules.h"

struct CaOperatorEntry;

namespace kelcalc {

/// Tells of what is no failure and seldom meant: a name without a value, a result that is not
/// finite, an inverse that was not made, digits that ;write cut, bytes that begin no word.
class Warnings final : public CaItemObserver {
 public:
  struct Settings {
    bool colour = false;         // control sequences of a terminal may be written
    const char* keeper = "";     // what keeps every digit, as ":save"
    bool writesExactly = false;  // ;write cuts no digits
  };

  explicit Warnings(const Settings& chosen) : settings(chosen) {}

  void ItemRan(const CaInterpreter& interpreter, const CaItem& item) override;
  void BytePassedOver(const CaInterpreter& interpreter, unsigned char byte) override;

 private:
  /// What the stack was like before the item that runs next.
  struct Before {
    int depth = 0;
    std::int32_t skipLevel = -1;
    std::array<bool, MostOperands> finite{};  // by position
    std::vector<double> inverted;             // what ~ would invert, if that is on top
  };

  struct Valueless {
    std::string place;
    std::string name;
  };

  void Warn(const CaInterpreter& interpreter, const std::string& place,
            const std::string& text) const;
  void LookAtOperator(const CaInterpreter& interpreter, const CaOperatorEntry& entry);
  void LookAtResult(const CaInterpreter& interpreter, const CaOperatorEntry& entry) const;
  void LookAtWrittenFile(const CaInterpreter& interpreter);
  void TellOfValueless(const CaInterpreter& interpreter);
  void Remember(const CaInterpreter& interpreter);

  Settings settings;
  Before before;
  std::optional<Valueless> valueless;  // a name that was pushed last and has no value
  std::string passedOver;  // bytes of the character that was told of last, still to come
  bool toldOfDigits = false;
};

}  // namespace kelcalc
