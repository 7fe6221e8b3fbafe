"""Runs the command lines of the documents as printed, in a fresh copy of what examples/try-out makes.

Usage: run_documents.py TREE QZANNO [COMPOSER]. README.md begins at the tree's root, all else in try-out. A command whose
comment says "a few minutes" is not run, nor is a file that is shown as such ("#!"). Then holds the tables of attributes
against the program's own.
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

# In place of what needs a screen, other machines, or the reader's own program.
STUBS = {
    "ffplay": r"""
size=$(printf '%s\n' "$@" | grep -A1 -x -e -video_size | tail -n 1)
bytes=$(wc -c)
[ "$bytes" -gt 0 ] && [ $((bytes % (${size%x*} * ${size#*x} * 4))) -eq 0 ]""",
    "parallel": 'exec "$REAL_PARALLEL" -j2 --will-cite --halt soon,fail=1',
    "qzanno-composer": '[ -z "$COMPOSER" ] || QT_QPA_PLATFORM=offscreen "$COMPOSER" "$@" --screenshot shown.png',
    "your-program": "cat >/dev/null",
}


def blocks_of_markdown(text):
    blocks = re.findall(r"^```sh\n(.*?)^```", text, re.MULTILINE | re.DOTALL)
    return "".join(re.sub(r"^.*#.*\ba few minutes\b.*\n", "", block, flags=re.MULTILINE) for block in blocks
                   if not block.startswith("#!"))


def blocks_of_man_page(text):
    blocks = re.findall(r"^\.Sh EXAMPLES\n(.*?)^\.Sh", text, re.MULTILINE | re.DOTALL)
    return "".join(re.findall(r"^\.Bd -literal.*\n((?:(?!\.Ed).*\n)*)", blocks[0], re.MULTILINE)).replace("\\e\n", "\\\n")


def examples_of_help(qzanno):
    def help_of(*words):
        return subprocess.run([qzanno, *words, "--help"], stdout=subprocess.PIPE, text=True, check=True).stdout

    examples = []
    for command in re.findall(r"^  (\w+)  ", help_of().split("Subcommands:")[1], re.MULTILINE):
        examples += help_of(command).split("Examples:\n")[1:]
    return "".join(line[2:] + "\n" for example in examples for line in example.splitlines() if line.startswith("  "))


def attributes_differ(page, qzanno):
    """Whether the tables of attributes are not those that the program prints."""
    run = subprocess.run([qzanno, "palette", "attributes", "--json"], stdout=subprocess.PIPE, text=True, check=True)
    printed = [(each["name"], each["value"], each["meaning"]) for each in json.loads(run.stdout)]
    tables = re.findall(r"^\| key \| value \| meaning \|\n(.*?)\n\n", page, re.MULTILINE | re.DOTALL)
    rows = re.findall(r"^\| (`.*?) \| (.*?) \| (.*) \|$", "\n".join(tables), re.MULTILINE)
    return sorted(printed) != sorted(tuple(cell.replace("`", "") for cell in row) for row in rows)


def main(tree, qzanno, composer=""):
    tree = pathlib.Path(tree)
    scripts = {"README.md": blocks_of_markdown((tree / "README.md").read_text())}
    for page in sorted((tree / "docs").glob("*.md")):
        scripts[page.name] = blocks_of_markdown(page.read_text())
    for page in sorted((tree / "docs/man").glob("*.1")):
        scripts[page.name] = blocks_of_man_page(page.read_text())
    scripts["--help"] = examples_of_help(qzanno)
    # Without the matrix ffmpeg burns in the colours of SD into a film in HD.
    failed = [name for name in ("README.md", "batch.md", "captions.md", "qzanno.1", "--help")
              if "scale=out_color_matrix=bt709" not in scripts[name]]
    if attributes_differ((tree / "docs/palettes.md").read_text(), qzanno):
        failed.append("palettes.md")
        print("palettes.md: its tables of attributes are not what \"qzanno palette attributes --json\" prints")
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        shutil.copytree(tree / "examples", root / "examples")
        (root / "bin").mkdir()
        for name, body in STUBS.items():
            (root / "bin" / name).write_text(f"#!/usr/bin/env bash\n{body}\n")
            (root / "bin" / name).chmod(0o755)
        (root / "bin/qzanno").symlink_to(qzanno)
        environment = os.environ | {"PATH": f"{root}/bin:{os.environ['PATH']}", "REAL_PARALLEL": shutil.which("parallel"),
                                    "COMPOSER": composer}
        subprocess.run([root / "examples/try-out"], cwd=root, check=True)
        (root / "try-out").rename(root / "made")
        for name, script in scripts.items():
            work = root / name
            work.mkdir()
            shutil.copytree(root / "made", work / "try-out")
            script = script.replace("examples/try-out && ", "")
            if name != "README.md":
                script = "cd try-out\n" + script
            # Without "yes" to writing over what is there: each page makes its own files.
            run = subprocess.run(["bash", "-xeo", "pipefail", "-c", script], cwd=work, env=environment,
                                 stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
            if run.returncode != 0:
                failed.append(name)
                print(f"{name}: exit {run.returncode}\n" + "\n".join(run.stderr.splitlines()[-30:]))
            shutil.rmtree(work)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
