"""Measures everything and writes bench.json, bench.md and frame.svg.  scripts/bench.sh builds what it needs and calls it."""
import argparse
import json
import pathlib
import sys
import time

import analytic
import clip
import light
import limits
import machine
import near
import plot
import quality
import real_seams
import report
import seams
from pictures import make_pictures
from sections import CURVE, SIZES, Suite

ROUNDS = 21
FILMED, FEW = 16, 2  # frames of clips in which everything moves
QUICK_SIZES = (1920, 960)
CLIPS = ({"width": 3840, "turns": 5, "rounds": 7}, {"width": 1920, "turns": 10, "rounds": 7})
QUICK_CLIPS = ({"width": 640, "turns": 1, "rounds": 1},)


def read_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, required=True, help="folder of a build with BISEAM_BUILD_BENCH")
    parser.add_argument("--out", type=pathlib.Path, required=True)
    parser.add_argument("--arm", type=pathlib.Path, help="table of estimates for ARM to be shown too")
    parser.add_argument("--against", help="name of the library that bench_against was built of")
    parser.add_argument("--samples", type=pathlib.Path, help="folder of real cameras' pictures; without it they are left out")
    parser.add_argument("--quick", action="store_true", help="only to see that everything works: few rounds, small panoramas")
    return parser.parse_args()


def sections(suite, sizes, curve, tool, samples, quick):
    yield "analytic", lambda: {camera: {str(width): analytic.measure(suite, width, camera) for width in sizes}
                               for camera in analytic.CAMERAS}
    yield "seams", lambda: seams.measure(tool, suite.out / "pictures", seams.WIDTH)
    pictures = suite.out / "pictures"
    yield "filmed_seams", lambda: seams.measure_filmed(tool, pictures, 480 if quick else 960, FEW if quick else FILMED)
    yield "light", lambda: light.measure(tool, pictures, 512 if quick else 1920)
    yield "near", lambda: near.measure(tool, pictures, 960 if quick else 1920, FEW if quick else FILMED)
    if samples:
        yield "real_seams", lambda: real_seams.measure_samples(tool, pictures, samples)
    else:
        print("real_seams    left out: no --samples", flush=True)
    yield "meeting", lambda: suite.meeting(sizes[0])
    yield "ring", lambda: {str(width): suite.ring(width) for width in sizes}
    yield "ring_curve", lambda: suite.ring_curve(curve)
    yield "contest", lambda: {str(width): suite.contest(width) for width in sizes}
    yield "stages", lambda: {str(width): suite.stages(width) for width in sizes}
    yield "curve", lambda: {"constant": suite.curve(curve, scaled=False), "scaled": suite.curve(curve, scaled=True)}
    yield "search", lambda: suite.search(sizes[0])
    yield "tables", lambda: suite.tables(sizes[0])
    yield "memory", lambda: suite.memory(sizes[0])
    yield "clips", lambda: [clip.measure(tool, suite.out, **size) for size in (QUICK_CLIPS if quick else CLIPS)]
    yield "instructions", lambda: suite.instructions(sizes[-1])
    if not quick:
        yield "kernels", suite.kernels


def refuse_other_pictures(contest, clips):
    """A contestant that shows something else has not done the work that is measured."""
    strange = [f"{name} at {width}: {likeness:.1f} dB" for width, sizes in contest.items()
               for name, likeness in sizes["psnr"].items() if likeness is not None and likeness < quality.PLAUSIBLE]
    strange += [f"v360's clip at {clip['width']}: {clip['psnr']:.1f} dB" for clip in clips if clip["psnr"] < quality.PLAUSIBLE]
    if strange:
        sys.exit("not the same panorama: " + ", ".join(strange))
    for width, sizes in contest.items():
        if sizes["psnr"]["scalar"] is not None:
            sys.exit(f"other bytes from scalar kernels at {width}")


def refuse_blur(analytic_sizes):
    """What is known exactly is sharp at every size, on every machine."""
    for width, contestants in analytic_sizes.items():
        for name, (luma, chroma) in {"ring_fast": (46, 0), "ring_good": (55.5, 56), "ring_best": (56.2, 56)}.items():
            got = contestants[name]
            if min(got["luma"], got["near"]) < luma or got["chroma"] < chroma or abs(got["bias"]) > 0.02:
                sys.exit(f"{name} at {width} is not sharp enough: {got}")


def refuse_restless_seams(modes):
    """Steady seams hold still, and hide as much as free ones."""
    steady, free = modes["steady"], modes["free"]
    if steady["columns"] > 0.05 or steady["flicker"] > 1.1 or steady["near"] < free["near"] - 0.1:
        sys.exit(f"seams don't hold still: {modes}")


def main():
    arguments = read_arguments()
    sizes, curve = (QUICK_SIZES, QUICK_SIZES) if arguments.quick else (SIZES, CURVE)
    tool = arguments.build / "tools/biseam/biseam"
    make_pictures(tool, arguments.out / "pictures", rendered=sizes[0] // 2,
                  sizes=sorted({width // 2 for width in (*sizes, *curve, seams.WIDTH)}))
    suite = Suite(arguments.build, arguments.out, rounds=2 if arguments.quick else ROUNDS, against=arguments.against)
    results = {"machine": machine.describe(), "rounds": suite.rounds, "against": arguments.against}
    for name, section in sections(suite, sizes, curve, tool, arguments.samples, arguments.quick):
        start = time.monotonic()
        results[name] = section()
        print(f"{name:13} {time.monotonic() - start:5.1f} s", flush=True)
    refuse_blur(results["analytic"]["virtual"])
    refuse_restless_seams(results["seams"])
    refuse_other_pictures(results["contest"], results["clips"])
    if arguments.arm:
        results["arm"] = json.loads(arguments.arm.read_text())
    for what, limit, measured, held in limits.judge(results):
        if not held:
            print(f"missed: {what}: {measured}, must be {limit}", flush=True)
    (arguments.out / "bench.json").write_text(json.dumps(results, indent=1, allow_nan=False) + "\n")
    (arguments.out / "bench.md").write_text(report.write(results))
    plot.draw(results, arguments.out / "frame.svg")


main()
