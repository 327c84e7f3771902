// Makes platform calls, or requests for memory, fail by number. Only calls that the plug-in makes
// for the thread that armed the schedule count.
#pragma once

#include <set>
#include <string>

enum class Domain { Calls, Memory };

// From the n-th chance (1 is the first) one, or every further one, fails until Disarm.
void Arm(Domain domain, long n, bool onwards);
void Disarm();
bool HasFailed();                       // whether any did
const std::set<std::string>& Failed();  // the platform calls that did, until they are forgotten
void ForgetFailed();

// What this process has from the heap: bytes, and blocks (under a sanitizer bytes too).
long LiveBytes();
long LiveBlocks();
// Says how many more blocks there are than before; empty when there are as many.
std::string Leak(long before);
