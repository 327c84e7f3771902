// The printer driver's side of the plug-in, spoken to through its binary interface alone. Its verbs
// are letters, so that a job is a text, and a random or hostile text is a job too. Whatever the
// plug-in answers, a machine goes on: it judges nothing.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "config/oemdev.h"
#include "host/driver/driver_helper.h"

// What becomes of one spool write.
enum class WriteFault { None, Nothing, Short, Raise };

// The plug-in in this process; none is loaded twice, and no machine outlives it.
class LoadedPlugin {
 public:
  LoadedPlugin();
  ~LoadedPlugin();
  LoadedPlugin(const LoadedPlugin&) = delete;
  LoadedPlugin& operator=(const LoadedPlugin&) = delete;

 private:
  void* m_module;
};

// It is the driver's helper interface too.
class Machine final : public DriverHelper {
 public:
  Machine();
  ~Machine();  // ends whatever still runs
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  static constexpr CLSID kClass = {
      0x6D6ABF26, 0x9F38, 0x11D1, {0x88, 0x2A, 0x00, 0xC0, 0x4F, 0xB9, 0x61, 0xEC}};
  static inline HRESULT (*GetClassObject)(REFCLSID rclsid, REFIID riid, void** ppv) = nullptr;
  static inline HRESULT (*CanUnloadNow)() = nullptr;
  IPrintOemUni2* Object() const { return m_plugin; }

  HRESULT QueryInterface(REFIID riid, void** ppv) override;
  ULONG AddRef() override { return static_cast<ULONG>(++helperReferences); }
  ULONG Release() override { return static_cast<ULONG>(--helperReferences); }
  HRESULT DrvWriteSpoolBuf(PDEVOBJ, PVOID bytes, DWORD size, DWORD* written) override;

  // O object, o its release, + a further reference,
  // V driver enabled, v disabled, N new device context, D disabled, L and U server lock and unlock,
  // P helper interface published, F raster data passed on,
  // S document, E its end, X its abort, p page started, i a band, s page sent,
  // a b c whole pages, r device context reset within the document.
  // False when the plug-in reported a failure; an unknown letter is true.
  bool Do(char verb);

  // Runs the verbs as a driver does: a document in which something fails is aborted and the verbs
  // up to the next document are left out.
  void Run(std::string_view verbs);

  // A band whose shape, size and place need have nothing to do with each other. Its pixels are as
  // many bytes as its size says, without a size those of its rows; null: none are given.
  void OddBand(LONG width, LONG height, DWORD size, POINT at, bool blank, bool null = false);

  // The writes with the time in the header masked.
  std::vector<std::string> Writes() const;

  DEVMODEW publicDevmode = {};
  std::unique_ptr<OEMDEV> devmode;  // in a block of exactly its size
  LONG dpi = 203;
  LONG widthPx = 140;  // a page of more than 32 KiB, whose memory the next one takes over
  LONG heightPx = 80;
  LONG bandPx = 32;
  DWORD bandFormat = 5;
  ULONG paletteColors = 0;                     // above 0: the driver has a palette of its own
  std::function<DWORD(LONG x, LONG y)> paint;  // 0xRRGGBB of a pixel of every page; or null
  GDIINFO given = {};                          // the driver's own, to which the plug-in is asked
  GDIINFO info = {};                           // what it has made of that
  DWORD jobId = 7;
  std::function<void()> beforeFirst;  // runs before the first verb of a job

  bool notesCalls = false;   // puts calls of the driver's own functions among the writes
  BOOL driverResult = TRUE;  // of those functions

  std::vector<std::string> writes;
  std::string results;  // the verbs that failed
  long failWrite = 0;   // the write, from 1, that fails
  WriteFault writeFault = WriteFault::None;

  // What the plug-in must agree with.
  LONG objectReferences = 0;
  LONG locks = 0;
  LONG driverStarts = 0;
  LONG helperReferences = 0;  // held by the plug-in
  bool HasContext() const { return m_device.pdevOEM != nullptr; }

 private:
  // Calls a hook with the surface. False when it failed, or was never handed out.
  template <typename Function, typename... Arguments>
  bool Hook(ULONG index, Arguments... arguments);
  bool NewContext(DEVOBJ& device);
  bool Reset();
  bool Page(char picture);
  HRESULT Band(BITMAPINFOHEADER header, POINT at, const BYTE* pixels, bool blank);
  bool BandAt(LONG position);
  BOOL Note(const char* function);
  static Machine& Of(SURFOBJ* pso);
  DWORD Write(const void* bytes, DWORD size);
  static DWORD APIENTRY WriteSpool(PDEVOBJ device, PVOID bytes, DWORD size);

  IClassFactory* m_factory = nullptr;
  IPrintOemUni2* m_plugin = nullptr;
  HANDLE m_printer = nullptr;
  DRVPROCS m_procedures = {};
  DEVOBJ m_device = {};
  DRVENABLEDATA m_hooks = {};
  DEVINFO m_devInfo = {};
  SURFOBJ m_surface = {};
  LONG m_position = 0;
  char m_picture = 'a';
};
