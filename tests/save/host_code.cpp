// Host code as it is written for Windows: it compiles on every system. Nothing runs it.
// NOLINTBEGIN(google-readability-casting,modernize-use-nullptr)

#include <kelsave.h>

#ifndef _WIN32
#include "platform/host_strings.h"
#endif

HRESULT Mark(LPSTORAGE storage, LPCWSTR name, HelpSys& help, SliderRecord& slider) {
  help.setHelpHWnd(reinterpret_cast<HWND>(0x1234));
  HWND window = help.helpWindow;
  slider.trackWindow = window != nullptr ? window : HWND(0);
  slider.thumbWindow = NULL;
  BOOL done = SetKelProcess(&slider, 0, 1, 1, TRUE);
  CLSID clsid = GUID_NULL;
  if (done == FALSE && IsEqualGUID(clsid, GUID_NULL)) return WriteClassStg(storage, clsid);
  LPSTREAM stream = nullptr;
  const LPCOLESTR wanted = name != nullptr ? name : OLESTR("Scene");
  return storage->CreateStream(wanted, STGM_CREATE | STGM_WRITE | STGM_SHARE_EXCLUSIVE, 0, 0,
                               &stream);
}

#ifndef _WIN32
CStr Named() {
  CStr s = "x";
  return s;
}
#endif
// NOLINTEND(google-readability-casting,modernize-use-nullptr)
