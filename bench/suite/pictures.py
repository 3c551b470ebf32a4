"""The pictures of the contest: rendered by our own tool, then NV12 at every size that is asked for."""
import pathlib
import subprocess

import matplotlib.image
import numpy

REAL_CAMERA = pathlib.Path(__file__).parent.parent / "real_camera.toml"
SCENE = ["--baseline", "0.03", "--exposure-difference", "0.05", "--noise", "2"]


def to_nv12(rgb):
    """BT.601, studio range; chroma is the mean of four pixels."""
    r, g, b = (rgb[..., i].astype(numpy.float32) for i in range(3))
    luma = 16 + 65.481 * r + 128.553 * g + 24.966 * b
    cb = 128 - 37.797 * r - 74.203 * g + 112.0 * b
    cr = 128 + 112.0 * r - 93.786 * g - 18.214 * b
    rows, columns = luma.shape
    chroma = numpy.stack([cb, cr], axis=-1).reshape(rows // 2, 2, columns // 2, 2, 2).mean(axis=(1, 3))
    return [numpy.rint(plane).clip(0, 255).astype(numpy.uint8) for plane in (luma, chroma)]


def resized(rgb, size):
    """Bilinear; the largest step is by two thirds or two, so that nothing finer is needed."""
    position = (numpy.arange(size) + 0.5) * rgb.shape[0] / size - 0.5
    low = numpy.floor(position).astype(int).clip(0, rgb.shape[0] - 2)
    weight = (position - low).clip(0, 1).astype(numpy.float32)
    rows = rgb[low] * (1 - weight)[:, None, None] + rgb[low + 1] * weight[:, None, None]
    return rows[:, low] * (1 - weight)[None, :, None] + rows[:, low + 1] * weight[None, :, None]


def make_pictures(tool, folder, rendered, sizes):
    """fisheye0_SIZE.nv12 and fisheye1_SIZE.nv12 in the folder, resized from those of size `rendered`; what is there is kept."""
    folder.mkdir(parents=True, exist_ok=True)
    wanted = [size for size in sizes if not (folder / f"fisheye1_{size}.nv12").exists()]
    if not wanted:
        return
    if not (folder / "fisheye1.png").exists():
        size = ["--width", str(2 * rendered), "--fisheye-size", str(rendered)]
        subprocess.run([tool, "scene", "-o", folder, *size, *SCENE], check=True, stdout=subprocess.DEVNULL)
    for lens in range(2):
        rgb = matplotlib.image.imread(folder / f"fisheye{lens}.png")[..., :3]
        for size in wanted:
            planes = to_nv12(rgb if size == rgb.shape[0] else resized(rgb, size))
            (folder / f"fisheye{lens}_{size}.nv12").write_bytes(b"".join(plane.tobytes() for plane in planes))
