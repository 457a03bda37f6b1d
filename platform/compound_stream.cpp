#include "platform/compound_stream.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "compound/disk.h"
#include "compound/document.h"
#include "platform/element.h"
#include "platform/results.h"

namespace {

constexpr DWORD AccessMask = 3;
constexpr std::size_t CopyPiece = 64 * 1024;

}  // namespace

HRESULT CompoundStream::QueryInterface(REFIID riid, void** ppvObject) {
  if (ppvObject == nullptr) return E_POINTER;
  *ppvObject = nullptr;
  if (riid != IID_IUnknown && riid != IID_ISequentialStream && riid != IID_IStream) {
    return E_NOINTERFACE;
  }
  *ppvObject = static_cast<IStream*>(this);
  AddRef();
  return S_OK;
}

ULONG CompoundStream::AddRef() { return ++references_; }

ULONG CompoundStream::Release() {
  const ULONG left = --references_;
  if (left == 0) delete this;
  return left;
}

HRESULT CompoundStream::Read(void* pv, ULONG cb, ULONG* pcbRead) {
  if (pcbRead != nullptr) *pcbRead = 0;
  if (IsReverted()) return STG_E_REVERTED;
  if (pv == nullptr && cb > 0) return STG_E_INVALIDPOINTER;
  if ((mode_ & AccessMask) == STGM_WRITE) return STG_E_ACCESSDENIED;
  std::size_t done = 0;
  const HRESULT result =
      Guarded([&] { return document_->Read(*entry_, position_, pv, cb, &done); });
  position_ += done;
  if (pcbRead != nullptr) *pcbRead = static_cast<ULONG>(done);
  return result;
}

HRESULT CompoundStream::Write(const void* pv, ULONG cb, ULONG* pcbWritten) {
  if (pcbWritten != nullptr) *pcbWritten = 0;
  if (IsReverted()) return STG_E_REVERTED;
  if (pv == nullptr && cb > 0) return STG_E_INVALIDPOINTER;
  if ((mode_ & AccessMask) == STGM_READ) return STG_E_ACCESSDENIED;
  if (position_ > std::numeric_limits<std::uint64_t>::max() - cb) return STG_E_MEDIUMFULL;
  std::size_t done = 0;
  const HRESULT result =
      Guarded([&] { return document_->Written()->Write(*entry_, position_, pv, cb, &done); });
  position_ += done;
  if (pcbWritten != nullptr) *pcbWritten = static_cast<ULONG>(done);
  return result;
}

HRESULT CompoundStream::Seek(LARGE_INTEGER dlibMove, DWORD dwOrigin,
                             ULARGE_INTEGER* plibNewPosition) {
  if (IsReverted()) return STG_E_REVERTED;
  if (dwOrigin > STREAM_SEEK_END) return STG_E_INVALIDFUNCTION;
  const std::uint64_t origins[] = {0, position_, entry_->size};
  const std::uint64_t origin = origins[dwOrigin];
  const auto move = static_cast<std::uint64_t>(dlibMove.QuadPart);
  const bool back = dwOrigin != STREAM_SEEK_SET && dlibMove.QuadPart < 0;
  if (back && origin < 0 - move) return STG_E_INVALIDFUNCTION;
  if (dwOrigin == STREAM_SEEK_SET && dlibMove.QuadPart < 0) return STG_E_INVALIDFUNCTION;
  if (!back && origin + move < origin) return STG_E_INVALIDFUNCTION;
  position_ = origin + move;
  if (plibNewPosition != nullptr) plibNewPosition->QuadPart = position_;
  return S_OK;
}

HRESULT CompoundStream::SetSize(ULARGE_INTEGER libNewSize) {
  if (IsReverted()) return STG_E_REVERTED;
  if ((mode_ & AccessMask) == STGM_READ) return STG_E_ACCESSDENIED;
  return Guarded([&] { return document_->Written()->Resize(*entry_, libNewSize.QuadPart); });
}

HRESULT CompoundStream::CopyTo(IStream* pstm, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead,
                               ULARGE_INTEGER* pcbWritten) {
  std::uint64_t read = 0;
  std::uint64_t written = 0;
  const HRESULT result = Guarded([&]() -> HRESULT {
    if (IsReverted()) return STG_E_REVERTED;
    if (pstm == nullptr) return STG_E_INVALIDPOINTER;
    // Only what is there now: a copy onto its own end would never finish.
    std::uint64_t left = entry_->size > position_ ? entry_->size - position_ : 0;
    left = std::min<std::uint64_t>(left, cb.QuadPart);
    std::vector<std::byte> bytes(AtMost(CopyPiece, left));
    while (left > 0) {
      ULONG got = 0;
      ULONG put = 0;
      const auto part = static_cast<ULONG>(std::min<std::uint64_t>(left, bytes.size()));
      HRESULT step = Read(bytes.data(), part, &got);
      read += got;
      if (FAILED(step) || got == 0) return step;
      step = pstm->Write(bytes.data(), got, &put);
      written += put;
      if (FAILED(step)) return step;
      if (put < got) return STG_E_WRITEFAULT;
      left -= got;
    }
    return S_OK;
  });
  if (pcbRead != nullptr) pcbRead->QuadPart = read;
  if (pcbWritten != nullptr) pcbWritten->QuadPart = written;
  return result;
}

HRESULT CompoundStream::Commit(DWORD /*grfCommitFlags*/) {
  return IsReverted() ? STG_E_REVERTED : S_OK;
}

HRESULT CompoundStream::Revert() { return IsReverted() ? STG_E_REVERTED : S_OK; }

HRESULT CompoundStream::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) {
  return IsReverted() ? STG_E_REVERTED : STG_E_INVALIDFUNCTION;
}

HRESULT CompoundStream::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) {
  return IsReverted() ? STG_E_REVERTED : STG_E_INVALIDFUNCTION;
}

HRESULT CompoundStream::Stat(STATSTG* pstatstg, DWORD grfStatFlag) {
  if (IsReverted()) return STG_E_REVERTED;
  if (pstatstg == nullptr) return STG_E_INVALIDPOINTER;
  if (grfStatFlag > STATFLAG_NONAME) return STG_E_INVALIDFLAG;
  return StatEntry(*entry_, grfStatFlag, mode_, pstatstg);
}

HRESULT CompoundStream::Clone(IStream** ppstm) {
  if (ppstm == nullptr) return STG_E_INVALIDPOINTER;
  *ppstm = nullptr;
  if (IsReverted()) return STG_E_REVERTED;
  auto* clone = new (std::nothrow) CompoundStream(document_, entry_, mode_);
  if (clone == nullptr) return E_OUTOFMEMORY;
  clone->position_ = position_;
  *ppstm = clone;
  return S_OK;
}
