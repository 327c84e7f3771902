#include "host/pages/foreign_formats.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace std::string_view_literals;

struct ForeignFormat {
  std::size_t at;          // an offset in the file
  std::string_view bytes;  // at that offset, in lower case
  const char* name;
  const char* command;  // that converts the file; $ stands for its name
};

constexpr const char* kOffice = "soffice --headless --convert-to pdf $";
constexpr const char* kOfficeDocument = "a document of an office program (DOCX, XLSX, PPTX)";
constexpr const char* kMagick = "convert $ page.png";
constexpr const char* kHeif = "heif-convert $ page.png";

// The first row that matches counts.
constexpr ForeignFormat kForeignFormats[] = {
    {30, "mimetypeapplication/vnd.oasis", "an OpenDocument file", kOffice},
    {30, "[content_types].xml", kOfficeDocument, kOffice},
    {30, "_rels/", kOfficeDocument, kOffice},
    {30, "docprops/", kOfficeDocument, kOffice},
    {30, "word/", kOfficeDocument, kOffice},
    {30, "xl/", kOfficeDocument, kOffice},
    {30, "ppt/", kOfficeDocument, kOffice},
    {30, "mimetypeapplication/epub", "an EPUB book", "ebook-convert $ page.pdf"},
    {0, "pk\3\4", "a ZIP archive", "unzip $"},
    {0, "\xD0\xCF\x11\xE0", "a document of an old office program (DOC, XLS, PPT)", kOffice},
    {0, "{\\rtf", "an RTF document", kOffice},
    {0, "%!ps-adobe-3.0 epsf", "an EPS drawing", "ps2pdf -dEPSCrop $ page.pdf"},
    {0, "\xC5\xD0\xD3\xC6", "an EPS drawing", "ps2pdf -dEPSCrop $ page.pdf"},
    {0, "%!", "PostScript", "ps2pdf $ page.pdf"},
    {4, "ftypheic", "a HEIC picture", kHeif},
    {4, "ftypheix", "a HEIC picture", kHeif},
    {4, "ftypmif1", "a HEIF picture", kHeif},
    {4, "ftypavif", "an AVIF picture", kHeif},
    {4, "ftyp", "a video", "ffmpeg -i $ -frames:v 1 page.png"},
    {0, "\xFF\x0A", "a JPEG XL picture", "djxl $ page.png"},
    {4, "jxl ", "a JPEG XL picture", "djxl $ page.png"},
    {4, "jp  ", "a JPEG 2000 picture", "opj_decompress -i $ -o page.png"},
    {0, "\xFFO\xFFQ", "a JPEG 2000 picture", "opj_decompress -i $ -o page.png"},
    {0, "8bps", "a Photoshop picture", kMagick},
    {0, "gimp xcf", "a GIMP picture", kMagick},
    {0, "\0\0\1\0"sv, "an icon", kMagick},
    {0, "p7", "a PAM picture", "pamtopnm $ >page.ppm"},
    {0, "pf\n", "a PFM picture", kMagick},
    {0, "\x1F\x8B", "compressed with gzip", "zcat $ >page"},
    {0, "bzh", "compressed with bzip2", "bzcat $ >page"},
    {0,
     "\xFD"
     "7zxz",
     "compressed with xz", "xzcat $ >page"},
    {0, "\x28\xB5\x2F\xFD", "compressed with zstd", "zstdcat $ >page"},
    {0, "<!doctype html", "an HTML page", "chromium --headless --print-to-pdf=page.pdf $"},
    {0, "<html", "an HTML page", "chromium --headless --print-to-pdf=page.pdf $"},
};

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

bool IsText(std::string_view head) {
  return std::all_of(head.begin(), head.end(), [](char c) {
    return static_cast<unsigned char>(c) >= ' ' ? c != '\x7F' : std::strchr("\t\r\n\f", c) && c;
  });
}

// The file's name quoted for a shell.
std::string ShellWord(const std::string& name) {
  constexpr const char* kPlain =
      "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_./,+-:@%";
  if (name == "standard input") return "FILE";
  if (name.find_first_not_of(kPlain) == name.npos) return name;
  std::string quoted = "'";
  for (const char c : name) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

HostError Refusal(const ForeignFormat& format, const std::string& name) {
  std::string command = format.command;
  command.replace(command.find('$'), 1, ShellWord(name));
  return HostError(kExitInput, name + ": seems to be " + format.name + ", which cannot be printed",
                   "convert it: " + command);
}

}  // namespace

HostError ForeignFormatError(std::string_view head, const std::string& name,
                             const std::string& readable) {
  const std::string lower = LowerCase(head);
  if (head.starts_with(";Created: ")) {
    return HostError(kExitInput, name + ": is a finished job, not a page",
                     "send it as it is: nc -N HOST 9100 <" + ShellWord(name));
  }
  for (const ForeignFormat& format : kForeignFormats) {
    if (lower.compare(std::min(format.at, lower.size()), format.bytes.size(), format.bytes) == 0) {
      return Refusal(format, name);
    }
  }
  if (IsText(head)) return Refusal({0, "", "plain text", kOffice}, name);
  return HostError(kExitInput, name + ": is not in a format that can be printed",
                   "convert it to one of " + readable);
}
