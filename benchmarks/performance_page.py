"""Writes docs/performance.md: what was measured, on what, and how to read it."""

import textwrap

from results import HEADING, LEFT, cells_of, summary

# What is told about each program, in this order, by its name: a heading, and what its cases are.
FLOORS = {
    "job": ("The job, as its user feels it", """\
The DLL under Wine, beside a floor: a program that does the same job for the same bytes by bare system calls."""),
    "growth_bench": ("How the cost grows", """\
From TLS through framing and the tree to dispatch, natively. The figure is the slope of time over amount in a plot of
their logarithms: 1 is time in proportion to the amount, 2 to its square."""),
    "tls_bench": ("TLS", """\
Handshakes, from the making of the objects to the last message, and records of so many bytes, protected and taken off
again. The other end of each connection is the same library's for all, and its time does not count. Peers are those
that can do TLS 1.0 with the suite, each used as its manual recommends; Botan and BearSSL put the first byte that they
send into a record of its own, which is more than the others do, so they take no part in protecting."""),
    "crypto_bench": ("Digests and ciphers", """\
The case is the number of bytes. Ours returns a string of its own each time; the peers write where they are told
to."""),
    "rsa_bench": ("RSA and big numbers", """\
The case is the length of the modulus in bits. `mod-pow` is an exponentiation from plain numbers, where nothing about
the modulus is known beforehand; `mod-pow-portable` is ours as on a processor without the instructions that it
otherwise uses."""),
    "xml_bench": ("XML", """\
A tree from a message, two look-ups in it, and its end. `session` is a login's answer, `answers` are those to calls,
`events` what a PBX says about calls, `lists` long lists of devices with entities, CDATA and prefixes."""),
}

BEGINNING = """\
# How fast it is, and beside whom

Every figure is our time over that of the **best peer**, or over the **floor**, measured in turns with ours in the same
run on the same machine: at 1.00 both take as long, at 0.50 ours takes half the time, at 2.00 twice the time. A *peer*
is another library that does the same work from the same bytes in the same process; of several the quickest counts. A
*floor* is the bare system calls for the same bytes, which nobody can do without. "Good" is where a unit may rest;
"moonshot" is the goal. The times themselves mean little on another machine; the ratios are what stays.

    ./bench           # measures all of it anew, in less than ten minutes; ./bench --help
    ./bench --keep    # and writes this page and its chart

{measured}

![Our time over the best peer's, as bars on a logarithmic scale](images/performance.svg)
"""


def markdown_table(rows):
    def line(cells):
        return "| " + " | ".join(cells) + " |"

    ruler = ["---" if name in LEFT else "---:" for name in HEADING]
    emphasised = [[f"**{cell}**" if cell == "MISSED" else cell for cell in cells_of(row)] for row in rows]
    return "\n".join([line(HEADING), line(ruler).replace(" ", ""), *map(line, emphasised)]) + "\n"


def floor_section(program, rows):
    heading, text = FLOORS.get(program, (program, ""))
    return f"## {heading}\n\n" + (f"{text}\n\n" if text else "") + markdown_table(rows)


def in_order(rows_by_program):
    """The programs that have been run: those of FLOORS, then the others."""
    known = [program for program in FLOORS if program in rows_by_program]
    return known + [program for program in rows_by_program if program not in FLOORS]


def performance_page(rows_by_program, machine, date, notes):
    """The whole page. Notes is what was written by hand about the targets that are missed."""
    programs = in_order(rows_by_program)
    rows = [row for program in programs for row in rows_by_program[program]]
    measured = textwrap.fill(f"Measured on {date}, on {machine}: {summary(rows)}.", 120, break_on_hyphens=False)
    beginning = BEGINNING.format(measured=measured)
    return "\n".join([beginning, notes, *(floor_section(program, rows_by_program[program]) for program in programs)])
