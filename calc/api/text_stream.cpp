#include "calc/api/text_stream.h"

#include <new>
#include <utility>

#include <sys/types.h>

namespace kel {
namespace {

using Receive = std::function<void(std::string_view)>;

ssize_t WriteToFunction(void* receive, const char* bytes, std::size_t size) {
  (*static_cast<const Receive*>(receive))({bytes, size});
  return static_cast<ssize_t>(size);
}

}  // namespace

TextStream::TextStream(bool gathered, Receive receive)
    : receive_(std::move(receive)),
      stream_(fopencookie(&receive_, "w", {nullptr, WriteToFunction, nullptr, nullptr})) {
  if (stream_ == nullptr) throw std::bad_alloc();
  if (!gathered) std::setvbuf(stream_, nullptr, _IONBF, 0);
}

TextStream::~TextStream() { std::fclose(stream_); }

}  // namespace kel
