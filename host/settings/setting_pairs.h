// Settings that have no effect without another one.
#pragma once

#include <functional>
#include <string>

#include "config/oemdev_fields.h"

// The key that set a field, and the value as it was written; both empty if the field was not set.
struct SetBy {
  std::string key;
  std::string shown;
};
using FindSetBy = std::function<SetBy(const OemDevField& field)>;

// Throws HostError (settings) that names both settings if one that was set has no effect because of
// another one's value. If the other one was set as well, that is a choice, such as cut.enabled =
// false above a whole table; then only pairs that never make sense are refused. base: the record
// before the settings were applied.
void CheckSettingPairs(const OEMDEV& devmode, const OEMDEV& base, const FindSetBy& setBy);

// True if a field that differs from the base has no effect because of this field's value. A
// settings file must then state this field too, or it would be refused when it is read again.
bool IsNeededByOthers(const OemDevField& field, const OEMDEV& devmode, const OEMDEV& base);
