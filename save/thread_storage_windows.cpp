/// Keeps the thread-local-storage directory of the compiler's run-time out of the library.
/// The system refuses to leave out thread notifications for a library that carries one.

#include <windows.h>

// The run-time's start-up code refers to this callback and skips it when it is null. Defining it
// here keeps the linker from taking the run-time's own, which is what brings the directory along;
// nothing in the library is thread-local.
extern "C" {
extern const PIMAGE_TLS_CALLBACK __dyn_tls_init_callback;
const PIMAGE_TLS_CALLBACK __dyn_tls_init_callback =
    nullptr;  // NOLINT(bugprone-reserved-identifier)
}
