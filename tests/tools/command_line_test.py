"""Checks the command line as people meet it: what --help shows is in the man page and in the
documents and has examples, bash completes it, command lines end in the right code and words, and the
installed tree works from where it lies.

    command_line_test.py help|completion|lines|examples|install VLX SOURCES BUILD
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
    return subprocess.run(arguments, capture_output=True, text=True, check=False, errors="replace",
                          **options)


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
    for name in ("vlx.1", "vlx-ipp.1"):
        complaints = run("groff", "-man", "-ww", "-Tutf8", "-z", os.path.join(sources, "docs", name)).stderr
        expect(not complaints, f"docs/{name}: {complaints}")
    expect(count > 30, f"--help shows {count} options only")


def completions(line):
    """What bash offers at the end of the line."""
    script = (
        f"source <('{vlx}' completion bash); compopt() {{ :; }}; COMP_LINE=$1; "
        'COMP_POINT=${#1}; _vlx "$2"; printf "%s\\n" "${COMPREPLY[@]}"'
    )
    return run("bash", "-c", script, "bash", line, vlx).stdout.split()


def check_completion():
    rows = {
        "vlx pri": {"print", "printers"},
        "vlx help se": {"serve", "settings"},
        "vlx te": {"test-label"},
        "vlx test-label --or": {"--orientation"},
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
        expect(found == offered, f"after '{line}' bash offers {sorted(found)}")


# Run in this order in a folder with two pages, page.pgm and page2.pgm, and text in notes.txt: the
# command line, its exit code, and words that it prints; a word after "!" must not occur.
LINES = [
    # The page is the paper where none is named.
    ("vlx print page.pgm -o own.job --dpi 100", 0, " 4 mm of media"),
    ("vlx print page.pgm -o own.job --dpi 100 --orientation landscape", 0, " 5 mm of media"),
    ("vlx print page.pgm -o own.job --dpi 100 --fit shrink", 0, "153 mm of media"),
    ("vlx print page.pgm -o own.job --dpi 100 --paper 1x1mm", 4, "choose --paper 2x1mm, another"),
    ("vlx print page.pgm page2.pgm -o own.job --pages 3", 4, "no page 3"),
    ("vlx print page.pgm -o own.job --dpi 254 --paper 10x8mm --fit fit --place centre", 0, "scaled to 1250 %"),
    ("vlx print page.pgm -o own.job --paper 100,5x60mm", 4, "comma", "100.5x60mm"),
    # No output overwrites a file by mistake.
    ("vlx print page.pgm $P -o a.job", 0, "1 label"),
    ("vlx print page.pgm $P -o a.job", 0, "1 label"),
    ("vlx print page.pgm $P -o ./page.pgm", 2, "-o ./page.pgm", "same file"),
    ("ln page.pgm hard; ln -s page.pgm soft; vlx print hard $P -o soft", 2, "same file"),
    ("vlx print - $P -o page.pgm <page.pgm", 2, "same file"),
    ("vlx print page.pgm $P -o new --save-devmode ./new", 2, "--save-devmode ./new"),
    ("vlx print page.pgm $P -o b.job --settings s.toml --save-devmode s.toml", 2, "s.toml"),
    ("vlx print page.pgm $P -o notes.txt", 2, "notes.txt", "not a job", "--force"),
    ("vlx print page.pgm $P -o b.job --save-devmode notes.txt", 2, "not a settings record"),
    ("vlx preview page.pgm $P -o seen.png", 0, "seen.png"),
    ("vlx preview seen.png --paper 100x150mm -o seen.png", 2, "same file"),
    ("cp page.pgm page2-0001.pgm; vlx preview page2.pgm $P -o .; ls page2*", 0, "page2-0001.png"),
    ("cp seen.png page-0001.png; vlx preview page.pgm page-0001.png -o . $P", 2, "page-0001.png", "same file"),
    # Settings that do nothing without another one.
    ("vlx print page.pgm $P -o b.job --set cut.enabled=true --set cut.mode=count", 4,
     '"cut.mode" = "count"', "set cut.count = NUMBER"),
    ("vlx print page.pgm $P -o b.job --set cut.count=5", 4, 'set cut.mode = "count"'),
    ("vlx print page.pgm $P -o b.job --set cut.mode=each-label", 4, "set cut.enabled = true"),
    ("vlx print page.pgm $P -o - --set cut.mode=count --set cut.enabled=false", 0, "0 cuts"),
    ("vlx print page.pgm $P -o b.job --set devmode.nCspValue=3mm", 4, "devmode.dwCspEnabled = true"),
    ("vlx print page.pgm $P -o b.job --set print.darkness2=3", 4, 'print.model = "K7"'),
    ("vlx print page.pgm $P -o b.job --set print.both_sides=true --set colour.mode=two", 4,
     '"print.both_sides" = true has no effect', 'which is "two"'),
    ("vlx settings show --changed --set cut.count=3 --set cut.mode=each-label --set cut.enabled=false"
     " >t.toml; cat t.toml; vlx print page.pgm $P -o - --settings t.toml", 0, "enabled = false"),
    ("vlx print page.pgm $P -o b.job --set paper.gap=3", 4, '"paper.gap" is 3', "with its unit"),
    # Printers by their names; nobody answers on port 9.
    ("vlx print page.pgm", 2, "The job has no target", "home/system.toml"),
    ("printf '[[printer]]\\nname = \"L1\"\\n[[printer]]\\nname = \"l3\"\\ndpi = 203\\n"
     "paper = \"12x7mm\"\\nsettings = \"../s.toml\"\\ntarget = \"tcp://127.0.0.1:9\"\\n"
     "dot_gain = 25\\n' >home/system.toml; vlx printers", 0, "L1 (used when none is named): no target",
     "l3: tcp://127.0.0.1:9, 203 dpi, paper 12x7mm", "dot gain 25 %", "does not answer"),
    ("vlx printers --json | python3 -c 'import json, sys; print(json.load(sys.stdin)[1])'", 0,
     "'answers': False", "'dotGain': 25"),
    ("vlx print page.pgm --printer L3", 5, "127.0.0.1:9 does not answer"),
    ("vlx print page.pgm --printer L3 -o l3.job; cat l3.job", 0, "H80,0", ";0.00,0.00,7.00,10.00,12.00"),
    ("vlx print page.pgm --printer L3 -o - --set print.speed=90 --paper 9x7mm", 0, "H90,0", ",9.00"),
    ("vlx print page.pgm $P -o l1.job; vlx print page.pgm $P --set print.speed=80 -o l1.job; "
     "tail -n +6 l1.job >1; tail -n +6 l3.job >3; cmp 1 3", 1, "differ"),  # by the dot gain
    # A printer that hangs up early: what it has received, and how to continue.
    ("python3 -c 'import socket; s = socket.create_server((\"127.0.0.1\", 0)); "
     "print(s.getsockname()[1], flush=True); s.accept()[0].recv(9)' >port & "
     "until [ -s port ]; do sleep 0.1; done; for i in $(seq 300); do cat page.pgm; done | "
     "vlx print - --paper 300x300mm --dpi 600 --to tcp://127.0.0.1:$(cat port)", 7,
     "it has received", "bytes of the job; "),
    ("vlx print page.pgm --printer l3 -o s.toml --force", 2, "the printer's settings"),
    ("vlx doctor", 1, "BROKEN  printer l3", "does not answer", "1 broken", "pdftoppm"),
    ("sed -i s/203/20/ home/system.toml; vlx print page.pgm --printer l3", 4, "system.toml, line 5",
     "100 to 1200"),
    ("vlx doctor; rm home/system.toml; vlx doctor", 0, "BROKEN  printers", "Everything works"),
    # What is printed, and how much of it.
    ("vlx print page.pgm page2.pgm $P --dry-run --save-devmode r -o none; test ! -e none -a ! -e r", 0,
     "dry run: 2 labels"),
    ("vlx print page.pgm $P -o a.job --quiet; vlx preview page.pgm $P -o seen.png --quiet", 0, "!label"),
    ("vlx print page.pgm $P -o a.job --json | python3 -m json.tool --compact", 0, '"labels":1,"cuts":0'),
    ("vlx preview page.pgm $P -o seen.png --json | python3 -m json.tool", 0, '"pictures"', "seen.png"),
    ("vlx settings show --set print.speed=7 --changed --json | python3 -m json.tool", 0, '"speed": 7'),
    ("vlx stocks --json", 0, "[]"),
    # Progress is for terminals, and for jobs that take a while: the second page comes late.
    ("mkfifo slow; (cat page.pgm; sleep 1; cat page.pgm page.pgm) >slow & python3 -c 'import os, pty, sys; "
     "sys.exit(pty.spawn([os.environ[\"VLX\"], \"print\", \"slow\", *sys.argv[1:]]))' $P -o slow.job", 0,
     "pages a second", "slow.job: 3 labels"),
    ("(cat page.pgm; sleep 1; cat page.pgm) | vlx print - $P -o slow.job", 0, "!pages a second"),
    ("vlx print - - $P -o b.job <page.pgm", 2, "more than once"),
    # Help, and what was meant.
    ("vlx help settings show", 0, "Usage: vlx settings show", "--changed", "!:FILE"),
    ("vlx help print", 0, "--dpi N", "[300]", "portrait|landscape", "!TEXT:", "!INT", "!REQUIRED"),
    ("vlx print page.pgm --fit foo -o b.job", 2, '--fit is "foo"; choose one of none'),
    ("vlx print page.pgm --dpi 5k -o b.job", 2, '--dpi is "5k"', "from 100 to 1200"),
    ("vlx print page.pgm -o", 2, "--output has no value"),
    ("vlx settings", 2, "give one of show, devmode, keys"),
    ("vlx preview page.pgm $P -o no/seen.png", 5, "no/seen.png", "make its folder first"),
    ("vlx print page.pgm $P -o no/a.job", 5, "no/a.job", "make its folder first"),
    ("vlx help prnt", 2, 'There is no command "vlx prnt"', '"print"'),
    ("vlx print page.pgm -o a.job -o b.job", 2, "--output is given 2 times", "once"),
    ("vlx print -x", 2, '"-x" is not expected', "!did you mean"),
    ("vlx frobnicate", 2, "not expected", "!did you mean"),
    ("vlx settings show --set zzz.qqqq=1", 4, '"zzz.qqqq"', "vlx settings keys", "!did you mean"),
    ("vlx version; vlx --version", 0, "plug-in interface"),
    ("for shell in bash zsh fish; do vlx completion $shell >c.$shell && "
     "if command -v $shell >/dev/null; then $shell -n c.$shell; fi || exit 9; done", 0),
    ("vlx completion words help pri", 0, "print\nprinters"),
    ("cat notes.txt; test -e new -o -e b.job || vlx print page.pgm $P -o notes.txt --force", 0,
     "important", "1 label"),
    # A picture in another format is not taken for a folder.
    ("vlx preview page.pgm $P -o seen.jpg; code=$?; test ! -e seen.jpg && exit $code", 2, "seen.png"),
    ("vlx preview page.pgm $P -o job.pictures; ls job.pictures", 0, "page-0001.png"),
    ("vlx view a.job", 0, "a/a-0001.png", "in the folder a"),
    ("vlx view a.job -o seen.jpg; code=$?; test ! -e seen.jpg && exit $code", 2, "seen.jpg", "name a folder"),
    ("vlx diff a.job a.job", 0, "0 of 1 labels differ"),
    ("cp a.job kept; ln -sf kept soft; vlx view kept --sheet ./soft; code=$?; cmp a.job kept && exit $code", 2,
     "--sheet ./soft", "same file"),
    ("vlx view - --sheet kept <kept", 2, "same file"),
    ("vlx diff a.job kept --sheet kept", 2, "same file"),
    ("vlx view a.job --sheet seen.png", 2, "seen.html"),
    ("vlx explain - </dev/null", 3, "Standard input is not a job: it is empty"),
    # A job is not a page, and a file that a job sends must exist.
    ("vlx print a.job -o b.job", 3, "a finished job", "nc -N HOST 9100 <a.job"),
    ("vlx print page.pgm $P -o b.job --set blocks.0.kind=file --set blocks.0.text=gone.txt; code=$?; "
     "test ! -e b.job && exit $code", 3, 'command block 0, "gone.txt"', "check its name"),
    ("vlx print page.pgm $P -o - --set blocks.0.kind=file --set blocks.0.text=s.toml", 0, "speed = 80"),
    ("cp a.job sent; B='--set blocks.0.kind=file --set blocks.0.text=sent'; vlx print page.pgm $P $B -o sent; "
     "code=$?; vlx print page.pgm $P $B -o ./sent --force; cmp a.job sent && exit $code", 2,
     "command block 0 sent"),
    ("echo >home/system.toml; vlx preview page.pgm $P -o home --save-devmode home/system.toml --force", 2,
     "the list of printers"),
    ("vlx settings devmode /dev/zero", 3, "16 MiB"),
    # The test label.
    ("vlx test-label", 2, "--to tcp://HOST"),
    ("vlx test-label -o page.pgm", 2, "page.pgm", "not a job"),
    ("vlx test-label -o test.job && vlx lint test.job", 1, "1 label", "single dot"),
    ("vlx test-label -o small.png --paper 30x20mm", 0, "no room for: bars 4", "small.png: 1 label"),
]


def check_lines():
    with tempfile.TemporaryDirectory(prefix="vlx lines ") as folder:
        for name in ("page.pgm", "page2.pgm"):
            with open(os.path.join(folder, name), "wb") as file:
                file.write(b"P5 8 4 255\n" + bytes(range(0, 256, 8)))
        for name, text in {"notes.txt": "important", "s.toml": "[print]\nspeed = 80\n"}.items():
            with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                file.write(text)
        os.mkdir(os.path.join(folder, "home"))
        environment = {**os.environ, "VLX_HOME": os.path.join(folder, "home"), "VLX": vlx,
                       "P": "--paper 12x7mm --dpi 203"}
        for line, code, *words in LINES:
            script = 'vlx() { "$VLX" "$@"; }\n' + line
            done = run("bash", "-c", script, cwd=folder, env=environment)
            text = done.stdout + done.stderr
            wrong = [word for word in words if (word.lstrip("!") in text) == word.startswith("!")]
            if done.returncode != code or wrong:
                faults.append(f"{line}\n  code {done.returncode}, not {code}; {wrong}: {text}")


def examples():
    """Every command line that the documents, the man page and the helps show."""
    texts = [read(name) for name in ("README.md", *(os.path.join("docs", name) for name in os.listdir(
        os.path.join(sources, "docs")) if name.endswith(".md")))]
    texts += [text.partition("\nExamples:\n")[2] for _, text in commands()]
    lines = [line for text in texts for line in re.findall(r"^(?:    |  )(\S.*)", text, re.MULTILINE)]
    lines += part(read("docs/vlx.1").replace("\\-", "-"), r"\.SH ", "EXAMPLES").splitlines()
    shown = (line.replace("build/bin/", "").partition("   #")[0].strip() for line in lines)
    return sorted({line for line in shown if re.search(r"(^|[|(] ?)(VLX_HOME=\S+ )?vlx ", line)})


# Commands and files that the examples need; the network printer is the virtual one.
WORLD = r"""
vlx() { "$VLX" "$@"; }
nc() { cat >/dev/null; }
produce-pages() { cat label.png; }
mkdir -p home .zsh/functions .config/fish/completions && cp -r "$SOURCES"/samples . &&
for page in label page-1 page-2; do cp samples/box-1.png $page.png || exit 9; done
cp samples/photo.png samples/two-colour.toml . &&
printf '[[printer]]\nname = "Label Printer"\n[[printer]]\nname = "line3"\ntarget = "tcp://127.0.0.1:%s"\n' \
  $PORT >home/system.toml &&
printf '<svg xmlns="http://www.w3.org/2000/svg" width="100mm" height="60mm"/>' | rsvg-convert -f pdf -o labels.pdf &&
for job in label labels before after old new; do vlx print label.png -o $job.job || exit 9; done &&
vlx print label.png -o label.job --save-devmode saved.bin
"""


def check_examples():
    with tempfile.TemporaryDirectory(prefix="vlx examples ") as folder:
        with subprocess.Popen([vlx, "serve", "-o", "seen", "--port", "0"], cwd=folder, text=True,
                              stdout=subprocess.PIPE) as printer:
            port = re.search(r":(\d+),", printer.stdout.readline()).group(1)
            environment = {**os.environ, "VLX": vlx, "SOURCES": sources, "PORT": port, "HOME": folder,
                           "VLX_HOME": os.path.join(folder, "home")}
            done = run("bash", "-c", WORLD, cwd=folder, env=environment)
            expect(done.returncode == 0, done.stderr)
            lines = examples()
            for line in lines:
                script = re.sub(r"tcp://(192\.0\.2\.7|127\.0\.0\.1:9100)", f"tcp://127.0.0.1:{port}", line)
                script = re.sub(r"^vlx serve", 'timeout -s INT 1 "$VLX" serve', script.replace("9100", "0"))
                script = WORLD.split("mkdir")[0] + "set -o pipefail\n" + script
                done = run("bash", "-c", script, cwd=folder, env=environment)
                found = re.search(r"vlx (lint|diff|doctor)", line) is not None  # 1 is an answer
                stopped = line.startswith("vlx serve")
                if done.returncode not in {0, int(found), 124 if stopped else 0}:
                    faults.append(f"{line}\n  code {done.returncode}: {done.stderr}")
            expect(len(lines) > 30, f"only {len(lines)} examples found")
            printer.terminate()


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


{"help": check_help, "completion": check_completion, "lines": check_lines,
 "examples": check_examples, "install": check_install}[mode]()
print("\n".join(faults))
sys.exit(1 if faults else 0)
