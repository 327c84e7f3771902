#include "printing/ipp/server_end.h"

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>

namespace {

constexpr int kCheckSeconds = 5;

struct Server {
  JobPictures* pictures;
  std::string stateFile;
  bool runs = false;
};
Server g_server;

volatile std::sig_atomic_t g_ends = 0;
struct sigaction g_papplTerminate, g_papplInterrupt;

void End(int signal) {
  g_ends = 1;
  (signal == SIGINT ? g_papplInterrupt : g_papplTerminate).sa_handler(signal);
}

// PAPPL sets its own handlers when the system starts to run, so this is called later and keeps
// them.
void CatchSignals() {
  struct sigaction action = {};
  action.sa_handler = End;
  sigaction(SIGTERM, &action, &g_papplTerminate);
  sigaction(SIGINT, &action, &g_papplInterrupt);
}

void ResumePrinter(pappl_printer_t* printer, void*) { papplPrinterResume(printer); }

// Called every kCheckSeconds on the thread of PAPPL's run loop.
bool CheckForEnd(pappl_system_t* system, void*) {
  if (!g_server.runs) {
    g_server.runs = true;
    CatchSignals();
    papplSystemIteratePrinters(system, ResumePrinter, nullptr);
  }
  if ((g_ends == 0 && !papplSystemIsShutdown(system)) || !g_server.pictures->Idle()) return true;
  papplSystemSaveState(system, g_server.stateFile.c_str());
  papplLog(system, PAPPL_LOGLEVEL_INFO, "Jobs that wait for a printer are kept.");
  // The threads that wait for printers cannot be joined.
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace

void ResumeSavedJobs(const std::string& stateFile) {
  const auto state = [](ipp_jstate_t value) { return " state=\"" + std::to_string(value) + '"'; };
  const std::string processing = state(IPP_JSTATE_PROCESSING);
  std::ifstream file(stateFile);
  if (!file) return;
  const std::string changedFile = stateFile + ".new";
  std::ofstream changed(changedFile);
  for (std::string line; std::getline(file, line);) {
    const std::size_t at = line.starts_with("Job ") ? line.find(processing) : line.npos;
    if (at != line.npos) {
      // A raster job has no file: it was printed as it came in.
      const bool isKept = line.find(" filename=") != line.npos;
      line.replace(at, processing.size(), state(isKept ? IPP_JSTATE_PENDING : IPP_JSTATE_ABORTED));
    }
    changed << line << '\n';
  }
  changed.close();
  std::error_code error;
  if (changed) std::filesystem::rename(changedFile, stateFile, error);
  if (!changed || error) std::filesystem::remove(changedFile, error);
}

void EndWithoutWaiting(pappl_system_t* system, JobPictures& pictures,
                       const std::string& stateFile) {
  g_server = {&pictures, stateFile};
  papplSystemAddTimerCallback(system, std::time(nullptr), kCheckSeconds, CheckForEnd, nullptr);
}
