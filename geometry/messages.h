#pragma once

/// Receives one message of an operation: a line with its line end, good until it returns. It is
/// called in the middle of the operation, on its thread, and must not throw.
using CyMessageReceiver = void (*)(void* context, const char* message) noexcept;

/// As long as it lives, the messages of the operations on its thread go to `receive`, together
/// with `context`, which is borrowed. Otherwise they go to the standard error stream. Scopes of
/// one thread nest: the innermost receives.
class CyMessageScope {
 public:
  CyMessageScope(CyMessageReceiver receive, void* context) noexcept;
  ~CyMessageScope();
  CyMessageScope(const CyMessageScope&) = delete;
  CyMessageScope& operator=(const CyMessageScope&) = delete;

 private:
  friend void CyReport(const char* message) noexcept;

  CyMessageReceiver receive_;
  void* context_;
  CyMessageScope* outer_;
};

/// Hands `message` to this thread's receiver. For the operations.
void CyReport(const char* message) noexcept;
