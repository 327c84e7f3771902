"""Checks what the three libraries export: the plug-in its two functions and nothing else, the others
no name of a library that they use."""

import re
import subprocess
import sys


def exports(path):
    listing = subprocess.run(["nm", "-D", "-C", "--defined-only", path], check=True, text=True,
                             capture_output=True).stdout
    names = {line.split(" ", 2)[2] for line in listing.splitlines() if " A " not in line}
    # The sanitizers leave their own marks in every module.
    return {name for name in names if not re.match(r"(__asan|__odr_asan|__ubsan|__sanitizer)", name)}


renderer, shared, platform = (exports(path) for path in sys.argv[1:4])
wrong = []
if renderer != {"DllGetClassObject", "DllCanUnloadNow"}:
    wrong.append(f"the plug-in exports {sorted(renderer)}")
needed = {"OpenPrinterW", "ClosePrinter", "GetPrinterW", "RegOpenKeyExW", "CreateStreamOnHGlobal",
          "GdipCreateBitmapFromScan0", "EngCreatePalette", "PlatformSetFaultHook"}
for name in sorted(needed - platform):
    wrong.append(f"the platform does not export {name}")
for name in sorted(shared | platform):
    if re.search(r"\b(std|toml|__gnu_cxx)::|^(png|iconv)_", name) and "Platform" not in name:
        wrong.append(f"a library exports {name}")
print("\n".join(wrong))
sys.exit(1 if wrong else 0)
