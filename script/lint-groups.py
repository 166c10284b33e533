#!/usr/bin/env python3
"""lint-groups.py COMMANDS FOLDER: joins the sources of a compile_commands.json into a few files.

Most of the linter's time goes into the headers of the language and the libraries, which it reads
anew for every source. So sources of one target are included one after the other into one file in
FOLDER, with a compile_commands.json of its own, and the names of these files are printed. Sources
stand together only where neither mentions a name that the other keeps in its unnamed namespace.
"""
import json
import os
import re
import sys

LARGEST = 24  # sources in a group: enough to save, few enough to share among processors


def kept_names(text):
    """Names that the unnamed namespaces of a source define, rather too many than too few."""
    names = set(re.findall(r"^using (\w+) =", text, re.M)) | set(re.findall(r"^int (main)\(", text, re.M))
    for inside in re.findall(r"^namespace \{$(.*?)^\}  // namespace$", text, re.M | re.S):
        names |= set(re.findall(r"^\S.*?\b(\w+)(?:\(|\{| = |\[| :|;| \{)", inside, re.M))
        names |= set(re.findall(r"^(?:struct|class|enum(?: class)?) (\w+)", inside, re.M))
        for entries in re.findall(r"^enum\b[^{]*\{(.*?)\}", inside, re.M | re.S):
            names |= set(re.findall(r"\w+", entries))
    return names


def known_words(text):
    """Words of a source and of the headers that it includes itself."""
    words = set(re.findall(r"\w+", text))
    for header in re.findall(r'^#include "(.+)"', text, re.M):
        for root in ("src", "."):
            if os.path.exists(path := os.path.join(root, header)):
                with open(path, encoding="utf-8") as file:
                    words |= set(re.findall(r"\w+", file.read()))
    return words


class Group:
    def __init__(self, entry):
        self.entry, self.sources, self.kept, self.words = entry, [], set(), set()

    def takes(self, kept, words):
        return len(self.sources) < LARGEST and not (self.kept & words or kept & self.words)

    def add(self, source, kept, words):
        self.sources.append(source)
        self.kept |= kept
        self.words |= words


def flags(entry):
    """The command up to its output: what the sources of a target have in common."""
    return entry["command"].split(" -o ")[0]


def grouped(entries):
    groups = {}
    for entry in entries:
        with open(entry["file"], encoding="utf-8") as file:
            text = file.read()
        # A source that includes itself for each instruction set stands alone, and one with X11's macros.
        kept, words = kept_names(text), known_words(text)
        alone = "foreach_target" in text or "Xlib" in words
        same = groups.setdefault((flags(entry), entry["file"] if alone else ""), [])
        group = next((group for group in same if group.takes(kept, words)), None)
        if group is None:
            same.append(group := Group(entry))
        group.add(entry["file"], kept, words)
    return [group for same in groups.values() for group in same]


def main():
    commands, folder = sys.argv[1], os.path.abspath(sys.argv[2])
    wanted = {os.path.abspath(line.strip()) for line in sys.stdin}
    with open(commands, encoding="utf-8") as file:
        entries = {entry["file"]: entry for entry in json.load(file) if entry["file"] in wanted}
    missing = sorted(wanted - entries.keys())
    if missing:
        sys.exit("No target compiles " + ", ".join(missing))
    os.makedirs(folder, exist_ok=True)
    database = []
    for number, group in enumerate(grouped(entries.values())):
        name = os.path.join(folder, f"group{number}.cpp")
        with open(name, "w", encoding="utf-8") as file:
            file.writelines(f'#include "{source}"  // NOLINT\n' for source in group.sources)
        command = f"{flags(group.entry)} -c {name}"
        database.append({**group.entry, "file": name, "command": command})
    with open(os.path.join(folder, "compile_commands.json"), "w", encoding="utf-8") as file:
        json.dump(database, file, indent=1)
    for entry in database:
        print(entry["file"])


main()
