#include "viewer/reports/label_json.h"

#include <cstdio>

#include "viewer/language/text.h"

namespace viewer {

namespace {

using Json = nlohmann::ordered_json;

Json ToJson(const Label& label, const Placement& placement, double dpi) {
  Json json = {{"field", Printable(placement.field)},
               {"image", Printable(placement.name)},
               {"x_mm", placement.xMm},
               {"y_mm", placement.yMm},
               {"angle", placement.angle},
               {"download_bytes", placement.downloadBytes},
               {"reused", placement.downloadBytes == 0},
               {"recalled", placement.recalled}};
  if (placement.bothSides) json["both_sides"] = true;
  if (!placement.image || !label.size) return json;
  const Landing at = Land(label, placement, dpi);
  json["colour"] = at.highlight ? "highlight" : "black";
  json["width_dots"] = placement.image->width;
  json["height_dots"] = placement.image->height;
  json["left_dots"] = at.left;
  json["top_dots"] = at.top;
  return json;
}

}  // namespace

Json ToJson(const DrawnLabel& drawn) {
  const Label& label = drawn.label;
  Json json = {{"label", label.number},
               {"copies", label.copies},
               {"bytes", label.bytes},
               {"line", label.place.line},
               {"two_colours", label.twoColours}};
  if (label.size) {
    json["width_mm"] = label.WidthMm();
    json["length_mm"] = label.size->lengthMm;
    json["pitch_mm"] = label.size->pitchMm;
    json["offset_x_mm"] = label.size->offsetXMm;
    json["offset_y_mm"] = label.size->offsetYMm;
  }
  if (drawn.picture) {
    json["width_dots"] = drawn.picture->black.width;
    json["length_dots"] = drawn.picture->black.height;
  } else {
    json["not_drawn"] = drawn.why;
  }
  json["turned"] = drawn.turn;
  json["cuts"] = label.cuts;
  json["cut_at_end"] = label.cutAtEnd;
  json["images"] = Json::array();
  for (const Placement& placement : label.placements) {
    json["images"].push_back(ToJson(label, placement, drawn.dpi));
  }
  return json;
}

Json ToJson(const Fault& fault) {
  return {{"line", fault.place.line}, {"offset", fault.place.offset}, {"text", fault.text}};
}

Json ToJson(const JobNotes& notes) {
  return {{"name", notes.name},
          {"model", notes.model},
          {"created", notes.created},
          {"driver_version", notes.driverVersion}};
}

void PrintJson(const Json& json) {
  std::puts(json.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
}

}  // namespace viewer
