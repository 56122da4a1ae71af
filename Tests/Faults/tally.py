# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What came of the launches of a sweep, and which of them need not be made again."""

import collections
import json
import os
import threading

COLUMNS = ["launches", "struck", "set up", "status 0", "status 1", "status 127", "status 139", "alert"]


def outcome_of(report):
    return "set up" if report["runs"] else "alert" if report["asked"] else f"status {report['status']}"


class Tally:
    """By kinds of call.

    With a file, each launch is a line of it at once, and one that nothing was wrong with counts for later sweeps of the
    same title, too: a sweep of hours goes on where it was ended.
    """

    def __init__(self, title="", file=None):
        self.rows = collections.defaultdict(collections.Counter)
        self.title = title
        self.file = file
        self.done = set()
        self.lock = threading.Lock()
        for line in map(json.loads, self.kept_lines()):
            if line["title"] == title and not line["problems"]:
                self.done.add(tuple(line["row"]))
                self.rows[line["row"][0]].update(line["counts"])

    def kept_lines(self):
        if not self.file or not os.path.exists(self.file):
            return []
        with open(self.file, encoding="utf-8") as lines:
            return list(lines)

    def knows(self, row):
        return tuple(row) in self.done

    def add(self, row, report, problems):
        counts = {"launches": 1, "struck": int(report["struck"] is not None), outcome_of(report): 1}
        with self.lock:
            self.rows[row[0]].update(counts)
            if self.file:
                line = {"title": self.title, "row": row, "counts": counts, "problems": problems}
                with open(self.file, "a", encoding="utf-8") as file:
                    file.write(json.dumps(line) + "\n")

    def struck(self):
        return sum(row["struck"] for row in self.rows.values())

    def write(self, path, heading, errors_of):
        total = collections.Counter()
        with open(path, "a", encoding="utf-8") as file:
            file.write(f"\n{heading}\n\n| call | errors | {' | '.join(COLUMNS)} |\n|{'---|' * (2 + len(COLUMNS))}\n")
            for call, row in sorted(self.rows.items()):
                total.update(row)
                numbers = " | ".join(str(row[column]) for column in COLUMNS)
                file.write(f"| `{call}` | {' '.join(errors_of(call))} | {numbers} |\n")
            file.write(f"| all | | {' | '.join(str(total[column]) for column in COLUMNS)} |\n")
