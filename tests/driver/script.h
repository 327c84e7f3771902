// Jobs as texts: a letter for each verb of the driver, so that a random or hostile text is a job
// too. "OVNSabE" opens the plug-in and prints a document of two pages.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/driver/driver.h"

// O object, o its release, + a further reference,
// V driver enabled, v disabled, N new device context, D disabled, L and U server lock and unlock,
// P helper interface published, F raster data passed on,
// S document, E its end, X its abort, p page started, i a band, s page sent,
// a b c whole pages, r device context reset within the document.
// Returns false if the plug-in reported a failure. An unknown letter does nothing and returns true.
bool DoVerb(Driver& driver, char verb);

// Runs the verbs as a driver does: a document in which something fails is aborted, and the verbs
// up to the next document are left out. Returns the verbs that failed.
std::string RunScript(Driver& driver, std::string_view verbs);

// Sends a band with sizeBytes bytes of pixels, or as many as its rows need if sizeBytes is 0; with
// null, without pixels.
void SendOddBand(Driver& driver, LONG widthPx, LONG heightPx, DWORD sizeBytes, POINT offset,
                 bool blank, bool null = false);

// Writes with the time in the header masked.
std::vector<std::string> WithoutTime(std::vector<std::string> writes);
