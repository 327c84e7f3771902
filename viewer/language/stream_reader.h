// Cuts a job stream into its lines and its blocks of binary data, as a printer takes it in.
// Any bytes are accepted; what is wrong with them is noted on the piece. Views point into the job.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace viewer {

// Where something stands in a job. A block of data counts as one line.
struct Place {
  std::size_t line = 0;    // from 1
  std::size_t offset = 0;  // bytes from the start of the job
};

// Something that a printer would stumble over.
struct Fault {
  Place place;
  std::string text;  // names the thing, the value and the remedy
};
inline constexpr std::size_t kMostFaults = 1000;  // that are listed of a job

struct Piece {
  enum class Kind { Line, Data };
  enum class End { CrLf, Lf, Cr, None };  // None: the job ends here

  Kind kind = Kind::Line;
  Place place;
  std::string_view text;  // the line without its end, or the data between ESC : and ESC end-of-data
  std::size_t bytes = 0;  // all bytes of the piece, framing and line end included
  End end = End::CrLf;
  bool whole = true;  // false: data without its ESC end-of-data
};

class StreamReader {
 public:
  // The job must outlive the reader and its pieces.
  explicit StreamReader(std::string_view job) : m_job(job) {}

  std::size_t LineCount() const { return m_line; }  // so far

  // The next piece, none after the last.
  std::optional<Piece> Next();

 private:
  Piece ReadLine();
  Piece ReadData();
  // Takes the line end that follows at the position, if any.
  Piece::End TakeLineEnd();

  const std::string_view m_job;
  std::size_t m_at = 0;
  std::size_t m_line = 0;
};

// What is wrong with how a piece ends; none when it ends as a printer wants it.
std::optional<Fault> EndFault(const Piece& piece);

}  // namespace viewer
