"""Checks the two Windows modules: what each exports, which modules it imports from, which calls of the
shared library the plug-in makes, and that both let the loader protect them. Prints the lists.

Usage: check_dll.py VLX_RENDERER_DLL VLX_SHARED_DLL"""

import re
import subprocess
import sys

OBJDUMP = "x86_64-w64-mingw32-objdump"
SYSTEM = {"ADVAPI32.dll", "GDI32.dll", "KERNEL32.dll", "WINSPOOL.DRV", "gdiplus.dll", "msvcrt.dll",
          "ole32.dll"}
PLUGIN_EXPORTS = {"DllGetClassObject", "DllCanUnloadNow"}
# The interface of the shared library as the driver family's modules call it.
SHARED_CALLS = {
    "CLoggerClient::CLoggerClient", "CLoggerClient::~CLoggerClient", "CLoggerClient::Initialize",
    "CLogger::StartLogging", "CLogger::StopLogging", "CLogger::LOG_TRACE", "CLogger::LOG_INFO",
    "CLogger::LOG_WARNING", "CLogger::LOG_ERROR", "ConfigsCache::GetInstance",
    "ConfigsCache::ReleaseInstance", "CConfigParser::Load", "CConfigParser::GetPrinterDriverName",
    "hrOEMDevMode", "ConvertEp2Qor", "BitmapHelper::CreateBitmap", "BitmapHelper::DeleteBitmap",
    "BitmapHelper::Copy24BPPBufferToBitmap", "BitmapHelper::GetMonochromeImage1BPP",
    "BitmapHelper::SplitImage", "BitmapRasterizer::Dither",
    "BitmapHelper::GetFirstContentRow1BPP", "BitmapHelper::GetLastContentRow1BPP",
    "BitmapHelper::GetFirstContentColumn1BPP", "BitmapHelper::GetLastContentColumn1BPP",
    "BitmapHelper::Are1BPPBitmapsEqual", "BitmapHelper::DevTestSaveBitmapAs",
}
PROTECTIONS = {"HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"}


def output(*command, **options):
    return subprocess.run(command, check=True, text=True, capture_output=True, **options).stdout


def demangled(names):
    lines = output("c++filt", input="\n".join(names)).splitlines()
    return {line.split("(")[0] for line in lines}


class Module:
    def __init__(self, path):
        listing = output(OBJDUMP, "-p", path)
        table = listing.partition("[Ordinal/Name Pointer] Table")[2].partition("\n\n")[0]
        self.exports = demangled(re.findall(r"^\s*\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+\w+\s+)?(\S+)$", table,
                                            re.MULTILINE))
        self.imports = {}
        for part in listing.split("DLL Name: ")[1:]:
            name, _, rest = part.partition("\n")
            self.imports[name.strip()] = demangled(re.findall(r"^\t[0-9a-f]+\s+\d+\s+(\S+)$", rest, re.MULTILINE))
        flags = listing.partition("DllCharacteristics")[2].partition("\n\n")[0]
        self.protections = set(re.findall(r"^\t+(\w+)$", flags, re.MULTILINE))


def differences(what, found, expected):
    for name in sorted(found - expected):
        yield f"{what}: {name} is unexpected"
    for name in sorted(expected - found):
        yield f"{what}: {name} is missing"


def faults(plugin, shared):
    yield from differences("exports of the plug-in", plugin.exports, PLUGIN_EXPORTS)
    yield from differences("calls of the shared library", plugin.imports.get("vlx_shared.dll", set()),
                           SHARED_CALLS)
    yield from differences("exports of the shared library", shared.exports,
                           SHARED_CALLS | {"VlxSharedVersion"})
    for name, module in (("plug-in", plugin), ("shared library", shared)):
        for other in sorted(set(module.imports) - SYSTEM - {"vlx_shared.dll"}):
            yield f"the {name} needs {other}"
        for flag in sorted(PROTECTIONS - module.protections):
            yield f"the {name} lacks {flag}"


modules = [Module(path) for path in sys.argv[1:3]]
for path, module in zip(sys.argv[1:], modules):
    print(f"{path}\n  exports {', '.join(sorted(module.exports))}")
    for name, calls in sorted(module.imports.items()):
        print(f"  imports {name}: {', '.join(sorted(calls))}")
wrong = list(faults(*modules))
print("\n".join(wrong))
sys.exit(1 if wrong else 0)
