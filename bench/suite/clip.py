"""A clip from file to file: the whole tool against FFmpeg's filter, as a person would run them."""
import os
import subprocess
import time

import numpy

import quality
from contestant import pin, summary
from pictures import REAL_CAMERA, SCENE

SPEED = ["-c:v", "libx264", "-preset", "ultrafast", "-crf", "23"]  # what FFmpeg's encoder takes; ours below says the same
RENDERED = 8  # pictures, shown there and back
FIELD_OF_VIEW = 195


def make_clip(tool, folder, width, turns):
    """side_by_side.mp4 of the scene, WIDTH columns, `turns` times there and back, H.264 with sound; what is there is kept."""
    clip = folder / f"clip_{width}x{turns}.mp4"
    if clip.exists():
        return clip
    scene = folder / f"scene_{width}"
    size = ["--width", "256", "--fisheye-size", str(width // 2), "--fov", str(FIELD_OF_VIEW), "--frames", str(RENDERED)]
    subprocess.run([tool, "scene", "-o", scene, *size, *SCENE], check=True, stdout=subprocess.DEVNULL)
    there_and_back = (f"[0:v]split[a][b];[b]reverse[c];[a][c]concat,loop=loop={turns - 1}:size={2 * RENDERED},"
                      f"setpts=N/30/TB,format=yuv420p[v]")
    unfinished = clip.with_suffix(".part.mp4")
    subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-y", "-i", scene / "side_by_side.mp4", "-f", "lavfi", "-i",
                    "sine=sample_rate=48000", "-filter_complex", there_and_back, "-map", "[v]", "-map", "1:a", "-c:v", "libx264",
                    "-preset", "veryfast", "-crf", "20", "-c:a", "aac", "-shortest", unfinished], check=True)
    unfinished.rename(clip)
    return clip


def commands(tool, clip, width, folder):
    """Name to (command, the file it writes), ours by the scene's own camera and by a real one's profile: the same size, encoder,
    preset and constant rate factor, sound copied.  Whole clips are also analysed before they are stitched."""
    scene = clip.parent / f"scene_{width}" / "camera.toml"
    v360 = f"v360=dfisheye:e:ih_fov={FIELD_OF_VIEW}:iv_fov={FIELD_OF_VIEW}:w={width}:h={width // 2}"

    def ours(camera, file, *options):
        return [tool, "stitch", clip, "--camera", camera, "--width", str(width), "--preset", "ultrafast", "--crf", "23", *options, "-o",
                file], file
    theirs, analysis = folder / "clip_v360.mp4", folder / "clip.analysis"
    together = ("--light", "match", "--near", "on", "--seams", "steady")
    return {
        "scene": ours(scene, folder / "clip_scene.mp4", "--light", "off"),
        "biseam": ours(REAL_CAMERA, folder / "clip_biseam.mp4", "--light", "off"),
        "matched": ours(REAL_CAMERA, folder / "clip_matched.mp4", *together),
        "analyse": ([tool, "analyse", clip, "--camera", REAL_CAMERA, "--width", str(width), *together, "-o", analysis], analysis),
        "followed": ours(REAL_CAMERA, folder / "clip_followed.mp4", "--analysis", analysis),
        "v360": (["ffmpeg", "-v", "error", "-nostdin", "-y", "-i", clip, "-vf", v360, *SPEED, "-c:a", "copy", theirs], theirs),
    }


def run(command):
    """The program's own account, all threads of it, start and end included."""
    start = time.monotonic()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               preexec_fn=pin)
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.monotonic() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"exit code {process.returncode}: {' '.join(str(word) for word in command)}")
    return {"wall_s": wall, "cpu_s": usage.ru_utime + usage.ru_stime, "peak_kib": usage.ru_maxrss}


def read_luma(clip, width):
    """Every picture's, one below the other."""
    raw = subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-i", clip, "-map", "0:v", "-vf", "extractplanes=y", "-f",
                          "rawvideo", "-"], check=True, stdout=subprocess.PIPE).stdout
    return numpy.frombuffer(raw, numpy.uint8).reshape(-1, width)


def measure(tool, folder, width, turns, rounds):
    """All in turn, there and back."""
    clip = make_clip(tool, folder / "pictures", width, turns)
    contestants = commands(tool, clip, width, folder)
    figures = {name: {} for name in contestants}
    for number in range(-1, rounds):
        names = list(contestants) if number % 2 else list(contestants)[::-1]
        for name in names:
            taken = run(contestants[name][0])
            for figure, value in taken.items():
                if number >= 0:  # the first turn finds cold caches
                    figures[name].setdefault(figure, []).append(value)
    luma = {name: read_luma(file, width) for name, (_, file) in contestants.items() if name != "analyse"}
    if len({picture.shape for picture in luma.values()}) != 1:
        raise SystemExit(f"clips of different length: {[picture.shape for picture in luma.values()]}")
    for _, file in contestants.values():
        file.unlink()

    def ratios(name):
        return {clock: summary([ours / theirs for ours, theirs in zip(figures[name][clock], figures["v360"][clock])])
                for clock in ("wall_s", "cpu_s")}
    return {"width": width, "frames": 2 * RENDERED * turns, "rounds": rounds, "psnr": quality.psnr(luma["scene"], luma["v360"]),
            "runs": {name: {figure: summary(values) for figure, values in taken.items()} for name, taken in figures.items()},
            "ratio": ratios("biseam"), "matched_ratio": ratios("matched")}
