#include "viewer/language/job.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "viewer/language/text.h"

namespace viewer {

namespace {

// Far beyond any real label; they bound memory and time for a hostile job.
constexpr std::size_t kMostFields = 10'000;
constexpr std::size_t kMostPlacements = 10'000;
constexpr std::uint64_t kMostLabelDots = 2 * kMostDots;
constexpr std::int64_t kNoCount = 9998;  // the cut command's "do not count"

int ToInt(std::string_view text) {
  int number = -1;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::int64_t ToCount(double number) {
  return static_cast<std::int64_t>(std::clamp(number, 0.0, 1e9));
}

std::string Named(std::string_view name) { return "Image " + Printable(name); }

}  // namespace

std::optional<Label> JobReader::Next() {
  while (const std::optional<Piece> piece = m_stream.Next()) {
    const bool ready = Take(*piece);
    if (std::optional<Fault> fault = EndFault(*piece)) {
      Note(fault->place, std::move(fault->text));
    }
    if (!ready) continue;
    Label label = std::move(m_label);
    m_label = {};
    m_label.number = label.number;
    m_label.size = label.size;
    m_label.twoColours = label.twoColours;
    m_labelDots = 0;
    return label;
  }
  if (!m_finished) Finish();
  m_finished = true;
  return std::nullopt;
}

bool JobReader::Take(const Piece& piece) {
  if (piece.kind == Piece::Kind::Data) {
    TakeData(piece);
    return false;
  }
  if (m_download) {
    Note(piece.place, "The download of image " + Printable(*m_download) +
                          " has no data: send ESC : and the PNG file after its line");
    m_download.reset();
  }
  return TakeLine(ReadLine(piece.text), piece);
}

void JobReader::TakeData(const Piece& piece) {
  if (!m_download) {
    Note(piece.place, "A data block of " + std::to_string(piece.text.size()) +
                          " bytes follows no download: send dPNG;NAME before it");
    return;
  }
  const auto [entry, added] = m_images.try_emplace(*m_download);
  StoredImage& stored = entry->second;
  if (!added) NoteNeverPlaced(entry->first, stored);
  if (stored.decoded)
    m_decodedDots -= std::uint64_t{stored.decoded->width} * stored.decoded->height;
  stored = {};
  stored.png = piece.text;
  stored.place = piece.place;
  stored.placed = !piece.whole;  // a cut-off download is reported already
  m_download.reset();
  ++m_downloads;
}

bool JobReader::TakeLine(const Line& line, const Piece& piece) {
  for (const Value& value : line.values) {
    if (std::optional<std::string> fault = RangeFault(line, value)) Note(piece.place, *fault);
  }
  switch (line.verb) {
    case Verb::Comment:
      TakeComment(piece.text);
      break;
    case Verb::NewLabel:
      if (!m_label.placements.empty()) {
        Note(piece.place,
             "A new label begins before the images placed so far were printed: send A1");
      }
      m_label.placements.clear();
      m_labelDots = 0;
      m_label.twoColours = false;
      break;
    case Verb::Options:
      TakeOptions(line);
      break;
    case Verb::LabelSize:
      TakeLabelSize(line, piece.place);
      break;
    case Verb::CutEvery:
      m_cutEvery = line.Number(0) >= kNoCount ? 0 : ToCount(line.Number(0));
      break;
    case Verb::CutAfter:
      m_cutAfter = true;
      break;
    case Verb::EraseImages:
      Erase();
      break;
    case Verb::Download:
      m_download = std::string(line.Text(0));
      if (m_download->size() != 1) {
        Note(piece.place, "The image name " + Printable(*m_download) +
                              " is longer than one character: shorten it");
      }
      break;
    case Verb::PlaceImage:
      DefineField(line, piece.place);
      break;
    case Verb::Recall:
      RecallField(line, piece.place);
      break;
    case Verb::Print:
      FinishLabel(line, piece);
      return true;
    case Verb::Broken:
      Note(piece.place, "The " + std::string(line.form->name) + " command \"" +
                            Printable(piece.text.substr(0, 80)) + "\" cannot be read: write " +
                            line.form->syntax);
      break;
    default:
      break;
  }
  return false;
}

void JobReader::TakeComment(std::string_view text) {
  const std::pair<std::string_view, std::string*> known[] = {
      {";Created: ", &m_notes.created},
      {";Driver version: ", &m_notes.driverVersion},
      {";Printer model: ", &m_notes.model},
      {";Print job name: ", &m_notes.name}};
  for (const auto& [start, note] : known) {
    if (text.starts_with(start) && note->empty()) *note = Printable(text.substr(start.size()));
  }
}

void JobReader::TakeOptions(const Line& line) {
  const std::vector<Option> options = ReadOptions(line.rest);
  m_label.twoColours = std::any_of(options.begin(), options.end(), [](const Option& option) {
    return option.form != nullptr && std::string_view(option.form->key) == "H";
  });
}

void JobReader::TakeLabelSize(const Line& line, Place place) {
  m_label.size = {std::string(line.Text(0)),
                  line.Number(1),
                  line.Number(2),
                  line.Number(3),
                  line.Number(4),
                  line.Number(5)};
  if (m_label.size->pitchMm < m_label.size->lengthMm) {
    Note(place, "The pitch of " + Plain(m_label.size->pitchMm) +
                    " mm is shorter than the label of " + Plain(m_label.size->lengthMm) +
                    " mm: it is the label's length and the gap");
  }
}

void JobReader::Erase() {
  for (const auto& [name, stored] : m_images) NoteNeverPlaced(name, stored);
  m_images.clear();
  m_decodedDots = 0;
}

void JobReader::DefineField(const Line& line, Place place) {
  const int angle = ToInt(line.Text(3));
  if (angle % 90 != 0 || angle < 0 || angle > 270) {  // already reported as out of range
    const auto image = m_images.find(line.Text(4));
    if (image != m_images.end()) image->second.placed = true;
    return;
  }
  FieldOnLabel unkept = {line.Number(1), line.Number(2), angle, {}};
  auto field = m_fields.find(line.Text(0));
  if (field == m_fields.end() && m_fields.size() < kMostFields) {
    field = m_fields.emplace(line.Text(0), unkept).first;
  }
  if (field == m_fields.end()) {
    Note(place, "Field " + Printable(line.Text(0)) + " is one more than the " +
                    std::to_string(kMostFields) + " that are kept: use fewer names");
    PlaceImage(line.Text(0), unkept, line.Text(4), false, place);
    return;
  }
  FieldOnLabel& where = field->second;
  where.xMm = unkept.xMm;
  where.yMm = unkept.yMm;
  where.angle = angle;
  PlaceImage(line.Text(0), where, line.Text(4), false, place);
}

void JobReader::RecallField(const Line& line, Place place) {
  const auto field = m_fields.find(line.Text(0));
  if (field == m_fields.end()) {
    Note(place, "Field " + Printable(line.Text(0)) +
                    " is recalled but no earlier label has it: place it with I: first");
    return;
  }
  PlaceImage(line.Text(0), field->second, line.Text(1), true, place);
}

void JobReader::PlaceImage(std::string_view field, FieldOnLabel& where, std::string_view name,
                           bool recalled, Place place) {
  const auto entry = m_images.find(name);
  if (entry == m_images.end()) {
    Note(place, Named(name) + " is placed but was not downloaded: send dPNG;" + Printable(name) +
                    " before it");
    return;
  }
  StoredImage& stored = entry->second;
  Placement placement;
  placement.field = field;
  placement.name = name;
  placement.xMm = where.xMm;
  placement.yMm = where.yMm;
  placement.angle = where.angle;
  placement.image = Decode(stored);
  placement.bothSides = stored.bothSides;
  placement.recalled = recalled;
  placement.place = place;
  // Images for this label are downloaded after the print line of the one before.
  if (stored.place.offset >= m_labelStart) placement.downloadBytes = stored.png.size();
  Filling& filled = where.filled[m_label.twoColours ? 1 : 0];
  const Filling now = {placement.name, stored.place.offset};
  if (placement.downloadBytes == 0) {
    ++m_reused;
    NoteOverwritten(field, filled, now, stored, place);
  }
  filled = now;
  stored.placed = true;
  if (!stored.fault.empty()) Note(stored.place, Named(name) + " " + stored.fault);
  stored.fault.clear();
  if (placement.image) {
    m_labelDots += std::uint64_t{placement.image->width} * placement.image->height;
  }
  if (m_labelDots > kMostLabelDots || m_label.placements.size() >= kMostPlacements) {
    Note(place, Named(name) + " is more than one label can hold: place fewer or smaller images");
    return;
  }
  if (name == "1") m_label.twoColours = true;  // only two-colour labels have an image 1
  m_label.placements.push_back(std::move(placement));
}

// A sender that fills a field with an image again, without downloading it, means the picture that
// the field showed before. If another picture was downloaded under that name and printed elsewhere
// in between, the label shows that one. A label of one colour between labels of two does this.
void JobReader::NoteOverwritten(std::string_view field, const Filling& before, const Filling& now,
                                const StoredImage& stored, Place place) {
  if (before.name != now.name || before.download == now.download || !stored.placed) return;
  Note(place, "Field " + Printable(field) + " is filled with image " + Printable(now.name) +
                  " again, but that image was overwritten by the download of line " +
                  std::to_string(stored.place.line) +
                  ": the label shows the newer one; download the right one again first");
}

std::shared_ptr<const BitImage> JobReader::Decode(StoredImage& stored) {
  if (stored.decoded || stored.png.empty()) return stored.decoded;
  stored.decoded = ReadPng(stored.png, stored.fault);
  if (!stored.decoded) {
    stored.png = {};
    return nullptr;
  }
  // A colour image with two equal halves is a page for both sides of a label.
  if (ReadPngHeader(stored.png).channels == 3) {
    if (std::shared_ptr<const BitImage> side = LeftOfTwo(*stored.decoded)) {
      stored.decoded = std::move(side);
      stored.bothSides = true;
    }
  }
  m_decodedDots += std::uint64_t{stored.decoded->width} * stored.decoded->height;
  if (m_decodedDots > kMostLabelDots) {
    std::shared_ptr<const BitImage> decoded = stored.decoded;
    for (auto& [name, other] : m_images) other.decoded.reset();  // decoded again when placed again
    m_decodedDots = 0;
    return decoded;
  }
  return stored.decoded;
}

void JobReader::FinishLabel(const Line& line, const Piece& piece) {
  ++m_label.number;
  m_label.copies = ToCount(line.Number(0));
  m_label.place = piece.place;
  m_label.bytes = piece.place.offset + piece.bytes - m_labelStart;
  m_labelStart = piece.place.offset + piece.bytes;
  CountCuts();
  if (!m_label.size) {
    Note(piece.place, "A label without a size is printed: send S and its values first");
  }
}

void JobReader::CountCuts() {
  if (m_cutEvery > 0) {
    const std::int64_t printed = m_sinceCut + m_label.copies;
    m_label.cuts = printed / m_cutEvery;
    m_sinceCut = printed % m_cutEvery;
    m_label.cutAtEnd = m_label.cuts > 0 && m_sinceCut == 0;
  }
  if (m_cutAfter && !m_label.cutAtEnd) {
    m_label.cutAtEnd = true;
    ++m_label.cuts;
  }
  if (m_cutAfter) m_sinceCut = 0;
  m_cutAfter = false;
}

void JobReader::Finish() {
  const Place end = {m_stream.LineCount(), m_job.size()};
  if (m_download) {
    Note(end,
         "The job ends before the data of image " + Printable(*m_download) + ": send it whole");
  }
  for (const auto& [name, stored] : m_images) NoteNeverPlaced(name, stored);
  if (!m_label.placements.empty()) {
    Note(end, "The job ends before its last label is printed: send A1");
  } else if (m_label.number == 0) {
    Note(end, "The job prints no label: send A1 after a label's images");
  }
  if (!m_job.empty() && m_job.size() % 512 == 0) {
    Note(end, "The job is " + std::to_string(m_job.size()) +
                  " bytes long, a multiple of 512, and the printer may wait for more: "
                  "end it with one more CR LF");
  }
}

void JobReader::NoteNeverPlaced(const std::string& name, const StoredImage& stored) {
  if (stored.placed) return;
  Note(stored.place, Named(name) + " of " + std::to_string(stored.png.size()) +
                         " bytes is downloaded but never placed: place it or leave it out");
}

void JobReader::Note(Place place, std::string text) {
  ++m_faultCount;
  if (m_faults.size() < kMostFaults) m_faults.push_back({place, std::move(text)});
}

}  // namespace viewer
