"""Prints Google Benchmark reports as one table: bench-table.py [--peers RESULTS.json] REPORT.json...

With --peers the fastest other program that does the same work, linear interpolation and pan, stands
beside each row of the grain loop, for the nearest count of grains that it was measured with.
"""
import json
import re
import sys

UNITS = {
    "ns_per_frame": "ns/frame",
    "core_percent": "% of a core",
    "resident_MB": "MB",
    "object_kB": "kB object",
    "speedup": "x plain",
}
# Counters in seconds, shown in nanoseconds.
SECONDS = {"grain_sample": "ns/grain-sample", "frame": "ns/frame", "start": "ns/start"}
SKIPPED = {"items_per_second", "bytes_per_second"}
# The grain loop's rows, one for each instruction set.
GRAINS = re.compile(r"BM_Grains_\w+/")


def counters(run):
    """The counters of a run; rates that were inverted come as seconds and are plain numbers here."""
    known = {"name", "run_name", "run_type", "family_index", "per_family_instance_index",
             "repetitions", "repetition_index", "threads", "iterations", "real_time", "cpu_time",
             "time_unit", "label"}
    for key, value in run.items():
        if key in known or key in SKIPPED or not isinstance(value, (int, float)):
            continue
        if key in SECONDS:
            yield f"{value * 1e9:.4g} {SECONDS[key]}"
        else:
            yield f"{value:.4g} {UNITS.get(key, key)}"


def against_plain(run, runs):
    """How many times as fast the grain loop is as its plain form, where both were measured."""
    plain = runs.get(GRAINS.sub("BM_GrainsPlain/", run["name"], count=1))
    if plain is None or plain is run:
        return []
    return [f"{plain['cpu_time'] / run['cpu_time']:.1f} x the plain form"]


def against_peers(run, peers):
    """How many times as fast the grain loop is as the fastest peer."""
    grains = re.search(r"BM_Grains_.*grains:(\d+)", run["name"])
    if not grains or not peers:
        return []
    nearest = min(peers, key=lambda peer: abs(peer["n"] - int(grains[1])))["n"]
    fastest = min((peer for peer in peers if peer["n"] == nearest), key=lambda peer: peer["ns"])
    times = fastest["ns"] * 1e-9 / run["grain_sample"]
    return [f"{times:.1f} x {fastest['engine']} ({fastest['ns']:.3g} ns)"]


paths, peers = sys.argv[1:], []
if paths[:1] == ["--peers"]:
    with open(paths[1], encoding="utf-8") as results:
        peers = [peer for peer in json.load(results)["grains"]
                 if re.search(r"\blinear\b.*\bpan\b", peer["engine"])]
    paths = paths[2:]
rows = []
for path in paths:
    with open(path, encoding="utf-8") as report:
        text = report.read()
    if not text.strip():
        continue
    runs = {run["name"]: run for run in json.loads(text)["benchmarks"]}
    for run in runs.values():
        figures = list(counters(run)) + against_plain(run, runs) + against_peers(run, peers) or [f"{run['cpu_time']:.4g} {run['time_unit']}"]
        rows.append((run["name"].removeprefix("BM_"), ", ".join(figures), run.get("label", "")))

width = max((len(row[0]) for row in rows), default=0)
for name, figures, label in rows:
    print(f"{name:<{width}}  {figures}  {label}".rstrip())
