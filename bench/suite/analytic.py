"""How much of a scene that is known exactly is left in everybody's panorama."""
import subprocess

import numpy

import quality
from pictures import REAL_CAMERA

CAMERAS = {"virtual": "virtual", "real": REAL_CAMERA}
NEAR = 8  # degrees on both sides of the plane between the lenses
RING = {"ring_fast": {"quality": "fast"}, "ring_good": {"quality": "good"}, "ring_best": {"quality": "best"}}


def draw(program, folder, width, camera):
    """The pictures and the truth; what is there is kept."""
    folder.mkdir(parents=True, exist_ok=True)
    truth = folder / f"truth_{width}.f32"
    if not truth.exists():
        subprocess.run([program, "--pictures", folder, "--width", str(width), "--camera", CAMERAS[camera]], check=True)
    return truth


def near_the_ring(width):
    longitude = 2 * numpy.pi * (numpy.arange(width) + 0.5) / width - numpy.pi
    latitude = numpy.pi * (numpy.arange(width // 2) + 0.5) / (width // 2) - numpy.pi / 2
    beyond = numpy.cos(latitude)[:, None] * numpy.cos(longitude)[None]  # sine of the angle from the plane
    return abs(beyond) < numpy.sin(numpy.radians(NEAR))


def figures(truth, panorama, width):
    """truth: floats; panorama: NV12."""
    pixels = width * width // 2
    luma = panorama[:pixels] - truth[:pixels]
    pairs = panorama[pixels:].reshape(-1, 2).T - truth[pixels:].reshape(2, -1)
    return {"luma": quality.psnr_of(luma), "near": quality.psnr_of(luma[near_the_ring(width).ravel()]),
            "bias": float(luma.mean()), "chroma": quality.psnr_of(pairs)}


def contestants(camera):
    """Name to (program, options).  Only the ring engine can be told everything about a real camera."""
    ring = {name: ("ring", {**options, "camera": CAMERAS[camera]}) for name, options in RING.items()}
    if camera == "real":
        return ring
    return {**ring, "v360": ("v360", {}), "v360_spline16": ("v360", {"interp": "spline16"}), "opencv": ("opencv", {}),
            "exact": ("biseam", {})}


def measure(suite, width, camera):
    folder = suite.out / "pictures" / f"analytic_{camera}"
    truth = numpy.fromfile(draw(suite.programs / "bench_analytic", folder, width, camera), numpy.float32).astype(float)
    result = {}
    for name, (program, options) in contestants(camera).items():
        file = suite.out / f"analytic_{name}.nv12"
        contestant = suite.start(program, width=width, pictures=folder, **options)
        contestant.ask()
        contestant.ask(f"save {file}")
        contestant.close()
        result[name] = figures(truth, numpy.fromfile(file, numpy.uint8).astype(float), width)
        file.unlink()
    return result
