#include <kelsave.h>
#include <algorithm>
#include <iterator>

#include "platform/window.h"

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): copying a record onto itself does no harm
HelpSys& HelpSys::operator=(const HelpSys& source) {
  clickHelp = source.clickHelp;
  helpWindow = source.helpWindow;
  // Unlike std::copy, this may copy a record onto itself.
  std::copy_n(source.hostOwned, std::size(source.hostOwned), hostOwned);
  return *this;
}

int HelpSys::getClickHelp() { return clickHelp; }

HWND HelpSys::getHelpHWnd() { return helpWindow; }

void HelpSys::setHelpHWnd(HWND window) { helpWindow = window; }
