#!/usr/bin/env python3
# The core's layers hold: a folder finds the headers of the folders below it that it uses, and
# the compiler refuses a header of any other folder, the top (shell) above all.
#
# usage: layers_test.py COMPILER SOURCE_DIR LAYER_ROOTS
# LAYER_ROOTS is the build's core/layers folder: one include root per folder, and layers.txt,
# where each line names a folder and then every folder it may use.
import pathlib
import re
import subprocess
import sys
import tempfile

compiler, source, roots = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
core = source / "core"
closures = {}
for line in (roots / "layers.txt").read_text().splitlines():
    if line.strip():
        name, *uses = line.split()
        closures[name] = set(uses) - {name}

folders = sorted(p.name for p in core.iterdir() if p.is_dir())
failures = []
if set(folders) != set(closures):
    failures.append(f"folders without a layer or layers without a folder: "
                    f"{sorted(set(folders) ^ set(closures))}")


def a_header(folder):
    return sorted((core / folder).glob("*.h"))[0].name


def compile_probe(layer, include):
    flags = [f"-I{roots / f}" for f in sorted(closures[layer] | {layer})]
    with tempfile.NamedTemporaryFile("w", suffix=".cpp") as probe:
        probe.write(f'#include "{include}"\n')
        probe.flush()
        run = subprocess.run([compiler, "-std=c++20", "-fsyntax-only", *flags, probe.name],
                             capture_output=True, text=True)
    return run.returncode, run.stderr


# Every folder is refused the headers of the folders it does not use.
for layer in closures:
    for other in closures:
        if other == layer or other in closures[layer]:
            continue
        include = f"{other}/{a_header(other)}"
        code, err = compile_probe(layer, include)
        if code == 0 or "No such file" not in err:
            failures.append(f"core/{layer} can include {include}")
    if "shell" in closures[layer]:
        failures.append(f"core/{layer} uses the composition root")

# A header of a folder it uses is found, so the refusals above are not a broken setup.
code, err = compile_probe("mail", "browser/loaders.h")
if code != 0:
    failures.append(f"core/mail cannot include browser/loaders.h:\n{err}")

# No source walks out of its folder by a relative path, past its include root.
for path in core.rglob("*.[ch]*"):
    for n, line in enumerate(path.read_text(errors="replace").splitlines(), 1):
        if re.match(r'\s*#\s*include\s*"\.\./', line):
            failures.append(f"{path.relative_to(source)}:{n}: {line.strip()}")

for failure in failures:
    print(failure)
print(f"{len(closures)} layers, {len(failures)} faults")
sys.exit(1 if failures else 0)
