"""What is seen of the lenses' different light: steps where they meet, unrest, and how long a cut is seen."""
import numpy

import compensators
import shots

DIFFERENT = ("--exposure-difference", 1, "--temperature-difference", 500, "--vignette-difference", 0.2)
MODES = ("off", "match")
SECTORS = 36
STEP = (0.5, 3)  # degrees on either side of the ring's middle that are compared
USUAL = (20, 235)  # codes that no lens has clipped
NOISE = 2
RESTING, SETTLED = 40, 20  # frames; those that are counted
CUT_AT, AFTER = 10, 6


def steps(panorama, truth):
    """Codes by which a panorama is brighter on lens 1's side of the ring's middle than on lens 0's, against the truth: of
    sectors round the axis, NaN where there is too little that is not clipped."""
    beyond, round_axis = shots.ring_angles(truth.shape[1])
    error = panorama.astype(float) - truth
    usual = (truth > USUAL[0]) & (truth < USUAL[1])
    near = usual & (abs(beyond) > STEP[0]) & (abs(beyond) < STEP[1])
    sector = (round_axis[near] * SECTORS / 360).astype(int)
    sides = []
    for side in (beyond[near] > 0, beyond[near] < 0):
        count = numpy.bincount(sector[side], minlength=SECTORS)
        mean = numpy.bincount(sector[side], error[near][side], minlength=SECTORS) / numpy.maximum(count, 1)
        sides.append(numpy.where(count < truth.shape[1] / 30, numpy.nan, mean))
    return sides[0] - sides[1]


def told(steps_of_sectors):
    size = abs(steps_of_sectors[~numpy.isnan(steps_of_sectors)])
    return {"mean": float(size.mean()), "worst": float(size.max()), "sectors": int(size.size)}


def unrest(frames):
    """Codes, the larger one of both lenses': rms change from frame to frame of a lens's mean luma."""
    beyond, _ = shots.ring_angles(frames.shape[2])
    means = [frames[:, where].mean(axis=1) for where in (beyond > 15, beyond < -15)]
    return max(float(numpy.sqrt(numpy.mean(numpy.diff(mean)**2))) for mean in means)


def measure(tool, folder, width):
    """Steps of one difference, of flare, in a drift and after a cut; unrest of noise alone."""
    different = shots.film(tool, folder / f"light_{width}", width, "--frames", 1, *DIFFERENT)
    flare = shots.film(tool, folder / f"flare_{width}", width, "--frames", 1, "--flare", 0.1)
    drift = shots.film(tool, folder / f"drift_{width}", width, "--frames", 24, "--exposure-drift", 1)
    cut = shots.film(tool, folder / f"cut_{width}", width, "--frames", 2, "--turn", 140, "--differ-from", 1, *DIFFERENT)
    truths = {scene: shots.read_luma(scene / "truth.mp4", width) for scene in (different, flare, drift, cut)}
    noisy = {different: shots.add_noise(different / "side_by_side.mp4", width, [(0, RESTING)], NOISE),
             cut: shots.add_noise(cut / "side_by_side.mp4", width, [(0, CUT_AT), (1, AFTER)], NOISE)}

    def figures(look):
        after = look(cut, noisy[cut])[CUT_AT:]
        drifting = [told(steps(picture, truth)) for picture, truth in zip(look(drift), truths[drift])]
        return {"different": told(steps(look(different)[0], truths[different][0])), "flare": told(steps(look(flare)[0], truths[flare][0])),
                "drift": {figure: max(step[figure] for step in drifting) for figure in ("mean", "worst")},
                "unrest": unrest(look(different, noisy[different])[SETTLED:]),
                "cut": [told(steps(picture, truths[cut][1])) for picture in after]}
    result = {mode: figures(lambda scene, clip=None, mode=mode: shots.stitched(tool, scene, width, "--light", mode, clip=clip))
              for mode in MODES}
    result["analysed"] = figures(lambda scene, clip=None: shots.analysed(tool, scene, width, "--light", "match", clip=clip))
    result["v360"] = figures(lambda scene, clip=None: shots.v360(scene, width, clip))
    # Frame by frame, as they know nothing of other ones: what takes seconds is seen in few.
    for kind in compensators.KINDS:
        first, flared = (compensators.stitched(kind, scene, width)[0] for scene in (different, flare))
        after = compensators.stitched(kind, cut, width, noisy[cut], first=CUT_AT + AFTER - 1)[0]
        result[kind] = {"different": told(steps(first, truths[different][0])), "flare": told(steps(flared, truths[flare][0])),
                        "cut": [told(steps(after, truths[cut][1]))]}
    for clip in noisy.values():
        clip.unlink()
    return result
