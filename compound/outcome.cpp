#include "compound/outcome.h"

#include <cerrno>
#include <cstddef>

namespace {

struct ErrorOutcome {
  int error;
  Outcome outcome;
};

constexpr ErrorOutcome WritingErrors[] = {
    {0, Outcome::Done},        {ENOSPC, Outcome::NoSpace},  {EDQUOT, Outcome::NoSpace},
    {EFBIG, Outcome::NoSpace}, {ENOMEM, Outcome::NoMemory},
};

constexpr ErrorOutcome OpeningErrors[] = {
    {0, Outcome::Done},
    {ENOENT, Outcome::NoSuchPath},
    {ENOTDIR, Outcome::NoSuchPath},
    {ENAMETOOLONG, Outcome::BadPath},
    {EMFILE, Outcome::TooManyOpenFiles},
    {ENFILE, Outcome::TooManyOpenFiles},
    {ENOSPC, Outcome::NoSpace},
    {EDQUOT, Outcome::NoSpace},
    {ENOMEM, Outcome::NoMemory},
};

template <std::size_t Size>
Outcome Find(int error, const ErrorOutcome (&table)[Size], Outcome otherwise) {
  for (const ErrorOutcome& row : table) {
    if (row.error == error) return row.outcome;
  }
  return otherwise;
}

}  // namespace

Outcome OutcomeOfWriting(int error) { return Find(error, WritingErrors, Outcome::WriteFailed); }

Outcome OutcomeOfOpening(int error) { return Find(error, OpeningErrors, Outcome::AccessDenied); }
