// A label printer on the network, on this machine only: it takes jobs on a TCP port as they are.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>

#include "viewer/server/job_folder.h"

namespace viewer {

class PrinterServer {
 public:
  // Opens the port on loopback; 0: any free one. A client that sends nothing for so long is hung up
  // on, and its job taken as it stands. Throws CommandError (target) when the port cannot be
  // opened.
  PrinterServer(int port, std::chrono::seconds patience, JobFolder& folder);
  ~PrinterServer();

  int Port() const { return m_port; }

  // Takes jobs until Stop; returns when those under way are in the folder.
  void Run();
  // Of any thread, or of a signal handler.
  void Stop();

 private:
  void Greet(int client);  // starts a thread for it
  void Serve(int client);
  void Leave();
  bool HandsFull();
  // Copies what the client sends into the file. Returns what went wrong on the way, or nothing.
  std::string Receive(int client, int file, std::uint64_t& bytes);

  JobFolder& m_folder;
  const std::chrono::seconds m_patience;
  int m_listener = -1;
  int m_stop = -1;  // becomes readable when the printer is to stop
  int m_port = 0;
  std::mutex m_mutex;  // of what follows
  std::condition_variable m_clientLeft;
  int m_clients = 0;
};

}  // namespace viewer
