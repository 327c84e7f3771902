// A state folder whose log is the one that the plug-in's objects in this program write to.
#pragma once

#include "config/process.h"
#include "tests/support/temp_home.h"

class LoggedHome : public TempHome {
 public:
  LoggedHome() { Reopen(); }
  ~LoggedHome() { Reopen(); }

 private:
  static void Reopen() {
    CLogger::StopLogging(g_logClient);
    CLogger::StartLogging(g_logClient);
  }
};
