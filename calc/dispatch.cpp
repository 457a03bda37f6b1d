#include "calc/dispatch.h"

#include "calc/interpreter.h"
#include "calc/name_pool.h"
#include "calc/next_item.h"

namespace {

/// Makes an object of an item.
class ObjectMaker {
 public:
  explicit ObjectMaker(CaInterpreter& interpreter) : interpreter_(interpreter) {}

  void Real(double number) { object = new CaValue(number); }
  void String(const char* text) { object = new CaValue(text); }
  void Compound(CaValue* value) { object = value; }
  void Variable(std::string_view name) {
    const CaPooledName pooledName = PooledName(name);
    object = new CaVariable(pooledName, *interpreter_.FindVariable(pooledName));
  }
  void Operator(const CaOperatorEntry& entry) {
    object = new CaOperator(entry.function, entry.name, NothingValue, entry.alwaysRun);
  }

  CaObject* object = nullptr;

 private:
  CaInterpreter& interpreter_;
};

}  // namespace

std::string SpellingOf(const CaOperatorEntry& entry) {
  return std::string(entry.sign).append(entry.name);
}

CaObject* NextObject(CaInterpreter& interpreter) {
  ObjectMaker maker(interpreter);
  CaItemReader<ObjectMaker>(interpreter, maker).ReadItem();
  return maker.object;
}
