// The printer's command language: one table of commands, shared by reading, explaining and
// checking.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace viewer {

enum class Verb {
  Blank,
  Comment,
  Millimetres,
  Opening,
  NewLabel,
  Head,
  Options,
  LabelSize,
  PValue,
  CutFirst,
  CutStart,
  CutPosition,
  CutEvery,
  CutAfter,
  EraseImages,
  Download,
  PlaceImage,
  Recall,
  Print,
  Broken,  // starts like a command of the table but cannot be read
  Passed,  // unknown here; the printer gets it unchanged
};

// One value of a command: its name, its unit and what a printer accepts. A number may be anything
// if least and most are equal.
struct Field {
  const char* name = nullptr;
  const char* unit = "";
  double least = 0;
  double most = 0;
  const char* choices = nullptr;  // of a word: "T=thermal transfer|D=direct thermal"
};

// One command. In its shape, # is a number, $ a word up to a comma, a semicolon or the end, [ ] an
// optional part and * any rest; everything else is literal. The fields stand in the same order.
struct CommandForm {
  Verb verb;
  const char* name;   // in reports and JSON
  const char* token;  // starts the line; the shape follows
  const char* shape;
  const char* syntax;  // the whole command for messages
  const char* words;   // what it does
  Field fields[6];
};

// What was read for one field. A missing optional value has no text.
struct Value {
  const Field* field;
  std::string_view text;
  double number = 0;
  bool isNumber = false;
  bool Given() const { return text.data() != nullptr; }
};

struct Line {
  Verb verb = Verb::Passed;
  const CommandForm* form = nullptr;  // null for Blank and Passed
  std::vector<Value> values;
  std::string_view rest;  // follows the command; the printer gets it unchanged

  double Number(std::size_t field) const { return values[field].number; }
  std::string_view Text(std::size_t field) const { return values[field].text; }
};

// Parses a line without its line end. Never fails: an unknown line is Passed.
Line ReadLine(std::string_view text);

// One option of an option line.
struct OptionForm {
  const char* key;    // "A0=", "H", ...
  char value;         // '#' a number, '$' a word, 0 none
  const char* words;  // what it does
  const char* unit;
};
struct Option {
  const OptionForm* form;  // null if unknown
  std::string_view text;   // its value; of an unknown option all of it
  std::string_view rest;   // follows the value; the printer gets it unchanged
};
std::vector<Option> ReadOptions(std::string_view list);

// Returns a message if the value is out of range, nullopt if it is not.
std::optional<std::string> RangeFault(const Line& line, const Value& value);

// Returns the meaning of a word by its field's choices; the word itself if they give none.
std::string_view Meaning(const Value& value);

}  // namespace viewer
