"""Writes docs/performance.md: what was measured, on what, and how to read it."""

import textwrap

from results import HEADING, LEFT, cells_of, summary

# What is told about each program, in this order, by its name: a heading, and what its cases are.
FLOORS = {
    "job": ("The job, as its user feels it", """\
The DLL under Wine, each job in a process of its own, beside a floor: another DLL, which plays what ours has sent in a
first run, byte for byte, and does nothing but the system calls for it. Both have the same PBX, and all share one
processor. "At the PBX" is when the PBX's system has taken in the last byte. Handles and private memory are what the
process has more at rest than before the load. A figure is the one that a tenth of all runs stay below, since what else
the machine does only ever adds.

Encrypted, the floor plays the bytes of a TLS client, and spins for the processor's time that TLS costs the best client
of the section on TLS: for its handshake, and for each record by its length. What TLS costs the PBX is in both."""),
    "growth_bench": ("How the cost grows", """\
From TLS through framing and the tree to dispatch, natively. The figure is the slope of time over amount in a plot of
their logarithms: 1 is time in proportion to the amount, 2 to its square; below 1 a fixed part shows. `memory` is all
that an event makes us allocate on this way, beside the event's own bytes."""),
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

    ./bench           # measures all of it anew, in less than ten minutes, and writes this page and its chart
    ./bench --quick   # only sees whether all of it runs

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
