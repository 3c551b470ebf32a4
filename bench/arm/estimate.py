#!/usr/bin/env python3
"""Cycles per pixel of the hot loops on small ARM processors, as llvm-mca predicts them: the loop alone, every load a hit.

Each loop is the one of its function that stores most, taken out of what the cross compilers make of the library's sources.
LLVM has no model that it takes for 32-bit in-order cores such as the Cortex-A7.
"""
import argparse
import concurrent.futures
import json
import pathlib
import re
import subprocess

from assembly import functions_of, hot_loop

ROOT = pathlib.Path(__file__).resolve().parents[2]
FLAGS = ["-std=c++20", "-O3", "-DNDEBUG", "-ffp-contract=off", "-fno-exceptions", "-fno-rtti", "-fno-threadsafe-statics",
         "-fPIC", f"-I{ROOT}/src", f"-I{ROOT}/include", "-S", "-o", "-"]
# llvm-mca knows no Thumb blocks of conditional instructions, so 32-bit code is the plain one.
COMPILERS = {"armv7": ["arm-linux-gnueabihf-g++", "-march=armv7-a+fp", "-marm"], "aarch64": ["aarch64-linux-gnu-g++"]}
TARGETS = {"armv7": ["-mtriple=armv7-linux-gnueabihf", "-mattr=+neon"], "aarch64": ["-mtriple=aarch64-linux-gnu"]}
PROCESSORS = (("cortex-a9", "armv7"), ("cortex-a53", "aarch64"))
ITERATIONS = 100
SINGLE_LOAD = re.compile(r"\tvldmia\.64\s+(\w+)!, \{(\w+)\}")  # the model has no cost for it in this form

# What it is, scalar and NEON function, bytes that one pixel of the result stores.  Only functions with one loop for it all.
LOOPS = (
    ("remap, luma", "sample_luma_row_scalar", "sample_luma_row_neon", 1),
    ("remap, chroma (per pair)", "sample_chroma_row_scalar", "sample_chroma_row_neon", 2),
    ("bands to RGB", "yuv420_rows_to_rgb_scalar", "yuv420_rows_to_rgb_neon", 3),
    ("RGB to luma", "rgb_row_to_luma_scalar", "rgb_row_to_luma_neon", 1),
    ("reduction down", "sum_rows_loop::scalar", "sum_rows_loop::neon", 6),
    ("reduction across", "reduce_byte_pixels_scalar", "reduce_byte_pixels_neon", 3),
    ("expansion across", "expand_pixels_scalar", "expand_byte_pixels_neon", 6),
)

WANTED = re.compile("|".join(sorted({rf"\b{name.split('::')[0]}\b" for _, *versions, _ in LOOPS for name in versions})))


def compiled(compiler, source):
    command = [*COMPILERS[compiler], *FLAGS, source]
    return functions_of(subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout)


def short_name(name):
    """Without namespaces, arguments and return type; versions kept in templates as NAME::VERSION."""
    version = re.search(r"LoopVersions<&\(?(?:\w+ )?(?:\w+::|\(anonymous namespace\)::)*(\w+(?:<\w+>)?).*::(scalar|neon)\(", name)
    if version:
        return f"{version.group(1)}::{version.group(2)}"
    plain = re.match(r"(?:[\w ]+ )?(?:\w+::|\(anonymous namespace\)::)*(\w+(?:<[\w, ]+>)?)\(", name)
    return plain.group(1) if plain else name


def all_functions():
    sources = [path for path in sorted(ROOT.glob("src/**/*.cpp")) if WANTED.search(path.read_text())]
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        jobs = {(compiler, source): pool.submit(compiled, compiler, source) for compiler in COMPILERS for source in sources}
        functions = {compiler: {} for compiler in COMPILERS}
        for (compiler, _), job in jobs.items():
            functions[compiler].update({short_name(name): lines for name, lines in job.result().items()})
    return functions


def cycles(loop, processor, compiler):
    text = SINGLE_LOAD.sub(r"\tvldr.64\t\2, [\1]\n\tadd\t\1, \1, #8", "\n".join(loop) + "\n")
    # The other views fail for some loops.
    command = ["llvm-mca", *TARGETS[compiler], f"-mcpu={processor}", f"-iterations={ITERATIONS}", "-all-views=false", "-summary-view"]
    report = subprocess.run(command, input=text, capture_output=True, text=True)
    if report.returncode != 0 or "error" in report.stderr:
        return None  # an instruction that the model has no cost for
    return int(re.search(r"Total Cycles:\s+(\d+)", report.stdout).group(1)) / ITERATIONS


def cycles_per_pixel(lines, processor, compiler, bytes_per_pixel):
    stored, loop = hot_loop(lines or [])
    # A call's own time is unknown.
    if stored == 0 or any(re.match(r"^\tblx?\s", line) for line in loop):
        return None
    taken = cycles(loop, processor, compiler)
    return taken and taken * bytes_per_pixel / stored


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--out", type=pathlib.Path, required=True)
    out = parser.parse_args().out
    functions = all_functions()
    missing = [scalar for _, scalar, *_ in LOOPS if any(scalar not in functions[compiler] for compiler in COMPILERS)]
    if missing:
        raise SystemExit("no function " + ", ".join(missing))
    rows = []
    for loop, scalar, neon, bytes_per_pixel in LOOPS:
        for processor, compiler in PROCESSORS:
            estimate = lambda name: cycles_per_pixel(functions[compiler].get(name), processor, compiler, bytes_per_pixel)
            rows.append({"loop": loop, "processor": processor, "scalar": estimate(scalar), "neon": estimate(neon)})
    out.write_text(json.dumps(rows, indent=1) + "\n")


main()
