"""Runs the end-to-end tests: every function test_… of every file test_….py beside this one.

usage: run_all.py [--package DIR] [--out DIR] [--results FILE] [NAME …]
"""
import argparse
import importlib
import pathlib
import sys
import time
import traceback
from xml.sax.saxutils import quoteattr

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
sys.path.insert(0, str(HERE))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--package", type=pathlib.Path, default=ROOT / "build/windows/Kestrelon")
    parser.add_argument("--out", type=pathlib.Path, default=ROOT / "build/e2e")
    parser.add_argument("--results", type=pathlib.Path, default=ROOT / "build/results/e2e.xml")
    parser.add_argument("names", nargs="*")
    options = parser.parse_args()
    options.out.mkdir(parents=True, exist_ok=True)

    cases = []
    for file in sorted(HERE.glob("test_*.py")):
        module = importlib.import_module(file.stem)
        cases += [(file.stem, name, function) for name, function in vars(module).items() if name.startswith("test_")]
    if options.names:
        cases = [case for case in cases if case[1] in options.names]

    lines, failed = [], 0
    for suite, name, function in cases:
        start, error = time.monotonic(), None
        print(f"[ RUN      ] {suite}.{name}", flush=True)
        try:
            function(options.package, options.out)
        except Exception:  # the report of a test, whatever ended it
            error = traceback.format_exc()
        seconds = time.monotonic() - start
        attributes = f'classname={quoteattr(suite)} name={quoteattr(name)} status="run" time="{seconds:.3f}"'
        if error:
            failed += 1
            print(error, flush=True)
            lines.append(f"<testcase {attributes}><failure message={quoteattr(error)}/></testcase>")
        else:
            lines.append(f"<testcase {attributes}/>")
        print(f"[  {'FAILED' if error else '    OK'}  ] {name} ({seconds:.1f} s)", flush=True)
    options.results.parent.mkdir(parents=True, exist_ok=True)
    options.results.write_text(
        f'<?xml version="1.0" encoding="UTF-8"?>\n<testsuites tests="{len(cases)}" failures="{failed}">\n'
        f'<testsuite name="e2e" tests="{len(cases)}" failures="{failed}">\n' + "\n".join(lines) +
        "\n</testsuite>\n</testsuites>\n", "utf-8")
    return 1 if failed or not cases else 0


if __name__ == "__main__":
    sys.exit(main())
