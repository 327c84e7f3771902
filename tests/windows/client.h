// A printer driver that follows a script: it loads the plug-in and makes the calls that it is told,
// in that order. It knows the published structures and nothing else of the plug-in, so one script
// can be played to any build on any system.
#pragma once

#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/windows/device.h"
#include "tests/windows/module.h"

class Client {
 public:
  // Writes the job and what the calls returned to the files "job" and "calls" in the folder. Throws
  // std::runtime_error.
  Client(const std::string& pluginPath, const std::string& folder);
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // Makes one call, "name" or "name:argument"; client.cpp lists them. Throws std::runtime_error if
  // there is no such call, or none of that kind at that time, or a file cannot be read.
  void Call(const std::string& call);

 private:
  class Helper;
  using Action = void (Client::*)(const std::string& argument);
  static const std::map<std::string, Action> kActions;

  void Band(const std::string& pixels);
  void Class(const std::string& clsid);
  void Close(const std::string&);
  void Declined(const std::string&);
  void DevMode(const std::string& mode);
  void Disable(const std::string&);
  void Enable(const std::string&);
  void EndDocument(const std::string& flags);
  void Filter(const std::string& text);
  void Info(const std::string& mode);
  void Method(const std::string& name);
  void NewObject(const std::string& iid);
  void Open(const std::string&);
  void Page(const std::string& file);
  void Printer(const std::string& name);
  void Public(const std::string& fields);
  void Publish(const std::string&);
  void Query(const std::string& iid);
  void Record(const std::string& file);
  void Reset(const std::string&);
  void StartDocument(const std::string& name);

  // Notes what a call returned, with the last error if it failed.
  void Note(const char* call, HRESULT hr);
  void NoteRecord(const std::vector<BYTE>& record);  // the bytes that are not 0
  void NoteDone(const char* call, BOOL done) { Note(call, done ? S_OK : E_FAIL); }

  IPrintOemUni2* Object() const;
  Device& TheDevice() const;
  std::unique_ptr<Device> EnabledDevice();

  std::ofstream m_job;
  std::ofstream m_calls;
  HANDLE m_printer = nullptr;
  DEVMODEW m_publicDevmode = {};
  std::vector<BYTE> m_record;
  LONG m_bandPx = 64;
  std::unique_ptr<Helper> m_helper;
  Module m_module;
  ComPtr<IClassFactory> m_factory;
  ComPtr<IPrintOemUni2> m_object;
  DRVENABLEDATA m_hooks = {};
  std::unique_ptr<Device> m_device;
};
