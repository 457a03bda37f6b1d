// Uses the four members of HelpSys as a host would that is made with the platform's usual compiler.
// Compiled for that compiler's conventions, it asks its linker for their decorated names.

struct HWND__;
class HelpSys {
 public:
  HelpSys& operator=(const HelpSys& source);
  int getClickHelp();
  HWND__* getHelpHWnd();
  void setHelpHWnd(HWND__* window);
};

void Use(HelpSys& record, const HelpSys& source) {
  record = source;
  record.setHelpHWnd(record.getClickHelp() != 0 ? record.getHelpHWnd() : nullptr);
}
