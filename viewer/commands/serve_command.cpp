// vlx serve: a network label printer on loopback.

#include <csignal>
#include <cstdio>

#include "common/error.h"
#include "viewer/commands/commands.h"
#include "viewer/commands/options.h"
#include "viewer/drawing/drawing.h"
#include "viewer/server/serve.h"

namespace {

using namespace viewer;

struct ServeOptions {
  std::string folder;
  int port = 9100;
  int patience = 60;
  double dpi = 0;
  std::string highlight;
};

PrinterServer* g_server = nullptr;

void StopOnSignal(int) { g_server->Stop(); }

int Serve(const ServeOptions& options) {
  const Colour highlight =
      options.highlight.empty() ? kDefaultHighlight : ReadColour(options.highlight);
  JobFolder folder(options.folder, options.dpi, highlight);
  PrinterServer server(options.port, std::chrono::seconds(options.patience), folder);
  g_server = &server;
  for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, StopOnSignal);
  std::printf("Listening on tcp://127.0.0.1:%d, showing jobs in %s/index.html; Ctrl-C stops\n",
              server.Port(), options.folder.c_str());
  std::fflush(stdout);
  server.Run();
  for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, SIG_DFL);
  g_server = nullptr;
  return kExitDone;
}

}  // namespace

Command AddServeCommand(CLI::App& program) {
  const auto options = std::make_shared<ServeOptions>();
  CLI::App* serve = program.add_subcommand("serve", "Act as a network label printer");
  serve->add_option("-o,--output", options->folder, "Folder for jobs, pictures and the page")
      ->required();
  serve->add_option("--port", options->port, "TCP port on loopback; 0 takes any free one")
      ->check(CLI::Range(0, 65535));
  serve
      ->add_option("--patience", options->patience,
                   "Seconds to wait for a client that sends nothing")
      ->check(CLI::Range(1, 86400));
  AddDpiOption(*serve, options->dpi);
  serve->add_option("--highlight", options->highlight, "Highlight colour as #RRGGBB");
  serve->footer(
      "Jobs become job-0001.job and so on, with a picture a label and a contact sheet; index.html\n"
      "shows them all, new ones as they come.\n\n"
      "Examples:\n"
      "  vlx serve -o received --port 9100\n"
      "  vlx print label.png --to tcp://127.0.0.1:9100\n\n"
      "Exit codes: 0 stopped, 2 usage, 5 port or folder cannot be opened");
  return {serve, [options] { return Serve(*options); }};
}
