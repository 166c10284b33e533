"""Prints Google Benchmark reports as one table: bench-table.py REPORT.json..."""
import json
import sys

UNITS = {
    "ns_per_frame": "ns/frame",
    "ns_per_grain_sample": "ns/grain-sample",
    "core_percent": "% of a core",
    "resident_MB": "MB",
    "object_kB": "kB object",
    "speedup": "x plain",
}
SKIPPED = {"items_per_second", "bytes_per_second"}


def counters(run):
    """The counters of a run; rates that were inverted come as seconds and are plain numbers here."""
    known = {"name", "run_name", "run_type", "family_index", "per_family_instance_index",
             "repetitions", "repetition_index", "threads", "iterations", "real_time", "cpu_time",
             "time_unit", "label"}
    for key, value in run.items():
        if key not in known and key not in SKIPPED and isinstance(value, (int, float)):
            yield f"{value:.4g} {UNITS.get(key, key)}"


rows = []
for path in sys.argv[1:]:
    with open(path, encoding="utf-8") as report:
        text = report.read()
    if not text.strip():
        continue
    for run in json.loads(text)["benchmarks"]:
        figures = list(counters(run)) or [f"{run['cpu_time']:.4g} {run['time_unit']}"]
        rows.append((run["name"].removeprefix("BM_"), ", ".join(figures), run.get("label", "")))

width = max((len(row[0]) for row in rows), default=0)
for name, figures, label in rows:
    print(f"{name:<{width}}  {figures}  {label}".rstrip())
