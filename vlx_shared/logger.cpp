// Log lines go to the platform's event log, which is thread-safe.

#include "config/vlx_shared.h"
#include "platform/extensions.h"

CLoggerClient::CLoggerClient() = default;
CLoggerClient::~CLoggerClient() { CLogger::StopLogging(*this); }

void CLoggerClient::Initialize(HMODULE hModule) { m_hModule = hModule; }

void CLogger::StartLogging(CLoggerClient& client) {
  if (client.m_started) return;
  client.m_started = true;
  PlatformOpenEventLog();
}

void CLogger::StopLogging(CLoggerClient& client) {
  if (!client.m_started) return;
  client.m_started = false;
  PlatformCloseEventLog();
}

#define DEFINE_LEVEL(name, level)                                                \
  void CLogger::name(CLoggerClient& client, LPCWSTR text, LPCWSTR category) {    \
    if (client.m_started) PlatformWriteEvent(EventLevel::level, text, category); \
  }

DEFINE_LEVEL(LOG_TRACE, Trace)
DEFINE_LEVEL(LOG_INFO, Info)
DEFINE_LEVEL(LOG_WARNING, Warning)
DEFINE_LEVEL(LOG_ERROR, Error)
#undef DEFINE_LEVEL
