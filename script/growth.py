"""Reads what the growth benchmark measures: growth.py MEASURED.csv [PICTURE.png]. Prints it as a table with
the straight line that fits best, and draws it."""
import sys

AXES = {"grains": ("grains that sound", "a grain"), "rate": ("samples a second", "1000 samples a second"),
        "instances": ("instances in turn", "an instance more")}


def read(path):
    series = {}
    with open(path, encoding="utf-8") as file:
        for line in file:
            what, amount, percent = line.strip().split(",")
            series.setdefault(what, []).append((float(amount), float(percent)))
    return series


def fit(points):
    """Offset and slope of least squares."""
    n = len(points)
    mean_x, mean_y = sum(x for x, _ in points) / n, sum(y for _, y in points) / n
    slope = sum((x - mean_x) * (y - mean_y) for x, y in points) / sum((x - mean_x) ** 2 for x, _ in points)
    return mean_y - slope * mean_x, slope


def show(series):
    for what, points in series.items():
        axis, step = AXES[what]
        offset, slope = fit(points)
        print(f"\n{axis:>20}  % of a core, one instance")
        for amount, percent in points:
            print(f"{amount:20.0f}  {percent:.3f}")
        scale = 1000.0 if what == "rate" else 1.0
        print(f"{'fit':>20}  {offset:.3f} and {slope * scale:.5f} for {step}")


def draw(series, path):
    import matplotlib

    matplotlib.use("Agg")
    from matplotlib import pyplot

    figure, panels = pyplot.subplots(1, len(series), figsize=(12, 3.8), layout="constrained")
    for panel, (what, points) in zip(panels, series.items()):
        offset, slope = fit(points)
        x = [amount / 1000 if what == "rate" else amount for amount, _ in points]
        panel.plot(x, [percent for _, percent in points], "o", color="#2a7f9e")
        panel.plot(x, [offset + slope * amount for amount, _ in points], "-", color="#c96a2b", linewidth=1.2)
        panel.set_xlabel(AXES[what][0].replace("samples a second", "rate in kHz"))
        panel.set_ylim(bottom=0)
        panel.spines[["top", "right"]].set_visible(False)
        panel.grid(axis="y", alpha=0.3)
    panels[0].set_ylabel("% of a core, one instance")
    figure.savefig(path, dpi=110)


measured = read(sys.argv[1])
show(measured)
if len(sys.argv) > 2:
    draw(measured, sys.argv[2])
