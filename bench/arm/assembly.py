"""Loops found in a compiler's assembly for ARM."""
import re
import subprocess

LABEL = re.compile(r"^(\.L\w+):")
BRANCH = re.compile(r"^\t(?:b(?:\.?(?:eq|ne|lt|le|gt|ge|hi|hs|cs|lo|cc|ls|mi|pl))?|cbn?z|tbn?z)\s(?:.*\s)?(\.L\w+)\s*$")
# Bytes that a store leaves behind, by mnemonic; for others the registers count.
STORES = {"strb": 1, "sturb": 1, "strh": 2, "sturh": 2}
REGISTER_BYTES = {"w": 4, "x": 8, "r": 4, "i": 4, "l": 4, "f": 4, "s": 4, "d": 8, "q": 16, "h": 2, "b": 1}
LANES = {"8b": 8, "4h": 8, "2s": 8, "1d": 8, "16b": 16, "8h": 16, "4s": 16, "2d": 16}


def functions_of(text):
    """Demangled name to lines."""
    names, bodies, body = [], [], None
    for line in text.splitlines():
        start = re.match(r"^(_Z\w+):$", line)
        if start:
            names.append(start.group(1))
            body = []
            bodies.append(body)
        elif line.startswith("\t.size\t_Z"):
            body = None
        elif body is not None:
            body.append(line)
    if not names:
        return {}
    plain = subprocess.run(["c++filt"], check=True, input="\n".join(names), stdout=subprocess.PIPE, text=True).stdout
    return dict(zip(plain.splitlines(), bodies))


def is_instruction(line):
    return line.startswith("\t") and not line.startswith("\t.")


def innermost_loops(lines):
    """Runs of lines between a label and a branch back to it that hold no other such run."""
    labels, loops = {}, []
    for i, line in enumerate(lines):
        label, branch = LABEL.match(line), BRANCH.match(line)
        if label:
            labels[label.group(1)] = i
        if branch and branch.group(1) in labels:
            loops.append((labels[branch.group(1)], i))
    inner = [a for a in loops if not any(b != a and a[0] <= b[0] and b[1] <= a[1] for b in loops)]
    return [[line for line in lines[first:last + 1] if is_instruction(line) or LABEL.match(line)] for first, last in inner]


def structure_bytes(line, operands):
    """vst1 .. vst4 and st1 .. st4: registers, ranges of them, or one lane of each."""
    registers = re.search(r"\{(.*?)\}", operands).group(1)
    if "[" in registers or "}[" in operands:
        size = re.search(r"\.(8|16|32|64|b|h|s|d)\b", line).group(1)
        return (REGISTER_BYTES[size] if size.isalpha() else int(size) // 8) * (registers.count(",") + 1)
    total = 0
    for part in registers.split(","):
        ends = [re.match(r"([dqv])(\d+)(?:\.(\w+))?", end.strip()) for end in part.split("-")]
        count = int(ends[-1].group(2)) - int(ends[0].group(2)) + 1
        total += count * (LANES[ends[0].group(3)] if ends[0].group(3) else REGISTER_BYTES[ends[0].group(1)])
    return total


def stored_bytes(line):
    """Of one instruction; nothing for what goes to the stack."""
    parts = re.match(r"^\t(\w+)(?:\.\w+)?\s+(.*)", line)
    if not parts or re.search(r"\[(sp|r13)\b", line):
        return 0
    mnemonic, operands = parts.groups()
    if mnemonic in STORES:
        return STORES[mnemonic]
    if re.match(r"^(str|stur|vstr)(ne|eq|lt|ge|hi|ls|cc|cs|gt|le)?$", mnemonic):
        return REGISTER_BYTES[operands[0]]
    if mnemonic in ("stp", "stnp", "strd"):
        return 8 if mnemonic == "strd" else 2 * REGISTER_BYTES[operands[0]]
    if re.match(r"^v?st[1-4]$", mnemonic):
        return structure_bytes(line, operands)
    if re.match(r"^v?stm", mnemonic):
        registers = re.search(r"\{(.*)\}", operands).group(1).split(",")
        return sum(REGISTER_BYTES[register.strip()[0]] for register in registers)
    return 0


def stored_by(loop):
    """All of a loop's stores but those to the stack, also through a register that was made to point there."""
    total, on_stack = 0, set()
    for line in loop:
        point = re.match(r"^\tadd\s+(\w+), (?:sp|r13), ", line)
        address = re.search(r"\[(\w+)", line)
        if point:
            on_stack.add(point.group(1))
        elif not address or address.group(1) not in on_stack:
            total += stored_bytes(line)
    return total


def hot_loop(lines):
    """The loop that stores most, which for vector code is the one that whole vectors go through; with the bytes it stores."""
    loops = [(stored_by(loop), len(loop), loop) for loop in innermost_loops(lines)]
    stored, _, loop = max(loops, default=(0, 0, []))
    return stored, loop
