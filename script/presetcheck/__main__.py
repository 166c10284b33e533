"""Measures the factory presets and prints one table; ends with 1 where a limit is broken. Started
by script/check-presets."""
import argparse
import tempfile
from pathlib import Path

import sounds
from measure import TAIL, measure_all
from overview import write_overview
from renders import Renderer, presets

SECONDS = 8


def print_table(results, cpu_limit):
    print(f"{'preset':22} {'music':>6} {'speech':>6} {'peak':>6}  {'nearest':22} {'mel':>5} "
          f"{'time':>5} {'tail':>5} {'CPU':>5}")
    print(f"{'':22} {'LU':>6} {'LU':>6} {'dBTP':>6}  {'':22} {'dB':>5} {'dB':>5} {'s':>5} {'%':>5}")
    for result in results:
        music, speech = result.loudness.values()
        name, mel, time = result.neighbour
        tail = "held" if result.tail >= TAIL - 0.1 else f"{result.tail:.1f}"
        faults = ", ".join(result.faults(cpu_limit))
        print(f"{result.preset.id:22} {music:+6.1f} {speech:+6.1f} {result.peak:6.1f}  {name:22} "
              f"{mel:5.1f} {time:5.1f} {tail:>5} {100 * result.cpu:5.2f}  {faults}".rstrip())


def main():
    parser = argparse.ArgumentParser(prog="script/check-presets", description=__doc__)
    parser.add_argument("names", nargs="*", help="presets to measure (default: all)")
    parser.add_argument("--quick", action="store_true",
                        help="one seed instead of ten, and three times the limit on processor "
                             "time, for machines with other work")
    parser.add_argument("--write", metavar="FILE", help="also write the overview, docs/presets.md")
    parser.add_argument("--tesserae", required=True, help=argparse.SUPPRESS)
    options = parser.parse_args()
    cpu_limit = 0.03 if options.quick else 0.0125
    with tempfile.TemporaryDirectory() as folder:
        render = Renderer(options.tesserae, sounds.make(options.tesserae, Path(folder), SECONDS))
        results = measure_all(render, presets(options.names),
                              1 if options.quick else 10, SECONDS)
    print_table(results, cpu_limit)
    broken = sum(bool(result.faults(cpu_limit)) for result in results)
    print(f"{len(results)} presets, {broken} break a limit")
    if options.write:
        write_overview(options.write, results)
    return 1 if broken else 0


raise SystemExit(main())
