// A driver that knows the published structures only. It loads the plug-in, keeps what the plug-in
// writes and which of the driver's own functions were called, in one list.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "config/oemdev.h"
#include "platform/print_oem.h"

class Client {
 public:
  Client();
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  static constexpr CLSID kClass = {
      0x6D6ABF26, 0x9F38, 0x11D1, {0x88, 0x2A, 0x00, 0xC0, 0x4F, 0xB9, 0x61, 0xEC}};
  HRESULT GetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) const;
  HRESULT CanUnloadNow() const;

  // Makes the plug-in object and a device context on the default printer.
  void Enable(LONG widthPx, LONG heightPx);
  // Replaces the device context as an application's reset does: a new one takes the state over.
  void Reset();
  void Disable();

  BOOL StartDoc(LPCWSTR name = WTEXT("job"), DWORD jobId = 7);
  // Draws and sends a page in bands; color gives 0xRRGGBB of a pixel.
  BOOL Page(const std::function<DWORD(LONG x, LONG y)>& color, LONG bandPx = 10);
  BOOL EndDoc(FLONG fl = 0);

  // Writes with the PNG bytes shown as "<png WxH BITS-bit HASH>" and the header's time as "<time>".
  std::vector<std::string> Events() const;
  void ClearEvents() { m_events.clear(); }

  DEVMODEW publicDevmode = {};
  OEMDEV devmode = {};
  IPrintOemUni2* plugin = nullptr;
  BOOL driverResult = TRUE;  // of the driver's own functions

 private:
  template <typename Function>
  Function Hook(ULONG index) const;
  BOOL Note(const char* function);
  void EnableDevice(DEVOBJ& device);
  BOOL SendBand(LONG x, LONG y, LONG widthPx, LONG heightPx);
  static Client& Of(SURFOBJ* pso);

  void* m_module;
  HANDLE m_printer = nullptr;
  DRVPROCS m_procedures = {};
  DEVOBJ m_device = {};
  DRVENABLEDATA m_hooks = {};
  DEVINFO m_devInfo = {};
  SURFOBJ m_surface = {};
  LONG m_widthPx = 0;
  LONG m_heightPx = 0;
  std::function<DWORD(LONG, LONG)> m_color;
  std::vector<std::string> m_events;
};
