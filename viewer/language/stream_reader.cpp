#include "viewer/language/stream_reader.h"

#include <algorithm>

namespace viewer {

namespace {

constexpr std::string_view kDataStart = "\x1B:";
constexpr std::string_view kDataEnd =
    "\x1B"
    "end-of-data";

}  // namespace

std::optional<Piece> StreamReader::Next() {
  if (m_at >= m_job.size()) return std::nullopt;
  const std::size_t start = m_at;
  ++m_line;
  Piece piece = m_job.substr(m_at).starts_with(kDataStart) ? ReadData() : ReadLine();
  piece.place = {m_line, start};
  piece.end = TakeLineEnd();
  piece.bytes = m_at - start;
  return piece;
}

Piece StreamReader::ReadLine() {
  const std::size_t end = std::min(m_job.find_first_of("\r\n", m_at), m_job.size());
  Piece piece;
  piece.text = m_job.substr(m_at, end - m_at);
  m_at = end;
  return piece;
}

Piece StreamReader::ReadData() {
  Piece piece;
  piece.kind = Piece::Kind::Data;
  const std::size_t start = m_at + kDataStart.size();
  const std::size_t end = m_job.find(kDataEnd, start);
  piece.whole = end != m_job.npos;
  piece.text = m_job.substr(start, piece.whole ? end - start : m_job.npos);
  m_at = piece.whole ? end + kDataEnd.size() : m_job.size();
  return piece;
}

Piece::End StreamReader::TakeLineEnd() {
  const std::string_view rest = m_job.substr(m_at);
  if (rest.starts_with("\r\n")) {
    m_at += 2;
    return Piece::End::CrLf;
  }
  if (rest.empty() || (rest[0] != '\r' && rest[0] != '\n')) return Piece::End::None;
  ++m_at;
  return rest[0] == '\n' ? Piece::End::Lf : Piece::End::Cr;
}

std::optional<Fault> EndFault(const Piece& piece) {
  const std::string noun = piece.kind == Piece::Kind::Data ? "The data block" : "The line";
  const Place end = {piece.place.line, piece.place.offset + piece.bytes};
  if (!piece.whole) {
    return Fault{end, "The job ends inside a data block of " + std::to_string(piece.text.size()) +
                          " bytes so far: send it whole, with ESC end-of-data after it"};
  }
  switch (piece.end) {
    case Piece::End::CrLf:
      return std::nullopt;
    case Piece::End::Lf:
      return Fault{end, noun + " is ended by LF alone: end it with CR LF"};
    case Piece::End::Cr:
      return Fault{end, noun + " is ended by CR alone: end it with CR LF"};
    case Piece::End::None:
      return Fault{end, noun + " is not ended: the printer waits for its CR LF"};
  }
  return std::nullopt;
}

}  // namespace viewer
