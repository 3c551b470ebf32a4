"""bench.json as tables."""
import limits
from figures import CONTESTANTS, RING_CONTESTANTS, STAGES, copy_ratios, median, rows_of_stages


def table(head, rows):
    lines = [head, ["---"] + ["---:"] * (len(head) - 1), *rows]
    return "\n".join("| " + " | ".join(str(cell) for cell in line) + " |" for line in lines) + "\n"


def ms(value):
    return f"{value:.2f}" if value < 10 else f"{value:.1f}"


def write_machine(results):
    m = results["machine"]
    return (f"{m['date']}, commit {m['commit']}. {m['processor']}, {m['cores']} cores; {m['system']}; {m['compiler']}; "
            f"FFmpeg {m['FFmpeg']}, OpenCV {m['OpenCV']}.\n\n"
            "Two square NV12 fisheye pictures in memory, half as wide as the panorama, to one NV12 panorama; feather 32, "
            "trans_width 64, findpath_width 64, pyr_level 5, inv_scale 4, seam search on. Each program runs for itself and waits "
            f"while another is measured; {results['rounds']} rounds of all in turn, three frames each after one that is not "
            "counted; medians. Wall is the time on the clock, CPU the sum over all threads, both in milliseconds.\n")


def write_analytic(results):
    parts = ["## Sharpness\n\nAn analytic scene of waves up to 0.3 cycles a lens pixel and of soft edges, drawn as 8-bit fisheye pictures; "
             "every panorama against the scene itself, which no rounding has touched (rounding alone costs all but 58.9 dB). "
             "PSNR in dB, of luma everywhere and within 8 degrees of the plane between the lenses, of chroma; mean error of luma "
             "in code values. The virtual camera's lenses are equidistant, 195 degrees, exactly back to back, and v360 is told the "
             "angle with which its geometry is the same; the real camera's are turned, distorted, off the middle and cut by the "
             "pictures' edges.\n"]
    for camera, sizes in results["analytic"].items():
        for width, contestants in sizes.items():
            rows = [[title, *(f"{contestants[name][figure]:.2f}" for figure in ("luma", "near", "chroma")),
                     f"{contestants[name]['bias']:+.3f}"] for name, title in RING_CONTESTANTS.items() if name in contestants]
            parts.append(f"{camera} camera, {width} x {int(width) // 2}:\n\n" +
                         table(["", "luma", "near the ring", "chroma", "mean error"], rows))
    return "\n".join(parts)


def write_seams(results):
    rows = [[f"`--seams {mode}`", f"{figures['columns']:.3f}", f"{figures['flicker']:.2f}", f"{figures['near']:.2f} dB"]
            for mode, figures in results["seams"].items()]
    return "\n\n".join(["## Seams in a still scene\n\nThe rendered scene, the same pictures in every frame under other noise (2 codes); "
                        "lenses 3 cm apart.",
                        table(["", "columns a frame", "flicker near the ring, against elsewhere", "luma PSNR near the ring"], rows)])


def write_light(results):
    def row(name, figures):
        cells = [f"{figures[scene][figure]:.2f}" if scene in figures else "" for scene in ("different", "flare", "drift")
                 for figure in ("mean", "worst")]
        after = ", ".join(f"{step['mean']:.2f} ({step['worst']:.2f})" for step in figures["cut"][:3])
        return [name, *cells, f"{figures['unrest']:.3f}" if "unrest" in figures else "", after]
    titles = {"off": "`--light off`", "match": "`--light match`", "analysed": "`--light match`, the clip analysed before",
              "v360": "FFmpeg v360"}
    return ("## Light\n\nSteps of luma across the middle of the ring against the truth, in code values: mean of sectors, and the worst of "
            "them. One lens is brighter by 1 EV, set 500 K higher and falls off by 20 %; has a veil of flare; becomes brighter by 1 EV in "
            "a second, where the worst frame counts. Unrest: how much a lens's mean changes from frame to frame under noise (2 codes). "
            "The last column has the mean and the worst steps of the first frames after a cut. Where a panorama is too dark on both sides "
            "alike and different things lie on them, that counts as a step too. OpenCV's compensators with its graph cut and a blend in "
            "5 bands know no other frames: they have one frame after the cut.\n\n" +
            table(["", "different", "worst", "flare", "worst", "drift", "worst", "unrest", "after a cut"],
                  [row(titles.get(name, f"OpenCV, {name}"), figures) for name, figures in results["light"].items()]))


def write_near(results):
    near = results["near"]
    rows = [[f"placards at {distance} m", title, f"{100 * modes[name]['fits']:.0f} %", f"{modes[name]['misfit']:.2f}",
             f"{modes[name]['thing']:.2f}", f"{modes[name]['near']:.2f}"] for distance, modes in near["standing"].items()
            for name, title in (("off", "`--near off`"), ("on", "`--near on`"), ("v360", "FFmpeg v360"))]
    gains = [[name, *(f"{sum(modes[mode]) / len(modes[mode]):.2f}" for mode in ("off", "on")),
              f"{min(on - off for on, off in zip(modes['on'], modes['off'])):+.2f}"]
             for name, modes in [*((f"all far, {k}", modes) for k, modes in near["far"].items()), *near["moving"].items()]]
    return ("## Near things\n\nLettered placards on both seams, lenses 3 cm apart, noise 2 codes: the share of their textured parts that "
            "lies within 1.5 pixels of a panorama of 3840, what 90 % of them stay below, and luma PSNR in dB, of the placards and of all "
            "within 8 degrees of the ring's middle.\n\n" + table(["", "", "fits", "misfit", "placards", "near the ring"], rows) +
            "\nFrame by frame, within 8 degrees: mean PSNR, and the frame that gains least; moving ones have half the size.\n\n" +
            table(["", "off", "on", "least gain"], gains))


def write_filmed_seams(results):
    rows = [[name, f"`--seams {mode}`", f"{figures['flicker']:.2f}", f"{figures['near']:.2f} dB"]
            for name, modes in results["filmed_seams"].items() for mode, figures in modes.items()]
    return ("## Seams where camera and things move\n\nFlicker is what changes in the panorama and not in the truth.\n\n" +
            table(["", "", "flicker near the ring, against elsewhere", "luma PSNR near the ring"], rows))


def write_real_seams(results):
    rows = [[name, *(f"{part['matches']}: {part['along']:+.2f} ({part['rms']:.2f}), {part['far']:+.2f}" if "far" in part else part["matches"]
                     for part in eighths)] for name, eighths in results["real_seams"].items()]
    return ("## Real cameras\n\nWhat both lenses see by the profile that `biseam calibrate` finds, pixels of 3840, by eighths of the ring from "
            "the left upwards: matches; median along the ring (rms), where nearness displaces nothing; the far end across it. Below 0 "
            "is what would lie beyond infinity.\n\n" + table(["", *(str(i + 1) for i in range(8))], rows))


def write_meeting(results):
    frames = results["meeting"]
    cpu = {name: median(figures, "frame.cpu_ms") for name, figures in frames.items()}
    return ("## What joining the lenses takes\n\nOf a frame of a real camera at 3840 x 1920, one thread, processor time in milliseconds.\n\n" +
            table(["", "CPU", "more than without"], [[name, ms(value), f"{value - cpu['off']:.2f}"] for name, value in cpu.items()]))


def write_limits(results):
    rows = [[what, limit, measured, "held" if held else "**missed**"] for what, limit, measured, held in limits.judge(results)]
    return "## What the ring engine must reach, and what it does\n\n" + table(["", "must", "measured", ""], rows)


def write_ring(results):
    parts = ["## Frames of a real camera\n\nSeam searched, blended in bands; one NV12 frame after the other, unless it says 10 bits "
             "(P010). v360, OpenCV and the exact engine have the virtual camera.\n"]
    for width, by_threads in results["ring"].items():
        for threads, measured in by_threads.items():
            frames = measured["frames"]
            ours = [median(frames["ring_good"], f"frame.{clock}_ms") for clock in ("wall", "cpu")]
            rows = []
            for name, title in RING_CONTESTANTS.items():
                if name not in frames:
                    continue
                wall, cpu = (median(frames[name], f"frame.{clock}_ms") for clock in ("wall", "cpu"))
                first = measured["first"].get(name)
                rows.append([title, ms(wall), ms(cpu), f"{wall / ours[0]:.2f}", f"{cpu / ours[1]:.2f}",
                             f"{first['first.wall_ms'] / wall:.1f} frames" if first else "",
                             f"{first['memory_mib']:.1f}" if first else ""])
            parts.append(f"{width} x {int(width) // 2}, {threads} thread{'s' if threads != '1' else ''}:\n\n" + table(
                ["", "wall", "CPU", "wall / ours", "CPU / ours", "open and first frame", "engine, MiB"], rows))
    return "\n".join(parts)


def write_ring_curve(results):
    curve = results["ring_curve"]
    rows = [[f"{width} x {int(width) // 2}",
             *(f"{median(curve['frames'][width], f'frame.{clock}_ms') * 1e6 / (int(width) ** 2 / 2):.2f}" for clock in ("wall", "cpu")),
             f"{curve['memory_mib'][width]:.1f}"] for width in curve["frames"]]
    return ("## Sizes of a real camera\n\nNanoseconds per panorama pixel, two threads, pictures half as wide as the panorama; the engine's MiB.\n\n" +
            table(["panorama", "wall", "CPU", "engine, MiB"], rows))


def write_contest(results):
    parts = ["## Whole frames of the exact engine\n"]
    for width, contest in results["contest"].items():
        frames = contest["frames"]
        ours = [median(frames["biseam"], f"frame.{clock}_ms") for clock in ("wall", "cpu")]
        rows = []
        for name, title in CONTESTANTS.items():
            if name not in frames:
                continue
            wall, cpu = (median(frames[name], f"frame.{clock}_ms") for clock in ("wall", "cpu"))
            likeness = contest["psnr"].get(name, "")
            same = "the same bytes" if likeness is None else likeness and f"{likeness:.1f} dB"
            rows.append([title.format(against=results["against"]), ms(wall), ms(cpu), f"{wall / ours[0]:.2f}",
                         f"{cpu / ours[1]:.2f}", same])
        parts.append(f"{width} x {int(width) // 2}:\n\n" +
                     table(["", "wall", "CPU", "wall / ours", "CPU / ours", "luma against ours"], rows))
    parts.append(WHAT_IS_COUNTED)
    return "\n".join(parts)


WHAT_IS_COUNTED = """What is counted:

- biseam: `QOR_Proc_BI_Soft`. Luma is mixed of two pixels and chroma of four, in floats.
- v360: FFmpeg's filter `v360=dfisheye:e`, `interp=linear`, 2 threads, planar frame in, planar frame out. It cuts from one lens to
  the other; no seam is searched, nothing is blended. Making planar frames is not counted.
- OpenCV: `remap` with fixed-point maps (made of our lookup tables), `INTER_LINEAR`, of luma and chroma; bands to BGR;
  `GraphCutSeamFinder` on the overlaps shrunk by 4; `MultiBandBlender` with 5 bands; back to luma and chroma; 2 threads. Nothing
  outside the overlaps is blended. `bench/contestants/opencv.cpp` is the whole of it.
- Tables are made before, by everybody.
"""


def write_stages(results):
    parts = ["## Stages\n"]
    for width, stages in results["stages"].items():
        rows = []
        ours, scalar = rows_of_stages(stages["biseam"]), rows_of_stages(stages["scalar"])
        for stage in STAGES:
            (wall, cpu), (scalar_wall, scalar_cpu) = ours[stage], scalar[stage]
            rows.append([stage, ms(wall), ms(cpu), ms(scalar_wall), ms(scalar_cpu), f"{scalar_wall / wall:.1f}",
                         f"{scalar_cpu / cpu:.1f}"])
        parts.append(f"{width} x {int(width) // 2}:\n\n" + table(
            ["stage", "wall", "CPU", "scalar -O2 wall", "scalar -O2 CPU", "wall ratio", "CPU ratio"], rows))
        for what, size, milliseconds, ratio in copy_ratios(results, width):
            parts.append(f"Remap against a `memcpy` by one thread of {what} ({size / 1e6:.1f} MB): {ms(milliseconds)} ms, "
                         f"so remap takes **{ratio:.2f}** times the CPU time.\n")
    return "\n".join(parts)


def write_curve(results):
    curve = results["curve"]

    def per_pixel(figures, width, clock):
        return median(figures, f"frame.{clock}_ms") * 1e6 / (int(width) ** 2 / 2)

    rows = [[f"{width} x {int(width) // 2}"] +
            [f"{per_pixel(curve[kind][width], width, clock):.2f}" for kind in ("constant", "scaled") for clock in ("wall", "cpu")]
            for width in curve["constant"]]
    return ("## Sizes\n\nNanoseconds per panorama pixel; overlaps as wide as above at every size, or scaled with the panorama "
            "(as above at 3840).\n\n" +
            table(["panorama", "wall", "CPU", "scaled: wall", "scaled: CPU"], rows))


def write_search(results):
    rows = []
    for scale, figures in results["search"].items():
        rows.append([scale] + [ms(median(figures, f"search.{clock}_ms")) for clock in ("wall", "cpu")])
    width = next(iter(results["contest"]))
    return f"## Seam search\n\nBoth seams at {width} x {int(width) // 2}, milliseconds.\n\n" + table(["inv_scale", "wall", "CPU"], rows)


def write_tables(results):
    rows = []
    tables = results["tables"]
    for label, pick in (("first call", lambda name, clock: tables["first"][name][f"tables.{clock}_ms"]),
                        ("repeated", lambda name, clock: median(tables["repeated"][name], f"tables.{clock}_ms"))):
        wall, cpu, scalar_wall, scalar_cpu = (pick(name, clock) for name in ("biseam", "scalar") for clock in ("wall", "cpu"))
        rows.append([label, ms(wall), ms(cpu), ms(scalar_wall), ms(scalar_cpu), f"{scalar_wall / wall:.1f}",
                     f"{scalar_cpu / cpu:.1f}"])
    return ("## Tables\n\n`QOR_SetConfig_BI_Soft`, milliseconds. The first call also touches the tables' memory for the first time.\n\n" +
            table(["", "wall", "CPU", "scalar -O2 wall", "scalar -O2 CPU", "wall ratio", "CPU ratio"], rows))


def write_memory(results):
    rows = [[CONTESTANTS[name], *(int(faults) for faults in m["faults"]), f"{m['peak_kib'] / 1024:.1f}",
             f"{(m['peak_kib'] - m['before_kib']) / 1024:.1f}"] for name, m in results["memory"].items()]
    frames = [f"frame {i + 1}" for i in range(len(rows[0]) - 3)]
    return ("## Memory\n\nPage faults of the first frames, and the most memory that the process held in MiB: all of it, and without "
            "what it held before the engine was made (the pictures and the program).\n\n" +
            table(["", *frames, "peak", "engine"], rows))


def write_clips(results):
    parts = ["## Clips\n\nTwo square fisheyes side by side, half as wide as the panorama, H.264 with sound, to a panorama: libx264, preset "
             "ultrafast, crf 23 from all, the sound copied. Seconds of the whole program, runs in turn after one that is not counted, "
             "medians; peak memory in MiB. A real camera's profile has turns and distortion, the scene's own has not.\n"]
    for clip in results["clips"]:
        runs, width = clip["runs"], clip["width"]
        ours = runs["biseam"]
        rows = [[title, *(f"{median(runs[name], figure):.2f}" for figure in ("wall_s", "cpu_s")),
                 f"{median(runs[name], 'wall_s') / median(ours, 'wall_s'):.2f}",
                 f"{median(runs[name], 'cpu_s') / median(ours, 'cpu_s'):.2f}",
                 f"{clip['frames'] / median(runs[name], 'wall_s'):.1f}", f"{median(runs[name], 'peak_kib') / 1024:.0f}"]
                for name, title in (("biseam", "biseam stitch --light off, a real camera's profile"),
                                    ("scene", "biseam stitch --light off, the scene's"),
                                    ("matched", "biseam stitch, a real camera's profile, light matched"),
                                    ("analyse", "biseam analyse, the same"), ("followed", "biseam stitch --analysis, after it"),
                                    ("v360", "ffmpeg, filter v360 (remap only)"))]
        ratio = {clock: clip["ratio"][clock] for clock in ("wall_s", "cpu_s")}
        parts.append(f"{width} x {width // 2}, {clip['frames']} frames, {clip['rounds']} rounds. In pairs of runs the real camera's takes "
                     f"{ratio['wall_s']['median']:.2f} times v360's wall time ({ratio['wall_s']['least']:.2f} to "
                     f"{ratio['wall_s']['most']:.2f}) and {ratio['cpu_s']['median']:.2f} times its processor time; the scene's is "
                     f"{clip['psnr']:.1f} dB from it.\n\n" +
                     table(["", "wall", "CPU", "wall / ours", "CPU / ours", "frames a second", "peak"], rows))
    return "\n".join(parts)


def write_instructions(results):
    counted = results["instructions"]
    width, per_frame = counted["width"], counted["per_frame"]
    rows = [["scalar -O2", f"{per_frame['scalar'] / 1e6:.1f}"], ["AVX2", f"{per_frame['avx2'] / 1e6:.1f}"],
            ["ratio", f"{per_frame['scalar'] / per_frame['avx2']:.2f}"]]
    return (f"## Instructions\n\nMillions per frame at {width} x {width // 2}, counted by callgrind, which knows no AVX-512.\n\n" +
            table(["", "million"], rows))


def write_kernels(results):
    return "## Kernels\n\n" + table(["kernel", "version", "ns per pixel", "times scalar"], results["kernels"])


def write_arm(results):
    rows = [[row["loop"], row["processor"], *(f"{row[name]:.2f}" if row.get(name) else "" for name in ("scalar", "neon")),
             f"{row['scalar'] / row['neon']:.1f}" if row.get("scalar") and row.get("neon") else ""]
            for row in results["arm"]]
    return ("## ARM, estimated\n\nNot measured: what llvm-mca predicts for the innermost loop alone, as if every load hit the first "
            "cache and every instruction between the loop's ends ran, rare paths included. Cycles per pixel; empty where there is no "
            "such version or no cost for one of its instructions. On 64-bit ARM compilers use NEON for the scalar definitions too.\n\n" + table(["loop", "processor", "scalar", "NEON", "ratio"], rows))


SECTIONS = {"analytic": write_analytic, "seams": write_seams, "filmed_seams": write_filmed_seams, "light": write_light, "near": write_near, "real_seams": write_real_seams, "meeting": write_meeting, "ring": write_ring, "ring_curve": write_ring_curve, "contest": write_contest, "stages": write_stages, "curve": write_curve, "search": write_search,
            "tables": write_tables, "memory": write_memory, "clips": write_clips, "instructions": write_instructions, "arm": write_arm,
            "kernels": write_kernels}


def write(results):
    sections = [section(results) for name, section in SECTIONS.items() if name in results]
    return "\n".join(["# Measured\n", write_machine(results), "![Time per frame](frame.svg)\n", write_limits(results), *sections])
