"""What the benchmark programs print by --tsv: one line a case, with a tab between any two columns.

The columns are those of benchmarks/ratio_table.h: unit, case, our figure, the peer's, the peer's name, the ratio of the
two, good, moonshot, what the figures count. Where nothing of others can be compared, the peer's columns and the ratio
are empty, and our figure itself is held against good and moonshot; a case without a target has neither.
"""

from dataclasses import dataclass
from typing import Optional

COLUMNS = 9
NS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


@dataclass(frozen=True)
class Row:
    unit: str
    case: str
    ours: float
    peer: Optional[float]
    peer_name: str
    ratio: Optional[float]
    good: Optional[float]
    moonshot: Optional[float]
    measure: str

    @property
    def name(self):
        return f"{self.unit} {self.case}".strip()

    @property
    def judged(self):
        """The figure that the targets are about."""
        return self.ours if self.ratio is None else self.ratio

    @property
    def verdict(self):
        """Empty when there is no target."""
        if self.good is None or self.moonshot is None:
            return ""
        if self.judged <= self.moonshot:
            return "moonshot"
        return "good" if self.judged <= self.good else "MISSED"


def number(text):
    return float(text) if text else None


def parse_rows(text):
    """The rows of a program's lines; ValueError when it has printed none, or something else."""
    rows = []
    for line in text.splitlines():
        cells = line.split("\t")
        if len(cells) != COLUMNS:
            raise ValueError(f"not {COLUMNS} columns: {line}")
        unit, case, ours, peer, peer_name, ratio, good, moonshot, measure = cells
        rows.append(Row(unit, case, float(ours), number(peer), peer_name, number(ratio), number(good),
                        number(moonshot), measure))
    if not rows:
        raise ValueError("nothing was measured")
    return rows


def three_digits(value):
    decimals = 0 if value >= 100 else 1 if value >= 10 else 2
    return f"{value:,.{decimals}f}"


def quantity(value, measure):
    """A figure as people read it: 20811.8 "ns" is "20.8 µs"; empty for none."""
    if value is None:
        return ""
    if measure in NS:
        value *= NS[measure]
        for measure in ("ns", "µs", "ms", "s"):
            if value < 999.5 or measure == "s":
                break
            value /= 1000
    return f"{three_digits(value)} {measure}".strip()


def plain(value):
    """A ratio or a target; empty for none."""
    return "" if value is None else f"{value:.2f}"


def cells_of(row):
    """A row as text, under HEADING."""
    peer = quantity(row.peer, row.measure)
    return [row.unit, row.case, quantity(row.ours, row.measure), f"{row.peer_name} {peer}".strip(),
            plain(row.ratio), plain(row.good), plain(row.moonshot), row.verdict]


HEADING = ["unit", "case", "ours", "best peer", "ratio", "good", "moonshot", "verdict"]
LEFT = {"unit", "case", "best peer", "verdict"}


def text_table(rows):
    """The lines of a table for a terminal."""
    lines = [HEADING] + [cells_of(row) for row in rows]
    widths = [max(len(line[column]) for line in lines) for column in range(len(HEADING))]

    def padded(line):
        return "  ".join(cell.ljust(width) if name in LEFT else cell.rjust(width)
                         for name, cell, width in zip(HEADING, line, widths)).rstrip()

    return [padded(line) for line in lines]


def missed(rows):
    return [row for row in rows if row.verdict == "MISSED"]


def summary(rows):
    """One sentence: how many targets there are, and which of them are missed."""
    wanted = [row for row in rows if row.verdict]
    moonshots = sum(row.verdict == "moonshot" for row in wanted)
    text = f"{len(wanted) - len(missed(rows))} of {len(wanted)} good, {moonshots} of them moonshot; missed: "
    return text + (", ".join(f"{row.name} ({plain(row.judged)}, wanted {plain(row.good)})" for row in missed(rows))
                   or "none")
