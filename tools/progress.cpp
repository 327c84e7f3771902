#include "tools/progress.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>

namespace {

constexpr std::chrono::milliseconds kFirst{700};  // shorter jobs show nothing
constexpr std::chrono::milliseconds kStep{200};

std::string Duration(double seconds) {
  const auto whole = static_cast<long>(std::ceil(seconds));
  if (whole < 100) return std::to_string(whole) + " s";
  return std::to_string((whole + 59) / 60) + " min";
}

}  // namespace

std::string ProgressLine(std::size_t printed, std::optional<std::size_t> count, double seconds) {
  std::string line = std::to_string(printed);
  if (count) line += " of " + std::to_string(*count);
  line += printed == 1 && !count ? " label" : " labels";
  if (seconds <= 0 || printed == 0) return line;
  const double rate = static_cast<double>(printed) / seconds;
  char text[64];
  std::snprintf(text, sizeof text, rate < 10 ? ", %.1f pages a second" : ", %.0f pages a second",
                rate);
  line += text;
  if (count && *count > printed) {
    line += ", " + Duration(static_cast<double>(*count - printed) / rate) + " left";
  }
  return line;
}

TerminalObserver::TerminalObserver(bool quiet)
    : m_wanted(!quiet && isatty(STDERR_FILENO) == 1), m_next(m_start + kFirst) {}

void TerminalObserver::Warning(const std::string& text) {
  EraseProgress();
  std::fprintf(stderr, "%s\n", text.c_str());
}

void TerminalObserver::Progress(std::size_t printed, std::optional<std::size_t> count) {
  const Clock::time_point now = Clock::now();
  if (!m_wanted || count == 1 || now < m_next) return;
  m_next = now + kStep;
  const double seconds = std::chrono::duration<double>(now - m_start).count();
  std::fprintf(stderr, "\r\x1B[K%s", ProgressLine(printed, count, seconds).c_str());
  std::fflush(stderr);
  m_shown = true;
}

void TerminalObserver::EraseProgress() {
  if (m_shown) std::fputs("\r\x1B[K", stderr);
  m_shown = false;
}
