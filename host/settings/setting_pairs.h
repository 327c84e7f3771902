// Settings that do nothing without another one.
#pragma once

#include <functional>
#include <string>

#include "config/oemdev_fields.h"

// The key and the value, as it was written, that a field was set by; empty if it was not set.
struct SetBy {
  std::string key;
  std::string shown;
};
using FindSetBy = std::function<SetBy(const OemDevField& field)>;

// Throws HostError (settings) that names both settings if one that was set has no effect because
// the record's value of another forbids it. Where that other one was set as well, it is somebody's
// choice, as cut.enabled = false over a whole table; only pairs that never make sense are refused
// then. base: the record without settings.
void CheckSettingPairs(const OEMDEV& devmode, const OEMDEV& base, const FindSetBy& setBy);

// True if a field whose value is not the base's has an effect only together with this one.
bool IsNeededByOthers(const OemDevField& field, const OEMDEV& devmode, const OEMDEV& base);
