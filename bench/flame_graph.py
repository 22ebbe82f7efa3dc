#!/usr/bin/env python3
"""Draws what `perf script` prints as a flame graph.

  perf record --call-graph dwarf -e cpu-clock -p PID -o FILE; perf script -i FILE |
      bench/flame_graph.py TITLE >GRAPH.svg

The width of a box is the share of samples with that function on the stack; callers stand below
what they call. Stacks begin at the thread's own function; boxes under 0.5 % are left out.
"""

import html
import re
import sys

WIDTH, ROW, LEAST = 1200, 17, 0.005
FRAME = re.compile(r"^\s+[0-9a-f]+ (.+?)(?:\+0x[0-9a-f]+)? \(([^)]*)\)$")


def stacks(lines):
    """The stack of each sample, outermost frame first."""
    stack = []
    for line in lines:
        if match := FRAME.match(line):
            name, file = match.groups()
            if name == "[unknown]":
                name = f"({file.rpartition('/')[2]})"
            stack.append(re.sub(r"\(.*", "", name) if not name.startswith("(") else name)
        elif not line.strip() and stack:
            yield stack[::-1]
            stack = []
    if stack:
        yield stack[::-1]


class Node:
    def __init__(self):
        self.samples = 0
        self.children = {}

    def add(self, stack):
        self.samples += 1
        node = self
        for name in stack:
            node = node.children.setdefault(name, Node())
            node.samples += 1


def boxes(node, left, depth, total):
    for name, child in sorted(node.children.items()):
        if child.samples >= LEAST * total:
            yield name, left, depth, child.samples
            yield from boxes(child, left, depth + 1, total)
        left += child.samples


def collapsed(stack):
    """One frame where a library's frames without a name follow one another."""
    return [name for i, name in enumerate(stack)
            if not (name.startswith("(") and i > 0 and stack[i - 1] == name)]


def main():
    root = Node()
    for stack in stacks(sys.stdin):
        root.add(collapsed(stack))
    drawn = list(boxes(root, 0, 0, root.samples))
    height = (max(depth for _, _, depth, _ in drawn) + 3) * ROW
    print(f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" '
          'font-family="monospace" font-size="11"><rect width="100%" height="100%" fill="white"/>'
          f'<text x="4" y="13">{html.escape(sys.argv[1])} ({root.samples} samples)</text>')
    for name, left, depth, samples in drawn:
        x, width = left * WIDTH / root.samples, samples * WIDTH / root.samples
        y = height - (depth + 1) * ROW
        share = f"{name} {100 * samples / root.samples:.1f} %"
        colour = f"hsl({20 + hash(name) % 30},80%,{60 + hash(name[::-1]) % 15}%)"
        print(f'<g><title>{html.escape(share)}</title><rect x="{x:.1f}" y="{y}" width="{width:.1f}" '
              f'height="{ROW - 1}" fill="{colour}"/>')
        if width > 40:
            print(f'<text x="{x + 2:.1f}" y="{y + 12}">{html.escape(name[:int(width / 7)])}</text>')
        print("</g>")
    print("</svg>")


if __name__ == "__main__":
    main()
