#pragma once

struct CaInterpreter;
struct CaItem;

/// Is told of every item of a program, for whoever looks at what is no failure. Nothing that it
/// does may change the interpreter.
class CaItemObserver {
 public:
  CaItemObserver() = default;
  CaItemObserver(const CaItemObserver&) = delete;
  CaItemObserver& operator=(const CaItemObserver&) = delete;
  virtual ~CaItemObserver() = default;

  /// `item` has run, or was skipped when the interpreter was skipping before it; a failure was told
  /// before. It stands at the input's marked position. The value of a compound belongs to the
  /// stack now, or is gone.
  virtual void ItemRan(const CaInterpreter& interpreter, const CaItem& item) = 0;

  /// A byte that begins nothing was passed over: one without a class, or a blank above 7F, which
  /// people take for a sign. It stands at the marked position.
  virtual void BytePassedOver(const CaInterpreter& interpreter, unsigned char byte) = 0;
};
