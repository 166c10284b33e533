"""The code of docs/python.md runs from top to bottom."""

import pathlib
import re


def test_page_runs(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    monkeypatch.setenv("MPLBACKEND", "agg")
    page = pathlib.Path(__file__).parents[2] / "docs" / "python.md"
    exec("".join(re.findall("```python\n(.*?)```", page.read_text(), re.S)), {})
    assert (tmp_path / "python-plot.png").stat().st_size > 5000
