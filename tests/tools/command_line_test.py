"""Checks the command line as people meet it: what --help shows stands in the man page and in the
documents and has examples, bash completes it, and the installed tree works from where it lies.

    command_line_test.py help|completion|install VLX SOURCES BUILD
"""

import os
import re
import subprocess
import sys
import tempfile

mode, vlx, sources, build = sys.argv[1:]
faults = []


def expect(holds, fault):
    if not holds:
        faults.append(fault)


def run(*arguments, **options):
    return subprocess.run(arguments, capture_output=True, text=True, check=False, **options)


def read(path):
    with open(os.path.join(sources, path), encoding="utf-8") as file:
        return file.read()


def commands(chain=()):
    """Every command with its help, the program itself first."""
    text = run(vlx, *chain, "--help").stdout
    yield chain, text
    listed = re.search(r"^Subcommands:\n((?:  .*\n)+)", text, re.MULTILINE)
    for name in re.findall(r"^  ([a-z-]+)", listed.group(1), re.MULTILINE) if listed else []:
        yield from commands((*chain, name))


def part(text, heading, name):
    """The part of a document under the heading that has the name, up to the next one."""
    found = re.search(rf"^{heading}{name}\b.*\n((?:(?!{heading}).*\n)*)", text, re.MULTILINE)
    return found.group(1) if found else ""


def check_help():
    page, document = read("docs/vlx.1").replace("\\-", "-"), read("docs/commands.md")
    count = 0
    for chain, text in commands():
        name = " ".join(("vlx", *chain))
        expect("\nExamples:\n" in text, f"{name} --help has no examples")
        if not chain:
            continue
        shared = part(page, r"\.SH ", "PRINT") if chain[0] == "preview" else ""
        manual = part(page, r"\.SH ", chain[0].upper()) + shared
        shared = part(document, "## ", "vlx print") if chain[0] == "preview" else ""
        described = part(document, "## ", f"vlx {chain[0]}") + shared
        for option in re.findall(r"^  (?:-\w,)?(--[a-z0-9-]+)", text, re.MULTILINE):
            if option == "--help":
                continue
            count += 1
            word = re.compile(rf"(?<![\w-]){option}(?![\w-])")
            expect(word.search(manual), f"{option} of {name} is not in docs/vlx.1")
            expect(word.search(described), f"{option} of {name} is not in docs/commands.md")
    expect(count > 30, f"--help shows {count} options only")


def completions(line):
    """What bash offers at the end of the line."""
    script = (
        f"source '{sources}/tools/vlx.bash'; compopt() {{ :; }}; COMP_LINE=$1; "
        'COMP_POINT=${#1}; _vlx "$2"; printf "%s\\n" "${COMPREPLY[@]}"'
    )
    return run("bash", "-c", script, "bash", line, vlx).stdout.split()


def check_completion():
    rows = {
        "vlx pri": {"print"},
        "vlx settings ": {"show", "devmode", "keys"},
        "vlx print a.png --sav": {"--save-devmode"},
        "vlx print a.png --orientation ": {"portrait", "landscape"},
        "vlx settings show --ch": {"--changed"},
        "vlx print --set print.sp": {"print.speed="},
        "vlx print --set devmode.dwOptionS": {
            "devmode.dwOptionS=", "devmode.dwOptionSet1Enabled=", "devmode.dwOptionSet1AEnabled=",
            "devmode.dwOptionSet2Enabled=", "devmode.dwOptionSet3Enabled=",
            "devmode.dwOptionSet3StartMode="},
        "vlx print --set print.method=": {"transfer", "direct"},
        "vlx print --set print.method=d": {"direct"},
        "vlx print --set=print.crop=t": {"true"},
        "vlx print --set print.speed=": set(),
        "vlx print some-f": set(),
    }
    for line, offered in rows.items():
        found = set(completions(line))
        expect(found == offered, f"behind '{line}' bash offers {sorted(found)}")


def check_install():
    with tempfile.TemporaryDirectory(prefix="vlx install ") as prefix:
        done = run("cmake", "--install", build, "--prefix", prefix)
        expect(done.returncode == 0, done.stderr)
        for path in ("man/man1/vlx.1", "bash-completion/completions/vlx"):
            expect(os.path.exists(os.path.join(prefix, "share", path)), f"no share/{path}")
        program = os.path.join(prefix, "bin", "vlx")
        # Nobody's environment: no HOME, no state folder, another working folder.
        version = run(program, "--version", env={}, cwd="/")
        expect(prefix in version.stdout, f"the plug-in is not the installed one: {version}")
        loaded = run("ldd", program).stdout
        expect(prefix in loaded and build not in loaded, loaded)
        page = os.path.join(sources, "samples", "shipping.png")
        job = os.path.join(prefix, "shipping.job")
        printed = run(program, "print", page, "-o", job, env={}, cwd="/")
        expect(printed.returncode == 0 and os.path.getsize(job) > 1000, str(printed))


{"help": check_help, "completion": check_completion, "install": check_install}[mode]()
print("\n".join(faults))
sys.exit(1 if faults else 0)
