// A host as the platform's usual compiler makes it, without that compiler's headers and run-time:
// it declares the ten exports by itself, calls each, and ends with 0 when all have answered.

#define IMPORTED __declspec(dllimport)

struct HWND__;
class HelpSys {
 public:
  int words[6];
  IMPORTED HelpSys& operator=(const HelpSys& source);
  IMPORTED int getClickHelp();
  IMPORTED HWND__* getHelpHWnd();
  IMPORTED void setHelpHWnd(HWND__* window);
};

extern "C" {
IMPORTED int SaveToFileDLL(const char* fileName, int notify, int noBackup, int sceneArgument);
IMPORTED int SetSaveInterface(void* host);
IMPORTED unsigned short GetChunkCode(unsigned short code);
IMPORTED int SetKelProcess(void* slider, int mode, int newPosition, int step, int snap);
IMPORTED int AdjustKelProcess(void* slider, int mode, int pixels, int step, long* track,
                              long* thumb);
IMPORTED int ReviseKelProcess(HWND__* trackWindow, HWND__* thumbWindow, long* track, long* thumb,
                              int margin);
int start();
}

int start() {
  const HelpSys source = {{7}};
  HelpSys record;
  record = source;
  auto* const window = reinterpret_cast<HWND__*>(&record);
  record.setHelpHWnd(window);
  int slider[18] = {};
  slider[15] = 100;  // the upper bound
  long track[4] = {0, 0, 200, 0};
  long thumb[4] = {0, 0, 20, 0};
  const bool answered = SetSaveInterface(nullptr) == 1 && SaveToFileDLL("never", 0, 0, 0) == 0 &&
                        GetChunkCode(0x10) == 0x1021 && SetKelProcess(slider, 2, 47, 1, 0) == 1 &&
                        AdjustKelProcess(slider, 2, 75, 1, track, thumb) == 50 &&
                        ReviseKelProcess(nullptr, nullptr, track, thumb, 16) == 150 &&
                        record.getClickHelp() == 7 && record.getHelpHWnd() == window;
  return answered ? 0 : 1;
}
