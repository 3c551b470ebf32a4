"""How well near things come together where the lenses meet, and what it costs scenes that have none."""
import numpy

import quality
import shots
from analytic import near_the_ring

DISTANCES = (0.7, 1, 2, 3)  # metres to the placards on the seams
MODES = ("off", "on")
NOISE = ("--noise", 2)
APART = ("--baseline", 0.03)
ZONE = (6, 12)  # degrees beside and above the middle of a placard that are looked at; it is wider and higher
WINDOW, SEARCH = 17, 12  # pixels that are matched together, and how far
ALLOWED = 1.5  # pixels of a panorama of 3840


def summed(values):
    """Over windows, one beginning at each pixel that has a whole one."""
    for axis in (0, 1):
        total = numpy.cumsum(values, axis=axis)
        values = total.take(range(WINDOW - 1, total.shape[axis]), axis)
        values = values - numpy.concatenate([numpy.zeros_like(values.take([0], axis)),
                                             total.take(range(total.shape[axis] - WINDOW), axis)], axis)
    return values


def misfits(panorama, truth):
    """Pixels by which parts of a placard lie beside where they should, along the row; of those that have something to match."""
    inner = slice(SEARCH, -SEARCH)
    panorama, truth = panorama.astype(float), truth.astype(float)
    errors = numpy.array([summed((numpy.roll(panorama, -shift, 1)[:, inner] - truth[:, inner])**2)
                          for shift in range(-SEARCH, SEARCH + 1)])
    best = errors.argmin(axis=0).clip(1, 2 * SEARCH - 1)
    left, middle, right = (numpy.take_along_axis(errors, best[None] + step, 0)[0] for step in (-1, 0, 1))
    fraction = (left - right) / numpy.maximum(2 * (left - 2 * middle + right), 1e-9)
    textured = summed(numpy.gradient(truth, axis=1)[:, inner]**2) > 100 * WINDOW**2
    return abs(best - SEARCH + fraction.clip(-1, 1))[textured]


def zones(width, more=0):
    """Of the two placards while they stand on the seams; more: columns on either side."""
    degree = width / 360
    rows = slice(int(width / 4 - ZONE[1] * degree), int(width / 4 + ZONE[1] * degree))
    return [(rows, slice(int(middle - ZONE[0] * degree) - more, int(middle + ZONE[0] * degree) + more)) for middle in (width / 4, 3 * width / 4)]


def standing(panorama, truth):
    """Share of the placards that lies within what is allowed, and luma PSNR of them and of all that is near the ring."""
    width = truth.shape[1]
    off = numpy.concatenate([misfits(panorama[zone], truth[zone]) for zone in zones(width, SEARCH)]) * 3840 / width
    errors = panorama.astype(float) - truth
    return {"fits": float(numpy.mean(off <= ALLOWED)), "misfit": float(numpy.quantile(off, 0.9)),
            "thing": quality.psnr_of(numpy.concatenate([errors[zone].ravel() for zone in zones(width)])),
            "near": quality.psnr_of(errors[near_the_ring(width)])}


def stitched(tool, scene, width, mode):
    return shots.stitched(tool, scene, width, "--light", "off", "--near", mode)


def filmed(panoramas, truths):
    where = near_the_ring(truths.shape[2])
    return [quality.psnr_of(panorama[where].astype(float) - truth[where]) for panorama, truth in zip(panoramas, truths)]


def measure(tool, folder, width, frames):
    """width: of standing scenes; those in which camera and things move have half of it."""
    result = {"standing": {}, "far": {}, "moving": {}}
    for distance in DISTANCES:
        scene = shots.film(tool, folder / f"placards_{distance}_{width}", width, "--frames", 1, "--placards", distance, *APART,
                           *NOISE)
        truth = shots.read_luma(scene / "truth.mp4", width)[0]
        looks = {mode: stitched(tool, scene, width, mode)[0] for mode in MODES}
        looks["v360"] = shots.v360(scene, width)[0]
        result["standing"][str(distance)] = {name: standing(look, truth) for name, look in looks.items()}
    for seed in (1, 2):
        scene = shots.film(tool, folder / f"far_{seed}_{width}", width, "--frames", 2, "--turn", 70 * seed, "--seed", seed, *NOISE)
        truths = shots.read_luma(scene / "truth.mp4", width)
        result["far"][str(seed)] = {mode: filmed(stitched(tool, scene, width, mode), truths) for mode in MODES}
    for name in shots.FILMED:
        scene = shots.filmed(tool, folder, width // 2, frames, name)
        truths = shots.read_luma(scene / "truth.mp4", width // 2)
        result["moving"][name] = {mode: filmed(stitched(tool, scene, width // 2, mode), truths) for mode in MODES}
    return result
