#include "viewer/commands/job_file.h"

#include <algorithm>
#include <filesystem>

#include "common/error.h"
#include "viewer/files.h"
#include "viewer/language/command.h"
#include "viewer/language/stream_reader.h"

namespace viewer {

namespace {

using namespace std::string_view_literals;

struct Signature {
  std::string_view bytes;
  const char* what;
};
constexpr Signature kSignatures[] = {
    {"\x89PNG\r\n"sv, "a PNG picture"},
    {"%PDF-"sv, "a PDF document"},
    {"%!PS"sv, "a PostScript document"},
    {"\xFF\xD8\xFF"sv, "a JPEG picture"},
    {"GIF8"sv, "a GIF picture"},
    {"BM"sv, "a BMP picture"},
    {"II*\0"sv, "a TIFF picture"},
    {"MM\0*"sv, "a TIFF picture"},
    {"RIFF"sv, "a WebP picture"},
    {"<svg"sv, "an SVG picture"},
    {"<?xml"sv, "an XML document"},
    {"<!DOCTYPE"sv, "an HTML page"},
    {"<html"sv, "an HTML page"},
    {"PK\3\4"sv, "a ZIP archive or office document"},
    {"\x1F\x8B"sv, "a gzip file"},
    {"\x7F"
     "ELF"sv,
     "a program"},
    {"RaS2"sv, "a PWG raster file"},
    {"UNIRAST\0"sv, "an Apple raster file"},
    {"^XA"sv, "a job in another printer language"},
};

// "P1" to "P6" and white space start a PNM picture. In a job they are a P value, which CR LF ends.
bool IsPnm(std::string_view file) {
  return file.size() > 3 && file[0] == 'P' && file[1] >= '1' && file[1] <= '6' &&
         (file[2] == ' ' ||
          (file[2] == '\n' && (file[3] == '#' || (file[3] >= '0' && file[3] <= '9'))));
}

bool IsCommand(const Piece& piece) {
  if (piece.kind == Piece::Kind::Data) return true;
  const Verb verb = ReadLine(piece.text).verb;
  return verb != Verb::Blank && verb != Verb::Comment && verb != Verb::Passed;
}

// Says what a file is that holds no job: "a PNG picture", "empty", "text without a command of the
// printer". Returns an empty string for a job, even a damaged one.
std::string DescribeNonJob(std::string_view file) {
  if (file.empty()) return "empty";
  for (const auto& [bytes, what] : kSignatures) {
    if (file.starts_with(bytes)) return what;
  }
  if (IsPnm(file)) return "a PNM picture";
  StreamReader stream(file);
  while (const std::optional<Piece> piece = stream.Next()) {
    if (IsCommand(*piece)) return "";
  }
  const bool binary = file.substr(0, 4096).find('\0') != file.npos;
  return binary ? "binary data without a command of the printer"
                : "text without a command of the printer";
}

}  // namespace

std::string ReadJob(const std::string& path) {
  std::string job = ReadJobFile(path);
  const std::string what = DescribeNonJob(job);
  if (what.empty()) return job;
  const bool page = what.ends_with("picture") || what.ends_with("document");
  const std::string name = path == "-" ? "Standard input" : path;
  throw CommandError(kExitInput, name + " is not a job: it is " + what +
                                     (page ? "; make a job of it with vlx print -o FILE.job"
                                           : "; give a file that vlx print has written"));
}

void CheckSheet(const std::string& sheet, const std::string& job) {
  if (sheet.empty() || sheet == "-") return;
  std::error_code error;  // of a file that does not exist yet
  if (std::filesystem::equivalent(sheet, job == "-" ? "/dev/stdin" : job, error)) {
    throw CommandError(kExitUsage, "--sheet " + sheet + " is the same file as the job " + job,
                       "name another file: nothing was written");
  }
  if (!NamesFile(sheet)) return;
  throw CommandError(kExitUsage, "--sheet is \"" + sheet + "\", but a sheet is an HTML page",
                     "name it " + std::filesystem::path(sheet).stem().string() + ".html");
}

}  // namespace viewer
