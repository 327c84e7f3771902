// "tcp://HOST[:PORT]": a printer on the network that takes jobs on a TCP port, 9100 by default.
// Connecting takes 10 seconds at most, and no write waits longer than 30 seconds for the printer.
// Finish waits until the printer has acknowledged everything, 30 seconds at most for each next
// acknowledgement, and then until the printer closes its side, stays silent for a second or has
// kept talking for 10. A printer that hangs up or stalls has received only a part of the job.

#include <fcntl.h>
#include <linux/sockios.h>
#include <netdb.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <utility>

#include "host/error.h"
#include "host/targets/job_target.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kConnectMs = 10000;
constexpr int kProbeMs = 2000;
constexpr int kWriteMs = 30000;
constexpr int kPollMs = 20;
constexpr std::chrono::seconds kSilence{1};
constexpr std::chrono::seconds kLongestTalk{10};
constexpr std::string_view kScheme = "tcp://";

// Waits until the socket can be written to. Returns false with errno set if it cannot.
bool WaitWritable(int socket, int timeoutMs) {
  pollfd wait = {socket, POLLOUT, 0};
  const int ready = poll(&wait, 1, timeoutMs);
  if (ready == 0) errno = ETIMEDOUT;
  return ready > 0;
}

// Returns and clears the connection's pending error, 0 if there is none.
int TakeError(int socket) {
  int error = 0;
  socklen_t size = sizeof error;
  getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size);
  return error;
}

// The number of bytes that the printer has not acknowledged; closing our side counts as one.
int UnacknowledgedBytes(int socket) {
  int bytes = 0;
  return ioctl(socket, SIOCOUTQ, &bytes) == 0 ? bytes : 0;
}

bool Connect(int socket, const addrinfo& address, int timeoutMs) {
  if (connect(socket, address.ai_addr, address.ai_addrlen) == 0) return true;
  if (errno != EINPROGRESS || !WaitWritable(socket, timeoutMs)) return false;
  errno = TakeError(socket);
  return errno == 0;
}

struct PrinterAddress {
  std::string host;
  std::string port;

  std::string Name() const { return host + ":" + port; }
};

// A connected socket. Throws HostError (target) if no address of the printer answers in time.
int ConnectTo(const PrinterAddress& printer, int timeoutMs) {
  addrinfo hints = {};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* list = nullptr;
  const int fault = getaddrinfo(printer.host.c_str(), printer.port.c_str(), &hints, &list);
  if (fault != 0) {
    throw HostError(kExitTarget,
                    "The printer " + printer.Name() + " cannot be found: " + gai_strerror(fault),
                    "check its name and the network");
  }
  int connected = -1;
  for (const addrinfo* address = list; address != nullptr && connected < 0;
       address = address->ai_next) {
    connected = socket(address->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (connected >= 0 && !Connect(connected, *address, timeoutMs)) {
      const int error = errno;
      close(connected);
      connected = -1;
      errno = error;
    }
  }
  freeaddrinfo(list);
  if (connected >= 0) return connected;
  throw HostError(kExitTarget,
                  "The printer " + printer.Name() + " does not answer: " + std::strerror(errno),
                  "check its address and whether it is switched on");
}

class TcpTarget final : public JobTarget {
 public:
  explicit TcpTarget(const PrinterAddress& printer)
      : m_name(printer.Name()), m_socket(ConnectTo(printer, kConnectMs)) {}
  ~TcpTarget() override { close(m_socket); }

  void Write(std::string_view bytes) override {
    while (!bytes.empty()) {
      const ssize_t sent = send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent >= 0) {
        bytes.remove_prefix(static_cast<std::size_t>(sent));
        m_sentBytes += static_cast<std::uint64_t>(sent);
      } else if ((errno != EAGAIN && errno != EINTR) || !WaitWritable(m_socket, kWriteMs)) {
        FailPartly("took only a part of the job", errno);
      }
    }
  }
  // Many printers keep their side open: one that has acknowledged everything and then stays silent
  // has taken the job.
  void Finish() override {
    shutdown(m_socket, SHUT_WR);
    Clock::time_point progress = Clock::now();  // time of the last acknowledgement
    Clock::time_point news = progress;          // time of the last acknowledgement or answer
    int left = UnacknowledgedBytes(m_socket);
    for (bool open = true; open || left > 0;) {
      const ssize_t heard = Listen(open);
      if (heard == 0) open = false;
      const Clock::time_point now = Clock::now();
      if (heard > 0) news = now;
      const int before = std::exchange(left, UnacknowledgedBytes(m_socket));
      if (left < before) progress = news = now;
      if (left > 0 && now - progress > std::chrono::milliseconds(kWriteMs)) {
        FailPartly("took only a part of the job", ETIMEDOUT);
      }
      if (left == 0 && (now - news > kSilence || now - progress > kLongestTalk)) return;
    }
  }

 private:
  // Waits kPollMs, or less if the printer sends something. Returns the number of bytes received, 0
  // if the printer has closed its side, a negative number if nothing came.
  ssize_t Listen(bool open) {
    pollfd wait = {open ? m_socket : -1, POLLIN, 0};
    poll(&wait, 1, kPollMs);
    char ignored[256];
    const ssize_t heard = recv(m_socket, ignored, sizeof ignored, 0);
    const int error = heard < 0 && errno != EAGAIN && errno != EINTR ? errno : TakeError(m_socket);
    if (error != 0) FailPartly("hung up before it had taken all of the job", error);
    return heard;
  }
  [[noreturn]] void FailPartly(const std::string& what, int error) const {
    const auto left = static_cast<std::uint64_t>(std::max(UnacknowledgedBytes(m_socket), 0));
    throw PartlySentError("The printer " + m_name + " " + what + ": " + std::strerror(error),
                          m_sentBytes - std::min(left, m_sentBytes));
  }

  const std::string m_name;
  const int m_socket;
  std::uint64_t m_sentBytes = 0;
};

// Throws HostError (usage) for a malformed address.
PrinterAddress ReadAddress(const std::string& address) {
  std::string host = address.substr(kScheme.size());
  std::string port = "9100";
  const std::size_t colon = host.rfind(':');
  if (colon != host.npos && host.find(']', colon) == host.npos) {
    port = host.substr(colon + 1);
    host.resize(colon);
  }
  if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
  unsigned number = 0;
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
  if (host.empty() || error != std::errc() || end != port.data() + port.size() || number == 0 ||
      number > 65535) {
    throw HostError(kExitUsage, "\"" + address + "\" is no address of a printer",
                    "write tcp://HOST or tcp://HOST:PORT");
  }
  return {host, port};
}

}  // namespace

std::unique_ptr<JobTarget> OpenTcpTarget(const std::string& address) {
  return std::make_unique<TcpTarget>(ReadAddress(address));
}

std::string ProbeTcpTarget(const std::string& address) {
  const PrinterAddress printer = ReadAddress(address);
  try {
    close(ConnectTo(printer, kProbeMs));
    return {};
  } catch (const HostError& error) {
    return error.what();
  }
}
