// The print line of a page with its copies, and the end of a job.
#pragma once

#include <string>

#include "config/oemdev.h"

// The print line, with custom command block 7 before it and block 5 behind it.
std::string BuildPrintCommand(const DEVMODEW& publicDevmode, const OEMDEV& devmode);

// Writes the print line of the page that was just emitted.
void SendPrintCommand(PDEVOBJ pdevobj);

// Writes the end of the job: cut line, print line of the last page, block 3, closing block.
void WriteJobEnd(PDEVOBJ pdevobj);

// Writes the job's last piece, block 1. The job is kept off a length of a multiple of 512 bytes.
void SendClosingBlock(PDEVOBJ pdevobj);
