"""Checks that a module or program was linked hardened: read-only relocations bound at the start, no
executable stack, stack protector, protected indirect jumps on x86-64."""

import re
import subprocess
import sys


def faults(path):
    def listing(*options):
        return subprocess.run(["readelf", "-W", *options, path], check=True, text=True,
                              capture_output=True).stdout
    segments, dynamic, symbols = listing("-l"), listing("-d"), listing("--dyn-syms")
    code = subprocess.run(["objdump", "-d", path], check=True, text=True, capture_output=True).stdout
    if "GNU_RELRO" not in segments:
        yield "its relocations stay writable"
    if not re.search(r"BIND_NOW|FLAGS.*\bNOW\b", dynamic):
        yield "its symbols are bound when they are first used"
    if re.search(r"GNU_STACK.*RWE", segments):
        yield "its stack is executable"
    if "__stack_chk_fail" not in symbols:
        yield "it has no stack protector"
    if "x86-64" in code and code.count("endbr64") < 10:  # the C library's own start has a few
        yield "its indirect jumps are not protected"


wrong = [f"{path}: {fault}" for path in sys.argv[1:] for fault in faults(path)]
print("\n".join(wrong))
sys.exit(1 if wrong else 0)
