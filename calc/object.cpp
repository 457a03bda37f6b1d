#include "calc/object.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>

#include "calc/interpreter.h"
#include "calc/list.h"
#include "calc/recycler.h"
#include "calc/value_print.h"

const CaValue NothingValue;
const CyVector Origin(0.0, 0.0, 0.0);

#ifdef KEL_CHECKS_ADDRESSES
// Deliberate: the texts of popped values are never freed; see the head of object.h. The leak
// checker, which looks for these functions, is told the one that makes them.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:DuplicateText\n";
}
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_options() {
  return "print_suppressions=0";
}
// NOLINTEND(bugprone-reserved-identifier)
#endif

char* DuplicateText(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  void* copy = std::malloc(size);
  if (copy == nullptr) throw std::bad_alloc();
  return static_cast<char*>(std::memcpy(copy, text, size));
}

const CaValue* CaObject::Value() const { return &NothingValue; }

int CaObject::Apply(CaInterpreter&) const { return 1; }

void CaObject::Print(std::FILE*) const {}

CaValue::CaValue(const char* content) : type(TypeString), text(DuplicateText(content)) {}

CaValue::CaValue(CaType tag, const CyVector& content) : type(tag) {
  switch (tag) {
    case TypeVector:
      vector = content;
      break;
    case TypePoint:
      point = content;
      break;
    case TypeScale:
      scale = content;
      break;
    default:
      type = TypeNothing;
  }
}

// Deliberate: the pointer stays behind when the text is gone. It counts only while `type` says so.
// Held by AssignmentOverAString in objects_test.cpp.
void CaValue::FreeText() { std::free(text); }

void CaValue::TakeOther(const CaValue& source) {
  switch (source.type) {
    case TypeInteger:
      integer = source.integer;
      break;
    case TypeString:
      text = DuplicateText(source.text);
      break;
    case TypeVector:
      vector = source.vector;
      break;
    case TypePoint:
      point = source.point;
      break;
    case TypeMatrix:
      matrix = source.matrix;
      break;
    case TypeQuaternion:
      quaternion = source.quaternion;
      break;
    case TypeRotation:
      rotation = source.rotation;
      break;
    case TypeScale:
      scale = source.scale;
      break;
    default:
      type = TypeNothing;
  }
}

void CaValue::Print(std::FILE* stream) const { PrintValue(stream, *this); }

CaVariable::CaVariable(const char* variableName, const CaValue* content)
    : name(variableName == nullptr ? nullptr : DuplicateText(variableName)) {
  if (content != nullptr) value = *content;
}

CaVariable::~CaVariable() {
  if (known == nullptr) std::free(const_cast<char*>(name));
}

void CaVariable::Print(std::FILE* stream) const {
  if (value.type != TypeNothing) {
    value.Print(stream);
  } else if (name != nullptr) {
    std::fprintf(stream, " %s\n", name);
  }
}

CaOperator::CaOperator(OperatorFn routine, const char* operatorName, const CaValue& content,
                       std::int32_t runsAlways)
    : function(routine), name(operatorName), alwaysRun(runsAlways) {
  value = content;
}

int CaOperator::Apply(CaInterpreter& interpreter) const {
  return interpreter.Apply(function, alwaysRun);
}

void CaOperator::Print(std::FILE* stream) const { std::fprintf(stream, " %s", name); }

static_assert(sizeof(CaValue) <= sizeof(CaObjectStorage) &&
              sizeof(CaVariable) <= sizeof(CaObjectStorage) &&
              sizeof(CaOperator) <= sizeof(CaObjectStorage));
static_assert(std::is_trivially_destructible_v<CaValue>);

void ReleaseAtThreadEnd() { CaRecycler<CaObjectStorage>::ReleaseAtThreadEnd(); }
