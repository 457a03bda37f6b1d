#pragma once

/// KelSave: saves the scenes of a 3-D editor into compound files.
///
/// This is all that a host needs, and the kit over it, `kelsave_kit.h`, does most of a host's part.
/// Without the kit a host implements `SaveInterface`, registers the object once with
/// `SetSaveInterface` and calls `SaveToFileDLL` for every save:
///
///   MySaver saver;                               // implements SaveInterface
///   SetSaveInterface(&saver);
///   int written = SaveToFileDLL("scene.kel", 1, 0, 0);
///
/// The library is ready as soon as it is loaded and needs no shutting down. Everything in it is
/// called on one thread, the one of the user interface: it creates no thread and takes no lock.
/// Texts are in the host's character set, on Windows the process's code page and elsewhere UTF-8.
/// Nothing here throws by itself.
///
/// On Windows the library is a 32-bit one; its functions are `__cdecl`, members `__thiscall`.

#include <cstdint>
#include <type_traits>

#include "platform/resources.h"
#include "platform/storage.h"
#include "platform/window.h"

/// The version, and one number for comparisons with `#if`: 10000 times the major number, 100 times
/// the minor and the patch added up.
#define KELSAVE_VERSION_MAJOR 0
#define KELSAVE_VERSION_MINOR 1
#define KELSAVE_VERSION_PATCH 0
#define KELSAVE_VERSION \
  (10000 * KELSAVE_VERSION_MAJOR + 100 * KELSAVE_VERSION_MINOR + KELSAVE_VERSION_PATCH)

#ifdef _WIN32
#ifdef KELSAVE_BUILD
#define KEL_EXPORT  // the module definition file says what is exported
#else
#define KEL_EXPORT __declspec(dllimport)
#endif
#else
#define KEL_EXPORT __attribute__((visibility("default")))
#endif

/// What a host implements: the library calls these operations during `SaveToFileDLL`, and at no
/// other time. They are called by their position, so their order never changes.
///
/// The writers (`SaveScene`, `SaveSection1` to 6) put everything into the file, through the storage
/// that `SetStorage` received. A writer must check the result of every write, and the one that
/// writes last must call `IStorage::Commit` and check it too: the library releases the storage
/// without looking, so what a writer reports is all that stands between a full disk and a scene
/// that only seems to be saved. A writer that returns nonzero ends the save: no later one is
/// called and the new file is deleted.
///
/// An operation may ask for another save; that one returns 1 at once and does nothing. None may
/// throw: the exception passes through to whoever called `SaveToFileDLL`, and the library goes on
/// as if that save still ran: every later call returns 1 and saves nothing, until the process ends.
/// The library never deletes the object.
class SaveInterface {
 public:
  /// Slot 0. The first writer. `scene` is what `OpenScene` returned, unchecked.
  /// 0 when written, anything else is failure.
  virtual int SaveScene(void* scene) = 0;

  /// Slots 1 to 6. The other writers. They run in the order 5 and 6 (or 6 and 5, see
  /// `SaveSection5First`), 4, 3, 2, 1. 0 when written, anything else is failure.
  virtual int SaveSection1() = 0;
  virtual int SaveSection2() = 0;
  virtual int SaveSection3() = 0;
  virtual int SaveSection4() = 0;
  virtual int SaveSection5() = 0;
  virtual int SaveSection6() = 0;

  /// Slot 7. Which of two names the backup gets: true for the host string 63348, false for 60122.
  /// Asked only when a backup is made.
  virtual bool UseAlternateBackupName() = 0;

  /// Slot 8. Asked once, just before `SaveScene`. `name` is always L"Scene" and `code` 0x200E;
  /// `sceneArgument` comes from `SaveToFileDLL`. The result, of any meaning and also null, is
  /// handed to `SaveScene`; it stays the host's.
  virtual void* OpenScene(const wchar_t* name, int code, int sceneArgument) = 0;

  /// Slot 9. Nonzero when there is a file `fileName`. Asked once before the old file's write
  /// permission is looked at, and again before a backup is made.
  virtual int FileExists(const char* fileName) = 0;

  /// Slot 10. Called with 0 and 1 after `MarkSaved`.
  virtual void UpdateAfterSave(int first, int second) = 0;

  /// Slot 11. Called before anything is touched, if `NeedsPrepareSave` asked for it.
  virtual void PrepareSave() = 0;

  /// Slot 12. The first operation of every save; nonzero makes it call `PrepareSave`.
  virtual int NeedsPrepareSave() = 0;

  /// Slot 13. The folder that receives the backup; `number` is always 13. The text stays the
  /// host's and must be good until this operation's caller has copied it, which it does at once.
  /// One backslash is added, also after a text that ends in one. Null means no backup.
  virtual const char* GetDirectory(int number) = 0;

  /// Slot 14. Called with 0 and then 1 at the end of a successful save, if `HasAfterSaveSteps`
  /// asked for it.
  virtual void RunAfterSaveStep(int step) = 0;

  /// Slot 15. Asked after a successful save; nonzero makes it call `RunAfterSaveStep` twice.
  virtual int HasAfterSaveSteps() = 0;

  /// Slot 16. Called before the writers with the new, empty file. The library owns the reference
  /// and releases it after the last writer, before it reports the outcome; a host that wants the
  /// storage for longer takes one of its own (`AddRef`) and releases it itself. While any
  /// reference is held the file stays open.
  virtual void SetStorage(IStorage* storage) = 0;

  /// Slot 17. Nonzero allows a backup of the old file. Not asked when `SaveToFileDLL` was told to
  /// make none.
  virtual int WantsBackup() = 0;

  /// Slot 18. A writer failed; the new file is deleted by now. Not called when the file could not
  /// be created at all.
  virtual void SaveFailed() = 0;

  /// Slot 19. Called with "Classes Used" between the sections 5 and 6 and the section 4.
  virtual void AnnounceSection(const char* name) = 0;

  /// Slot 20. The scene was saved; called only when `SaveToFileDLL` was told to notify.
  virtual void MarkSaved() = 0;

  /// Slot 21. True to have `SaveSection5` called before `SaveSection6`, false for the reverse.
  /// Asked after `SaveScene` succeeded.
  virtual bool SaveSection5First() = 0;

 protected:
  ~SaveInterface() = default;  // not virtual: a virtual destructor would add a slot
};

/// The host's record of its help system, shared with the library by layout: six words of 32 bits.
/// A plain record that owns nothing; the host makes it and the library only sees it in these four
/// functions.
class HelpSys {
 public:
  std::int32_t clickHelp;     // state of the click help
  KelWindowWord helpWindow;   // the help window
  std::int32_t hostOwned[4];  // never looked at by the library, only copied

  HelpSys() = default;
  HelpSys(const HelpSys&) = default;

  /// Copies all six words, in this order, and returns this record.
  KEL_EXPORT HelpSys& operator=(const HelpSys& source);

  /// The state of the click help.
  KEL_EXPORT int getClickHelp();

  /// The help window, which may be null.
  KEL_EXPORT HWND getHelpHWnd();

  /// Stores `window`, whatever it is, as the help window.
  KEL_EXPORT void setHelpHWnd(HWND window);
};
static_assert(sizeof(HelpSys) == 24, "the host's layout");
static_assert(std::is_standard_layout<HelpSys>::value, "the host's layout");

/// The host's record of one slider, shared with the library by layout. The range is `lower` to
/// `upper`, both included. A plain record that owns nothing.
struct SliderRecord {
  std::int32_t hostOwned[13];  // never looked at by the library
  std::int32_t position;
  std::int32_t lower;
  std::int32_t upper;
  KelWindowWord trackWindow;
  KelWindowWord thumbWindow;  // lies inside the track's parent
};
static_assert(sizeof(SliderRecord) == 72, "the host's layout");
static_assert(std::is_standard_layout<SliderRecord>::value, "the host's layout");

extern "C" {

/// Saves the scene into the file `fileName`, which is replaced, by calling the registered
/// SaveInterface. The path is only read; it must not be null.
/// `notifyOnSuccess`: nonzero has `MarkSaved` and `UpdateAfterSave` called after a success.
/// `noBackup`: nonzero keeps no backup of the old file, and `WantsBackup` is not asked.
/// `sceneArgument`: handed to `OpenScene` as it is.
/// Returns 1 when the file was written, and also when a save is already running, in which case
/// nothing is done. Returns 0 when no interface is registered, when the file could not be created
/// or there is no memory (`SaveFailed` is not called), or when a writer failed (the new file is
/// deleted, `SaveFailed` is called). A backup that was made stays where it is in every case. Throws
/// nothing itself, whatever is lacking; an exception of the host's passes through, see there. Shows
/// the wait cursor while it works and the arrow at the end.
KEL_EXPORT int SaveToFileDLL(const char* fileName, int notifyOnSuccess, int noBackup,
                             int sceneArgument);

/// Registers `host` for the saves to come, in place of any before it, and returns 1. The object
/// stays the host's and must live until another, or null, is registered and no save is running.
/// With null every save fails. A save that is running keeps the object it began with.
KEL_EXPORT int SetSaveInterface(SaveInterface* host);

/// The code that belongs to the bits 4 to 11 of `code`; its other bits do not matter.
KEL_EXPORT std::uint16_t GetChunkCode(std::uint16_t code);

/// Stores `newPosition` in `slider->position`, first brought toward zero to a multiple of `step`
/// if `snap` is nonzero and `mode` is 0 or 1, then kept within the range. If `lower` exceeds
/// `upper` it becomes `upper`. A `step` of 0 leaves the position as it is.
/// Returns 1 when the position changed, else 0. `slider` must not be null.
KEL_EXPORT int SetKelProcess(SliderRecord* slider, int mode, int newPosition, int step, int snap);

/// The position that a distance of `pixels` along the track stands for; it is not stored. With
/// `mode` 0 or 1 it is the nearest multiple of `step` (0 does not round), in the range in any case.
/// Fills `track` with the track's client rectangle in its own coordinates and `thumb` with the
/// thumb's in those of its parent; a rectangle whose window is gone is used as it was passed in.
/// No pointer may be null.
KEL_EXPORT int AdjustKelProcess(SliderRecord* slider, int mode, int pixels, int step, RECT* track,
                                RECT* thumb);

/// How many pixels the thumb can travel, at least 1, with `margin` pixels kept free on both sides.
/// Fills `track` and `thumb` as AdjustKelProcess does. Neither may be null.
KEL_EXPORT int ReviseKelProcess(HWND trackWindow, HWND thumbWindow, RECT* track, RECT* thumb,
                                int margin);

}  // extern "C"
