// vlx-ipp: label printers for everything that speaks IPP, without a print server. It is a printer
// application made with PAPPL, which provides the command line, the queue and the web pages.

#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include "printing/ipp/label_driver.h"
#include "printing/ipp/label_printing.h"
#include "printing/ipp/server_end.h"

namespace {

constexpr const char* kFooter = "vlx, labels as they were drawn";
constexpr const char* kPicturesPath = "/labels-";

struct Application {
  std::string spool;
  std::string state;
  std::optional<JobPictures> pictures;
};

// Subcommands of the client describe printers too; they print nothing and have no pictures.
bool DescribeDriver(pappl_system_t*, const char* driver, const char*, const char*,
                    pappl_pr_driver_data_t* data, ipp_t** attributes, void* application) {
  if (!DescribePrinter(driver, *data, attributes)) return false;
  auto& pictures = static_cast<Application*>(application)->pictures;
  if (pictures) SetPrintCallbacks(*data, *pictures);
  return true;
}

void LinkPictures(pappl_printer_t* printer, void* application) {
  pappl_pr_driver_data_t data;
  papplPrinterGetDriverData(printer, &data);
  JobPictures& pictures = *static_cast<Application*>(application)->pictures;
  const int id = papplPrinterGetID(printer);
  const std::string path = kPicturesPath + std::to_string(id);
  try {
    pictures.AddPrinter(id, data.x_default);
  } catch (const std::exception& error) {
    papplLogPrinter(printer, PAPPL_LOGLEVEL_ERROR, "%s", error.what());
  }
  papplSystemAddResourceDirectory(papplPrinterGetSystem(printer), path.c_str(),
                                  pictures.FolderOf(id).c_str());
  papplPrinterAddLink(printer, "Last Labels", (path + "/index.html").c_str(),
                      PAPPL_LOPTIONS_NAVIGATION | PAPPL_LOPTIONS_STATUS);
}

// A printer without hardware: its labels are on its web page.
bool OpenPreview(pappl_device_t*, const char*, const char*) { return true; }
void ClosePreview(pappl_device_t*) {}
ssize_t ReadPreview(pappl_device_t*, void*, size_t) { return 0; }
ssize_t WritePreview(pappl_device_t*, const void*, size_t bytes) {
  return static_cast<ssize_t>(bytes);
}
pappl_preason_t PreviewStatus(pappl_device_t*) { return PAPPL_PREASON_NONE; }
bool ListPreview(pappl_device_cb_t tell, void* data, pappl_deverror_cb_t, void*) {
  return tell("Preview without a printer", "preview:///", "MFG:VLX;MDL:Preview;", data);
}

bool SaveState(pappl_system_t* system, void* application) {
  return papplSystemSaveState(system, static_cast<Application*>(application)->state.c_str());
}

std::string Option(int count, cups_option_t* options, const char* name, const std::string& value) {
  const char* given = cupsGetOption(name, count, options);
  return given == nullptr ? value : given;
}

pappl_loglevel_t LogLevel(const std::string& name) {
  constexpr const char* kNames[] = {"debug", "info", "warn", "error", "fatal"};
  for (int level = 0; level < 5; ++level) {
    if (name == kNames[level]) return static_cast<pappl_loglevel_t>(level);
  }
  return PAPPL_LOGLEVEL_UNSPEC;
}

pappl_system_t* MakeSystem(int count, cups_option_t* options, void* data) {
  Application& application = *static_cast<Application*>(data);
  const char* home = std::getenv("HOME");
  const std::string folder = std::string(home == nullptr ? "/tmp" : home) + "/.local/state/vlx-ipp";
  application.spool = Option(count, options, "spool-directory", folder);
  application.state = application.spool + "/vlx-ipp.conf";
  std::error_code error;
  std::filesystem::create_directories(application.spool + "/pictures", error);
  application.pictures.emplace(application.spool + "/pictures");

  const std::string port = Option(count, options, "server-port", "8631");
  pappl_system_t* system =
      papplSystemCreate(PAPPL_SOPTIONS_MULTI_QUEUE | PAPPL_SOPTIONS_WEB_INTERFACE,
                        Option(count, options, "server-name", "vlx-ipp").c_str(),
                        std::atoi(port.c_str()), "_print,_universal", application.spool.c_str(),
                        Option(count, options, "log-file", "-").c_str(),
                        LogLevel(Option(count, options, "log-level", "info")), nullptr, false);
  if (system == nullptr) return nullptr;
  const std::string listen = Option(count, options, "listen-hostname", "localhost");
  papplSystemAddListeners(system, listen.c_str());
  papplSystemSetHostName(system, Option(count, options, "server-hostname", listen).c_str());
  papplSystemSetFooterHTML(system, kFooter);
  pappl_version_t version = {"vlx-ipp", "", VLX_VERSION, {1, 0, 0, 0}};
  papplSystemSetVersions(system, 1, &version);
  papplSystemSetPrinterDrivers(system, static_cast<int>(LabelDrivers().size()),
                               LabelDrivers().data(), nullptr, LinkPictures, DescribeDriver, data);
  AddDocumentFormats(system, *application.pictures);
  papplSystemSetSaveCallback(system, SaveState, data);
  ResumeSavedJobs(application.state);
  papplSystemLoadState(system, application.state.c_str());
  EndWithoutWaiting(system, *application.pictures, application.state);
  return system;
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  // PAPPL adds its own schemes on the first query, but only if there are no others yet.
  papplDeviceIsSupported("socket://localhost/");
  papplDeviceAddScheme("preview", PAPPL_DEVTYPE_CUSTOM_LOCAL, ListPreview, OpenPreview,
                       ClosePreview, ReadPreview, WritePreview, PreviewStatus, nullptr);
  Application application;
  return papplMainloop(argc, argv, VLX_VERSION, kFooter, static_cast<int>(LabelDrivers().size()),
                       LabelDrivers().data(), nullptr, DescribeDriver, nullptr, nullptr, MakeSystem,
                       nullptr, &application);
}
