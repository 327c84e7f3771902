// Makes the n-th platform call or request for memory fail. Only what the plug-in asks for on the
// thread that called Arm counts.
#pragma once

#include <set>
#include <string>

enum class Domain { Calls, Memory };

// The n-th call fails (the first is 1), or with onwards every call from the n-th on, until Disarm.
void Arm(Domain domain, long n, bool onwards);
void Disarm();
bool HasFailed();                       // whether any call has failed
const std::set<std::string>& Failed();  // the platform calls that have, until ForgetFailed
void ForgetFailed();

// Bytes and blocks that this process holds of the heap. A sanitizer counts bytes for both.
long LiveBytes();
long LiveBlocks();
// How many more blocks are held than before, as text; empty if there are none.
std::string Leak(long before);
