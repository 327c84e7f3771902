"""What the driver client plays: named scenarios that cover the plug-in, and random ones from a seed."""

import pathlib
import random
import re
import struct
from dataclasses import dataclass, field

ROOT = pathlib.Path(__file__).resolve().parents[2]
PLUGIN = "{6D6ABF26-9F38-11D1-882A-00C04FB961EC}"
PLUGIN_INTERFACE = "{B91220AC-15CC-4E7A-A21E-9591F34D6F6C}"
OLD_INTERFACE = "{C6068D58-3C3E-4A8E-9B3A-0A2C31C2B5A1}"
STOCK = "{11111111-2222-3333-4444-555555555555}"
BLOCK_FILE = b"block from a file\r\nsecond line\r\n\x1ahidden"

DITHERERS = re.findall(r'"([a-z-]+)"', (ROOT / "config/ditherers.h").read_text())


class Record:
    """The private devmode, whose fields are where config/oemdev.h says."""

    _header = (ROOT / "config/oemdev.h").read_text()
    _formats = {"DWORD": "I", "COLORREF": "I", "LONG": "i", "WORD": "H", "BYTE": "B",
                "char": "80s", "GUID": "16s"}
    _offsets = {name: int(offset, 16) for name, offset in
                re.findall(r"OEMDEV_AT\((\w+), (0x[0-9A-F]+)\)", _header)}
    _types = {name: kind for kind, name in
              re.findall(r"^  (\w+) (\w+)(?:\[\w+\])?;", _header, re.MULTILINE)}

    def __init__(self, **fields):
        self.bytes = bytearray(2708)
        struct.pack_into("<3I", self.bytes, 0, len(self.bytes), 0x564C5831, 1)
        defaults = {"dwSensorType": 1, "dwGapDistance": 3000, "dwSpeed": 100, "dwColorMode": 1,
                    "crHighlightColor": 0xFF, "nColorTolerance": 25, "wDitherer": 1}
        for name, value in {**defaults, **fields}.items():
            kind = "20s" if name == "szModelCode" else self._formats[self._types[name]]
            if isinstance(value, str):
                value = value.encode()
            struct.pack_into("<" + kind, self.bytes, self._offsets[name], value)


@dataclass
class Scenario:
    name: str
    calls: list = field(default_factory=list)
    files: dict = field(default_factory=dict)  # name: bytes


WHITE, BLACK, RED = (255, 255, 255), (0, 0, 0), (230, 30, 20)

# What labels hold, and what is hard to get right: (x, y, bar, grey, width, height) to a pixel.
PAGES = {
    "blank": lambda x, y, bar, grey, width, height: WHITE,
    "crisp": lambda x, y, bar, grey, width, height: BLACK if bar else WHITE,
    "red": lambda x, y, bar, grey, width, height: RED if bar else WHITE,
    "grey": lambda x, y, bar, grey, width, height: (grey, grey, grey),
    "photo": lambda x, y, bar, grey, width, height: (grey, (grey + y) % 256, 255 - grey),
    "mixed": lambda x, y, bar, grey, width, height:
        (grey, grey, grey) if y < height // 3 else RED if bar else BLACK if y % 9 == 0 else WHITE,
    # Content in the middle only, away from byte boundaries.
    "spot": lambda x, y, bar, grey, width, height:
        BLACK if abs(2 * x - width) < 11 and abs(2 * y - height) < 13 else WHITE,
}


def page(kind, width, height, seed=0):
    """A PPM file."""
    noise = random.Random(seed)
    paint = PAGES[kind]
    pixels = bytearray()
    for y in range(height):
        for x in range(width):
            bar = (x // 3 + seed) % 4 == 0 and y > height // 4
            grey = (x * 255 // width + noise.getrandbits(5)) % 256
            pixels += bytes(paint(x, y, bar, grey, width, height))
    return b"P6 %d %d 255\n" % (width, height) + pixels


def document(name, pages, record=None, public="", between=None, end="end", printer="Label Printer",
             title="Label", band=16, before=()):
    """Loads the plug-in, prints one document and takes everything down again. between: calls
    before the page of that number, counted from 1; they may name files of the scenario."""
    scenario = Scenario(name)
    scenario.files["record"] = bytes((record or Record()).bytes)
    scenario.files["block.txt"] = BLOCK_FILE
    calls = ["unload", f"printer:{printer}", "object", "publish", "record:record", f"band:{band}"]
    calls += [f"public:{public}"] if public else []
    calls += [*before, "enable", "open", f"start:{title}"]
    for number, content in enumerate(pages, 1):
        calls += (between or {}).get(number, [])
        scenario.files[f"page{number}.ppm"] = content
        calls.append(f"page:page{number}.ppm")
    scenario.calls = calls + [end, "close", "disable", "release", "unload"]
    return scenario


def labels(kinds, width=118, height=70, seed=0):
    return [page(kind, width, height, seed + number) for number, kind in enumerate(kinds)]


PAPER = "width=100,length=60"
LANDSCAPE = PAPER + ",orientation=2"


def ditherers():
    for number, name in enumerate(DITHERERS):
        for colours in (1, 2):
            for public in (PAPER, LANDSCAPE):
                turned = "landscape" if public == LANDSCAPE else "portrait"
                record = Record(wDitherer=number, dwColorMode=colours, byDitherParam=number % 3)
                yield document(f"{name}-{colours}-{turned}", labels(["photo", "mixed"], seed=number),
                               record, public)


def rotations():
    for rotation in range(4):
        for crop in (0, 1):
            for colours in (1, 2):
                record = Record(dwRotation=rotation, bCropToContent=crop, dwColorMode=colours)
                public = (PAPER, LANDSCAPE)[rotation // 2]
                yield document(f"rotation-{rotation}-crop-{crop}-{colours}",
                               labels(["spot", "blank", "red"], 117, 71), record, public)


def stocks():
    for selected in (0, 1):
        for public in (PAPER, LANDSCAPE):
            record = Record(guidSelectedStock=guid_bytes(STOCK) if selected else bytes(16))
            yield document(f"stock-{selected}-{public[-1]}", labels(["mixed", "crisp"]), record,
                           public)
    margins = {"dwUnprintableLeft": 1000, "dwUnprintableRight": 500, "dwUnprintableTop": 2000,
               "dwUnprintableBottom": 700}
    yield document("margins-of-the-record", labels(["mixed", "photo"]), Record(**margins), PAPER,
                   printer="Bare Printer")
    yield document("label-bounds", labels(["crisp", "crisp"]), Record(), "width=5000,length=20",
                   printer="Bare Printer")


def guid_bytes(text):
    a, b, c, d, e = text.strip("{}").split("-")
    return struct.pack("<IHH", int(a, 16), int(b, 16), int(c, 16)) + bytes.fromhex(d + e)


def blocks():
    for kind, text in ((1, "block.txt"), (1, "missing.txt"), (2, r"a\x41\102\e\n\q{1}"),
                       (3, r"plain\n"), (4, "inline {page} text")):
        fields = {f"wCustomType{k}": kind for k in range(8)}
        fields |= {f"szCustomText{k}": text for k in range(8)}
        yield document(f"blocks-{kind}-{text[:5]}".replace("\\", ""), labels(["crisp", "red"]),
                       Record(dwColorMode=2, **fields), PAPER)


def documents():
    both = Record(bTopSideSameAsBottom=1, bCropToContent=1)
    yield document("both-sides", labels(["spot", "mixed"]), both, PAPER)
    yield document("both-sides-odd-width", labels(["spot", "mixed"], 101, 33),
                   Record(bTopSideSameAsBottom=1), LANDSCAPE)
    for colours in (1, 2):
        record = Record(dwColorMode=colours, dwSetupOnFirstPageOnly=1)
        same = [page("mixed", 118, 70, 3)] * 3
        yield document(f"set-up-once-{colours}", same, record, PAPER)
        yield document(f"images-again-{colours}", same, Record(dwColorMode=colours), PAPER)
    cuts = {"dwCut1CsEnabled": 1, "nCut1CsValue": 1500, "dwCut1AtJobEnd": 1, "nCut1Value1": 2000}
    for mode in (0, 1, 2):
        yield document(f"cut-{mode}", labels(["crisp"] * 2),
                       Record(dwCut1Enabled=1, dwCut1Mode=mode, nCut1Count=3, **cuts), PAPER)
    yield document("second-cutter", labels(["crisp"] * 2),
                   Record(dwCut2Enabled=1, dwCut2CutEnabled=1, dwCut2CsEnabled=1, dwCut2Mode=2,
                          dwCspEnabled=1, nCspValue=-300, dwCpEnabled=1, nCpValue=12345,
                          dwCut2AtJobEnd=1, nOptionCValue=1250), PAPER)
    yield document("copies", labels(["crisp", "blank"]), None, PAPER + ",copies=12")
    yield document("copies-collated", labels(["crisp"] * 2), None, PAPER + ",copies=3,collate=1")
    for model in ("K5", "K7"):
        record = Record(szModelCode=model, dwColorMode=2, dwUseDarkness2=1, nDarkness=-4,
                        nDarkness2=7)
        yield document(f"model-{model}", labels(["mixed", "red"]), record, PAPER)
    options = Record(dwOptionE=1, dwOptionM=1, dwOptionN=1, dwOptionS=1, dwOptionT=1,
                     nOptionTValue=2555, dwOptionSet2Enabled=1, nOptionSet2A4=17, nOffsetX=-1234,
                     nOffsetY=999, dwHeadParamB=5, dwPrintMethod=1, dwRibbonSaver=1)
    yield document("options", labels(["crisp"]), options, PAPER)
    yield document("reset", labels(["mixed"] * 3), Record(dwColorMode=2), PAPER,
                   between={2: ["public:" + LANDSCAPE, "reset"], 3: ["public:" + PAPER, "reset"]})
    yield document("abort", labels(["mixed", "crisp"]), None, PAPER, end="end:1")
    yield document("two-documents", labels(["mixed", "mixed"]), Record(dwColorMode=2), PAPER,
                   between={2: ["end", "start:Second"]})
    yield document("title", labels(["crisp"]), None, PAPER,
                   title="Prei%u00DFe 10 %u20AC %u65E5 f%u00FCr alle")
    yield document("merge", labels(["crisp"]), Record(dwSensorType=9, wDitherer=77, dwColorMode=5),
                   PAPER, before=["devmode:2", "record:record", "devmode:4", "devmode:3"])
    yield document("filter", labels(["crisp"]), None, PAPER, between={1: ["filter:raw text"]})
    large = [page("photo", 640, 480), page("crisp", 640, 480)]
    for colours in (1, 2):
        yield document(f"large-{colours}", large, Record(dwColorMode=colours, bCropToContent=1),
                       "width=542,length=406,orientation=2", band=100)
    yield Scenario("strangers", [
        f"class:{OLD_INTERFACE}", f"class:{PLUGIN}", "object", f"query:{PLUGIN_INTERFACE}",
        f"query:{OLD_INTERFACE}",
        "query:{4E4A7747-BC76-4AED-ACC8-C76AF22AAD43}", "query:{00000000-0000-0000-C000-000000000046}",
        "info:1", "info:2", "info:3", "info:5", "info:99", "method:ImageProcessing",
        "method:imageprocessing", "method:Compression", "declined", "devmode:7", "devmode:4"])


def named():
    return [*ditherers(), *rotations(), *stocks(), *blocks(), *documents()]


def random_scenario(seed):
    """One document with anything in it that the client can do."""
    rng = random.Random(seed)
    choice = rng.choice
    record = Record(
        wDitherer=rng.randrange(7), byDitherParam=choice((0, 1, 5, 40, 255)),
        dwColorMode=choice((1, 1, 2, 2, 3)), crHighlightColor=choice((0xFF, 0xFF0000, 0x2080F0)),
        nColorTolerance=choice((0, 25, 60, 100)), dwRotation=rng.randrange(4),
        bCropToContent=choice((0, 1)), bTopSideSameAsBottom=choice((0, 0, 1)),
        dwSetupOnFirstPageOnly=choice((0, 0, 1)), dwSensorType=rng.randrange(7),
        nOffsetX=rng.randrange(-5000, 5000), dwGapDistance=rng.randrange(10000),
        dwUnprintableLeft=rng.randrange(3000), dwUnprintableTop=rng.randrange(3000),
        dwUnprintableBottom=rng.randrange(3000), nDarkness=rng.randrange(-10, 10),
        dwOptionPD=rng.randrange(3), dwOptionSet1Enabled=choice((0, 1)),
        nOptionSet1PValue=rng.randrange(-9999, 99999), dwOptionSet3Enabled=choice((0, 1)),
        dwCut1Enabled=choice((0, 1)), dwCut1Mode=rng.randrange(4), nCut1Value1=rng.randrange(99999),
        dwCut1AtJobEnd=choice((0, 1)), dwCut2Enabled=choice((0, 1)), dwCpEnabled=choice((0, 1)),
        nCpValue=rng.randrange(-999, 99999), szModelCode=choice(("", "K5", "K7")),
        dwUseDarkness2=choice((0, 1)), guidSelectedStock=choice((bytes(16), guid_bytes(STOCK))),
        **{f"wCustomType{k}": rng.randrange(6) for k in range(8)},
        **{f"szCustomText{k}": choice(("block.txt", r"\x1b\n\t{}", "{a} {b}", "x{page}", ""))
           for k in range(8)})
    width, height = rng.randrange(1, 150), rng.randrange(1, 90)
    kinds = ("blank", "crisp", "photo", "grey", "red", "mixed", "spot")
    pages = [page(choice(kinds), width, height, choice((1, seed)))
             for _ in range(rng.randrange(1, 5))]
    public = [f"width={width * choice((84, 84, 40)) // 100 + 1}", f"length={height * 84 // 100 + 1}",
              f"orientation={choice((1, 1, 2, 2, 3))}", f"copies={rng.randrange(1, 20)}",
              f"collate={choice((0, 1))}", f"resolution={choice((203, 300, 600))}"]
    between = {number: [f"public:orientation={choice((1, 2))}", "reset"]
               for number in range(2, len(pages) + 1) if rng.random() < 0.15}
    # Landscape strips of a multiple of 4 columns have no padding that would cover their neighbour.
    return document(f"random-{seed}", pages, record, ",".join(public), between,
                    choice(("end", "end", "end", "end:1")), choice(("Label Printer", "Bare Printer")),
                    choice(("Label", "%u00E4%u20AC", "")), 4 * rng.randrange(1, 12))
