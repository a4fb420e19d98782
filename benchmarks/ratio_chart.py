"""Draws docs/images/performance.svg: a bar for each ratio that has a target, on a logarithmic scale around 1."""

import math
from itertools import groupby
from xml.sax.saxutils import escape

TITLE = "What ours takes, over what the best peer’s takes"
READING = "At 1 both take as much; a bar to the left of it is better, one to the right worse."

WIDTH = 960
UNIT_X = 20  # where a unit's name begins
CASE_RIGHT = 366  # where the name of a case ends
CASE_LETTERS = 46  # of a longer name the rest is left out
PLOT_LEFT = 380
PLOT_RIGHT = 796
RATIO_RIGHT = 846
PEER_X = 858  # where the best peer's name begins
TOP = 116
ROW = 20
BAR = 12
GAP = 10  # between units
LEAST = 0.05  # what a common scale can show
GREATEST = 20
MARKS = (0.05, 0.1, 0.2, 0.3, 0.5, 0.7, 1, 1.4, 2, 3, 5, 10, 20)

# The colours of a set that people who see few colours tell apart (Okabe and Ito), darker on light ground where thin.
STYLE = """\
text { font: 13px system-ui, -apple-system, "Segoe UI", "DejaVu Sans", sans-serif; fill: #1f2328; }
.title { font-size: 20px; font-weight: 600; }
.unit { font-weight: 600; }
.quiet { fill: #59636e; }
.right { text-anchor: end; }
.middle { text-anchor: middle; }
.ground { fill: #ffffff; stroke: #d1d9e0; }
.grid { stroke: #d1d9e0; }
.one { stroke: #59636e; stroke-width: 1.5; }
.moonshot { fill: #0072b2; }
.good { fill: #56b4e9; }
.MISSED { fill: #d55e00; }
.target { stroke: #1f2328; stroke-width: 2; }
.halo { stroke: #ffffff; stroke-width: 5; }
.goal { fill: #ffffff; stroke: #1f2328; stroke-width: 1.5; }
@media (prefers-color-scheme: dark) {
  text { fill: #f0f6fc; }
  .quiet { fill: #b1bac4; }
  .ground { fill: #0d1117; stroke: #3d444d; }
  .grid { stroke: #3d444d; }
  .one { stroke: #b1bac4; }
  .moonshot { fill: #3d9bd8; }
  .good { fill: #a5dcff; }
  .MISSED { fill: #f08a3c; }
  .target { stroke: #f0f6fc; }
  .halo { stroke: #0d1117; }
  .goal { fill: #0d1117; stroke: #f0f6fc; }
}
"""


class Scale:
    """From a ratio to its place in the plot."""

    def __init__(self, ratios):
        self.least = min(0.5, 0.95 * min(ratios))
        self.greatest = max(2, 1.05 * max(ratios))

    def x(self, ratio):
        part = math.log(ratio / self.least) / math.log(self.greatest / self.least)
        return round(PLOT_LEFT + part * (PLOT_RIGHT - PLOT_LEFT), 1)

    def marks(self):
        return [mark for mark in MARKS if self.least <= mark <= self.greatest]


def text(x, y, content, classes=""):
    return f'<text x="{x}" y="{y}"' + (f' class="{classes}"' if classes else "") + f">{escape(content)}</text>"


def line(x, top, bottom, kind):
    return f'<line x1="{x}" y1="{top}" x2="{x}" y2="{bottom}" class="{kind}"/>'


def bar(left, right, y, kind):
    return f'<rect x="{left}" y="{y - BAR / 2}" width="{max(right - left, 1):.1f}" height="{BAR}" class="{kind}"/>'


def diamond(x, y):
    return f'<path d="M{x} {y - 4.5}l4.5 4.5l-4.5 4.5l-4.5 -4.5z" class="goal"/>'


def legend(y):
    parts = []
    x = UNIT_X
    for kind, meaning in (("moonshot", "moonshot reached"), ("good", "good"), ("MISSED", "missed"),
                          ("target", "what is good"), ("goal", "moonshot")):
        if kind == "target":
            mark, width = line(x + 4, y - 8, y + 8, kind), 8
        elif kind == "goal":
            mark, width = diamond(x + 5, y), 10
        else:
            mark, width = bar(x, x + 20, y, kind), 20
        parts += [mark, text(x + width + 6, y + 4.5, meaning)]
        x += width + 6 + 7.4 * len(meaning) + 22
    return parts


def short(case):
    return case if len(case) <= CASE_LETTERS else case[:CASE_LETTERS - 1].rstrip() + "…"


def fits_beside(unit, rows):
    """Whether the unit's name has room to the left of its longest case; letters are 7.5 wide, bold ones 8.5."""
    return 8.5 * len(unit) + 7.5 * max(len(short(row.case)) for row in rows) < CASE_RIGHT - UNIT_X - 10


def row_marks(row, y, scale):
    x = scale.x(row.ratio)
    return [text(CASE_RIGHT, y + 4.5, short(row.case), "right"),
            bar(min(x, scale.x(1)), max(x, scale.x(1)), y, row.verdict),
            line(scale.x(row.good), y - BAR / 2, y + BAR / 2, "halo"),
            line(scale.x(row.good), y - 8, y + 8, "target"),
            diamond(scale.x(row.moonshot), y),
            text(RATIO_RIGHT, y + 4.5, f"{row.ratio:.2f}", "right"),
            text(PEER_X, y + 4.5, row.peer_name, "quiet")]


def is_drawn(row):
    """Not one without a ratio or a target, and not one beyond what a common scale can show."""
    return row.ratio is not None and bool(row.verdict) and all(LEAST <= value <= GREATEST
                                                              for value in (row.ratio, row.good, row.moonshot))


def ratio_chart(rows):
    """The picture, as SVG, of the rows that are drawn; there must be one."""
    rows = [row for row in rows if is_drawn(row)]
    scale = Scale([value for row in rows for value in (row.ratio, row.good, row.moonshot)])
    body = []
    y = TOP
    for unit, group in groupby(rows, key=lambda row: row.unit):
        members = list(group)
        y += GAP
        body.append(text(UNIT_X, y + ROW / 2 + 4.5, unit, "unit"))
        if not fits_beside(unit, members):
            y += ROW
        for row in members:
            body += row_marks(row, y + ROW / 2, scale)
            y += ROW
    bottom = y + GAP
    grid = [line(scale.x(mark), TOP, bottom, "one" if mark == 1 else "grid") for mark in scale.marks()]
    marks = [text(scale.x(mark), place, f"{mark:g}", "middle quiet")
             for mark in scale.marks() for place in (TOP - 6, bottom + 18)]
    height = bottom + 34
    head = [text(UNIT_X, 36, TITLE, "title"),
            text(UNIT_X, 58, READING, "quiet"), *legend(80),
            text(RATIO_RIGHT, TOP - 6, "ratio", "right quiet"), text(PEER_X, TOP - 6, "best peer", "quiet")]
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height:g}" width="{WIDTH}" height="{height:g}"'
        ' role="img">',
        f"<title>{TITLE}</title>",
        f"<style>\n{STYLE}</style>",
        f'<rect x="0.5" y="0.5" width="{WIDTH - 1}" height="{height - 1:g}" rx="8" class="ground"/>',
        *head, *grid, *body, *marks, "</svg>", ""])
