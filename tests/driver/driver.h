// A printer driver that uses the plug-in through its binary interface alone. A verb returns whether
// the plug-in reported success; the driver carries on either way and judges nothing.
// Without an object a verb does nothing and succeeds.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "config/oemdev.h"
#include "host/driver/driver_helper.h"
#include "tests/driver/plugin.h"

// What happens to a spool write.
enum class WriteFault { None, Nothing, Short, Raise };

// One band of a page. Shape, size and place may contradict each other.
struct Band {
  LONG widthPx;
  LONG heightPx;
  DWORD sizeBytes;
  POINT offset;        // pixels in the page
  const BYTE* pixels;  // rows padded to 4 bytes; may be null
  bool blank = false;
};

// Also the driver's helper interface.
class Driver final : public DriverHelper {
 public:
  Driver();
  ~Driver();  // ends whatever still runs
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  // Opens another printer than "Label Printer" for the next devices.
  bool ChoosePrinter(std::basic_string<WCHAR> name);

  // The object. ReleaseObject also disables the device before the last reference goes.
  bool CreateObject();
  bool AddReference();
  bool ReleaseObject();
  bool LockServer();
  bool UnlockServer();

  // The driver instance and its device context. EnableDevice first disables the previous context.
  bool EnableDriver();
  bool DisableDriver();
  bool EnableDevice();
  bool DisableDevice();
  bool PublishHelper();
  bool PassRaster();  // through FilterGraphics
  // Ready for a document: object, driver and device.
  bool Open() { return CreateObject() && EnableDriver() && EnableDevice(); }

  // A document, page by page.
  bool StartDocument();
  bool EndDocument(FLONG flags = 0);
  bool AbortDocument() { return EndDocument(ED_ABORTDOC); }
  bool StartPage();
  bool StartBanding();
  bool SendBand();  // the next one of the page that is painted
  bool SendBand(const Band& band);
  bool SendPage();
  bool PrintPage(char picture);  // a whole page: 'a' both colours, 'b' only its black, 'c' another
  bool ResetDevice();            // within a document: a new device context takes the state over
  // A document with a page for each picture.
  bool PrintDocument(std::string_view pictures);

  void FailWriteNumber(long number, WriteFault fault);  // the first is 1

  // Settings. The next verb reads them; EnableDevice reads dpi, paletteColors and given.
  DEVMODEW publicDevmode = {};
  std::unique_ptr<OEMDEV> devmode;  // in a block of exactly its size
  LONG dpi = 203;
  LONG widthPx = 140;  // a page of more than 32 KiB
  LONG heightPx = 80;
  LONG bandPx = 32;
  DWORD bandFormat = 5;
  ULONG paletteColors = 0;                     // above 0: the driver has a palette of its own
  std::function<DWORD(LONG x, LONG y)> paint;  // 0xRRGGBB of a pixel of every page; or null
  GDIINFO given = {};                          // the driver's own geometry
  std::basic_string<WCHAR> documentName = WTEXT("job");
  DWORD jobId = 7;
  std::map<ULONG, BOOL> answers;  // of the driver's own functions, by index; TRUE if not set
  bool notesCalls = false;        // put the calls of those for documents and pages into writes
  std::function<void(std::string_view bytes)> spooler;  // takes the writes; or null

  // What the plug-in did.
  std::vector<std::string> writes;  // unless there is a spooler
  GDIINFO info = {};                // the geometry that it made of the driver's own
  HRESULT result = S_OK;            // the last method's
  BOOL hookResult = FALSE;          // the last hook's
  PBYTE bandResult = nullptr;       // what the last band handed back
  std::string lastCall;             // of the driver's own functions, with its arguments
  LONG helperReferences = 0;        // held by the plug-in

  // What this driver holds of the plug-in.
  LONG objectReferences = 0;
  LONG locks = 0;
  LONG driverStarts = 0;
  bool HasDevice() const { return m_device.pdevOEM != nullptr; }
  IPrintOemUni2* Object() const { return m_plugin; }
  DEVOBJ& Device() { return m_device; }
  const DEVINFO& DeviceInfo() const { return m_devInfo; }
  SURFOBJ& Surface() { return m_surface; }
  const DRVENABLEDATA& Hooks() const { return m_hooks; }

  HRESULT QueryInterface(REFIID riid, void** ppv) override;
  ULONG AddRef() override { return static_cast<ULONG>(++helperReferences); }
  ULONG Release() override { return static_cast<ULONG>(--helperReferences); }
  HRESULT DrvWriteSpoolBuf(PDEVOBJ, PVOID bytes, DWORD size, DWORD* written) override;

 private:
  template <typename Method>
  bool Succeeds(Method&& method);
  template <typename Function, typename... Arguments>
  bool CallHook(ULONG index, Arguments... arguments);
  bool EnableNewDevice();
  bool IsLandscape() const { return publicDevmode.dmOrientation == DMORIENT_LANDSCAPE; }
  bool PaintBand(LONG position);
  template <typename Arguments>
  static BOOL OwnFunction(SURFOBJ* pso, ULONG index, const char* name, Arguments&& arguments);
  static Driver& Of(SURFOBJ* pso);
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
  long m_writeCount = 0;
  long m_failWrite = 0;
  WriteFault m_writeFault = WriteFault::None;
};
