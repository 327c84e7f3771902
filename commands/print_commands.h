// The print line of a page with its copies, and the end of a job.
#pragma once

#include <string>

#include "config/oemdev.h"

// The print line, with custom command block 7 before it and block 5 after it.
std::string BuildPrintCommand(const DEVMODEW& publicDevmode, const OEMDEV& devmode);

// Writes the print line of the page that was just emitted.
void SendPrintCommand(PDEVOBJ pdevobj);

// Writes the end of the job: cut line, print line of the last page, block 3, closing block.
void WriteJobEnd(PDEVOBJ pdevobj);

// Writes block 1, the last piece of the job, and keeps the job's length off multiples of 512 bytes.
void SendClosingBlock(PDEVOBJ pdevobj);
