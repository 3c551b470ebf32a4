"""How still seams hold in a scene that stands still under noise, and what that costs in likeness."""
import json
import subprocess

import matplotlib.image
import numpy

import quality
import shots
from analytic import near_the_ring
from pictures import to_nv12

WIDTH = 1920  # in much smaller panoramas few samples of the strips average the noise
FRAMES, SETTLED = 40, 16  # the first ones are not counted: steady seams are over 15
NOISE = 2.0  # code values
MODES = ("free", "steady")


def write_clip(folder, size, file):
    """Both lenses side by side, the same picture in every frame, other noise."""
    random = numpy.random.default_rng(20261122)
    lenses = [numpy.fromfile(folder / f"fisheye{k}_{size}.nv12", numpy.uint8).reshape(size * 3 // 2, size) for k in (0, 1)]
    pair = numpy.hstack(lenses).astype(numpy.float32)
    with open(file, "wb") as clip:
        for _ in range(FRAMES):
            noisy = pair + NOISE * random.standard_normal(pair.shape, numpy.float32)
            clip.write(numpy.rint(noisy).clip(0, 255).astype(numpy.uint8).tobytes())


def read_truth(folder, width):
    """Luma of truth.png, whose width is a multiple of the one that is asked for."""
    luma = to_nv12(matplotlib.image.imread(folder / "truth.png")[..., :3])[0].astype(float)
    times = luma.shape[1] // width
    return luma.reshape(width // 2, times, width, times).mean(axis=(1, 3))


def stitch(tool, folder, clip, width, mode):
    """Mean columns that the seam moves in a frame, and the luma of the frames that count."""
    out = clip.with_name(f"seams_{mode}.nv12")
    command = [tool, "stitch", clip, "--size", f"{width}x{width // 2}", "--rate", "30", "--camera", folder / "camera.toml",
               "--width", str(width), "--light", "off", "--seams", mode, "-o", out]

    def movement(frames):
        told = subprocess.run([*command, "--json", "-", "--frames", str(frames)], check=True, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True).stdout
        return json.loads(told)["seam_movement"] * (frames - 1)
    before = movement(SETTLED)
    moved = (movement(FRAMES) - before) / (FRAMES - SETTLED)
    frames = numpy.fromfile(out, numpy.uint8).reshape(FRAMES, width * 3 // 4, width)[SETTLED:, :width // 2]
    out.unlink()
    return moved, frames


def measure(tool, folder, width):
    clip = folder / "still.nv12"
    write_clip(folder, width // 2, clip)
    truth, near = read_truth(folder, width), near_the_ring(width)
    result = {}
    for mode in MODES:
        moved, frames = stitch(tool, folder, clip, width, mode)
        changes = numpy.diff(frames.astype(numpy.int16), axis=0)

        def rms(where):
            return float(numpy.sqrt(numpy.mean(changes[:, where].astype(float)**2)))
        errors = frames[:, near] - truth[near]
        result[mode] = {"columns": moved, "flicker": rms(near) / rms(~near), "near": quality.psnr_of(errors)}
    clip.unlink()
    return result


def measure_filmed(tool, folder, width, frames):
    """Of clips in which camera and things move: what changes in the panorama and not in the truth, and likeness near the ring."""
    near, result = near_the_ring(width), {}
    for name in shots.FILMED:
        scene = shots.filmed(tool, folder, width, frames, name)
        truth = shots.read_luma(scene / "truth.mp4", width).astype(float)
        result[name] = {}
        for mode in MODES:
            errors = shots.stitched(tool, scene, width, "--light", "off", "--seams", mode) - truth
            changes = numpy.diff(errors, axis=0)
            result[name][mode] = {"flicker": float(numpy.sqrt(numpy.mean(changes[:, near]**2) / numpy.mean(changes[:, ~near]**2))),
                                  "near": quality.psnr_of(errors[:, near])}
    return result
