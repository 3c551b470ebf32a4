"""How far apart both lenses see the same things by a camera's profile, in pictures of real cameras: pixels of a panorama 3840 wide.

Both rims are drawn as strips by the documented formulas, read from the profile, and patches of one are sought in the other by
OpenCV's alignment of images, which shares nothing with `biseam calibrate`.  Across the ring near things lie apart, always to the
same side, so that far ones are the lower end.  Along it nearness displaces in proportion, by one wave round the ring, where lens
1 stands beside the axis of lens 0: what is left without that is an error."""
import argparse
import pathlib
import subprocess
import tomllib

import cv2
import numpy

WIDTH = 3840
PIXEL = 2 * numpy.pi / WIDTH
WRAP = 96  # columns that are repeated at the ends of a strip
HALF_T, HALF_B = 20, 15  # of a patch, pixels
CELL_T, CELL_B = 16, 12  # one patch at most in each
SEARCH_T, SEARCH_NEAR, SEARCH_FAR = 10, 40, 8
LEAST_SCORE = 0.85
MOST_RETURN = 0.3
MOST_DOUBT = 0.15  # pixels, of either coordinate: blurred and straight edges tell too little
EIGHTHS = 8
LEAST_MATCHES = 8  # of an eighth, to say anything about it
FARTHEST = 0.2  # of the patches of an eighth are taken for its far end
USUAL = 3  # pixels along from the median: what is further off is another thing
ROUNDS, LEAST_USUAL = 10, 0.1  # of the least squares, and pixels that are never far off
MOST_FAR = 2  # pixels: where even the far end is nearer, nothing far is seen


def rotation(yaw, pitch, roll):
    y, p, r = numpy.radians((yaw, pitch, roll))
    about_y = [[numpy.cos(y), 0, numpy.sin(y)], [0, 1, 0], [-numpy.sin(y), 0, numpy.cos(y)]]
    about_x = [[1, 0, 0], [0, numpy.cos(p), -numpy.sin(p)], [0, numpy.sin(p), numpy.cos(p)]]
    return numpy.array(about_y) @ about_x @ about_z(numpy.degrees(r))


def about_z(degrees):
    a = numpy.radians(degrees)
    return numpy.array([[numpy.cos(a), -numpy.sin(a), 0], [numpy.sin(a), numpy.cos(a), 0], [0, 0, 1]])


def project(lens, index, directions):
    """Places in a lens's picture, and the angles from its axis."""
    side = 1 if index else -1
    turn = rotation(*(lens.get(angle, 0) for angle in ("yaw", "pitch", "roll")))
    ray = directions @ (about_z(lens.get("mount", 0)) @ turn.T @ numpy.diag((side, 1, side))).T
    across = numpy.hypot(ray[..., 0], ray[..., 1])
    angle = numpy.arctan2(across, ray[..., 2])
    k1, k2, k3 = lens.get("k", (0, 0, 0))
    scale = lens["p"] * angle * (1 + k1 * angle**2 + k2 * angle**4 + k3 * angle**6) / across
    return lens["cx"] + scale * ray[..., 0], lens["cy"] + scale * ray[..., 1], angle


def strip(picture, lens, index, reach):
    """Rows across the ring, towards lens 1 the greater; where the lens sees nothing, False in the second result."""
    rows = numpy.arange(-reach, reach + 1)
    t = (numpy.arange(-WRAP, WIDTH + WRAP) + 0.5) * PIXEL - numpy.pi
    b = rows * PIXEL
    directions = numpy.stack(numpy.broadcast_arrays(numpy.cos(b)[:, None] * numpy.cos(t), numpy.cos(b)[:, None] * numpy.sin(t),
                                                    numpy.sin(b)[:, None]), axis=-1)
    x, y, angle = project(lens, index, directions)
    seen = (x >= 3) & (y >= 3) & (x <= picture.shape[1] - 4) & (y <= picture.shape[0] - 4)
    seen &= angle < numpy.radians(lens["fov"] / 2) - 0.012
    light = cv2.remap(picture, x.astype(numpy.float32), y.astype(numpy.float32), cv2.INTER_CUBIC, borderMode=cv2.BORDER_REPLICATE)
    return cv2.GaussianBlur(light, (0, 0), 1.0), seen


def align(first, second, start):
    """Where a patch, given with a margin, lies in another picture: displacement (t, b) from the start, score; None if nowhere."""
    warp = numpy.array([[1, 0, start[0]], [0, 1, start[1]]], numpy.float32)
    try:
        score, warp = cv2.findTransformECC(first, second, warp, cv2.MOTION_TRANSLATION,
                                           (cv2.TERM_CRITERIA_COUNT | cv2.TERM_CRITERIA_EPS, 60, 1e-6), None, 1)
    except cv2.error:
        return None
    return (float(warp[0, 2]), float(warp[1, 2])), score


def doubt(patch, score):
    """Standard deviations of a patch's place, if what differs is noise that neighbouring samples share."""
    gx, gy = cv2.Sobel(patch, cv2.CV_32F, 1, 0) / 8, cv2.Sobel(patch, cv2.CV_32F, 0, 1) / 8
    tensor = numpy.array([[(gx * gx).sum(), (gx * gy).sum()], [(gx * gy).sum(), (gy * gy).sum()]])
    noise = 2 * (1 - score) * patch.var()
    shared = 12  # samples, by the blur and where the strip is finer than the picture
    return numpy.sqrt(numpy.maximum(0, noise * shared * numpy.diag(numpy.linalg.inv(tensor + 1e-9 * numpy.eye(2)))))


def match(strips, seen):
    """Rows of (t in radians, b in pixels, displacement along, displacement across, score); near things displace across by more than 0."""
    first, second = strips
    both = [cv2.erode(one.astype(numpy.uint8), numpy.ones((2 * HALF_B + 3, 2 * HALF_T + 3)), borderValue=0) > 0 for one in seen]
    strength = cv2.cornerMinEigenVal(first, 9)
    strength[~both[0]] = 0
    found = []
    for top in range(0, first.shape[0] - CELL_B + 1, CELL_B):
        for left in range(WRAP, WRAP + WIDTH, CELL_T):
            cell = strength[top:top + CELL_B, left:left + CELL_T]
            y, x = numpy.unravel_index(cell.argmax(), cell.shape)
            if cell[y, x] <= 0:
                continue
            x, y = left + x, top + y
            patch = first[y - HALF_B:y + HALF_B + 1, x - HALF_T:x + HALF_T + 1]
            if patch.std() < 2:
                continue
            # Lens 1 sees near things at a smaller b.
            high, low = max(0, y - HALF_B - SEARCH_NEAR), min(first.shape[0], y + HALF_B + SEARCH_FAR + 1)
            region = second[high:low, x - HALF_T - SEARCH_T:x + HALF_T + SEARCH_T + 1]
            scores = cv2.matchTemplate(region, patch, cv2.TM_CCOEFF_NORMED)
            _, best, _, (dx, dy) = cv2.minMaxLoc(scores)
            if best < LEAST_SCORE or dx in (0, scores.shape[1] - 1) or dy in (0, scores.shape[0] - 1):
                continue
            v, u = high + dy + HALF_B, x - SEARCH_T + dx
            if not both[1][v, u]:
                continue
            there = align(patch, second[v - HALF_B - 3:v + HALF_B + 4, u - HALF_T - 3:u + HALF_T + 4], (3, 3))
            other = second[v - HALF_B:v + HALF_B + 1, u - HALF_T:u + HALF_T + 1]
            back = align(other, first[y - HALF_B - 3:y + HALF_B + 4, x - HALF_T - 3:x + HALF_T + 4], (3, 3))
            if there is None or back is None or min(there[1], back[1]) < LEAST_SCORE:
                continue
            (tx, ty), (bx, by) = there[0], back[0]
            if numpy.hypot(tx - 3 + bx - 3, ty - 3 + by - 3) > MOST_RETURN or max(doubt(patch, there[1])) > MOST_DOUBT:
                continue
            along, across = u - x + (tx - bx) / 2, v - y + (ty - by) / 2
            found.append(((x - WRAP + 0.5) * PIXEL - numpy.pi, y - first.shape[0] // 2, along, -across, there[1]))
    return numpy.array(found).reshape(-1, 5)


def measure(profile, pictures):
    """Matches of a pair of gray pictures, as match() has them."""
    camera = tomllib.loads(pathlib.Path(profile).read_text())
    size = camera.get("picture", {"width": pictures[0].shape[1], "height": pictures[0].shape[0]})
    if (size["width"], size["height"]) != (pictures[0].shape[1], pictures[0].shape[0]):
        raise SystemExit(f"{profile} is of pictures of another size")
    lenses = [camera["lens0"], camera["lens1"]]
    reach = int(min(16, max(4, max(lens["fov"] for lens in lenses) / 2 - 90)) * WIDTH / 360)
    strips, seen = zip(*(strip(picture, lens, index, reach) for index, (picture, lens) in enumerate(zip(pictures, lenses))))
    return match(strips, seen)


def eighths_of(matches):
    return ((matches[:, 0] + numpy.pi) / (2 * numpy.pi) * EIGHTHS).astype(int) % EIGHTHS


def slanted(matches):
    """Displacements along the ring by nearness: least squares of the wave, and of a constant in each eighth, without what is far off."""
    t, along, across = matches[:, 0], matches[:, 2], matches[:, 3]
    wave = numpy.stack((across * numpy.sin(t), across * numpy.cos(t)), axis=1)
    terms = numpy.concatenate((wave, eighths_of(matches)[:, None] == numpy.arange(EIGHTHS)), axis=1)
    usual = numpy.full(len(matches), True)
    for _ in range(ROUNDS):
        found = numpy.linalg.lstsq(terms[usual], along[usual], rcond=None)[0]
        left = abs(along - terms @ found)
        usual = left < 3 * max(LEAST_USUAL, 1.5 * numpy.median(left))
    return wave @ found[:2]


def told(matches):
    """Of each eighth: how many, and where it is enough, rms and median along, and how far apart the far end is."""
    def figures(part):
        along, across = part[:, 2] - part[:, 5], part[:, 3]
        usual = abs(along - numpy.median(along)) < USUAL
        farthest = numpy.sort(across[usual])[:max(3, int(FARTHEST * usual.sum()))]
        return {"matches": len(part), "rms": float(numpy.sqrt(numpy.mean(along[usual]**2))),
                "along": float(numpy.median(along[usual])), "far": float(numpy.median(farthest))}
    matches = numpy.concatenate((matches, slanted(matches)[:, None]), axis=1)
    parts = [matches[eighths_of(matches) == i] for i in range(EIGHTHS)]
    return [figures(part) if len(part) >= LEAST_MATCHES else {"matches": len(part)} for part in parts]


def worst(eighths, figure):
    """Of the eighths in which something far is seen, or something beyond infinity."""
    return max((abs(part[figure]) for part in eighths if part.get("far", MOST_FAR) < MOST_FAR), default=None)


def read_pair(files):
    pictures = [cv2.imread(str(file), cv2.IMREAD_GRAYSCALE) for file in files]
    if len(pictures) == 1:
        half = pictures[0].shape[1] // 2
        pictures = [pictures[0][:, :half], pictures[0][:, half:]]
    return [numpy.ascontiguousarray(picture, numpy.float32) for picture in pictures]


def pairs_of(samples):
    """Names and files of the samples that lie in a folder; what follows a pair of the same camera is calibrated with it."""
    cameras = {"square": [["square_side_by_side_1920x960.png"]],
               "woods": [[f"woods_lens{k}_2704x2624.jpg" for k in range(2)],
                         *([f"woods_sequence/lens{k}_{i}.jpg" for k in range(2)] for i in range(2, 7))],
               "volcano": [[f"volcano_lens{k}_3104x3000.jpg" for k in range(2)]]}
    found = {name: [[samples / file for file in pair] for pair in pairs] for name, pairs in cameras.items()}
    return {name: pairs for name, pairs in found.items() if all(file.exists() for pair in pairs for file in pair)}


def measure_samples(tool, folder, samples):
    """Eighths of every pair by the profile that is found in all pairs of its camera."""
    result = {}
    for name, pairs in pairs_of(samples).items():
        profile = folder / f"{name}.toml"
        subprocess.run([tool, "calibrate", *(file for pair in pairs for file in pair), "-o", profile], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for i, pair in enumerate(pairs):
            result[f"{name} {i + 1}" if len(pairs) > 1 else name] = told(measure(profile, read_pair(pair)))
    return result


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("profile")
    parser.add_argument("pictures", nargs="+", help="one with both circles, or one of each lens")
    arguments = parser.parse_args()
    for i, part in enumerate(told(measure(arguments.profile, read_pair(arguments.pictures)))):
        print(i, " ".join(f"{name} {value:.2f}" if isinstance(value, float) else f"{name} {value}" for name, value in part.items()))


if __name__ == "__main__":
    main()
