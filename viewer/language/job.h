// Works through a job command by command with the memory of a printer (images, fields, label size)
// and yields one printed label at a time.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "viewer/image/bit_image.h"
#include "viewer/image/png.h"
#include "viewer/language/command.h"
#include "viewer/language/stream_reader.h"

namespace viewer {

inline constexpr double kMmAnInch = 25.4;

struct LabelSize {
  std::string sensor;
  double offsetXMm = 0;
  double offsetYMm = 0;
  double lengthMm = 0;  // along the feed
  double pitchMm = 0;   // from the start of a label to the start of the next
  double widthMm = 0;   // across the web; in two colours both halves side by side
};

// An image on a label.
struct Placement {
  std::string field;
  std::string name;
  // Of the image's first dot: x to the right and y downwards from the label's corner.
  double xMm = 0;
  double yMm = 0;
  int angle = 0;                          // 0, 90, 180 or 270 degrees counter-clockwise
  std::shared_ptr<const BitImage> image;  // null if it cannot be drawn
  std::uint64_t downloadBytes = 0;        // size of its PNG file; 0 if the printer already held it
  bool recalled = false;                  // placed by R
  bool bothSides = false;  // downloaded twice side by side, for both sides of a label
  Place place;
};

struct Label {
  std::uint64_t number = 0;  // from 1
  std::optional<LabelSize> size;
  bool twoColours = false;
  std::vector<Placement> placements;
  std::int64_t copies = 1;
  std::int64_t cuts = 0;    // made while its copies print
  bool cutAtEnd = false;    // one of them after the last copy
  std::uint64_t bytes = 0;  // of the job stream, from the previous print line to this one
  Place place;              // of its print line

  double WidthMm() const { return !size ? 0 : twoColours ? size->widthMm / 2 : size->widthMm; }
};

// Header comments of a job, as printable text.
struct JobNotes {
  std::string created;
  std::string driverVersion;
  std::string model;
  std::string name;
};

class JobReader {
 public:
  // The job must outlive the reader.
  explicit JobReader(std::string_view job) : m_job(job), m_stream(job) {}

  // Returns the next printed label, or nullopt after the last.
  std::optional<Label> Next();

  // Results so far; complete once Next has returned nullopt.
  const std::vector<Fault>& Faults() const { return m_faults; }
  std::uint64_t FaultCount() const { return m_faultCount; }  // may exceed Faults().size()
  const JobNotes& Notes() const { return m_notes; }
  std::uint64_t Downloads() const { return m_downloads; }
  std::uint64_t Reused() const { return m_reused; }

 private:
  struct StoredImage {
    std::string_view png;
    std::shared_ptr<const BitImage> decoded;
    std::string fault;  // why it cannot be decoded; reported once
    bool placed = false;
    bool bothSides = false;
    Place place;  // of its data; no two downloads share one
  };
  // What a field showed on the last label that filled it.
  struct Filling {
    std::string name;
    std::size_t download = 0;  // offset of the image's data
  };
  struct FieldOnLabel {
    double xMm, yMm;
    int angle;
    Filling filled[2];  // on labels of one and of two colours
  };

  bool Take(const Piece& piece);  // true if a label is ready
  void TakeData(const Piece& piece);
  bool TakeLine(const Line& line, const Piece& piece);
  void TakeComment(std::string_view text);
  void TakeOptions(const Line& line);
  void TakeLabelSize(const Line& line, Place place);
  void Erase();
  void PlaceImage(std::string_view field, FieldOnLabel& where, std::string_view name, bool recalled,
                  Place place);
  void NoteOverwritten(std::string_view field, const Filling& before, const Filling& now,
                       const StoredImage& stored, Place place);
  void DefineField(const Line& line, Place place);
  void RecallField(const Line& line, Place place);
  std::shared_ptr<const BitImage> Decode(StoredImage& stored);
  void FinishLabel(const Line& line, const Piece& piece);
  void CountCuts();
  void Finish();
  void Note(Place place, std::string text);
  void NoteNeverPlaced(const std::string& name, const StoredImage& stored);

  const std::string_view m_job;
  StreamReader m_stream;
  JobNotes m_notes;
  std::vector<Fault> m_faults;
  std::uint64_t m_faultCount = 0;

  // The printer's memory.
  std::map<std::string, StoredImage, std::less<>> m_images;
  std::map<std::string, FieldOnLabel, std::less<>> m_fields;
  std::optional<std::string> m_download;  // name of the image whose data must come next
  std::uint64_t m_decodedDots = 0;        // held in m_images
  std::int64_t m_cutEvery = 0;            // labels between cuts; 0 for no cuts by count
  std::int64_t m_sinceCut = 0;
  bool m_cutAfter = false;

  Label m_label;  // being composed
  std::uint64_t m_labelDots = 0;
  std::uint64_t m_labelStart = 0;
  std::uint64_t m_downloads = 0;
  std::uint64_t m_reused = 0;
  bool m_finished = false;
};

}  // namespace viewer
