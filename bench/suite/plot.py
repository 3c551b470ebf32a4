"""Time per frame by stage, ours above the peers'."""
import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as pyplot

from figures import CONTESTANTS, STAGES, median, rows_of_stages

COLOURS = dict(zip(STAGES, ("#2f6f9f", "#8fbfdc", "#d1495b", "#edae49", "#6c757d")))
ORDER = ("biseam", "v360", "opencv", "scalar")
LABELS = {"biseam": "biseam", "v360": "FFmpeg v360\n(remap only)", "opencv": "OpenCV",
          "scalar": "biseam, scalar\nkernels, -O2"}


def stage_times(results, width):
    """Contestant to {stage: (wall, CPU)}; the filter has one stage."""
    frames = results["contest"][width]["frames"]
    stages = results["stages"][width]
    times = {name: rows_of_stages(stages[name]) for name in ("biseam", "scalar")}
    times["opencv"] = rows_of_stages(frames["opencv"])
    times["v360"] = {"remap": (median(frames["v360"], "frame.wall_ms"), median(frames["v360"], "frame.cpu_ms"))}
    return times


def draw_panel(axes, results, width, clock):
    """clock: 0 wall, 1 CPU.  A bar is as long as the whole frame took, divided as the stages that were measured apart."""
    frames = results["contest"][width]["frames"]
    times = stage_times(results, width)
    whole = {name: median(frames[name], f"frame.{('wall', 'cpu')[clock]}_ms") for name in ORDER}
    longest = max(whole.values())
    for row, name in enumerate(ORDER):
        share = whole[name] / sum(stage[clock] for stage in times[name].values())
        left = 0.0
        for stage in STAGES:
            length = times[name].get(stage, (0, 0))[clock] * share
            axes.barh(row, length, left=left, height=0.62, color=COLOURS[stage], edgecolor="white", linewidth=0.6)
            left += length
        axes.text(left + longest * 0.012, row, f"{whole[name]:.1f} ms", va="center", fontsize=9,
                  fontweight="bold" if name == "biseam" else "normal")
    axes.set_yticks(range(len(ORDER)), [LABELS[name] for name in ORDER])
    axes.set_xlim(0, longest * 1.14)
    axes.set_title(("wall time", "processor time, all threads")[clock], loc="left", fontsize=10)
    axes.tick_params(axis="y", length=0)
    axes.xaxis.grid(True, color="#dddddd", linewidth=0.7)
    axes.set_axisbelow(True)
    for side in ("top", "right", "left"):
        axes.spines[side].set_visible(False)


def draw(results, file):
    width = next(iter(results["contest"]))
    pyplot.rcParams.update({"font.family": "DejaVu Sans", "font.size": 9, "svg.hashsalt": "biseam", "svg.fonttype": "path"})
    figure, panels = pyplot.subplots(1, 2, figsize=(10, 3.3), sharey=True)
    for clock, axes in enumerate(panels):
        draw_panel(axes, results, width, clock)
        axes.set_xlabel("milliseconds per frame")
    panels[0].invert_yaxis()  # and the other's with it
    panels[1].tick_params(labelleft=False)
    machine = results["machine"]
    figure.suptitle(f"Two {int(width) // 2} x {int(width) // 2} fisheyes to one {width} x {int(width) // 2} panorama", x=0.012,
                    y=0.985, ha="left", fontsize=12, fontweight="bold")
    handles = [matplotlib.patches.Patch(color=COLOURS[stage], label={"search": "seam search"}.get(stage, stage)) for stage in STAGES]
    figure.legend(handles=handles, loc="lower right", ncol=len(STAGES), frameon=False, bbox_to_anchor=(0.995, -0.015),
                  handlelength=1.0, handleheight=1.0, columnspacing=1.2)
    figure.text(0.012, 0.012, f"{machine['processor']}, {machine['cores']} cores, {machine['date']}. `make bench`", color="#666666",
                fontsize=7.5)
    figure.tight_layout(rect=(0, 0.06, 1, 0.985))
    figure.savefig(file, metadata={"Date": None}, facecolor="white")
    pyplot.close(figure)
