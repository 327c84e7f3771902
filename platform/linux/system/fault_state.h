// What the fault seam means to the rest of the platform.
#pragma once

// Whether a hook is installed: a test decides which calls fail.
bool FaultsArmed();
