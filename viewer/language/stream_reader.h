// Cuts a job stream into lines and blocks of binary data, as a printer does.
// Accepts any bytes. Text views point into the job.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace viewer {

// A position in a job. A block of data counts as one line.
struct Place {
  std::size_t line = 0;    // from 1
  std::size_t offset = 0;  // bytes from the start of the job
};

// A mistake in a job.
struct Fault {
  Place place;
  std::string text;  // what is wrong, the value, what to do
};
inline constexpr std::size_t kMostFaults = 1000;  // listed per job

struct Piece {
  enum class Kind { Line, Data };
  enum class End { CrLf, Lf, Cr, None };  // None: the job ends without one

  Kind kind = Kind::Line;
  Place place;
  std::string_view text;  // the line without its end, or the data between ESC : and ESC end-of-data
  std::size_t bytes = 0;  // size of the whole piece with framing and line end
  End end = End::CrLf;
  bool whole = true;  // false: data without its ESC end-of-data
};

class StreamReader {
 public:
  // The job must outlive the reader and its pieces.
  explicit StreamReader(std::string_view job) : m_job(job) {}

  std::size_t LineCount() const { return m_line; }  // so far

  // Returns the next piece, or nullopt at the end of the job.
  std::optional<Piece> Next();

 private:
  Piece ReadLine();
  Piece ReadData();
  // Consumes the line end at the current position, if there is one.
  Piece::End TakeLineEnd();

  const std::string_view m_job;
  std::size_t m_at = 0;
  std::size_t m_line = 0;
};

// Returns what is wrong with the end of a piece, or nullopt if it ends as it should.
std::optional<Fault> EndFault(const Piece& piece);

}  // namespace viewer
