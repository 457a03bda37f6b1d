#include "platform/results.h"

namespace {

// In the order of Outcome.
constexpr HRESULT Results[] = {
    S_OK,                     // Done
    STG_E_MEDIUMFULL,         // NoSpace
    E_OUTOFMEMORY,            // NoMemory
    STG_E_READFAULT,          // ReadFailed
    STG_E_WRITEFAULT,         // WriteFailed
    STG_E_PATHNOTFOUND,       // NoSuchPath
    STG_E_INVALIDNAME,        // BadPath
    STG_E_TOOMANYOPENFILES,   // TooManyOpenFiles
    STG_E_ACCESSDENIED,       // AccessDenied
    STG_E_SHAREVIOLATION,     // InUse
    STG_E_FILENOTFOUND,       // NoSuchFile
    STG_E_FILEALREADYEXISTS,  // NotCompound
    STG_E_OLDFORMAT,          // OldFormat
    STG_E_OLDDLL,             // NewerFormat
    STG_E_INVALIDHEADER,      // BadHeader
    STG_E_DOCFILECORRUPT,     // Corrupt
};
static_assert(static_cast<int>(Outcome::Corrupt) + 1 == sizeof Results / sizeof *Results);

}  // namespace

HRESULT ResultOf(Outcome outcome) { return Results[static_cast<int>(outcome)]; }
