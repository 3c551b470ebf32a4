"""What the figures were taken on."""
import datetime
import platform
import re
import subprocess

from contestant import CORES


def first_line(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.splitlines()[0].strip()


def version_of(package):
    return first_line("dpkg-query", "-W", "-f", "${Version}\n", package)


def processor():
    with open("/proc/cpuinfo") as info:
        text = info.read()
    field = lambda name: re.search(rf"^{name}\s*: (.*)$", text, re.M).group(1)
    return f"{field('model name')} (family {field('cpu family')}, model {field('model')})"


def describe():
    return {
        "date": datetime.date.today().isoformat(),
        "processor": processor(),
        "cores": CORES,
        "system": "Debian " + open("/etc/debian_version").read().strip() + ", " + platform.machine(),
        "compiler": first_line("g++", "--version"),
        "FFmpeg": version_of("libavfilter-dev"),
        "OpenCV": version_of("libopencv-dev"),
        "commit": first_line("git", "describe", "--always", "--dirty"),
    }
