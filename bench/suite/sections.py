"""The parts of the suite.  Each returns plain dictionaries for bench.json."""
import re
import statistics
import subprocess

import quality
from contestant import Contestant, take_turns
from pictures import REAL_CAMERA

SIZES = (3840, 1920)  # of the panorama's width; the first is what the README shows
CURVE = (1920, 2880, 3840, 5760, 7680)
SCALES = (1, 2, 4)
STARTS = 7  # new processes for a first frame
RING_OPTIONS = {"ring_good": {}, "ring_fast": {"quality": "fast"}, "ring_best": {"quality": "best"}, "ring_p010": {"format": "p010"}}
MEETING = {"off": {}, "light": {"light": "match"}, "near": {"near": "on"}, "seams": {"seams": "steady"},
           "all": {"light": "match", "near": "on", "seams": "steady"}}
OVERLAP = {"feather": 32, "trans_width": 64, "findpath_width": 64}  # at every size, unless scaled


class Suite:
    def __init__(self, build, out, rounds, against=None):
        self.programs, self.build, self.out, self.rounds, self.against = build / "bench", build, out, rounds, against

    def start(self, name, command="frame", width=SIZES[0], pictures=None, **options):
        return Contestant(self.programs / f"bench_{name}", command, pictures=pictures or self.out / "pictures", width=width,
                          **options)

    def turns(self, contestants, rounds=None, repeats=3):
        try:
            return take_turns(contestants, rounds or self.rounds, repeats)
        finally:
            for contestant in contestants.values():
                contestant.close()

    def contest(self, width):
        """Whole frames of everybody, and how like ours the others' panoramas are."""
        contestants = {
            "biseam": self.start("biseam", width=width),
            "scalar": self.start("biseam_o2", width=width, isa="scalar"),
            "v360": self.start("v360", width=width),
            "opencv": self.start("opencv", width=width),
            "copy": self.start("copy", "copy", width=width),
        }
        if self.against:
            contestants["against"] = self.start("against", width=width)
        likeness = self.likeness(contestants, width)
        return {"frames": self.turns(contestants), "psnr": likeness}

    def likeness(self, contestants, width):
        """PSNR of everybody's panorama against ours."""
        pictures = {}
        for name, contestant in contestants.items():
            if name == "copy":
                continue
            file = self.out / f"{name}_{width}.nv12"
            contestant.ask()
            contestant.ask(f"save {file}")
            pictures[name] = quality.read_luma(file, width)
            file.unlink()
        ours = pictures.pop("biseam")
        return {name: quality.psnr(ours, picture) for name, picture in pictures.items()}

    def ring(self, width):
        """Whole frames of the ring engine by a real camera, of the exact one and of others, by one thread and by two."""
        result = {}
        for threads in (2, 1):
            def start(name):
                return self.start("ring", width=width, camera=REAL_CAMERA, threads=threads, **RING_OPTIONS[name])
            first = {name: self.first_frame(lambda: start(name)) for name in RING_OPTIONS}
            contestants = {**{name: start(name) for name in RING_OPTIONS}, "v360": self.start("v360", width=width, threads=threads),
                           "v360_spline16": self.start("v360", width=width, threads=threads, interp="spline16")}
            if threads == 2:
                contestants |= {"exact": self.start("biseam", width=width), "opencv": self.start("opencv", width=width)}
            result[str(threads)] = {"first": first, "frames": self.turns(contestants)}
        return result

    def meeting(self, width):
        """Frames of the ring engine with what joins the lenses, each alone and all together, in turn; by one thread."""
        return self.turns({name: self.start("ring", width=width, camera=REAL_CAMERA, threads=1, **options)
                           for name, options in MEETING.items()})

    def first_frame(self, start):
        """Medians of what opening an engine and its first frame take in a new process, while nobody else loads anything."""
        figures = {}
        for _ in range(min(STARTS, self.rounds)):
            contestant = start()
            for figure, value in contestant.ask("start").items():
                figures.setdefault(figure, []).append(value)
            contestant.close()
        return {figure: statistics.median(values) for figure, values in figures.items()}

    def ring_curve(self, widths):
        """Frames of the ring engine at many sizes, each from pictures of half the panorama's width."""
        contestants = {str(width): self.start("ring", width=width, camera=REAL_CAMERA) for width in widths}
        memory = {width: contestant.ask("start")["memory_mib"] for width, contestant in contestants.items()}
        return {"frames": self.turns(contestants, repeats=2), "memory_mib": memory}

    def stages(self, width):
        return self.turns({"biseam": self.start("biseam", "stages", width),
                           "scalar": self.start("biseam_o2", "stages", width, isa="scalar")})

    def curve(self, widths, scaled):
        """Frames at many sizes.  scaled: the overlap grows with the panorama."""
        def overlap(width):
            return {name: value * width // SIZES[0] if scaled else value for name, value in OVERLAP.items()}
        contestants = {str(width): self.start("biseam", width=width, **overlap(width)) for width in widths}
        return self.turns(contestants, repeats=2)

    def search(self, width):
        return self.turns({str(scale): self.start("biseam", "stages", width, inv_scale=scale) for scale in SCALES}, repeats=2)

    def tables(self, width):
        """The first building, which also touches the memory first, and the later ones."""
        contestants = {"biseam": self.start("biseam", "tables", width),
                       "scalar": self.start("biseam_o2", "tables", width, isa="scalar")}
        first = {name: contestant.ask("start") for name, contestant in contestants.items()}
        return {"first": first, "repeated": self.turns(contestants, repeats=1)}

    def memory(self, width, frames=4):
        result = {}
        for name, program, options in (("biseam", "biseam", {}), ("scalar", "biseam_o2", {"isa": "scalar"})):
            contestant = self.start(program, width=width, **options)
            start = contestant.ask("start")
            faults = [start["frame.faults"]] + [contestant.ask()["frame.faults"] for _ in range(frames - 1)]
            peak = contestant.ask("memory")["peak.kib"]
            contestant.close()
            result[name] = {"faults": faults, "peak_kib": peak, "before_kib": start["before.kib"]}
        return result

    def kernels(self):
        """[kernel, version, ns per pixel, times scalar] rows."""
        table = subprocess.run([self.build / "tests/kernels/biseam_kernels", "--bench"], check=True, stdout=subprocess.PIPE,
                               text=True).stdout
        return [[cell.strip() for cell in line.strip("|").split("|")] for line in table.splitlines()[2:]]

    def instructions(self, width):
        """Of one frame: what three frames more take, by three.  Which thread comes first makes a difference below one per cent."""
        more = 3
        counts = {}
        for name, program, isa in (("avx2", "biseam", "avx2"), ("scalar", "biseam_o2", "scalar")):
            total = [self.count_instructions(program, isa, width, frames) for frames in (0, more)]
            counts[name] = (total[1] - total[0]) / more
        return {"width": width, "per_frame": counts}

    def count_instructions(self, program, isa, width, frames):
        command = ["valgrind", "--fair-sched=yes", "--tool=callgrind", "--callgrind-out-file=/dev/null",
                   self.programs / f"bench_{program}", "--pictures", self.out / "pictures", "--width", str(width), "--isa", isa]
        log = subprocess.run(command, check=True, input="frame\n" * frames, capture_output=True, text=True).stderr
        return int(re.search(r"Collected : (\d+)", log).group(1))
