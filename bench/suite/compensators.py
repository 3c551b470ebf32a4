"""What OpenCV's exposure compensators make of a scene's clip: both lenses warped to the panorama's size, compensated, cut along its
graph cut and blended in 5 bands, frame by frame, as its stitching pipeline puts them together."""
import subprocess
import tomllib

import cv2
import numpy

import shots

KINDS = {"gain": cv2.detail.ExposureCompensator_GAIN, "blocks gain": cv2.detail.ExposureCompensator_GAIN_BLOCKS,
         "channels": cv2.detail.ExposureCompensator_CHANNELS, "blocks channels": cv2.detail.ExposureCompensator_CHANNELS_BLOCKS}
BANDS, SHRUNK = 5, 4  # the seam is searched in pictures so many times smaller
WEIGHTS = numpy.array([0.114, 0.587, 0.299])  # of blue, green and red: the clips are full range, BT.601


def maps(camera, width):
    """Of each lens: where a panorama's pixels lie in the clip's picture, and which the lens sees."""
    beyond, round_axis = shots.ring_angles(width)
    found = []
    for number, side in ((0, -1), (1, 1)):
        lens = camera[f"lens{number}"]
        angle = numpy.pi / 2 - side * numpy.radians(beyond)
        # Lens 0 looks back: what is right of its axis is the panorama's left.
        right, down = side * numpy.cos(numpy.radians(round_axis)), numpy.sin(numpy.radians(round_axis))
        x = lens["cx"] + lens["p"] * angle * right + number * camera["picture"]["width"]
        y = lens["cy"] + lens["p"] * angle * down
        sees = (numpy.degrees(angle) < lens["fov"] / 2 - 0.5).astype(numpy.uint8) * 255
        found.append((x.astype(numpy.float32), y.astype(numpy.float32), sees))
    return found


def read_colours(clip, width):
    raw = subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-i", clip, "-pix_fmt", "bgr24", "-f", "rawvideo", "-"], check=True,
                         stdout=subprocess.PIPE).stdout
    return numpy.frombuffer(raw, numpy.uint8).reshape(-1, width // 2, width, 3)


def cut(warped, masks):
    """The lenses' masks, each up to the seam."""
    size = (masks[0].shape[1] // SHRUNK, masks[0].shape[0] // SHRUNK)
    small = [cv2.resize(picture, size, interpolation=cv2.INTER_AREA).astype(numpy.float32) for picture in warped]
    parts = [cv2.UMat(cv2.resize(mask, size, interpolation=cv2.INTER_NEAREST)) for mask in masks]
    cv2.detail_GraphCutSeamFinder("COST_COLOR").find([cv2.UMat(picture) for picture in small], [(0, 0)] * 2, parts)  # in place
    return [cv2.bitwise_and(cv2.resize(part.get(), mask.shape[::-1], interpolation=cv2.INTER_NEAREST), mask)
            for part, mask in zip(parts, masks)]


def compensated(kind, frame, places):
    """Luma of a frame's panorama."""
    warped = [cv2.remap(frame, x, y, cv2.INTER_CUBIC, borderMode=cv2.BORDER_REPLICATE) for x, y, _ in places]
    masks = [sees.copy() for _, _, sees in places]
    compensator = cv2.detail.ExposureCompensator_createDefault(KINDS[kind])
    compensator.feed(corners=[(0, 0)] * 2, images=[cv2.UMat(picture) for picture in warped], masks=[cv2.UMat(mask) for mask in masks])
    warped = [compensator.apply(number, (0, 0), picture, mask) for number, (picture, mask) in enumerate(zip(warped, masks))]
    blender = cv2.detail_MultiBandBlender(0, BANDS)
    blender.prepare((0, 0, *masks[0].shape[::-1]))
    for picture, part in zip(warped, cut(warped, masks)):
        blender.feed(picture.astype(numpy.int16), part, (0, 0))
    result, _ = blender.blend(None, None)
    return numpy.rint(result.clip(0, 255) @ WEIGHTS).astype(numpy.uint8)


def stitched(kind, folder, width, clip=None, first=0):
    """Luma of the panoramas of side_by_side.mp4, or of another clip, from one of its frames on."""
    places = maps(tomllib.loads((folder / "camera.toml").read_text()), width)
    frames = read_colours(clip or folder / "side_by_side.mp4", width)[first:]
    return numpy.stack([compensated(kind, frame, places) for frame in frames])
