"""Scenes of the virtual courtyard with known truth, what a tool makes of them, and where in a panorama the lenses meet."""
import subprocess

import numpy

FIELD_OF_VIEW = 195
RATE = "30"

FILMED = {"crossing": ("--baseline", 0.03, "--placards", 1), "hand-held, crossing": ("--baseline", 0.03, "--placards", 1, "--shake", 1),
          "hand-held, all far": ("--shake", 1)}


def filmed(tool, folder, width, frames, name):
    """One of FILMED, under noise."""
    place = folder / f"{name.replace(', ', '_').replace(' ', '_')}_{width}x{frames}"
    return film(tool, place, width, "--frames", frames, "--noise", 2, *FILMED[name])


def film(tool, folder, width, *options):
    """side_by_side.mp4, truth.mp4 and camera.toml of a scene in the folder; what is there is kept."""
    if not (folder / "truth.json").exists():
        size = ["--width", str(width), "--fisheye-size", str(width // 2), "--fov", str(FIELD_OF_VIEW)]
        subprocess.run([tool, "scene", "-o", folder, *size, *(str(option) for option in options)], check=True,
                       stdout=subprocess.DEVNULL)
    return folder


def read_luma(clip, width, filters=""):
    """Of all frames: frames x rows x columns, codes as they are in the file; filters end with a comma."""
    raw = subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-i", clip, "-map", "0:v", "-vf", filters + "extractplanes=y", "-f",
                          "rawvideo", "-"], check=True, stdout=subprocess.PIPE).stdout
    return numpy.frombuffer(raw, numpy.uint8).reshape(-1, width // 2, width)


def add_noise(clip, width, shots, deviation, seed=20261122):
    """Another clip beside it, of shots, (frame, times) each, under other noise every time; its path."""
    noisy = clip.with_name("noisy.mp4")
    planar = ["-f", "rawvideo", "-pix_fmt", "yuvj420p"]
    raw = subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-i", clip, *planar, "-"], check=True, stdout=subprocess.PIPE).stdout
    frames = numpy.frombuffer(raw, numpy.uint8).reshape(-1, width * width * 3 // 4).astype(numpy.float32)
    random = numpy.random.default_rng(seed)
    encoder = subprocess.Popen(["ffmpeg", "-v", "error", "-y", *planar, "-s", f"{width}x{width // 2}", "-r", RATE, "-i", "-", "-c:v",
                                "libx264", "-qp", "0", "-preset", "ultrafast", noisy], stdin=subprocess.PIPE)
    for frame in (frames[frame] for frame, times in shots for _ in range(times)):
        with_noise = frame + deviation * random.standard_normal(frame.shape, numpy.float32)
        encoder.stdin.write(numpy.rint(with_noise).clip(0, 255).astype(numpy.uint8).tobytes())
    encoder.stdin.close()
    if encoder.wait() != 0:
        raise SystemExit(f"{noisy}: can't be encoded")
    return noisy


def stitched(tool, folder, width, *options, clip=None):
    """Luma of the panoramas of side_by_side.mp4, or of another clip, by the scene's own camera."""
    out = folder / "panorama.nv12"
    subprocess.run([tool, "stitch", clip or folder / "side_by_side.mp4", "--camera", folder / "camera.toml", "--width",
                    str(width), *options, "-o", out], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    frames = numpy.fromfile(out, numpy.uint8).reshape(-1, width * 3 // 4, width)[:, :width // 2]
    out.unlink()
    return frames


def analysed(tool, folder, width, *options, clip=None):
    """The same of a clip that is analysed as a whole before."""
    analysis = folder / "clip.analysis"
    subprocess.run([tool, "analyse", clip or folder / "side_by_side.mp4", "--camera", folder / "camera.toml", "--width", str(width),
                    *options, "-o", analysis], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    frames = stitched(tool, folder, width, "--analysis", analysis, clip=clip)
    analysis.unlink()
    return frames


def v360(folder, width, clip=None):
    """The same by FFmpeg's filter."""
    fov = FIELD_OF_VIEW * (width // 2 - 1) / (width // 2)  # to the filter, the circle ends at the middles of the outermost pixels
    return read_luma(clip or folder / "side_by_side.mp4", width,
                     f"v360=dfisheye:e:ih_fov={fov}:iv_fov={fov}:interp=spline16:w={width}:h={width // 2},")


def ring_angles(width):
    """Degrees of each pixel beyond the plane between the lenses, lens 1's side positive, and round the axis, 0 to 360."""
    longitude = 2 * numpy.pi * (numpy.arange(width) + 0.5) / width - numpy.pi
    latitude = numpy.pi * (numpy.arange(width // 2) + 0.5) / (width // 2) - numpy.pi / 2
    beyond = numpy.degrees(numpy.arcsin(numpy.cos(latitude)[:, None] * numpy.cos(longitude)[None]))
    round_axis = numpy.degrees(numpy.arctan2(numpy.sin(latitude)[:, None] * numpy.ones(width)[None],
                                             numpy.cos(latitude)[:, None] * numpy.sin(longitude)[None])) % 360
    return beyond, round_axis
