#!/usr/bin/env python3
"""Writes the corpora of the targets that take made bytes, into fuzz/corpus.  What a target found is added to its folder by hand."""
import pathlib
import struct
import subprocess
import tempfile
import zlib

FOLDER = pathlib.Path(__file__).parent / "corpus"


def save(target, name, content):
    folder = FOLDER / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(content if isinstance(content, bytes) else content.encode())


# One byte a choice, as draw_config() takes them.
def configuration(height=18, in_width=36, out_width=20, strides=(0, 0, 0, 0), format_422=0, flip=0, mirror=0, scales=(60, 62),
                  centre=(4, 4), turn=0, straight=0, feather=5, transition=4, less=0, levels=2, shrink=8):
    return bytes([height, in_width, out_width, *strides, format_422, flip, mirror, *scales, *centre, turn, straight, feather,
                  transition, less, levels, shrink])


CONFIGURATIONS = {
    "empty": b"",
    "searched": configuration(),
    "flipped": configuration(flip=1, mirror=1),
    "422": configuration(format_422=1),
    "422-flipped": configuration(format_422=1, flip=1, mirror=1, strides=(3, 5, 7, 2)),
    "padded": configuration(strides=(9, 8, 7, 4)),
    "straight": configuration(straight=1),
    "turned": configuration(turn=30),
    "unscaled": configuration(shrink=0),
    "narrow": configuration(height=0, in_width=12, out_width=0, feather=0, transition=0, shrink=0, levels=0),
    "wide-lens": configuration(scales=(0, 0)),
    "outside": configuration(scales=(200, 200), centre=(16, 0)),
    "deep": configuration(levels=3, height=10, feather=7, transition=6),
}


def override(field, value):
    return bytes([field]) + struct.pack("<I", value & 0xFFFFFFFF)


def configurations():
    seed = struct.pack("<I", 12345)
    for name, content in CONFIGURATIONS.items():
        save("configuration", name, content)
        save("same_bytes", name, content + seed[: 4 if content else 0] + (bytes([15, 31]) if content else b""))
    base = configuration() + seed
    for name, field, value in [("height-huge", 0, 0x7FFFFFFC), ("height-negative", 0, -4), ("width-huge", 13, 0x7FFFFFFC),
                               ("stride-huge", 2, 0x7FFFFFFF), ("p0-nan", 34, 0x7FC00000), ("p0-infinite", 34, 0x7F800000),
                               ("cx0-huge", 35, 0x7F7FFFFF), ("feather-huge", 85, 0x7FFFFFFF), ("trans-least", 86, 0x80000000),
                               ("findpath-huge", 87, 0x7FFFFFFE), ("levels-huge", 88, 0x7FFFFFFF),
                               ("shrink-tiny", 90, 0x00000001), ("shrink-huge", 90, 0x7F000000)]:
        save("configuration", name, base + override(field, value))


def bitmap(width, height, depth, samples):
    header = b"BM" + struct.pack("<IHHI", 54 + len(samples), 0, 0, 54 + (1024 if depth == 8 else 0))
    header += struct.pack("<IiiHHIIIIII", 40, width, height, 1, depth, 0, len(samples), 0, 0, 0, 0)
    return header + (bytes(1024) if depth == 8 else b"") + samples


def raw_files():
    save("raw_files", "empty", b"")
    save("raw_files", "magic", b"BM")
    save("raw_files", "color", bitmap(4, 2, 24, bytes(range(24))))
    save("raw_files", "color-padded", bitmap(3, 2, 24, bytes(range(24))))
    save("raw_files", "gray", bitmap(4, 3, 8, bytes(range(12))))
    save("raw_files", "short", bitmap(4, 4, 24, bytes(range(20))))
    save("raw_files", "huge", bitmap(0x7FFFFFFF, 0x7FFFFFFF, 24, b""))
    save("raw_files", "negative", bitmap(4, -4, 24, bytes(48)))
    save("raw_files", "none", bitmap(0, 5, 8, b""))
    save("raw_files", "depth", bitmap(4, 4, 32, bytes(64)))
    for format_code in (0, 4, 7):
        save("raw_files", f"frame-{format_code}", struct.pack("<BBiiii", format_code, 1, 16, 6, 16, 16) + bytes(range(150)))
    save("raw_files", "frame-huge", struct.pack("<BBiiii", 0, 0, 0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF))
    save("raw_files", "frame-negative", struct.pack("<BBiiii", 4, 0, -1, -1, -16, -16))


def profiles():
    whole = """width = 3840
[picture]
width = 1920
height = 1920
[lens0]
cx = 959.5
cy = 961.25
p = 549.5
fov = 200
mount = 90
[lens1]
cx = 960
cy = 960
p = 550
yaw = 0.5
pitch = -0.25
roll = 1e-3
[blend]
feather = 64
trans_width = 128
pyr_level = 4
[seam]
search = true
findpath_width = 128
inv_scale = 4
"""
    save("profile", "whole", whole)
    save("profile", "empty", "")
    save("profile", "inline", "lens0 = {cx = 1, cy = 2.5e1, p = 100}\nseam = {search = false}\n")
    save("profile", "unknown", "colour = 'red'\n")
    save("profile", "kind", "[lens0]\ncx = 'middle'\n")
    save("profile", "range", "width = 99999999999999999999\n")
    save("profile", "no-number", "[lens0]\np = nan\ncx = inf\n")
    save("profile", "half-a-size", "[picture]\nwidth = 20\n")
    save("profile", "twice", "width = 64\nwidth = 64\n")
    save("profile", "deep-keys", "a." * 300 + "a = 1\n")
    save("profile", "deep-arrays", "a = " + "[" * 400 + "\n")
    save("profile", "string", 'width = """\\u00e9\\x00' + "\n")
    save("profile", "date", "width = 1979-05-27T07:32:00.999999-07:00\n")
    save("profile", "no-text", bytes([0xFF, 0xFE, 0, 1, 2, 0x1B]))


def values():
    for number, text in enumerate(["", "0", "1.5", "-1", "01:02:03.456", "59:59", "-00:00:00.000001", "9223372036854775807",
                                   "1e300", "99999999:59:59", "25", "29.97", "30000/1001", "0/0", "1/0", "-5/1", "ntsc", "pal",
                                   "1920x960", "2x2", "0x0", "32766x32766", "32768X2", "99999999999x2", "10x10x10", "x",
                                   "2147483647/2147483647", "now", "2012-02-02T20:00:00Z", "12s", "13ms", "14us"]):
        save("values", f"{number:02}", text)


def ranges():
    for number, (size, text) in enumerate([(0, "bytes=0-"), (1000, "bytes=0-99"), (1000, "bytes=-1"), (1000, "bytes=999-"),
                                           (1000, "bytes=1000-"), (1000, "bytes=5-3"), (1000, "bytes=0-1,3-4"),
                                           (1000, "bytes=--1"), (1000, "bytes="), (1000, "items=0-1"), (1000, "bytes=-0"),
                                           (2**64 - 1, "bytes=0-18446744073709551615"), (2**64 - 1, "bytes=-99999999999999999999"),
                                           (1, "bytes=18446744073709551616-18446744073709551617"), (0, "bytes=-5")]):
        save("ranges", f"{number:02}", struct.pack("<Q", size) + text.encode())


# Guides of four frames, one of them changed: which, then places in it and their new values.
# Where parts begin; the head says in byte 14 whether a scene does.
GUIDE_LIGHT = 16
GUIDE_NEAR = GUIDE_LIGHT + 16 * 32
GUIDE_SEAM = GUIDE_NEAR + 2 * 160


def guides():
    def changed(frame, *changes):
        return bytes([frame]) + b"".join(struct.pack("<HB", at, value) for at, value in changes)

    save("guides", "as-they-were", changed(1))
    save("guides", "scene", changed(2, (14, 1)))
    save("guides", "no-scene", changed(0, (14, 0)))
    save("guides", "odd-scene", changed(1, (14, 2)))
    save("guides", "version", changed(1, (7, 2)))
    save("guides", "samples", changed(1, (GUIDE_LIGHT, 0), (GUIDE_LIGHT + 1, 0), (GUIDE_LIGHT + 32, 9)))
    save("guides", "samples-huge", changed(1, (GUIDE_LIGHT + 3, 0x7F)))
    save("guides", "gain", changed(3, *((GUIDE_LIGHT + 32 * k + 4 + c, 0xFF) for k in range(16) for c in range(4))))
    save("guides", "gain-huge", changed(3, (GUIDE_LIGHT + 7, 0x7F)))
    save("guides", "slope", changed(1, *((GUIDE_LIGHT + 32 * k + at, 0x11) for k in range(16) for at in (18, 26))))
    save("guides", "slope-negative", changed(1, (GUIDE_LIGHT + 31, 0x80)))
    save("guides", "near", changed(1, *((GUIDE_NEAR + 2 * t + 1, 1) for t in range(12))))
    save("guides", "near-huge", changed(1, (GUIDE_NEAR + 1, 0xFF)))
    save("guides", "seam", changed(1, *((GUIDE_SEAM + at, at % 2 * 2 + 40 * (at % 4 == 0)) for at in range(2 * 160))))
    save("guides", "seam-torn", changed(1, (GUIDE_SEAM + 9, 0)))


def analyses():
    def sealed(content):
        return content + struct.pack("<I", zlib.crc32(content) ^ 0xFFFFFFFF)

    def head(guide_bytes=6, version=1, parts=0x203):
        return sealed(b"biseam analysis\n" + struct.pack("<II6iIiiI3QI", version, guide_bytes, 128, 64, 96, 96, 96, 96, parts,
                                                        1, 25, 0, 77, 1000, 0, 0))

    def ending(*times):
        return sealed(struct.pack(f"<{len(times)}qQ", *times, len(times))) + b"end\n"

    whole = head() + bytes(18) + ending(0, 1, 2)
    for name, content in {"empty": b"", "head": head(), "whole": whole, "none": head() + ending(), "cut": whole[:-5],
                          "version": head(version=2) + ending(), "no-guides": head(guide_bytes=0) + ending(),
                          "huge-guides": head(guide_bytes=0xFFFFFFFF) + ending(), "seam": head(parts=0xFF03) + ending(),
                          "backwards": head() + bytes(12) + ending(5, 4), "same": head() + bytes(12) + ending(5, 5),
                          "least": head() + bytes(12) + ending(-2**63, 2**63 - 1),
                          "many": head() + struct.pack("<QI", 2**61, 0) + b"end\n"}.items():
        save("analyses", name, content + b"\0")
    save("analyses", "mended", whole[:40] + b"\1" + whole[41:130] + b"\x09" + whole[131:] + b"\3")


# What ffmpeg makes of a test picture of 32 x 16 pixels, the same every time.
def encoded(name, *options, frames=1):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / name
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=32x16:rate=25", "-frames:v", str(frames),
                        "-threads", "1", "-fflags", "+bitexact", "-flags", "+bitexact", *options, path], check=True)
        return path.read_bytes()


def box(name, *content):
    return struct.pack(">I", 8 + sum(map(len, content))) + name.encode() + b"".join(content)


def exif(orientation):
    return struct.pack("<2sHIHHHIHHI", b"II", 42, 8, 1, 0x0112, 3, 1, orientation, 0, 0)


def media():
    png, jpeg = encoded("a.png"), encoded("a.jpg", "-q:v", "9")
    turned = jpeg[:2] + b"\xff\xe1" + struct.pack(">H", 34) + b"Exif\0\0" + exif(6) + jpeg[2:]
    stills = {"png": png, "png-deep": encoded("a.png", "-pix_fmt", "rgb48be"), "png-gray": encoded("a.png", "-pix_fmt", "gray"),
              "jpeg": jpeg, "jpeg-turned": turned, "jpeg-fill": jpeg[:2] + b"\xff" + jpeg[2:], "jpeg-cut": jpeg[:300],
              "png-cut": png[:100], "png-twice": png + png, "empty": b""}
    for name, content in stills.items():
        save("pictures", name, content)
        save("marks", name, content)
        save("tag", name, content)
    for kind in ("tif", "bmp", "webp", "gif"):
        save("pictures", kind, encoded(f"a.{kind}"))
    h264 = ("-c:v", "libx264", "-preset", "ultrafast", "-x264-params", "sei=0", "-qp", "40")
    films = {"mp4": encoded("a.mp4", *h264, frames=3), "mov": encoded("a.mov", *h264, frames=3),
             "mkv": encoded("a.mkv", *h264, frames=3), "mpeg4": encoded("a.mp4", "-c:v", "mpeg4", frames=3),
             "y4m": encoded("a.y4m", "-pix_fmt", "yuv420p", frames=2), "fields": encoded("a.ts", "-c:v", "mpeg2video", frames=3),
             "avi": encoded("a.avi", "-c:v", "mjpeg", frames=3), "wide": encoded("a.mp4", *h264, "-aspect", "4:1", frames=2)}
    for name, content in films.items():
        save("clips", name, content)
        save("clips", name + "-sought", content + b"\x03")
        save("tag", name, content)
    save("tag", "mp4-cut", films["mp4"][:-200])
    save("clips", "mp4-cut", films["mp4"][:-200])
    mov = films["mov"]
    movie = mov[mov.index(b"moov") - 4:]
    for name, content in {"empty": b"", "movie": movie, "file": mov, "short": movie[:200], "spherical": movie[:-1] + b"\xff",
                          "no-track": box("moov"), "size-0": bytes(4) + b"moov", "in-front": box("moov") + box("mdat"),
                          "long": struct.pack(">I", 1) + b"mdat" + struct.pack(">Q", 16) + box("moov", box("trak"))}.items():
        save("boxes", name, content + b"\x05" if name == "no-track" else content)


for write in (configurations, raw_files, guides, analyses, profiles, values, ranges, media):
    write()
