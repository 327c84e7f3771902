// The printer's command language: what each line is, in one table that reading, explaining and
// checking share.
#pragma once

#include <optional>
#include <span>
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
  Broken,  // begins like a command of the table but cannot be read
  Passed,  // the printer's own business
};

// One value of a command: what it is called, its unit, and what a printer accepts.
struct Field {
  const char* name = nullptr;
  const char* unit = "";
  double least = 0;
  double most = 0;
  const char* choices = nullptr;  // "T=thermal transfer|D=direct thermal": a word, not a number
};

// The shape of a command: literal text with # for a number, $ for a word up to a comma, semicolon
// or the end, [ ] around what may be missing, * for any rest. The fields follow in that order.
struct CommandForm {
  Verb verb;
  const char* name;  // of the command, for people and programs
  const char*
      token;  // a line that begins with it and then goes on as the shape may is this command
  const char* shape;
  const char* syntax;  // the shape as people write it
  const char* words;   // what it does
  Field fields[6];
};

// What was read for one field. A missing one has no text.
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
  std::string_view rest;  // what follows the command and is passed on as it stands

  double Number(std::size_t field) const { return values[field].number; }
  std::string_view Text(std::size_t field) const { return values[field].text; }
};

// Reads a line without its end. Never fails: what it does not know is Passed.
Line ReadLine(std::string_view text);

// One option of an option line.
struct OptionForm {
  const char* key;    // "A0=", "H", ...
  char value;         // '#' a number, '$' a word, 0 nothing
  const char* words;  // what it does
  const char* unit;
};
struct Option {
  const OptionForm* form;  // null: passed on as it stands
  std::string_view text;   // of the option, or its value
  std::string_view rest;   // follows the value and is passed on
};
std::vector<Option> ReadOptions(std::string_view list);

// What the value's number or word may not be, in words; none when it is in range.
std::optional<std::string> RangeFault(const Line& line, const Value& value);

// The meaning of a word among its field's choices; the word itself when there are no words for it.
std::string_view Meaning(const Value& value);

// Numbers for people: at most two decimals, none that are zero.
std::string Plain(double number);

// Text from a job for people, as UTF-8: control characters are escaped, other bytes are taken as
// UTF-8 when they are, else as Latin letters of one byte.
std::string Printable(std::string_view text);

}  // namespace viewer
