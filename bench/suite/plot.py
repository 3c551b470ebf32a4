"""Time per frame of everybody, ours above the peers'."""
import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as pyplot

from figures import RING_CONTESTANTS, median

OURS, PEERS = "#2f6f9f", "#a3adb5"
COLOURS = {"ring_good": OURS, "ring_fast": OURS, "ring_best": OURS, "exact": OURS, "v360": PEERS, "v360_spline16": PEERS,
           "opencv": PEERS}  # in the order of the bars


def draw_panel(axes, frames, clock):
    """clock: "wall" or "cpu"."""
    times = [median(frames[name], f"frame.{clock}_ms") for name in COLOURS]
    axes.barh(range(len(times)), times, height=0.66, color=COLOURS.values())
    for row, milliseconds in enumerate(times):
        axes.text(milliseconds + max(times) * 0.012, row, f"{milliseconds:.1f} ms", va="center", fontsize=9,
                  fontweight="bold" if row == 0 else "normal")
    axes.set_yticks(range(len(times)), [RING_CONTESTANTS[name] for name in COLOURS])
    axes.set_xlim(0, max(times) * 1.14)
    axes.set_title({"wall": "wall time", "cpu": "processor time, all threads"}[clock], loc="left", fontsize=10)
    axes.set_xlabel("milliseconds per frame")
    axes.tick_params(axis="y", length=0)
    axes.xaxis.grid(True, color="#dddddd", linewidth=0.7)
    axes.set_axisbelow(True)
    for side in ("top", "right", "left"):
        axes.spines[side].set_visible(False)


def draw(results, file):
    """By two threads, the largest panorama that everybody made."""
    width, by_threads = next(iter(results["ring"].items()))
    pyplot.rcParams.update({"font.family": "DejaVu Sans", "font.size": 9, "svg.hashsalt": "biseam", "svg.fonttype": "path"})
    figure, panels = pyplot.subplots(1, 2, figsize=(10, 3.3), sharey=True)
    for clock, axes in zip(("wall", "cpu"), panels):
        draw_panel(axes, by_threads["2"]["frames"], clock)
    panels[0].invert_yaxis()  # and the other's with it
    panels[1].tick_params(labelleft=False)
    machine = results["machine"]
    figure.suptitle(f"Two {int(width) // 2} x {int(width) // 2} fisheyes to one {width} x {int(width) // 2} panorama", x=0.012,
                    y=0.985, ha="left", fontsize=12, fontweight="bold")
    figure.text(0.012, 0.012, f"{machine['processor']}, {machine['cores']} cores, {machine['date']}. `make bench`", color="#666666",
                fontsize=7.5)
    figure.tight_layout(rect=(0, 0.04, 1, 0.985))
    figure.savefig(file, metadata={"Date": None}, facecolor="white")
    pyplot.close(figure)
