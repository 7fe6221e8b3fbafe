#!/usr/bin/env python3
"""Compares the man page and the completion of a program with its --help, command by command, and reports missing and extra
options.

Usage: check_arguments.py PROGRAM MAN_PAGE COMPLETION_FOLDER. Exits with 1 when something differs.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

faults = []


def expect(where, what, found, wanted):
    """Reports what two sets do not share."""
    for lacking, verb in ((wanted - found, "lacks"), (found - wanted, "has, and the program has not,")):
        if lacking:
            faults.append(f"{where} {verb} {what} {', '.join(sorted(lacking))}")


class Command:
    def __init__(self, program, words=()):
        text = subprocess.run([program, *words, "--help"], check=True, stdout=subprocess.PIPE, text=True).stdout
        self.words = words
        # The spellings of each option, such as "-p --palette".
        heads = re.findall(r"^  (-[-\w]+(?:, ?-[-\w]+)*)(.*)", text, re.MULTILINE)
        self.options = {" ".join(re.split(", ?", head)) for head, _ in heads}
        self.choices = {head.split(",")[-1].strip(): set(value[1].split("|"))
                        for head, rest in heads if (value := re.match(r" <?((?:\w+\|)+\w+)", rest))}
        below = re.search(r"^Subcommands:\n((?:  .*\n)+)", text, re.MULTILINE)
        names = re.findall(r"^  (\w+)", below.group(1), re.MULTILINE) if below else []
        self.commands = [Command(program, (*words, name)) for name in names]

    def flags(self):
        return {flag for option in self.options for flag in option.split()}

    def all(self):
        return [self] + [each for command in self.commands for each in command.all()]


def check_man_page(page, root):
    def flags(text):
        return {"-" + flag for flag in re.findall(r"\bFl (\S+)", text)}

    text = page.read_text(encoding="utf-8")
    synopses = re.search(r"^\.Sh SYNOPSIS\n(.*?)^\.Sh ", text, re.MULTILINE | re.DOTALL).group(1).split(".Nm\n")[1:]
    leaves = [command for command in root.all() if not command.commands]
    of_all = {"-h --help", "--version"}
    for command in leaves:
        start = f".Cm {' '.join(command.words)}\n" if command.words else ""
        synopsis = next((each for each in synopses if each.startswith(start)), None)
        where = f"{page.name}: synopsis of \"{' '.join(command.words)}\""
        if synopsis is None:
            faults.append(f"{where} is not there")
            continue
        spelt = {flag: option for option in command.options for flag in option.split()}
        expect(where, "option", {spelt.get(flag, flag) for flag in flags(synopsis)}, command.options - of_all)
        for flag, choices in command.choices.items():
            listed = re.search(rf"Fl {flag[1:]} Cm ([\w |]+)", synopsis)
            expect(f"{where}: {flag}", "value", set(listed.group(1).split(" | ")) if listed else set(), choices)
    items = re.findall(r"^\.It Fl (\S+(?: , \S+)?)", text, re.MULTILINE)
    described = {" ".join("-" + flag for flag in item.split(" , ")) for item in items}
    expect(f"{page.name}: list of options", "option", described, {option for command in root.all() for option in command.options})
    warnings = subprocess.run(["groff", "-mandoc", "-ww", "-z", "-Tutf8", page], stderr=subprocess.PIPE, text=True).stderr
    faults.extend(warnings.splitlines())


def check_bash(script, program, root):
    function = "_" + program.replace("-", "_")

    def offered(folder, *words):
        # Outside a completion there is nothing that compopt could set.
        line = f'source "$0"; compopt() {{ :; }}; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); {function}; printf "%s\\n" "${{COMPREPLY[@]}}"'
        run = subprocess.run(["bash", "-uc", line, script, program, *words], cwd=folder, stdout=subprocess.PIPE, text=True)
        if run.returncode != 0:
            faults.append(f"{script.name}: fails for {' '.join(words)}")
        return set(run.stdout.split("\n")) - {""}

    with tempfile.TemporaryDirectory() as folder:
        for name in ("a b.plist", "c.annopalette", "d.vtt", "e.plist.txt"):
            (pathlib.Path(folder) / name).touch()
        for command in root.all():
            where = f"{script.name}: \"{' '.join(command.words)}\""
            expect(where, "option", offered(folder, *command.words, "-"), command.flags())
            if command.commands:
                expect(where, "command", offered(folder, *command.words, ""), {each.words[-1] for each in command.commands})
            for flag, choices in command.choices.items():
                expect(f"{where}: {flag}", "value", offered(folder, *command.words, flag, ""), choices)
                expect(f"{where}: {flag}=", "value", offered(folder, *command.words, flag, "=", ""), choices)
            if "-p --palette" in command.options:
                expect(f"{where}: -p", "file", offered(folder, *command.words, "-p", ""), {"a b.plist", "c.annopalette"})


def check_zsh(script, program, root):
    text = script.read_text(encoding="utf-8")
    for command in root.all():
        function = "_".join(["_" + program.replace("-", "_"), *command.words])
        body = re.search(rf"^{function}\(\) {{\n(.*?)^}}", text, re.MULTILINE | re.DOTALL)
        found = re.findall(r"'(?:\([^)]*\)|\*)(-[-\w]+)[+=]?\[", body.group(1)) if body else []
        expect(f"{script.name}: {function}", "option", set(found), command.flags())
    check_syntax(script, "zsh", "-n")


def check_fish(script, root):
    found = {}
    for line in re.findall(r"^complete .*", script.read_text(encoding="utf-8"), re.MULTILINE):
        words = tuple(re.findall(r"(?<!not )__fish_seen_subcommand_from (\w+)", line))
        line = line.split(" -d ")[0]
        flags = {"-" + flag for flag in re.findall(r" -s (\w)\b", line)} | {"--" + flag for flag in re.findall(r" -l ([-\w]+)", line)}
        found.setdefault(words, set()).update(flags)
    for command in root.all():
        expect(f"{script.name}: \"{' '.join(command.words)}\"", "option", found.get(command.words, set()), command.flags())
    check_syntax(script, "fish", "--no-execute")


def check_syntax(script, shell, option):
    if subprocess.run([shell, option, script]).returncode != 0:
        faults.append(f"{script.name}: {shell} does not read it")


def main():
    program, page, folder = (pathlib.Path(argument) for argument in sys.argv[1:])
    root = Command(program)
    check_man_page(page, root)
    check_bash(folder / f"{program.name}.bash", program.name, root)
    check_zsh(folder / f"_{program.name}", program.name, root)
    check_fish(folder / f"{program.name}.fish", root)
    print("\n".join(faults) or f"{len(root.all())} commands, said alike everywhere")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
