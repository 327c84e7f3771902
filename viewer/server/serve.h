// A network label printer on loopback: receives raw jobs on a TCP port.
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
  // Opens the port on loopback; 0 takes any free one. A client that sends nothing for `patience` is
  // disconnected, and its job is kept as far as it came. Throws CommandError (target) if the port
  // cannot be opened.
  PrinterServer(int port, std::chrono::seconds patience, JobFolder& folder);
  ~PrinterServer();

  int Port() const { return m_port; }

  // Accepts jobs until Stop, then waits until those being received are in the folder.
  void Run();
  // Thread-safe and async-signal-safe.
  void Stop();

 private:
  void Start(int client);  // a thread that serves the client
  void Serve(int client);
  void CountOut();
  bool IsFull();
  // Copies what the client sends into the file. Returns what went wrong, empty if nothing did.
  std::string Receive(int client, int file, std::uint64_t& bytes);

  JobFolder& m_folder;
  const std::chrono::seconds m_patience;
  int m_listener = -1;
  int m_stop = -1;  // eventfd; readable once Stop was called
  int m_port = 0;
  std::mutex m_mutex;  // guards the members below
  std::condition_variable m_clientLeft;
  int m_clients = 0;
};

}  // namespace viewer
