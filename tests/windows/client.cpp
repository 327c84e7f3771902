// client PLUGIN FOLDER CALL...
// A printer driver that follows a script: it loads the plug-in and makes the calls, "name" or
// "name:argument", in that order. It writes the job and what the calls returned to the files "job"
// and "calls" in the folder, which exists. Log and page images are the plug-in's own (VLX_LOG,
// VLX_SAVE_BITMAPS). Exits 1 if a call cannot be made; what the calls return is no error.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "tests/driver/driver.h"
#include "tests/windows/files.h"

namespace {

class Client {
 public:
  Client(const std::string& pluginPath, const std::string& folder)
      : m_job(folder + "/job", std::ios::binary),
        m_calls(folder + "/calls", std::ios::binary),
        m_plugin(pluginPath) {
    if (!m_job || !m_calls) throw std::runtime_error(folder + " cannot be written to");
    m_driver.spooler = [this](std::string_view bytes) { m_job << bytes; };
    m_driver.publicDevmode.dmSpecVersion = DM_SPECVERSION;
    m_driver.publicDevmode.dmSize = sizeof(DEVMODEW);
    SetPublic("paper=256,width=1000,length=600,resolution=300");
  }

  // Makes one call and notes what it returned, with the last error if it failed.
  void Call(const std::string& call);

 private:
  IPrintOemUni2* Object() const {
    if (m_driver.Object() == nullptr) throw std::runtime_error("There is no object yet");
    return m_driver.Object();
  }
  HRESULT Done(bool done) const { return done ? S_OK : E_FAIL; }
  HRESULT Result(bool) const { return m_driver.result; }  // of the verb that was called

  // field=number,... of the public devmode
  void SetPublic(const std::string& fields) {
    static constexpr std::pair<const char*, SHORT DEVMODEW::*> kFields[] = {
        {"orientation", &DEVMODEW::dmOrientation}, {"paper", &DEVMODEW::dmPaperSize},
        {"length", &DEVMODEW::dmPaperLength},      {"width", &DEVMODEW::dmPaperWidth},
        {"copies", &DEVMODEW::dmCopies},           {"resolution", &DEVMODEW::dmYResolution},
        {"collate", &DEVMODEW::dmCollate}};
    std::istringstream list(fields);
    for (std::string name, value; std::getline(list, name, '=') && std::getline(list, value, ',');) {
      const auto* field = std::find_if(std::begin(kFields), std::end(kFields),
                                       [&](const auto& known) { return known.first == name; });
      if (field == std::end(kFields)) throw std::runtime_error("There is no field " + name);
      m_driver.publicDevmode.*field->second = static_cast<SHORT>(std::stoi(value));
    }
    // The paper in tenths of a millimetre, as the driver knows it before the plug-in fits it.
    const DEVMODEW& devmode = m_driver.publicDevmode;
    m_driver.dpi = devmode.dmYResolution;
    LONG width = devmode.dmPaperWidth, length = devmode.dmPaperLength;
    if (devmode.dmOrientation == DMORIENT_LANDSCAPE) std::swap(width, length);
    m_driver.given.szlPhysSize = {width * m_driver.dpi / 254, length * m_driver.dpi / 254};
    m_driver.given.ulHorzSize = static_cast<ULONG>(-100 * width);
    m_driver.given.ulVertSize = static_cast<ULONG>(-100 * length);
    m_driver.given.ulHorzRes = static_cast<ULONG>(m_driver.given.szlPhysSize.cx);
    m_driver.given.ulVertRes = static_cast<ULONG>(m_driver.given.szlPhysSize.cy);
  }

  HRESULT ReadRecord(const std::string& path) {
    const std::vector<BYTE> bytes = ReadBytes(path);
    if (bytes.size() != sizeof(OEMDEV)) throw std::runtime_error(path + " is no record");
    std::memcpy(m_driver.devmode.get(), bytes.data(), sizeof(OEMDEV));
    return S_OK;
  }

  // Notes the bytes of the record that are not 0.
  void NoteRecord() {
    const auto* bytes = reinterpret_cast<const BYTE*>(m_driver.devmode.get());
    std::ostringstream text;
    for (std::size_t i = 0; i < sizeof(OEMDEV); ++i) {
      if (bytes[i] != 0) text << ' ' << std::hex << i << '=' << int{bytes[i]};
    }
    m_note += text.str();
  }

  HRESULT ConvertRecord(DWORD mode) {
    std::vector<BYTE> in(sizeof(OEMDEV));
    std::memcpy(in.data(), m_driver.devmode.get(), in.size());
    DEVMODEW publicDevmode = m_driver.publicDevmode;
    publicDevmode.dmDriverExtra = sizeof(OEMDEV);
    OEMDMPARAM block = {};
    block.cbSize = sizeof block;
    block.pPublicDMIn = block.pPublicDMOut = &publicDevmode;
    block.pOEMDMIn = in.data();
    block.pOEMDMOut = m_driver.devmode.get();
    block.cbBufSize = sizeof(OEMDEV);
    const HRESULT hr = Object()->DevMode(mode, &block);
    m_note += " size " + std::to_string(block.cbBufSize);
    NoteRecord();
    return hr;
  }

  HRESULT EnableDevice() {
    m_driver.EnableDevice();
    const GDIINFO& info = m_driver.info;
    for (const ULONG value : {info.ulHorzSize, info.ulVertSize, info.ulHorzRes, info.ulVertRes}) {
      m_note += " " + std::to_string(static_cast<LONG>(value));
    }
    for (const LONG value : {info.szlPhysSize.cx, info.szlPhysSize.cy, info.ptlPhysOffset.x,
                             info.ptlPhysOffset.y}) {
      m_note += " " + std::to_string(value);
    }
    if (m_driver.DeviceInfo().hpalDefault != nullptr) m_note += " palette";
    return m_driver.result;
  }

  HRESULT PrintPage(const std::string& path) {
    const Picture page = ReadPicture(path);
    m_driver.widthPx = page.widthPx;
    m_driver.heightPx = page.heightPx;
    m_driver.paint = [&page](LONG x, LONG y) {
      const BYTE* pixel = page.pixels.data() + 3 * (static_cast<std::size_t>(y) * page.widthPx + x);
      return static_cast<DWORD>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]);
    };
    return Done(m_driver.PrintPage('a'));
  }

  // The methods that a plug-in may leave to the driver.
  HRESULT CallDeclined() {
    DWORD number = 0;
    INT result = 1;
    for (const HRESULT hr : {Object()->CommandCallback(nullptr, 1, 0, nullptr, &result),
                             Object()->MemoryUsage(nullptr, nullptr),
                             Object()->TTYGetInfo(nullptr, 1, nullptr, 0, &number),
                             Object()->DownloadCharGlyph(nullptr, nullptr, 0, &number, &number)}) {
      m_note += " " + std::to_string(hr);
    }
    return Object()->WritePrinter(nullptr, nullptr, 0, &number);
  }

  HRESULT GetInfo(DWORD mode) {
    DWORD value = 0, needed = 0;
    const HRESULT hr = Object()->GetInfo(mode, &value, sizeof value, &needed);
    m_note += " " + std::to_string(value) + " in " + std::to_string(needed) + " bytes";
    return hr;
  }

  static HRESULT Query(IUnknown* object, const std::string& iid) {
    ComPtr<IUnknown> other;
    return object->QueryInterface(ReadGuid(iid), reinterpret_cast<void**>(other.Put()));
  }

  // An object of that class, of which that interface is asked.
  static HRESULT GetClass(const std::string& clsid) {
    ComPtr<IClassFactory> factory;
    return Plugin::GetClassObject(ReadGuid(clsid), IID_IClassFactory,
                                  reinterpret_cast<void**>(factory.Put()));
  }

  struct CallKind {
    const char* name;
    HRESULT (*make)(Client& client, const std::string& argument);
  };
  static const CallKind kCalls[];

  std::ofstream m_job;
  std::ofstream m_calls;
  std::string m_note;  // further results of the call at hand
  Plugin m_plugin;
  Driver m_driver;
};

using Text = const std::string&;
const Client::CallKind Client::kCalls[] = {
    // Rows of a portrait band, columns of a landscape one.
    {"band", [](Client& c, Text n) { return c.m_driver.bandPx = std::max(std::stoi(n), 1), S_OK; }},
    {"class", [](Client&, Text clsid) { return GetClass(clsid); }},
    {"close", [](Client& c, Text) { return c.NoteRecord(), c.Result(c.m_driver.DisableDevice()); }},
    {"declined", [](Client& c, Text) { return c.CallDeclined(); }},
    {"devmode", [](Client& c, Text mode) { return c.ConvertRecord(std::stoul(mode)); }},
    {"disable", [](Client& c, Text) { return c.Result(c.m_driver.DisableDriver()); }},
    {"enable", [](Client& c, Text) { return c.Result(c.m_driver.EnableDriver()); }},
    // The hook DrvEndDoc with these flags, 1 aborts.
    {"end", [](Client& c, Text f) { return c.Done(c.m_driver.EndDocument(std::atoi(f.c_str()))); }},
    {"filter", [](Client& c, Text) { return c.Result(c.m_driver.PassRaster()); }},
    {"info", [](Client& c, Text mode) { return c.GetInfo(std::stoul(mode)); }},
    {"method", [](Client& c, Text name) {
       return c.Object()->GetImplementedMethod(std::string(name).data());
     }},
    {"object", [](Client& c, Text) { return c.Result(c.m_driver.CreateObject()); }},
    {"open", [](Client& c, Text) { return c.EnableDevice(); }},
    {"page", [](Client& c, Text file) { return c.PrintPage(file); }},
    {"printer", [](Client& c, Text name) { return c.Done(c.m_driver.ChoosePrinter(Wide(name))); }},
    {"public", [](Client& c, Text fields) { return c.SetPublic(fields), S_OK; }},
    {"publish", [](Client& c, Text) { return c.Result(c.m_driver.PublishHelper()); }},
    {"query", [](Client& c, Text iid) { return Query(c.Object(), iid); }},
    {"record", [](Client& c, Text file) { return c.ReadRecord(file); }},
    {"release", [](Client& c, Text) { return c.Done(c.m_driver.ReleaseObject()); }},
    {"reset", [](Client& c, Text) { return c.Result(c.m_driver.ResetDevice()); }},
    {"start", [](Client& c, Text name) {
       c.m_driver.documentName = Wide(name);
       return c.Done(c.m_driver.StartDocument());
     }},
    {"unload", [](Client&, Text) { return Plugin::CanUnloadNow(); }}};

void Client::Call(const std::string& call) {
  const std::size_t colon = std::min(call.find(':'), call.size());
  const std::string argument = call.substr(std::min(colon + 1, call.size()));
  for (const auto& [name, make] : kCalls) {
    if (call.compare(0, colon, name) != 0) continue;
    SetLastError(ERROR_SUCCESS);
    const HRESULT hr = make(*this, argument);
    const DWORD error = GetLastError();
    m_calls << name << ' ' << std::hex << static_cast<ULONG>(hr) << std::dec;
    if (FAILED(hr)) m_calls << " last error " << error;
    m_calls << m_note << '\n';
    m_note.clear();
    return;
  }
  throw std::runtime_error("There is no call " + call);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 3) throw std::runtime_error("Usage: client PLUGIN FOLDER CALL...");
  Client client(argv[1], argv[2]);
  for (int i = 3; i < argc; ++i) client.Call(argv[i]);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
