"""What the ring engine must reach, and what of it is held."""
import real_seams
from figures import median

FOLLOWED = 2  # frames after a cut that are not judged


def less_than(limit, value):
    return f"<= {limit}", f"{value:.3g}", value <= limit


def more_than(limit, value):
    return f">= {limit}", f"{value:.3g}", value >= limit


def of_light(light):
    match = light["match"]
    yield "step of +1 EV, 500 K, 20 % falloff: mean, codes", *less_than(1, match["different"]["mean"])
    yield "the same: worst sector, codes", *less_than(2, match["different"]["worst"])
    yield "light in rest under noise: jitter, codes", *less_than(0.1, match["unrest"])
    yield "two frames after a cut: mean step, codes", *less_than(1, max(step["mean"] for step in match["cut"][FOLLOWED:]))
    yield "the same: worst sector, codes", *less_than(2, max(step["worst"] for step in match["cut"][FOLLOWED:]))


def of_seams(modes):
    yield "steady seams in a still scene: columns a frame", *less_than(0.05, modes["steady"]["columns"])
    yield "the same: flicker against elsewhere", *less_than(1.1, modes["steady"]["flicker"])
    yield "the same: dB below free ones", *less_than(0.1, modes["free"]["near"] - modes["steady"]["near"])


def of_near(near):
    standing = near["standing"].values()
    yield "a thing at 0.7 to 3 m: share within 1.5 px of 3840", *more_than(0.9, min(at["on"]["fits"] for at in standing))
    yield "the same: dB gained", *more_than(3, min(at["on"]["thing"] - at["off"]["thing"] for at in standing))
    yield "nothing near, still: dB lost at most", *less_than(0.2, lost(near["far"]))
    yield "nothing near, hand-held, half the size: dB lost at most", *less_than(0.2, lost([near["moving"]["hand-held, all far"]]))


def lost(scenes):
    scenes = scenes.values() if isinstance(scenes, dict) else scenes
    return max(off - on for scene in scenes for off, on in zip(scene["off"], scene["on"]))


def of_real_seams(samples):
    for name, eighths in samples.items():
        for figure, text in (("along", "along the ring"), ("far", "far things across it")):
            value = real_seams.worst(eighths, figure)
            if value is not None:
                yield f"{name}, worst eighth: {text}, px of 3840", *less_than(0.5, value)


def of_cost(meeting):
    yield ("all three: CPU ms of a frame of 3840 x 1920",
           *less_than(4, median(meeting["all"], "frame.cpu_ms") - median(meeting["off"], "frame.cpu_ms")))


def of_sizes(curve):
    """Two threads' time for a pixel of the costliest size against that of the cheapest."""
    costs = [median(figures, "frame.wall_ms") / int(width) ** 2 for width, figures in curve["frames"].items()]
    if "1920" in curve["frames"] and "7680" in curve["frames"]:
        yield "cost of a pixel, 1920 to 7680 columns: most against least", *less_than(1.15, max(costs) / min(costs))


def of_clips(clips):
    for clip in clips:
        if clip["rounds"] > 1:
            yield (f"file to file at {clip['width']} with all three: times v360's wall time",
                   *less_than(0.85, clip["matched_ratio"]["wall_s"]["median"]))


SECTIONS = {"light": of_light, "seams": of_seams, "near": of_near, "real_seams": of_real_seams, "meeting": of_cost, "ring_curve": of_sizes,
            "clips": of_clips}


def judge(results):
    """(what, limit, measured, whether it is held) of every section that was measured."""
    return [row for name, section in SECTIONS.items() if name in results for row in section(results[name])]
