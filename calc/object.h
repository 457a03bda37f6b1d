#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "calc/names.h"
#include "calc/recycler.h"
#include "geometry/matrix.h"
#include "geometry/quaternion.h"
#include "geometry/rotation.h"
#include "geometry/vector.h"

struct CaInterpreter;
class CaValue;

/// The objects of the language: what the stack and the table of variables hold.
///
/// - a `CaValue` is a typed value: a number, a text, a geometry record, or nothing;
/// - a `CaVariable` is a name with the value it held when the name was read;
/// - a `CaOperator` is a routine ready to run.
///
/// The loop that runs programs (run.h) makes values and variables of the items that it reads and
/// pushes them; operators it runs at once, without an object. `NextObject` (reader.h) makes an
/// object of every item, for whoever wants them.
///
/// Objects are told apart by the number that `Kind` returns and values by their `type`, never by
/// run-time type identification. There is no virtual destructor: whoever destroys an object knows
/// what it is.
///
/// Texts. A string value owns a private duplicate of its text, made by `DuplicateText`. Copies of
/// the value share that text, and only assignment over a string value frees one: the destructor
/// frees nothing. Texts of values that were popped therefore stay alive, on purpose, because a
/// copy may still be looking at them.
///
/// Names. A variable that an interpreter made has its name from the interpreter's table of names,
/// where each name is kept once and lasts as long as the interpreter. A variable made elsewhere has
/// a duplicate of its own.

/// What a value holds; the number is the value's `type`.
enum CaType : std::int32_t {
  TypeNothing = 0,
  TypeInteger = 1,
  TypeString = 2,
  TypeReal = 3,
  TypeVector = 4,
  TypePoint = 5,
  TypeMatrix = 6,
  TypeQuaternion = 7,
  TypeRotation = 8,
  TypeScale = 9,
};

/// The numbers that `CaObject::Kind` returns.
enum CaKind : std::int32_t {
  KindPlain = 0,
  KindValue = 10,
  KindVariable = 11,
  KindOperator = 12,
};

/// The routine of an operator or a built-in function: 1 for done, 0 for failed. The conventions
/// that all of them follow are told in dispatch.h.
using OperatorFn = std::int32_t (*)(CaInterpreter& interpreter);

class CaObject {
 public:
  virtual int Kind() const { return KindPlain; }

  /// Null for objects without a name; else good as long as the object.
  virtual const char* Name() const { return nullptr; }

  /// Never null; stays owned by the object (or is `NothingValue`).
  virtual const CaValue* Value() const;

  virtual int Apply(CaInterpreter& interpreter) const;

  virtual void Print(std::FILE* stream) const;

  // All objects have storage of one size, which does not depend on what stood in it.
  static void* operator new(std::size_t);
  static void operator delete(void* storage);
};

/// A value carries all ten members at once; `type` says which one counts, the others keep
/// whatever they last held.
class CaValue final : public CaObject {
 public:
  CaValue() = default;
  explicit CaValue(std::int32_t content) : type(TypeInteger), integer(content) {}
  explicit CaValue(const char* content);  // duplicated; not null
  explicit CaValue(double content) : type(TypeReal), real(content) {}
  explicit CaValue(const CyMatrix& content) : type(TypeMatrix), matrix(content) {}
  explicit CaValue(const CyQuaternion& content) : type(TypeQuaternion), quaternion(content) {}
  explicit CaValue(const CyRotation& content) : type(TypeRotation), rotation(content) {}

  /// The three types made of a `CyVector`; `tag` is TypeVector, TypePoint or TypeScale.
  CaValue(CaType tag, const CyVector& content);

  /// Copies every member as it stands; both values then share one text.
  CaValue(const CaValue&) = default;

  /// Takes over the source's type and the one member that it selects; the others stay. A text
  /// held before is freed, the new one duplicated. An unknown tag makes a value of type nothing.
  CaValue& operator=(const CaValue& source) {
    if (this == &source) return *this;
    if (type == TypeString) FreeText();
    Take(source);
    return *this;
  }

  int Kind() const override { return KindValue; }
  const CaValue* Value() const override { return this; }

  /// One blank, the value and a newline; nothing at all for a value of type nothing.
  void Print(std::FILE* stream) const override;

  std::int32_t type = TypeNothing;
  std::int32_t integer = 0;
  char* text = nullptr;
  double real = 0.0;
  CyVector vector;
  CyVector point;
  CyMatrix matrix;
  CyQuaternion quaternion;
  CyRotation rotation;
  CyVector scale;

 private:
  friend class CaVariable;

  /// The same as an assignment when this value holds no text. A real, which most values are,
  /// comes without a call.
  void Take(const CaValue& source) {
    type = source.type;
    if (type == TypeReal) {
      real = source.real;
    } else {
      TakeOther(source);
    }
  }
  void TakeOther(const CaValue& source);
  void FreeText();
};

class CaVariable final : public CaObject {
 public:
  /// Both may be null. The name is duplicated, the value assigned.
  CaVariable(const char* variableName, const CaValue* content);

  /// A variable of an interpreter; `variableName` must outlive it.
  CaVariable(CaName& variableName, const CaValue& content)
      : name(variableName.Text()), known(&variableName) {
    value.Take(content);
  }

  /// Frees the name if it is a duplicate.
  ~CaVariable();
  CaVariable(const CaVariable&) = delete;
  CaVariable& operator=(const CaVariable&) = delete;

  int Kind() const override { return KindVariable; }
  const char* Name() const override { return name; }
  const CaValue* Value() const override { return &value; }

  /// The value without the name; the name alone when the value is nothing.
  void Print(std::FILE* stream) const override;

  const char* name;
  CaValue value;
  CaName* known = nullptr;  // where `name` comes from; null for a duplicate
};

class CaOperator final : public CaObject {
 public:
  /// `operatorName` is kept as it is and must outlive the operator and its copies.
  CaOperator(OperatorFn routine, const char* operatorName, const CaValue& content,
             std::int32_t runsAlways);
  CaOperator(const CaOperator&) = default;
  CaOperator& operator=(const CaOperator&) = delete;

  int Kind() const override { return KindOperator; }
  const char* Name() const override { return name; }
  const CaValue* Value() const override { return &value; }

  /// Calls the routine and returns its result; while tokens are being skipped, only an operator
  /// whose `alwaysRun` is set is called and the others return 1.
  int Apply(CaInterpreter& interpreter) const override;

  /// The name behind a blank, without a newline.
  void Print(std::FILE* stream) const override;

  OperatorFn function;
  const char* name;
  CaValue value;
  std::int32_t alwaysRun;
};

/// The one value of type nothing that every failed lookup returns.
extern const CaValue NothingValue;

/// (0, 0, 0), from which the distance of a point is measured.
extern const CyVector Origin;

/// A private copy of `text`, to be released with std::free. Some of these copies stay alive on
/// purpose (see above); the leak checker is told so by this name.
char* DuplicateText(const char* text);

/// Lets the storage of objects that is not in use go when the calling thread ends.
void ReleaseAtThreadEnd();

// Those that run with every token.

/// As large as the largest object; see the check in object.cpp.
struct CaObjectStorage {
  alignas(alignof(CaVariable)) std::byte bytes[sizeof(CaVariable) + sizeof(OperatorFn)];
};

inline void* CaObject::operator new(std::size_t) { return CaRecycler<CaObjectStorage>::Take(); }
inline void CaObject::operator delete(void* storage) {
  CaRecycler<CaObjectStorage>::GiveBack(storage);
}

/// Releases the storage of `object`, which must be a value, a variable or an operator, as if it
/// were a plain value: whatever it refers to (its text, its name) stays alive. Deliberate: one
/// would expect the duplicated name of a variable to go with it. It stays readable. Held by
/// NamesOutliveTheirVariables in objects_test.cpp.
inline void DestroyAsValue(CaObject* object) { CaObject::operator delete(object); }
