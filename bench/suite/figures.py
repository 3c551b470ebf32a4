"""What both the tables and the plot show of bench.json."""

CONTESTANTS = {
    "biseam": "biseam",
    "scalar": "biseam, scalar kernels, -O2",
    "against": "biseam at {against}",
    "v360": "FFmpeg v360 (remap only)",
    "opencv": "OpenCV remap, graph cut, 5-band blend",
}
RING_CONTESTANTS = {
    "ring_good": "biseam",
    "ring_fast": "biseam, fast",
    "ring_best": "biseam, best",
    "ring_p010": "biseam, 10 bits",
    "exact": "biseam, exact engine",
    "v360": "FFmpeg v360, linear",
    "v360_spline16": "FFmpeg v360, spline16",
    "opencv": "OpenCV, bilinear, 5-band blend",
}
STAGES = ("remap", "conversion", "search", "blend", "composition")


def median(figures, name):
    return figures[name]["median"]


def rows_of_stages(figures):
    """Stage to (wall, CPU) in milliseconds."""
    return {stage: tuple(median(figures, f"{stage}.{clock}_ms") for clock in ("wall", "cpu")) for stage in STAGES}


def copy_ratios(results, width):
    """(what is copied, its bytes, CPU milliseconds, remap's CPU time as a multiple) with and without the lookup tables."""
    copies = results["contest"][width]["frames"]["copy"]
    remap = median(results["stages"][width]["biseam"], "remap.cpu_ms")
    for name, what in (("copy", "both pictures, the tables (two floats a pixel) and the output"),
                       ("copy_without_tables", "both pictures and the output, without tables")):
        milliseconds = median(copies, f"{name}.cpu_ms")
        yield what, median(copies, f"{name}.bytes"), milliseconds, remap / milliseconds
