#include "tests/windows/client.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "platform/spooler.h"
#include "tests/windows/files.h"

class Client::Helper final : public IPrintOemDriverUni {
 public:
  explicit Helper(std::ostream& job) : m_job(job) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppv) override {
    const bool known = iid == IID_IUnknown || iid == IID_IPrintOemDriverUni;
    *ppv = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE DrvGetDriverSetting(PVOID, LPCSTR, PVOID, DWORD, PDWORD,
                                                PDWORD) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE DrvWriteSpoolBuf(PDEVOBJ, PVOID bytes, DWORD size,
                                             DWORD* written) override {
    m_job.write(static_cast<const char*>(bytes), size);
    *written = size;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE DrvXMoveTo(PDEVOBJ, INT, DWORD, INT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE DrvYMoveTo(PDEVOBJ, INT, DWORD, INT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE DrvGetStandardVariable(PDEVOBJ, DWORD, PVOID, DWORD, PDWORD) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE DrvGetGPDData(PDEVOBJ, DWORD, PVOID, PVOID, DWORD, PDWORD) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE DrvUniTextOut(SURFOBJ*, STROBJ*, FONTOBJ*, CLIPOBJ*, RECTL*, RECTL*,
                                          BRUSHOBJ*, BRUSHOBJ*, POINTL*, MIX) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE DrvWriteAbortBuf(PDEVOBJ, PVOID, DWORD, DWORD) override {
    return E_NOTIMPL;
  }

 private:
  std::ostream& m_job;
};

Client::Client(const std::string& pluginPath, const std::string& folder)
    : m_job(folder + "/job", std::ios::binary),
      m_calls(folder + "/calls", std::ios::binary),
      m_helper(std::make_unique<Helper>(m_job)),
      m_module(pluginPath) {
  if (!m_job || !m_calls) throw std::runtime_error(folder + " cannot be written to");
  m_publicDevmode.dmSpecVersion = DM_SPECVERSION;
  m_publicDevmode.dmSize = sizeof m_publicDevmode;
  Public("orientation=1,paper=256,width=1000,length=600,copies=1,resolution=300");
  Note("load", m_module.DllCanUnloadNow());
}

Client::~Client() {
  m_device.reset();
  m_object.Reset();
  m_factory.Reset();
  Note("unload", m_module.DllCanUnloadNow());
  if (m_printer != nullptr) ClosePrinter(m_printer);
}

const std::map<std::string, Client::Action> Client::kActions = {
    {"band", &Client::Band},           // rows of a portrait band, columns of a landscape one
    {"class", &Client::Class},         // DllGetClassObject of that class
    {"close", &Client::Close},         // DisablePDEV
    {"declined", &Client::Declined},   // methods that a plug-in may leave to the driver
    {"devmode", &Client::DevMode},     // DevMode in that mode, from and to the private record
    {"disable", &Client::Disable},     // DisableDriver
    {"enable", &Client::Enable},       // EnableDriver
    {"end", &Client::EndDocument},     // the hook DrvEndDoc with these flags, 1 aborts
    {"filter", &Client::Filter},       // FilterGraphics with that text
    {"info", &Client::Info},           // GetInfo in that mode
    {"method", &Client::Method},       // GetImplementedMethod of that name
    {"object", &Client::NewObject},    // CreateInstance with that interface
    {"open", &Client::Open},           // EnablePDEV
    {"page", &Client::Page},           // a page of that PPM file, DrvStartPage to DrvSendPage
    {"printer", &Client::Printer},     // opens the printer that the device prints to
    {"public", &Client::Public},       // field=number,... of the public devmode
    {"publish", &Client::Publish},     // PublishDriverInterface
    {"query", &Client::Query},         // QueryInterface of the object
    {"record", &Client::Record},       // the private record from that file
    {"reset", &Client::Reset},         // ResetPDEV to a new device, which takes over
    {"start", &Client::StartDocument}  // the hook DrvStartDoc with that document name
};

void Client::Call(const std::string& call) {
  const std::size_t colon = std::min(call.find(':'), call.size());
  const auto found = kActions.find(call.substr(0, colon));
  if (found == kActions.end()) throw std::runtime_error("There is no call " + call);
  (this->*found->second)(call.substr(std::min(colon + 1, call.size())));
}

void Client::Note(const char* call, HRESULT hr) {
  const DWORD error = GetLastError();
  m_calls << call << ' ' << std::hex << static_cast<ULONG>(hr) << std::dec;
  if (FAILED(hr)) m_calls << " last error " << error;
  m_calls << '\n';
  SetLastError(ERROR_SUCCESS);
}

void Client::NoteRecord(const std::vector<BYTE>& record) {
  for (std::size_t i = 0; i < record.size(); ++i) {
    if (record[i] != 0) m_calls << std::hex << i << '=' << int{record[i]} << std::dec << ' ';
  }
  m_calls << '\n';
}

IPrintOemUni2* Client::Object() const {
  if (!m_object) throw std::runtime_error("There is no object yet");
  return m_object.Get();
}

Device& Client::TheDevice() const {
  if (m_device == nullptr) throw std::runtime_error("There is no device yet");
  return *m_device;
}

void Client::Class(const std::string& clsid) {
  void** out = reinterpret_cast<void**>(m_factory.Put());
  Note("class", m_module.DllGetClassObject(ReadGuid(clsid), IID_IClassFactory, out));
}

void Client::NewObject(const std::string& iid) {
  if (!m_factory) throw std::runtime_error("There is no class factory yet");
  void** out = reinterpret_cast<void**>(m_object.Put());
  Note("object", m_factory->CreateInstance(nullptr, ReadGuid(iid), out));
}

void Client::Query(const std::string& iid) {
  ComPtr<IUnknown> other;
  Note("query", Object()->QueryInterface(ReadGuid(iid), reinterpret_cast<void**>(other.Put())));
}

void Client::Info(const std::string& mode) {
  DWORD value = 0;
  DWORD needed = 0;
  Note("info", Object()->GetInfo(std::stoul(mode), &value, sizeof value, &needed));
  m_calls << value << " in " << needed << " bytes\n";
}

void Client::Method(const std::string& name) {
  Note("method", Object()->GetImplementedMethod(std::string(name).data()));
}

void Client::Declined(const std::string&) {
  DWORD number = 0;
  INT result = 1;
  Note("callback", Object()->CommandCallback(nullptr, 1, 0, nullptr, &result));
  Note("memory", Object()->MemoryUsage(nullptr, nullptr));
  Note("tty", Object()->TTYGetInfo(nullptr, 1, nullptr, 0, &number));
  Note("glyph", Object()->DownloadCharGlyph(nullptr, nullptr, 0, &number, &number));
  Note("write", Object()->WritePrinter(nullptr, nullptr, 0, &number));
}

void Client::Publish(const std::string&) {
  Note("publish", Object()->PublishDriverInterface(m_helper.get()));
}

void Client::Printer(const std::string& name) {
  NoteDone("printer", OpenPrinterW(Wide(name).data(), &m_printer, nullptr));
}

void Client::Public(const std::string& fields) {
  static const std::map<std::string, SHORT DEVMODEW::*> kFields = {
      {"orientation", &DEVMODEW::dmOrientation}, {"paper", &DEVMODEW::dmPaperSize},
      {"length", &DEVMODEW::dmPaperLength},      {"width", &DEVMODEW::dmPaperWidth},
      {"copies", &DEVMODEW::dmCopies},           {"resolution", &DEVMODEW::dmYResolution},
      {"collate", &DEVMODEW::dmCollate}};
  std::istringstream list(fields);
  for (std::string field; std::getline(list, field, ',');) {
    const std::size_t equals = std::min(field.find('='), field.size() - 1);
    const auto found = kFields.find(field.substr(0, equals));
    if (found == kFields.end()) throw std::runtime_error("There is no public field " + field);
    m_publicDevmode.*found->second = static_cast<SHORT>(std::stoi(field.substr(equals + 1)));
  }
  if (m_device) m_device->publicDevmode = m_publicDevmode;
}

void Client::Record(const std::string& file) {
  m_record = ReadBytes(file);
  // A device's record keeps its place.
  if (m_device && m_device->record.size() == m_record.size()) {
    std::copy(m_record.begin(), m_record.end(), m_device->record.begin());
  }
}

void Client::DevMode(const std::string& mode) {
  std::vector<BYTE> in = m_record;
  m_publicDevmode.dmDriverExtra = static_cast<WORD>(in.size());
  OEMDMPARAM block = {};
  block.cbSize = sizeof block;
  block.hPrinter = m_printer;
  Note("size", Object()->DevMode(OEMDM_SIZE, &block));
  m_record.resize(block.cbBufSize);
  block.pPublicDMIn = block.pPublicDMOut = &m_publicDevmode;
  block.pOEMDMIn = in.empty() ? nullptr : in.data();
  block.pOEMDMOut = m_record.data();
  Note("devmode", Object()->DevMode(std::stoul(mode), &block));
  NoteRecord(m_record);
}

void Client::Enable(const std::string&) {
  Note("enable", Object()->EnableDriver(0x10000, sizeof m_hooks, &m_hooks));
}

void Client::Disable(const std::string&) { Note("disable", Object()->DisableDriver()); }

std::unique_ptr<Device> Client::EnabledDevice() {
  auto device = std::make_unique<Device>(Object(), m_printer, m_publicDevmode, m_record, m_job);
  Note("open", device->Enable());
  m_calls << device->Geometry() << '\n';
  return device;
}

void Client::Open(const std::string&) {
  m_device.reset();
  m_device = EnabledDevice();
}

void Client::Reset(const std::string&) {
  std::unique_ptr<Device> device = EnabledDevice();
  Note("reset", Object()->ResetPDEV(&TheDevice().object, &device->object));
  m_device = std::move(device);
}

void Client::Close(const std::string&) {
  NoteRecord(TheDevice().record);
  Note("close", TheDevice().Disable());
  m_device.reset();
}

void Client::StartDocument(const std::string& name) {
  NoteDone("start", TheDevice().StartDocument(m_hooks, name));
}

void Client::Band(const std::string& pixels) { m_bandPx = std::max(std::stoi(pixels), 1); }

void Client::Page(const std::string& file) {
  m_calls << "page " << TheDevice().PrintPage(m_hooks, ReadPicture(file), m_bandPx) << '\n';
}

void Client::EndDocument(const std::string& flags) {
  NoteDone("end", TheDevice().EndDocument(m_hooks, flags.empty() ? 0 : std::stoul(flags)));
}

void Client::Filter(const std::string& text) {
  std::vector<BYTE> bytes(text.begin(), text.end());
  Note("filter", Object()->FilterGraphics(&TheDevice().object, bytes.data(),
                                          static_cast<DWORD>(bytes.size())));
}
