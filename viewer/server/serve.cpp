#include "viewer/server/serve.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <thread>

#include "common/error.h"
#include "viewer/files.h"
#include "viewer/language/text.h"

namespace viewer {

namespace {

constexpr int kMostClients = 64;
constexpr int kRetryMs = 50;

// Writes all bytes; false on failure.
bool WriteAll(int file, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t written = write(file, bytes, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

}  // namespace

PrinterServer::PrinterServer(int port, std::chrono::seconds patience, JobFolder& folder)
    : m_folder(folder), m_patience(patience) {
  m_stop = eventfd(0, EFD_CLOEXEC);
  m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  const int on = 1;
  setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  socklen_t size = sizeof address;
  if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      listen(m_listener, SOMAXCONN) != 0) {
    const std::string why = std::strerror(errno);
    close(m_listener);
    close(m_stop);
    throw CommandError(kExitTarget, "Port " + std::to_string(port) + " cannot be opened: " + why +
                                        "; choose another with --port");
  }
  getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size);
  m_port = ntohs(address.sin_port);
}

PrinterServer::~PrinterServer() {
  close(m_listener);
  close(m_stop);
}

void PrinterServer::Stop() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(m_stop, &one, sizeof one);
}

void PrinterServer::Run() {
  while (true) {
    // At the limit, further clients wait in the listen queue.
    const bool full = IsFull();
    pollfd waits[] = {{m_stop, POLLIN, 0}, {m_listener, POLLIN, 0}};
    const int ready = poll(waits, full ? 1 : 2, full ? kRetryMs : -1);
    if (ready < 0 && errno != EINTR) break;
    if (ready > 0 && waits[0].revents != 0) break;
    if (full || ready <= 0) continue;
    const int client = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (client >= 0) {
      Start(client);
    } else if (errno == EMFILE || errno == ENFILE) {
      std::this_thread::sleep_for(std::chrono::milliseconds(kRetryMs));
    }
  }
  std::unique_lock lock(m_mutex);
  m_clientLeft.wait(lock, [this] { return m_clients == 0; });
}

bool PrinterServer::IsFull() {
  const std::lock_guard lock(m_mutex);
  return m_clients >= kMostClients;
}

void PrinterServer::Start(int client) {
  {
    const std::lock_guard lock(m_mutex);
    ++m_clients;
  }
  try {
    std::thread([this, client] {
      Serve(client);
      CountOut();
    }).detach();
  } catch (const std::system_error&) {  // no thread available: the client may try again
    close(client);
    CountOut();
  }
}

void PrinterServer::CountOut() {
  // Notify under the lock: once the count is 0, the server may be destroyed.
  const std::lock_guard lock(m_mutex);
  --m_clients;
  m_clientLeft.notify_all();
}

void PrinterServer::Serve(int client) {
  const std::string path = m_folder.NewIncomingPath();
  try {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    std::uint64_t bytes = 0;
    const std::string note =
        file < 0 ? std::string(std::strerror(errno)) : Receive(client, file, bytes);
    close(client);
    if (file < 0) throw CommandError(kExitTarget, path + " cannot be written: " + note);
    close(file);
    if (bytes > 0) {
      std::printf("%s\n", m_folder.Add(path, note).c_str());
      std::fflush(stdout);
    } else {  // a connection without data is not a job
      std::remove(path.c_str());
    }
  } catch (const std::exception& error) {
    std::remove(path.c_str());
    std::fprintf(stderr, "A job is lost: %s\n", error.what());
  }
}

std::string PrinterServer::Receive(int client, int file, std::uint64_t& bytes) {
  char buffer[1 << 16];
  const int patienceMs = static_cast<int>(std::chrono::milliseconds(m_patience).count());
  while (true) {
    pollfd waits[] = {{m_stop, POLLIN, 0}, {client, POLLIN, 0}};
    const int ready = poll(waits, 2, patienceMs);
    if (ready < 0 && errno == EINTR) continue;
    if (ready == 0) {
      return "The client sent nothing for " +
             Counted(static_cast<std::uint64_t>(m_patience.count()), "second") +
             "; the job is taken as it stands.";
    }
    if (waits[1].revents == 0) return "The printer was stopped while it received the job.";
    const ssize_t count = recv(client, buffer, sizeof buffer, 0);
    if (count == 0) return "";
    if (count < 0) {
      if (errno == EAGAIN || errno == EINTR) continue;
      return "The client hung up in the middle of the job.";
    }
    if (!WriteAll(file, buffer, static_cast<std::size_t>(count))) {
      return std::string("The job cannot be written: ") + std::strerror(errno) + ".";
    }
    bytes += static_cast<std::uint64_t>(count);
    if (bytes > kMostJobBytes - sizeof buffer)
      return "The job is longer than 1 GiB and was cut off.";
  }
}

}  // namespace viewer
