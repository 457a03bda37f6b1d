#include "geometry/messages.h"

#include <cstdio>

namespace {

constinit thread_local CyMessageScope* Innermost = nullptr;

}  // namespace

CyMessageScope::CyMessageScope(CyMessageReceiver receive, void* context) noexcept
    : receive_(receive), context_(context), outer_(Innermost) {
  Innermost = this;
}

CyMessageScope::~CyMessageScope() { Innermost = outer_; }

void CyReport(const char* message) noexcept {
  if (Innermost != nullptr) return Innermost->receive_(Innermost->context_, message);
  std::fputs(message, stderr);
}
